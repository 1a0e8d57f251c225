#include "view/InputMethod.h"

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

} // namespace

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

TextRange
replacedRange(const QInputMethodEvent &event, const Text &text, TextRange selection, qint64 caret)
{
    if (event.replacementLength() <= 0 && event.replacementStart() == 0)
        return selection;
    const qint64 from = caret + event.replacementStart();
    qint64 start = std::clamp<qint64>(from, 0, text.size());
    qint64 end =
        std::clamp<qint64>(from + std::max(0, event.replacementLength()), start, text.size());
    if (end > start)
        end = text.pairEnd(end);
    start = text.pairStart(start);
    return {start, std::max(start, end) - start};
}

SurroundingText::SurroundingText(const Text &text, qint64 anchor, qint64 caret)
{
    // The stretch may start or end inside a cluster, but not inside a surrogate pair.
    m_start = text.pairStart(std::max<qint64>(0, caret - kSurroundingReach));
    const qint64 end = text.pairStart(std::min(text.size(), caret + kSurroundingReach));
    m_units = text.slice(m_start, end - m_start);
    m_caret = caret;
    m_anchor = std::clamp(anchor, m_start, end);
}

QVariant SurroundingText::answer(Qt::InputMethodQuery query) const
{
    const auto caret = static_cast<int>(m_caret - m_start);
    const auto anchor = static_cast<int>(m_anchor - m_start);
    switch (query) {
    case Qt::ImSurroundingText:
        return m_units;
    case Qt::ImCursorPosition:
        return caret;
    case Qt::ImAnchorPosition:
        return anchor;
    case Qt::ImCurrentSelection:
        return m_units.mid(std::min(caret, anchor), std::abs(caret - anchor));
    case Qt::ImTextBeforeCursor:
        return m_units.first(caret);
    case Qt::ImTextAfterCursor:
        return m_units.sliced(caret);
    default:
        return {};
    }
}

} // namespace penwick
