#include "view/InputMethod.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QTextFormat>

#include <algorithm>

namespace penwick {

namespace {

/// UTF-16 code units on either side of the caret that an input method can read.
constexpr qint64 kSurroundingReach = 512;

QTextLayout::FormatRange underlined(int start, int length)
{
    QTextLayout::FormatRange range;
    range.start = start;
    range.length = length;
    range.format.setFontUnderline(true);
    return range;
}

/// Returns the attribute's range, clamped to a composition of `size` units, with its format. A
/// clause with neither a background nor an underline gets an underline.
QTextLayout::FormatRange clauseOf(const QInputMethodEvent::Attribute &attribute, int size)
{
    QTextLayout::FormatRange range;
    range.start = std::clamp(attribute.start, 0, size);
    range.length = std::clamp(attribute.length, 0, size - range.start);
    range.format = qvariant_cast<QTextFormat>(attribute.value).toCharFormat();
    const bool isMarked = range.format.background().style() != Qt::NoBrush ||
                          range.format.underlineStyle() != QTextCharFormat::NoUnderline;
    if (!isMarked)
        range.format.setFontUnderline(true);
    return range;
}

/// Returns the composition of `event`, to be shown at `position`.
TextComposition compositionOf(const QInputMethodEvent &event, qint64 position)
{
    TextComposition composition;
    composition.position = position;
    composition.string = event.preeditString();
    const auto size = static_cast<int>(composition.string.size());
    composition.cursor = size;
    for (const QInputMethodEvent::Attribute &attribute : event.attributes())
        if (attribute.type == QInputMethodEvent::Cursor)
            composition.cursor = attribute.length > 0 ? std::clamp(attribute.start, 0, size) : -1;
        else if (attribute.type == QInputMethodEvent::TextFormat && attribute.length > 0)
            composition.formats.append(clauseOf(attribute, size));
    if (composition.formats.isEmpty() && size > 0)
        composition.formats.append(underlined(0, size));
    return composition;
}

/// Returns the range that `event` replaces with its commit string: the selection, or a range
/// relative to the caret, clamped to the text and widened to whole surrogate pairs.
TextRange
replacedRange(const QInputMethodEvent &event, const Text &text, const TextSelection &selection)
{
    if (event.replacementLength() <= 0 && event.replacementStart() == 0)
        return selection.range();
    const qint64 from = selection.caret().offset + event.replacementStart();
    qint64 start = std::clamp<qint64>(from, 0, text.size());
    qint64 end =
        std::clamp<qint64>(from + std::max(0, event.replacementLength()), start, text.size());
    if (end > start)
        end = text.pairEnd(end);
    start = text.pairStart(start);
    return TextRange::between(start, std::max(start, end));
}

} // namespace

InputMethod::InputMethod(TextViewport *viewport, TextEditing *editing)
    : m_viewport(viewport)
    , m_editing(editing)
{
}

void InputMethod::show(const TextComposition &composition)
{
    m_viewport->setComposition(composition);
    m_editing->selection().showCaret();
}

void InputMethod::handle(const QInputMethodEvent &event)
{
    if (m_ignoresCommits)
        return;
    const TextSelection &selection = m_editing->selection();
    if (!event.commitString().isEmpty() || event.replacementLength() > 0) {
        using Kind = TextEditing::Kind;
        // Some input methods also commit each key that they do not compose.
        const Kind kind = isComposing() ? Kind::Other : Kind::Typing;
        m_viewport->setComposition({});
        const TextRange range = replacedRange(event, m_viewport->text(), selection);
        if (range == selection.range())
            m_editing->replaceSelection(Text(event.commitString()), kind);
        else
            m_editing->edit(range, Text(event.commitString()), kind);
    }
    show(compositionOf(event, selection.caret().offset));
}

void InputMethod::discard()
{
    if (!isComposing())
        return;
    show({});
    // Some input methods commit on a reset what they should discard.
    m_ignoresCommits = true;
    QGuiApplication::inputMethod()->reset();
    m_ignoresCommits = false;
}

void InputMethod::commit()
{
    if (!isComposing())
        return;
    QGuiApplication::inputMethod()->commit();
    // Some input methods commit only on a reset.
    if (isComposing())
        QGuiApplication::inputMethod()->reset();
    if (isComposing())
        show({});
}

QVariant InputMethod::answer(Qt::InputMethodQuery query) const
{
    const Text &text = m_viewport->text();
    const qint64 offset = m_editing->selection().caret().offset;
    // The stretch may start or end inside a cluster, but not inside a surrogate pair.
    const qint64 start = text.pairStart(std::max<qint64>(0, offset - kSurroundingReach));
    const qint64 end = text.pairStart(std::min(text.size(), offset + kSurroundingReach));
    const QString units = text.slice(start, end - start);
    const auto caret = static_cast<int>(offset - start);
    const auto anchor =
        static_cast<int>(std::clamp(m_editing->selection().anchor(), start, end) - start);
    switch (query) {
    case Qt::ImSurroundingText:
        return units;
    case Qt::ImCursorPosition:
        return caret;
    case Qt::ImAnchorPosition:
        return anchor;
    case Qt::ImCurrentSelection:
        return units.mid(std::min(caret, anchor), std::abs(caret - anchor));
    case Qt::ImTextBeforeCursor:
        return units.first(caret);
    case Qt::ImTextAfterCursor:
        return units.sliced(caret);
    default:
        return {};
    }
}

} // namespace penwick
