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

/// Returns the number of characters from `start`, where a line starts, to `offset`.
qint64 charactersBetween(qint64 start, qint64 offset, const Text &text)
{
    return text.metricsBefore(offset).clusters - text.metricsBefore(start).clusters;
}

/// Returns the end of a line, before its line break.
/// \param count of the line breaks of the text up to the line's own.
qint64 endOfLine(qint64 count, const Text &text)
{
    if (count > text.metrics().lineBreaks())
        return text.size();
    const qint64 next = text.offsetAfterLineBreak(count);
    const bool isCrLf = next >= 2 && text.at(next - 1) == u'\n' && text.at(next - 2) == u'\r';
    return next - (isCrLf ? 2 : 1);
}

/// Returns the offset of the column in the line, or the line's end. Binary search: the line may be
/// long, so counting each cluster would be slow.
qint64 offsetOfColumn(qint64 column, qint64 start, qint64 end, const Text &text)
{
    qint64 low = start;
    qint64 high = end;
    while (low < high) {
        const qint64 middle = low + (high - low + 1) / 2;
        if (charactersBetween(start, middle, text) < column)
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

qint64 lineCountOf(const Text &text)
{
    return text.metrics().lineBreaks() + 1;
}

FoundPlace findPlace(const LinePlace &place, const Text &text)
{
    if (place.line > lineCountOf(text))
        return {text.size(), false, true};
    const qint64 start = text.offsetAfterLineBreak(place.line - 1);
    const qint64 end = endOfLine(place.line, text);
    const bool hasColumn = charactersBetween(start, end, text) + 1 >= place.column;
    return {hasColumn ? offsetOfColumn(place.column, start, end, text) : end, true, hasColumn};
}

} // namespace penwick
