#include "view/TextSegments.h"

#include "view/RowBreaks.h"

#include <QChar>

#include <algorithm>

namespace penwick::segments {

namespace {

/// How far back from its nominal place a cut may move to follow a blank, in UTF-16 code units.
constexpr qint64 kBlankReach = 256;
/// How far back in Japanese text it may move to a place where a row may begin. UTF-16 code units.
constexpr qint64 kBreakReach = 32;
/// UTF-16 code units after a cut that decide whether a row may begin there.
constexpr qint64 kUnitsAfterBreak = 2;
/// A cluster longer than this is cut like other text. UTF-16 code units.
constexpr qint64 kClusterReach = 1024;

/// Returns where the `index`th segment of a huge line begins. Depends only on the text near the
/// nominal place, so that a distant edit in the line can do no more than shift it.
qint64 cutAt(const Text &text, qint64 lineStart, qint64 lineEnd, qint64 index)
{
    const qint64 nominal = lineStart + index * kUnits;
    if (index == 0)
        return lineStart;
    if (nominal >= lineEnd)
        return lineEnd;
    const QString before = text.slice(nominal - kBlankReach, kBlankReach);
    const qsizetype blank = before.lastIndexOf(u' ');
    const qint64 afterBlank = nominal - kBlankReach + blank + 1;
    // A combining mark may follow the blank; the cut would then divide a cluster.
    if (blank >= 0 && text.clusterBoundaryWithin(afterBlank, kClusterReach) == afterBlank)
        return afterBlank;
    const auto boundary = text.clusterBoundaryWithin(nominal, kClusterReach);
    if (!boundary)
        return text.pairStart(nominal);
    const qint64 around = *boundary - kBreakReach;
    const QString units = text.slice(around, kBreakReach + kUnitsAfterBreak);
    const qint64 place = around + row_breaks::lastBreak(units, kBreakReach);
    return text.clusterBoundaryWithin(place, kClusterReach) == place ? place : *boundary;
}

} // namespace

TextLineBounds lineAt(const Text &text, qint64 offset)
{
    // An offset between CR and LF is inside the line break.
    if (offset > 0 && offset < text.size() && text.at(offset) == u'\n' &&
        text.at(offset - 1) == u'\r')
        --offset;
    const qint64 breaks = text.lineBreaksBefore(offset);
    TextLineBounds line;
    line.start = text.offsetAfterLineBreak(breaks);
    line.end = text.offsetAfterLineBreak(breaks + 1);
    if (breaks < text.metrics().lineBreaks()) {
        const bool isPair = line.end - line.start >= 2 && text.at(line.end - 1) == u'\n' &&
                            text.at(line.end - 2) == u'\r';
        line.breakLength = isPair ? 2 : 1;
        line.end -= line.breakLength;
    }
    return line;
}

TextSegment at(const Text &text, qint64 offset)
{
    offset = std::clamp<qint64>(offset, 0, text.size());
    const TextLineBounds line = lineAt(text, offset);
    if (line.end - line.start <= kUnits)
        return {line.start, line.start, line.end, line.breakLength};
    // The line's end belongs to its last segment, even if that segment is full.
    qint64 index = (std::min(offset, line.end - 1) - line.start) / kUnits;
    qint64 start = cutAt(text, line.start, line.end, index);
    qint64 end = cutAt(text, line.start, line.end, index + 1);
    // A cut may lie before its nominal place, so the offset may be in the next segment.
    while (end <= offset && end < line.end) {
        ++index;
        start = end;
        end = cutAt(text, line.start, line.end, index + 1);
    }
    return {line.start, start, end, end == line.end ? line.breakLength : 0};
}

bool isFirst(const TextSegment &segment)
{
    return segment.start == 0;
}

bool isLast(const Text &text, const TextSegment &segment)
{
    // After a final line break there is one more, empty line.
    return segment.end == text.size() && segment.breakLength == 0;
}

TextSegment next(const Text &text, const TextSegment &segment)
{
    return at(text, segment.nextStart());
}

TextSegment previous(const Text &text, const TextSegment &segment)
{
    return at(text, segment.start - 1);
}

} // namespace penwick::segments
