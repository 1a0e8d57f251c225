#include "view/TextViewport.h"

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr int kTooFar = -1;
constexpr qreal kTolerance = 1; // A text that is higher by so many pixels still fits.

/// Returns the scroll bar steps per estimated row; fewer for texts whose range would exceed the
/// bar's integers.
qreal stepsPerRow(qreal rows)
{
    constexpr qreal kSteps = 16;
    constexpr qreal kMostSteps = 1e9;
    return std::min(kSteps, kMostSteps / std::max<qreal>(1, rows));
}

} // namespace

void TextViewport::setText(const Text &text)
{
    m_text = text;
    m_cache.clear();
    m_widths.reset(style().columnWidth);
    m_widest = {};
    scrollToStart();
}

void TextViewport::textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength)
{
    const qint64 line = m_text.lineBreaksBefore(m_anchor);
    forgetWidest(offset, oldLength, newLength);
    m_text = text;
    m_cache.textChanged(offset, oldLength, newLength);
    m_widths.textChanged(text, offset, oldLength, newLength);
    if (m_composition.isActive()) {
        qint64 &position = m_composition.position;
        position = position >= offset + oldLength ? position + newLength - oldLength
                                                  : std::min(position, offset);
        m_cache.setComposition(m_composition);
    }
    if (offset + oldLength <= m_anchor && offset < m_anchor)
        m_anchor += newLength - oldLength;
    else if (offset < m_anchor) // The top row was replaced: stay at its line number.
        m_anchor = std::clamp(text.offsetAfterLineBreak(line), offset, offset + newLength);
    setAnchor(topRow(), m_pixel);
    clampToEnd();
}

void TextViewport::setComposition(const TextComposition &composition)
{
    m_composition = composition;
    m_cache.setComposition(composition);
    setAnchor(topRow(), m_pixel);
    clampToEnd();
}

void TextViewport::setGeometry(const TextLayoutStyle &style, QSizeF size)
{
    m_size = size;
    // Rows that do not wrap have the same layout in any size.
    const TextLayoutStyle before = this->style();
    if (!style.wraps && style == before && decoration() == nullptr) {
        setLeft(std::min(m_left, std::max<qreal>(0, std::ceil(m_widest.width - textWidth()))));
        clampToEnd();
        return;
    }
    const qint64 place = before.wraps ? m_anchor : caretInRow(topRow(), m_left).offset;
    m_cache.setStyle(style);
    m_widths.reset(style.columnWidth);
    m_widest = {};
    m_columns = std::max<qreal>(1, style.width / std::max<qreal>(1, style.columnWidth));
    keepPlace(before, place);
    setAnchor(topRow(), m_pixel);
    clampToEnd();
}

const SegmentLayout &TextViewport::layoutOf(const TextSegment &segment)
{
    return m_cache.layout(m_text, segment);
}

TextViewport::Row TextViewport::topRow()
{
    const TextSegment segment = segmentAt(m_anchor);
    if (!style().wraps)
        return {segment, 0};
    return {segment, layoutOf(segment).rowStartingAt(m_anchor, m_anchorComposition)};
}

TextViewport::Row TextViewport::rowOfCaret(TextCaret caret)
{
    if (m_composition.isActive() && caret.offset == m_composition.position)
        caret.atRowEnd = false; // At a soft wrap, a composition is on the lower row.
    TextSegment segment = segmentAt(caret.offset);
    if (!style().wraps)
        return {segment, 0};
    const bool startsAtCut = segment.start == caret.offset && segment.start != segment.lineStart;
    if (caret.atRowEnd && startsAtCut)
        segment = segmentAt(segment.start - 1);
    return {segment, layoutOf(segment).rowOf(caret.offset, caret.atRowEnd)};
}

bool TextViewport::stepDown(Row &row)
{
    if (row.row + 1 < rowCountOf(row.segment)) {
        ++row.row;
        return true;
    }
    const auto below = segmentBelow(row.segment);
    if (below)
        row = {*below, 0};
    return below.has_value();
}

bool TextViewport::stepUp(Row &row)
{
    if (row.row > 0) {
        --row.row;
        return true;
    }
    const auto above = segmentAbove(row.segment);
    if (above)
        row = {*above, rowCountOf(*above) - 1};
    return above.has_value();
}

int TextViewport::rowsBetween(Row from, const Row &to, int limit)
{
    int rows = 0;
    while (placeOf(from.segment) != placeOf(to.segment)) {
        rows += rowCountOf(from.segment) - from.row;
        const auto below = segmentBelow(from.segment);
        if (rows > limit || !below)
            return kTooFar;
        from = {*below, 0};
    }
    rows += to.row - from.row;
    return rows < 0 || rows > limit ? kTooFar : rows;
}

qreal TextViewport::textTop() const
{
    return kMargin - m_pixel;
}

int TextViewport::rowsPerPage() const
{
    const qreal available = m_size.height() - 2 * kMargin;
    return std::max(1, static_cast<int>(available / style().rowHeight));
}

void TextViewport::setAnchor(const Row &row, qreal pixel)
{
    m_anchor = row.segment.lineStart;
    m_anchorComposition = 0;
    if (style().wraps) {
        const SegmentLayout &layout = layoutOf(row.segment);
        m_anchor = layout.rowStart(row.row);
        m_anchorComposition = layout.compositionBefore(row.row);
    }
    m_pixel = std::clamp<qreal>(pixel, 0, style().rowHeight - 1);
}

void TextViewport::clampToEnd()
{
    const qreal available = std::max(style().rowHeight, m_size.height() - 2 * kMargin);
    Row bottom = topRow();
    qreal below = style().rowHeight - m_pixel;
    while (below < available && stepDown(bottom))
        below += style().rowHeight;
    if (below >= available)
        return;
    // The text ends above the lower edge, and `bottom` is its last row: fill the viewport upwards
    // from there.
    Row top = bottom;
    qreal height = style().rowHeight;
    while (height < available && stepUp(top))
        height += style().rowHeight;
    const qreal hidden = height - available;
    setAnchor(top, hidden > kTolerance ? hidden : 0);
}

void TextViewport::forEachVisible(const std::function<void(const SegmentLayout &, qreal)> &visit)
{
    const Row top = topRow();
    std::optional<TextSegment> segment = top.segment;
    qreal y = textTop() - top.row * style().rowHeight;
    while (y > 0) {
        const auto above = segmentAbove(*segment);
        if (!above)
            break;
        segment = above;
        y -= rowCountOf(*segment) * style().rowHeight;
    }
    for (; segment; segment = y < m_size.height() ? segmentBelow(*segment) : std::nullopt) {
        const int rows = rowCountOf(*segment);
        visitParts(*segment, [&](const SegmentLayout &layout) { visit(layout, y); });
        y += rows * style().rowHeight;
    }
}

TextRange TextViewport::visibleRange()
{
    const TextSegment first = segmentAt(rowAt(0).segment, m_left);
    const TextSegment last = segmentAt(rowAt(m_size.height()).segment, m_left + m_size.width());
    return TextRange::between(first.start, std::max(first.end, last.end));
}

TextCaret TextViewport::caretInRow(const Row &row, qreal x)
{
    if (!style().wraps) {
        const SegmentLayout &part = layoutOf(segmentAt(row.segment, x));
        return {m_text.clusterBoundaryAtOrBefore(part.offsetAt(x - indent(part), 0)), false};
    }
    const SegmentLayout &layout = layoutOf(row.segment);
    const qint64 offset = m_text.clusterBoundaryAtOrBefore(layout.offsetAt(x, row.row));
    const bool isLastRow = row.row + 1 == layout.rowCount();
    const bool wraps =
        !isLastRow || (row.segment.breakLength == 0 && !segments::isLast(m_text, row.segment));
    return {offset, wraps && offset == layout.rowEnd(row.row)};
}

TextViewport::Row TextViewport::rowAt(qreal y)
{
    Row row = topRow();
    auto steps = static_cast<int>(std::floor((y - textTop()) / style().rowHeight));
    while (steps > 0 && stepDown(row))
        --steps;
    while (steps < 0 && stepUp(row))
        ++steps;
    return row;
}

TextCaret TextViewport::caretAt(QPointF point)
{
    return caretInRow(rowAt(point.y()), point.x() - kMargin + m_left);
}

qint64 TextViewport::characterAt(QPointF point)
{
    const Row row = rowAt(point.y());
    const SegmentLayout &layout = layoutOf(segmentAt(row.segment, point.x() - kMargin + m_left));
    qint64 offset = layout.characterAt(point.x() - leftOf(layout), row.row);
    if (row.row + 1 < layout.rowCount()) // Beyond a wrapped row, take its last character.
        offset = std::min(offset, layout.rowEnd(row.row) - 1);
    return m_text.clusterBoundaryAtOrBefore(offset);
}

qreal TextViewport::caretX(TextCaret caret)
{
    const Row row = rowOfCaret(caret);
    const SegmentLayout &layout = layoutOf(row.segment);
    return indent(layout) + layout.xOf(caret.offset, row.row);
}

QRectF TextViewport::caretRect(TextCaret caret)
{
    return caretRect(caret, m_composition);
}

QRectF TextViewport::caretRect(TextCaret caret, const TextComposition &composition)
{
    const Row top = topRow();
    Row row = rowOfCaret(caret);
    const SegmentLayout &layout = layoutOf(row.segment);
    const int index = layout.caretIndex(caret.offset, composition);
    qreal x = layout.xOf(caret.offset, row.row);
    if (composition.isActive() && caret.offset == composition.position) {
        const QTextLine line = layout.layout().lineForTextPosition(index);
        row.row = line.isValid() ? line.lineNumber() : row.row;
        x = line.isValid() ? line.cursorToX(index) : x;
    }
    const int limit = rowsPerPage() + 2;
    const int above = rowsBetween(top, row, limit);
    const int below = above == kTooFar ? rowsBetween(row, top, limit) : 0;
    if (below == kTooFar)
        return {};
    const int rows = above == kTooFar ? -below : above;
    if (!scrollsSideways())
        x = std::min(x, style().width);
    return {leftOf(layout) + x, textTop() + rows * style().rowHeight, 1, style().rowHeight};
}

QRectF TextViewport::characterRect(qint64 offset)
{
    QRectF rect = caretRect({offset, false});
    const Row row = rowOfCaret({offset, false});
    if (rect.isEmpty() || offset >= row.segment.end)
        return rect;
    const SegmentLayout &layout = layoutOf(row.segment);
    const auto [left, right] = layout.edgesOf(offset, m_text.nextClusterBoundary(offset), row.row);
    rect.setLeft(leftOf(layout) + left);
    rect.setRight(leftOf(layout) + std::max(right, left + 1));
    return rect;
}

TextCaret TextViewport::verticalMove(TextCaret caret, int rows, qreal x, bool &moved)
{
    Row row = rowOfCaret(caret);
    const bool isDown = rows > 0;
    moved = false;
    for (; rows > 0 && stepDown(row); --rows)
        moved = true;
    for (; rows < 0 && stepUp(row); ++rows)
        moved = true;
    if (!moved)
        return caret;
    const TextCaret target = caretInRow(row, x);
    // A cluster that spans several rows begins in the first of them, so moving down goes past it.
    if (isDown && (target.offset < caret.offset || target == caret))
        return {m_text.nextClusterBoundary(caret.offset), false};
    return target;
}

TextCaret TextViewport::rowStart(TextCaret caret)
{
    const Row row = rowOfCaret(caret);
    if (!style().wraps)
        return {row.segment.lineStart, false};
    return {layoutOf(row.segment).rowStart(row.row), false};
}

TextCaret TextViewport::rowEnd(TextCaret caret)
{
    const Row row = rowOfCaret(caret);
    if (!style().wraps)
        return {segments::lineAt(m_text, row.segment.lineStart).end, false};
    const SegmentLayout &layout = layoutOf(row.segment);
    const bool isLastRow = row.row + 1 == layout.rowCount();
    const bool wraps =
        !isLastRow || (row.segment.breakLength == 0 && !segments::isLast(m_text, row.segment));
    return {layout.rowEnd(row.row), wraps};
}

TextRange TextViewport::rowAround(qint64 offset)
{
    const Row row = rowOfCaret({offset, false});
    const SegmentLayout &layout = layoutOf(row.segment);
    const qint64 start = layout.rowStart(row.row);
    // All rows inside a composition start at the same offset.
    for (int next = row.row + 1; next < layout.rowCount(); ++next)
        if (layout.rowStart(next) > offset)
            return {start, layout.rowStart(next) - start};
    return {start, row.segment.nextStart() - start};
}

bool TextViewport::isRightToLeft(qint64 offset)
{
    return layoutOf(segmentAt(offset)).isRightToLeft();
}

bool TextViewport::hasRightToLeft(qint64 offset)
{
    return layoutOf(segmentAt(offset)).hasRightToLeft();
}

void TextViewport::scrollByPixels(qreal distance)
{
    Row row = topRow();
    qreal pixel = m_pixel + distance;
    while (pixel >= style().rowHeight && stepDown(row))
        pixel -= style().rowHeight;
    while (pixel < 0 && stepUp(row))
        pixel += style().rowHeight;
    setAnchor(row, pixel);
    clampToEnd();
}

void TextViewport::scrollToStart()
{
    scrollToTop();
    m_left = 0;
}

void TextViewport::scrollToTop()
{
    m_anchor = 0;
    m_anchorComposition = 0;
    m_pixel = 0;
}

void TextViewport::scrollTo(Top top)
{
    setAnchor(rowOfCaret({top.offset, false}), top.hidden);
    clampToEnd();
}

void TextViewport::makeVisible(TextCaret caret)
{
    if (m_composition.isActive() && caret.offset == m_composition.position) {
        // The cursor of a composition may be anywhere in it, or hidden: show the end as well.
        TextComposition whole = m_composition;
        whole.cursor = static_cast<int>(whole.string.size());
        makeVisible(caret, whole);
    }
    makeVisible(caret, m_composition);
}

void TextViewport::makeVisible(TextCaret caret, const TextComposition &composition)
{
    const QRectF rect = caretRect(caret, composition);
    const qreal lowest = m_size.height() - kMargin;
    if (rect.isNull()) {
        Row row = rowOfCaret(caret);
        for (int i = rowsPerPage() / 2; i > 0 && stepUp(row); --i) {
        }
        setAnchor(row, 0);
        clampToEnd();
    } else if (rect.top() < kMargin)
        scrollByPixels(rect.top() - kMargin);
    else if (rect.bottom() > lowest && rect.top() > kMargin)
        scrollByPixels(std::min(rect.bottom() - lowest, rect.top() - kMargin));
    if (scrollsSideways())
        makeVisibleSideways(caret, composition);
}

qreal TextViewport::estimatedRows(qint64 offset) const
{
    if (!style().wraps)
        return static_cast<qreal>(m_text.lineBreaksBefore(offset));
    const TextMetrics before = m_text.metricsBefore(offset);
    // The mean of bytes and units: 1 for ASCII, 2 for a character of three bytes, such as an
    // ideograph.
    const auto columns = static_cast<qreal>(before.utf8Bytes + before.utf16Units) / 2;
    return static_cast<qreal>(before.lineBreaks()) + columns / m_columns;
}

qint64 TextViewport::offsetOfEstimatedRows(qreal rows) const
{
    qint64 low = 0;
    qint64 high = m_text.size();
    while (low < high) {
        const qint64 middle = low + (high - low) / 2;
        if (estimatedRows(middle) < rows)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

bool TextViewport::endIsVisible()
{
    Row row = topRow();
    qreal bottom = textTop() + style().rowHeight;
    while (bottom <= m_size.height() - kMargin + kTolerance) {
        if (!stepDown(row))
            return true;
        bottom += style().rowHeight;
    }
    return false;
}

bool TextViewport::fits()
{
    const auto limit =
        static_cast<int>((m_size.height() - 2 * kMargin + kTolerance) / style().rowHeight);
    constexpr int kDoubt = 4; // With more rows than that by estimate, no layout is made.
    if (m_text.metrics().lineBreaks() >= limit || estimatedRows(m_text.size()) > kDoubt * limit)
        return false;
    int rows = 0;
    for (std::optional segment = segments::at(m_text, 0); segment && rows <= limit;
         segment = segmentBelow(*segment))
        rows += rowCountOf(*segment);
    return rows <= limit;
}

TextViewport::ScrollRange TextViewport::scrollRange()
{
    if (fits())
        return {};
    const bool showsEnd = endIsVisible();
    const qreal rows = estimatedRows(m_text.size()) + 1;
    const qreal steps = stepsPerRow(rows);
    const qreal page = rowsPerPage();
    ScrollRange range;
    range.pageStep = std::max(1, static_cast<int>(page * steps));
    range.maximum = std::max(2, static_cast<int>((rows - page) * steps));
    const qreal top = estimatedRows(m_anchor) + m_pixel / style().rowHeight;
    const bool isAtStart = m_anchor == 0 && m_pixel == 0;
    range.value = std::clamp(static_cast<int>(top * steps), isAtStart ? 0 : 1, range.maximum - 1);
    if (showsEnd)
        range.value = range.maximum;
    return range;
}

void TextViewport::scrollToValue(int value, int maximum)
{
    if (value <= 0) {
        scrollToTop();
        return;
    }
    const qreal steps = stepsPerRow(estimatedRows(m_text.size()) + 1);
    const qint64 offset = value >= maximum ? m_text.size() : offsetOfEstimatedRows(value / steps);
    setAnchor(rowOfCaret({offset, false}), 0);
    clampToEnd();
}

} // namespace penwick
