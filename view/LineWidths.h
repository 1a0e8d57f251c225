#pragma once

#include "view/TextSegments.h"

#include <map>
#include <vector>

namespace penwick {

/// Where the segments of huge lines stand when lines do not wrap. The segments of a line stand side
/// by side; those that were measured have their true width, the others one that is estimated from
/// their number of units. So measuring a segment moves those on its right, never one on its left.
///
/// Offsets are UTF-16 code units, 0-based, lengths logical pixels. No call costs more for a longer
/// line than O(log n) and the number of its measured segments.
class LineWidths final
{
public:
    /// Forgets all that was measured.
    /// \param columnWidth of one ASCII character.
    void reset(qreal columnWidth);
    /// Notes the width of a segment. Ignores one that is a whole line.
    void setWidth(const Text &text, const TextSegment &segment, qreal width);
    /// Distance between the starts of a segment and of its line.
    [[nodiscard]] qreal left(const Text &text, const TextSegment &segment);
    /// Width of a huge line.
    [[nodiscard]] qreal width(const Text &text, const TextLineBounds &line);
    /// The segment that covers `x`, a distance from the line's start; for one outside the line, its
    /// first or last segment.
    /// \param segment any of the line.
    [[nodiscard]] TextSegment segmentAt(const Text &text, const TextSegment &segment, qreal x);
    /// Call this after each edit, with the text that it led to. What was measured before the edit
    /// and in other lines is kept.
    void textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength);

    /// True when the segment is not a whole line.
    [[nodiscard]] static bool isPart(const Text &text, const TextSegment &segment);

private:
    /// A measured segment. `start` and `end` are relative to the line.
    struct Measured
    {
        qint64 start = 0;
        qint64 end = 0;
        qreal excess = 0; // Its true width minus the estimated one.
        qreal sum = 0;    // Of the excess from the line's start up to this segment's end.
    };

    struct Line
    {
        qreal unitWidth = 1; // Estimated mean. Kept through edits, so that nothing jumps.
        std::vector<Measured> measured; // Ascending.
    };

    [[nodiscard]] Line &lineFor(const Text &text, qint64 lineStart);
    static void forgetFrom(Line &line, const Text &text, qint64 lineStart, qint64 offset);

    std::map<qint64, Line> m_lines; // By the lines' starts.
    qreal m_columnWidth = 1;
};

} // namespace penwick
