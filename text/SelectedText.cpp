#include "text/SelectedText.h"

#include <algorithm>

namespace penwick {

TextRange SelectedText::selection() const
{
    return TextRange::between(std::min(anchor, caret), std::max(anchor, caret));
}

void SelectedText::select(qint64 newAnchor, qint64 newCaret)
{
    anchor = text.pairStart(std::clamp<qint64>(newAnchor, 0, text.size()));
    caret = text.pairStart(std::clamp<qint64>(newCaret, 0, text.size()));
}

void SelectedText::replace(TextRange range, const Text &replacement)
{
    const TextRange moved = selectionAfterReplacement(selection(), range, replacement.size());
    text = text.replaced(range.location, range.length, replacement);
    select(moved.location, moved.end());
}

TextRange selectionAfterReplacement(TextRange selection, TextRange range, qint64 newLength)
{
    const qint64 delta = newLength - range.length;
    const qint64 newEnd = range.location + newLength;
    const bool isInside = selection.location >= range.location && selection.end() <= range.end();
    const auto moved = [&](qint64 offset) {
        if (isInside)
            return newEnd;
        if (offset <= range.location)
            return offset;
        return offset >= range.end() ? offset + delta : newEnd;
    };
    return TextRange::between(moved(selection.location), moved(selection.end()));
}

qint64 sameLineAndColumn(const Text &from, qint64 offset, const Text &to)
{
    const qint64 line = from.lineBreaksBefore(offset);
    const qint64 column = offset - from.offsetAfterLineBreak(line);
    const qint64 start = to.offsetAfterLineBreak(line);
    const bool isLastLine = to.lineBreaksBefore(to.size()) <= line;
    const qint64 end =
        isLastLine ? to.size() : to.previousClusterBoundary(to.offsetAfterLineBreak(line + 1));
    return to.clusterBoundaryAtOrBefore(std::min(start + column, end));
}

} // namespace penwick
