#pragma once

#include "text/Text.h"

namespace penwick {

/// A stretch of one line that is laid out in one piece: a whole line, or a part of a huge one.
/// Offsets are UTF-16 code units of the text, 0-based.
struct TextSegment
{
    qint64 lineStart = 0;   ///< Start of the line that contains the segment.
    qint64 start = 0;       ///< First unit of the segment.
    qint64 end = 0;         ///< After its last unit; the line break is not part of it.
    qint64 breakLength = 0; ///< Units of the line break that follows: 1, 2 for CR LF, else 0.

    [[nodiscard]] qint64 length() const { return end - start; }

    /// Where the next segment begins; the text's size for the last one.
    [[nodiscard]] qint64 nextStart() const { return end + breakLength; }

    bool operator==(const TextSegment &) const = default;
};

/// A line of a text. Offsets as above.
struct TextLineBounds
{
    qint64 start = 0;
    qint64 end = 0;         ///< Before the line break.
    qint64 breakLength = 0; ///< 0 for the last line.

    [[nodiscard]] qint64 nextStart() const { return end + breakLength; }
};

/// Divides a text into segments. Lines end at every separator of the status bar's set; CR LF is one
/// line end. Nothing is stored: each call is O(log n).
namespace segments {

/// Nominal length of the segments of a huge line, in UTF-16 code units. A cut may move back to a
/// blank or a cluster boundary, so a segment can be up to half as long again.
constexpr qint64 kUnits = 2048;

/// Returns the line that contains `offset`. Between CR and LF, it is the line that they end.
[[nodiscard]] TextLineBounds lineAt(const Text &text, qint64 offset);
/// Returns the segment that contains `offset`. Between two segments of a line, it is the second; at
/// a line's end, the line's last one. `offset` may be the text's size.
[[nodiscard]] TextSegment at(const Text &text, qint64 offset);
[[nodiscard]] bool isFirst(const TextSegment &segment);
[[nodiscard]] bool isLast(const Text &text, const TextSegment &segment);
/// The neighbouring segments. Call `next` only when `isLast` is false, and `previous` only when
/// `isFirst` is false.
[[nodiscard]] TextSegment next(const Text &text, const TextSegment &segment);
[[nodiscard]] TextSegment previous(const Text &text, const TextSegment &segment);

} // namespace segments

} // namespace penwick
