#include "view/LineWidths.h"

#include <algorithm>
#include <iterator>

namespace penwick {

namespace {

constexpr std::size_t kMostLines = 1024;

} // namespace

void LineWidths::reset(qreal columnWidth)
{
    m_lines.clear();
    m_columnWidth = columnWidth;
}

bool LineWidths::isPart(const Text &text, const TextSegment &segment)
{
    const bool endsLine = segment.breakLength > 0 || segment.end == text.size();
    return segment.start != segment.lineStart || !endsLine;
}

LineWidths::Line &LineWidths::lineFor(const Text &text, qint64 lineStart)
{
    const auto known = m_lines.find(lineStart);
    if (known != m_lines.end())
        return known->second;
    if (m_lines.size() >= kMostLines) { // Forget the line that is farthest away.
        const auto last = std::prev(m_lines.end());
        const bool lastIsFarther = last->first - lineStart > lineStart - m_lines.begin()->first;
        m_lines.erase(lastIsFarther ? last : m_lines.begin());
    }
    const TextLineBounds bounds = segments::lineAt(text, lineStart);
    const TextMetrics before = text.metricsBefore(lineStart);
    const TextMetrics after = text.metricsBefore(bounds.end);
    // The mean of bytes and units: 1 for ASCII, 2 for a character of three bytes, such as an
    // ideograph.
    const qint64 units = after.utf16Units - before.utf16Units;
    const qint64 twice = after.utf8Bytes - before.utf8Bytes + units;
    Line line;
    line.unitWidth = m_columnWidth * static_cast<qreal>(twice) /
                     static_cast<qreal>(std::max<qint64>(1, units)) / 2;
    return m_lines.emplace(lineStart, std::move(line)).first->second;
}

void LineWidths::setWidth(const Text &text, const TextSegment &segment, qreal width)
{
    if (!isPart(text, segment))
        return;
    Line &line = lineFor(text, segment.lineStart);
    Measured measured;
    measured.start = segment.start - segment.lineStart;
    measured.end = segment.end - segment.lineStart;
    measured.excess = width - static_cast<qreal>(segment.length()) * line.unitWidth;
    auto place = std::ranges::lower_bound(line.measured, measured.start, {}, &Measured::start);
    if (place == line.measured.end() || place->start != measured.start)
        place = line.measured.insert(place, measured);
    else if (place->end == measured.end && place->excess == measured.excess)
        return;
    else
        *place = measured;
    qreal sum = place == line.measured.begin() ? 0 : std::prev(place)->sum;
    for (; place != line.measured.end(); ++place)
        place->sum = sum += place->excess;
}

qreal LineWidths::left(const Text &text, const TextSegment &segment)
{
    const qint64 start = segment.start - segment.lineStart;
    if (start == 0)
        return 0;
    const Line &line = lineFor(text, segment.lineStart);
    const auto place = std::ranges::lower_bound(line.measured, start, {}, &Measured::start);
    const qreal excess = place == line.measured.begin() ? 0 : std::prev(place)->sum;
    return static_cast<qreal>(start) * line.unitWidth + excess;
}

qreal LineWidths::width(const Text &text, const TextLineBounds &bounds)
{
    const Line &line = lineFor(text, bounds.start);
    const qreal excess = line.measured.empty() ? 0 : line.measured.back().sum;
    return static_cast<qreal>(bounds.end - bounds.start) * line.unitWidth + excess;
}

TextSegment LineWidths::segmentAt(const Text &text, const TextSegment &segment, qreal x)
{
    if (!isPart(text, segment))
        return segment;
    const TextLineBounds bounds = segments::lineAt(text, segment.lineStart);
    qint64 low = 0; // In nominal segments.
    qint64 high = (bounds.end - bounds.start) / segments::kUnits;
    TextSegment found = segments::at(text, bounds.start);
    while (low < high) {
        const qint64 middle = high - (high - low) / 2;
        const TextSegment candidate = segments::at(text, bounds.start + middle * segments::kUnits);
        if (left(text, candidate) <= x) {
            found = candidate;
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    return found;
}

void LineWidths::forgetFrom(Line &line, const Text &text, qint64 lineStart, qint64 offset)
{
    auto &measured = line.measured;
    const auto isBefore = [&](const Measured &m) { return lineStart + m.end <= offset; };
    measured.erase(std::partition_point(measured.begin(), measured.end(), isBefore),
                   measured.end());
    // An edit may move cuts between segments shortly before it.
    constexpr std::ptrdiff_t kNear = 3;
    const auto isSame = [&](const Measured &m) {
        const TextSegment segment = segments::at(text, lineStart + m.start);
        return segment.lineStart == lineStart && segment.start == lineStart + m.start &&
               segment.end == lineStart + m.end;
    };
    const auto near = measured.end() - std::min(kNear, std::ssize(measured));
    measured.erase(std::find_if_not(near, measured.end(), isSame), measured.end());
}

void LineWidths::textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength)
{
    auto after = m_lines.upper_bound(offset);
    if (after != m_lines.begin())
        forgetFrom(std::prev(after)->second, text, std::prev(after)->first, offset);
    after = m_lines.erase(after, m_lines.upper_bound(offset + oldLength));
    std::map<qint64, Line> moved;
    while (after != m_lines.end()) {
        auto node = m_lines.extract(after++);
        node.key() += newLength - oldLength;
        moved.insert(moved.end(), std::move(node));
    }
    m_lines.merge(moved);
}

} // namespace penwick
