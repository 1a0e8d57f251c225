#include "view/TextSelection.h"

#include "view/TextMimeData.h"

#include <algorithm>

namespace penwick {

TextSelection::TextSelection(TextStorage *storage, TextViewport *viewport)
    : m_storage(storage)
    , m_viewport(viewport)
{
}

TextRange TextSelection::range() const
{
    return TextRange::between(std::min(m_anchor, m_caret.offset),
                              std::max(m_anchor, m_caret.offset));
}

Text TextSelection::text() const
{
    return m_storage->text().mid(range().location, range().length);
}

bool TextSelection::contains(QPointF point) const
{
    const qint64 hit = m_viewport->characterAt(point);
    return hit >= range().location && hit < range().end();
}

qint64 TextSelection::snapped(qint64 offset) const
{
    const Text &text = m_storage->text();
    return text.pairStart(std::clamp<qint64>(offset, 0, text.size()));
}

void TextSelection::place(qint64 anchor, TextCaret caret)
{
    m_anchor = snapped(anchor);
    m_caret = {snapped(caret.offset), caret.atRowEnd};
    m_column.reset();
}

void TextSelection::select(qint64 anchor, TextCaret caret, Scroll scroll)
{
    const TextRange before = range();
    place(anchor, caret);
    m_storage->setSelectionForUndo(range());
    if (scroll == Scroll::ToCaret)
        m_viewport->makeVisible(m_caret);
    Q_EMIT caretMoved();
    Q_EMIT selected(before);
}

void TextSelection::move(CaretMoveRequest request)
{
    m_storage->breakUndoCoalescing();
    const bool isStep = request.move == CaretMove::Left || request.move == CaretMove::Right;
    if (isStep && !request.extends && !range().isEmpty()) {
        const qint64 edge = edgeOfSelection(*m_viewport, range(), request.move == CaretMove::Right);
        select(edge, {edge, false});
        return;
    }
    if (!isVertical(request.move))
        m_column.reset();
    else if (!m_column)
        m_column = m_viewport->caretX(m_caret);
    const qreal before = m_viewport->caretRect(m_caret).top();
    const TextCaret target =
        moveCaret(*m_viewport, m_storage->text(), m_caret, request.move, m_column.value_or(0));
    if (request.move == CaretMove::PageUp || request.move == CaretMove::PageDown) {
        // Scroll so that the caret keeps its place on the screen.
        m_viewport->makeVisible(target);
        m_viewport->scrollByPixels(m_viewport->caretRect(target).top() - before);
    }
    const auto column = m_column; // `select` resets it.
    select(request.extends ? m_anchor : target.offset, target);
    m_column = column;
    if (request.extends)
        offerAsPrimary();
}

void TextSelection::showCaret()
{
    m_viewport->makeVisible(m_caret);
    Q_EMIT caretMoved();
}

void TextSelection::offerAsPrimary() const
{
    offerText(text(), QClipboard::Selection);
}

} // namespace penwick
