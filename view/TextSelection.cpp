#include "view/TextSelection.h"

#include "view/ColumnMoves.h"
#include "view/TextMimeData.h"

#include <algorithm>
#include <cmath>

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

bool TextSelection::isEmpty() const
{
    return m_columns ? m_columns->isEmpty() : range().isEmpty();
}

Text TextSelection::text() const
{
    if (m_columns)
        return m_columns->isEmpty()
                   ? Text()
                   : textOf(m_storage->text(), m_columns->rectangle(m_storage->text()), tabWidth())
                         .value_or(Text());
    return m_storage->text().mid(range().location, range().length);
}

bool TextSelection::contains(QPointF point) const
{
    const qint64 hit = m_viewport->characterAt(point);
    TextRange part = range();
    if (m_columns) {
        const LineSpan lines = m_columns->lines();
        const qint64 row = lineNumber(m_storage->text(), hit) - lines.first;
        if (row < 0 || row >= lines.count)
            return false;
        part = m_columns->rowAt(m_storage->text(), lines.first + row).range;
    }
    return hit >= part.location && hit < part.end();
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
    m_columns.reset();
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
    if (m_columns && request.extends && isColumnMove(request.move))
        return moveColumns(request.move);
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

void TextSelection::selectColumns(const ColumnSelection &columns, Scroll scroll)
{
    const TextRange before = range();
    const Text &text = m_storage->text();
    const TextRectangle rectangle = columns.rectangle(text);
    const bool isForward = rectangle.anchor.column <= rectangle.caret.column;
    const TextRange first = columns.rowAt(text, columns.lines().first).range;
    place(isForward ? first.location : first.end(),
          {isForward ? first.end() : first.location, false});
    m_columns = columns;
    m_storage->setSelectionForUndo(range());
    if (scroll == Scroll::ToCaret) {
        const TextRange row = columns.rowAt(text, rectangle.caret.line).range;
        m_viewport->makeVisible({isForward ? row.end() : row.location, false});
    }
    Q_EMIT caretMoved();
    Q_EMIT selected(before);
}

void TextSelection::selectRectangle(const TextRectangle &rectangle, Scroll scroll)
{
    m_storage->breakUndoCoalescing();
    TextRectangle inText = rectangle;
    // The text may have become shorter during a drag.
    for (ColumnPlace *corner : {&inText.anchor, &inText.caret})
        corner->line = std::min(corner->line, m_storage->text().metrics().lineBreaks());
    selectColumns(ColumnSelection(m_storage->text(), inText, tabWidth()), scroll);
}

void TextSelection::moveColumns(std::optional<CaretMove> move)
{
    auto corners = rectangle();
    if (!corners)
        return;
    if (move)
        corners->caret = movedPlace(m_storage->text(),
                                    corners->caret,
                                    *move,
                                    {tabWidth(), std::max(1, m_viewport->rowsPerPage() - 1)});
    selectRectangle(*corners);
    constexpr qint64 kMostLines = 1000; // The cost of each key press.
    if (m_columns->lines().count <= kMostLines)
        offerAsPrimary();
}

std::optional<TextRectangle> TextSelection::rectangle() const
{
    const Text &text = m_storage->text();
    if (m_columns)
        return m_columns->rectangle(text);
    const auto anchor = placeOf(text, m_anchor, tabWidth());
    const auto caret = placeOf(text, m_caret.offset, tabWidth());
    if (!anchor || !caret)
        return std::nullopt;
    return TextRectangle{*anchor, *caret};
}

std::optional<ColumnPlace> TextSelection::placeAt(QPointF point) const
{
    const TextCaret hit = m_viewport->caretAt(point);
    auto place = placeOf(m_storage->text(), hit.offset, tabWidth());
    if (!place || hit.offset != contentOfLine(m_storage->text(), place->line).end())
        return place;
    const qreal beyond = point.x() - TextViewport::kMargin - m_viewport->caretX(hit);
    const auto columns = std::llround(beyond / std::max<qreal>(1, m_viewport->style().columnWidth));
    place->column = std::min(place->column + std::max<qint64>(0, columns), kColumnReach);
    return place;
}

int TextSelection::tabWidth() const
{
    const TextLayoutStyle &style = m_viewport->style();
    return std::max(1, static_cast<int>(std::lround(style.tabWidth / style.columnWidth)));
}

void TextSelection::showCaret()
{
    m_viewport->makeVisible(m_caret);
    Q_EMIT caretMoved();
}

void TextSelection::offerAsPrimary() const
{
    offerText(text(), QClipboard::Selection, m_columns.has_value());
}

} // namespace penwick
