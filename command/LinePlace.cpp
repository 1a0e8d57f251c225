#include "command/LinePlace.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// \param digits at least one.
qint64 numberFrom(const QString &digits)
{
    bool isSmall = false;
    const qint64 number = digits.toLongLong(&isSmall);
    return isSmall ? std::max<qint64>(number, 1) : std::numeric_limits<qint64>::max();
}

/// Returns the offset of the column in the line, or the line's end. Binary search: the line may be
/// long, so counting each cluster would be slow.
qint64 offsetOfColumn(qint64 column, qint64 start, qint64 end, const Text &text)
{
    qint64 low = start;
    qint64 high = end;
    while (low < high) {
        const qint64 middle = low + (high - low + 1) / 2;
        if (text.separatorLineAndColumn(middle).second < column)
            low = middle;
        else
            high = middle - 1;
    }
    return low == end ? end : text.clusterBoundaryAtOrBefore(low);
}

} // namespace

std::optional<LinePlace> parseLinePlace(const QString &typed)
{
    static const QRegularExpression pattern(u"^\\s*([0-9]+)\\s*(?::\\s*([0-9]+)?\\s*)?$"_s);
    const auto match = pattern.match(typed.normalized(QString::NormalizationForm_KC));
    if (!match.hasMatch())
        return std::nullopt;
    const QString column = match.captured(2);
    return LinePlace{numberFrom(match.captured(1)), column.isEmpty() ? 1 : numberFrom(column)};
}

FoundPlace findPlace(const LinePlace &place, const Text &text)
{
    const qint64 lineCount = text.metrics().separators + 1;
    if (place.line > lineCount)
        return {text.size(), false, true};
    const qint64 start = text.offsetAfterSeparator(place.line - 1);
    const bool isInCrLf =
        start > 0 && start < text.size() && text.at(start - 1) == u'\r' && text.at(start) == u'\n';
    if (isInCrLf)
        return {start + 1, true, place.column == 1};
    const qint64 end =
        place.line == lineCount ? text.size() : text.offsetAfterSeparator(place.line) - 1;
    const bool hasColumn = text.separatorLineAndColumn(end).second + 1 >= place.column;
    return {hasColumn ? offsetOfColumn(place.column, start, end, text) : end, true, hasColumn};
}

} // namespace penwick
