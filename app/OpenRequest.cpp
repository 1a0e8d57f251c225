#include "app/OpenRequest.h"

#include <algorithm>

namespace penwick {

namespace {

/// Returns the end of the line that starts at `start`, before its line break.
qint64 lineEnd(const Text &text, qint64 line, qint64 start, bool isLast)
{
    if (isLast)
        return text.size();
    const qint64 end = text.offsetAfterLineFeed(line) - 1;
    return end > start && text.at(end - 1) == u'\r' ? end - 1 : end;
}

} // namespace

qint64 offsetOf(const TextPlace &place, const Text &text)
{
    const qint64 lineFeeds = text.metrics().lineFeeds;
    const qint64 line = std::clamp<qint64>(place.line, 1, lineFeeds + 1);
    const qint64 start = text.offsetAfterLineFeed(line - 1);
    const qint64 end = lineEnd(text, line, start, line == lineFeeds + 1);
    // Binary search: the line may be long, so counting each cluster would be slow.
    qint64 low = start;
    qint64 high = end;
    while (low < high) {
        const qint64 middle = low + (high - low + 1) / 2;
        if (text.lineFeedLineAndColumn(middle).second < place.column)
            low = middle;
        else
            high = middle - 1;
    }
    return low == end ? end : text.clusterBoundaryAtOrBefore(low);
}

} // namespace penwick
