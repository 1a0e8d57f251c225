#include "view/TextViewport.h"

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr qreal kFewColumns = 4; // Stay visible before a caret that was scrolled into view.
constexpr int kMostParts = 64; // Of a line, to lay out at once. Only parts without width are more.

bool endsLine(const Text &text, const TextSegment &segment)
{
    return segment.breakLength > 0 || segments::isLast(text, segment);
}

} // namespace

/// Returns the segment that begins the row below the last one of `segment`.
std::optional<TextSegment> TextViewport::segmentBelow(const TextSegment &segment) const
{
    if (segments::isLast(m_text, segment))
        return std::nullopt;
    if (style().wraps || segment.breakLength > 0)
        return segmentAt(segment.nextStart());
    const TextLineBounds line = segments::lineAt(m_text, segment.lineStart);
    if (line.breakLength == 0)
        return std::nullopt;
    return segmentAt(line.nextStart());
}

/// Returns the segment that begins the rows above, or when lines do not wrap the row above.
std::optional<TextSegment> TextViewport::segmentAbove(const TextSegment &segment) const
{
    if (style().wraps) {
        if (segments::isFirst(segment))
            return std::nullopt;
        return segmentAt(segment.start - 1);
    }
    if (segment.lineStart == 0)
        return std::nullopt;
    return segmentAt(segmentAt(segment.lineStart - 1).lineStart);
}

int TextViewport::rowCountOf(const TextSegment &segment)
{
    return style().wraps ? layoutOf(segment).rowCount() : 1;
}

/// Returns what segments in the same rows have in common.
qint64 TextViewport::placeOf(const TextSegment &segment) const
{
    return style().wraps ? segment.start : segment.lineStart;
}

/// Returns the segment of the row of `segment` that covers `x`, a distance from the left edge of
/// the text.
TextSegment TextViewport::segmentAt(const TextSegment &segment, qreal x)
{
    if (style().wraps || !LineWidths::isPart(m_text, segment))
        return segment;
    TextSegment found = m_widths.segmentAt(m_text, segment, x);
    qreal right = m_widths.left(m_text, found);
    // Laying a segment out may show that it ends before `x`.
    for (int parts = 0; parts < kMostParts && !endsLine(m_text, found); ++parts) {
        right += layoutOf(found).width();
        if (right > x)
            break;
        found = segments::next(m_text, found);
    }
    return found;
}

qreal TextViewport::textWidth() const
{
    return std::max<qreal>(1, m_size.width() - 2 * kMargin);
}

bool TextViewport::scrollsSideways() const
{
    return !style().wraps || style().wrapColumn > 0;
}

/// Returns the distance of a segment from the left edge of the text.
qreal TextViewport::indent(const SegmentLayout &layout)
{
    if (style().wraps)
        return 0;
    if (LineWidths::isPart(m_text, layout.segment()))
        return m_widths.left(m_text, layout.segment());
    return layout.isRightToLeft() ? std::max<qreal>(0, textWidth() - layout.width()) : 0;
}

qreal TextViewport::leftOf(const SegmentLayout &layout)
{
    return kMargin - m_left + indent(layout);
}

void TextViewport::noteWidth(const SegmentLayout &layout)
{
    const TextSegment &segment = layout.segment();
    qreal width = layout.width();
    if (!style().wraps && LineWidths::isPart(m_text, segment)) {
        m_widths.setWidth(m_text, segment, width);
        width = m_widths.width(m_text, segments::lineAt(m_text, segment.lineStart));
    }
    if (width > m_widest.width || (!style().wraps && segment.lineStart == m_widest.lineStart))
        m_widest = {segment.lineStart, width};
}

void TextViewport::forgetWidest(qint64 offset, qint64 oldLength, qint64 newLength)
{
    if (m_widest.width == 0)
        return;
    const TextLineBounds line = segments::lineAt(m_text, m_widest.lineStart);
    if (offset + oldLength < line.start)
        m_widest.lineStart += newLength - oldLength;
    else if (offset <= line.end)
        m_widest = {};
}

/// Visits the visible segments of the row of `segment`, left to right; when lines wrap, `segment`.
/// Only here are widths noted: a query about another place must not move what is visible.
void TextViewport::visitParts(const TextSegment &segment,
                              const std::function<void(const SegmentLayout &)> &visit)
{
    TextSegment part =
        style().wraps ? segment : m_widths.segmentAt(m_text, segment, m_left - kMargin);
    for (int parts = 0; parts < kMostParts; ++parts) {
        const SegmentLayout &layout = layoutOf(part);
        noteWidth(layout);
        visit(layout);
        if (style().wraps || endsLine(m_text, part) ||
            leftOf(layout) + layout.width() >= m_size.width())
            return;
        part = segments::next(m_text, part);
    }
}

/// Lays out all that is visible, so that its widths are known.
void TextViewport::measureVisible()
{
    forEachVisible([](const SegmentLayout & /*layout*/, qreal /*y*/) {});
}

/// Returns the first visible segment of the first visible huge line.
std::optional<TextSegment> TextViewport::firstVisiblePart()
{
    std::optional<TextSegment> first;
    forEachVisible([&](const SegmentLayout &layout, qreal /*y*/) {
        if (!first && LineWidths::isPart(m_text, layout.segment()))
            first = layout.segment();
    });
    return first;
}

void TextViewport::setLeft(qreal left)
{
    m_left = std::max<qreal>(0, std::round(left));
}

void TextViewport::scrollSidewaysBy(qreal distance)
{
    // Segments that come into view on the left may turn out wider or narrower than estimated. The
    // text that is visible must not jump then.
    const auto part = style().wraps ? std::nullopt : firstVisiblePart();
    const qreal before = part ? m_widths.left(m_text, *part) : 0;
    const qreal leftBefore = m_left;
    setLeft(m_left + distance);
    measureVisible();
    if (part && std::abs(distance) < m_size.width())
        setLeft(m_left + m_widths.left(m_text, *part) - before);
    measureVisible();
    if (distance > 0)
        setLeft(std::min(m_left, std::max(leftBefore, std::ceil(m_widest.width - textWidth()))));
}

qreal TextViewport::sidewaysSteps() const
{
    constexpr qreal kMostSteps = 1e9;
    return std::min<qreal>(1, kMostSteps / std::max(m_widest.width, m_left + 1));
}

TextViewport::ScrollRange TextViewport::sidewaysRange()
{
    if (!scrollsSideways()) {
        m_left = 0;
        return {};
    }
    measureVisible();
    const qreal steps = sidewaysSteps();
    // The range includes the present place, even if a line became shorter: nothing moves by itself.
    const qreal most = std::max(std::ceil(m_widest.width - textWidth()), m_left);
    ScrollRange range;
    range.maximum = static_cast<int>(std::max<qreal>(0, most) * steps);
    range.pageStep = std::max(1, static_cast<int>(textWidth() * steps));
    const auto value = static_cast<int>(m_left * steps);
    range.value = std::clamp(value, m_left > 0 ? std::min(1, range.maximum) : 0, range.maximum);
    return range;
}

void TextViewport::scrollSidewaysToValue(int value, int maximum, int steps)
{
    if (value > 0 && value < maximum) {
        scrollSidewaysBy(steps / sidewaysSteps());
        return;
    }
    // What is laid out at the end may turn out wider or narrower than estimated.
    constexpr int kPasses = 3;
    const qreal before = m_left;
    for (int pass = 0; pass < kPasses; ++pass) {
        const qreal most = std::ceil(m_widest.width - textWidth());
        setLeft(value <= 0 ? 0 : std::max(most, pass == 0 ? before : 0));
        measureVisible();
    }
}

/// Keeps the place that is shown on a change of the style.
/// \param place the offset at the upper left before.
void TextViewport::keepPlace(const TextLayoutStyle &before, qint64 place)
{
    if (style().wraps) {
        if (!before.wraps)
            m_anchor = m_left > 0 ? place : m_anchor;
        m_left = 0;
        return;
    }
    const TextSegment segment = segments::at(m_text, place);
    m_anchor = segment.lineStart;
    if (segment.start != segment.lineStart)
        setLeft(caretX({place, false}));
    else if (!before.wraps)
        setLeft(m_left * style().columnWidth / std::max<qreal>(1, before.columnWidth));
}

void TextViewport::makeVisibleSideways(TextCaret caret, const TextComposition &composition)
{
    const qreal context = std::min(kFewColumns * style().columnWidth, textWidth() / 4);
    // Laying out the text beside the caret may move it.
    constexpr int kPasses = 3;
    for (int pass = 0; pass < kPasses; ++pass) {
        const qreal x = caretRect(caret, composition).left() - kMargin;
        if (x >= 0 && x <= textWidth())
            return;
        setLeft(m_left + (x < 0 ? x - context : x - textWidth() + context));
        measureVisible();
    }
}

} // namespace penwick
