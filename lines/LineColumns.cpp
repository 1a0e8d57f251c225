#include "lines/LineColumns.h"

#include "text/GraphemeClusters.h"
#include "text/TerminalColumns.h"

#include <algorithm>

namespace penwick {

namespace {

bool isKanaOrKanji(char16_t unit)
{
    return (unit >= 0x3041 && unit <= 0x3096) || (unit >= 0x30A1 && unit <= 0x30FA) ||
           (unit >= 0x4E00 && unit <= 0x9FFF);
}

bool isLatin(char16_t unit)
{
    return unit >= u' ' && unit < 0x0300;
}

/// True for units between any two of which a cluster ends. Only a shortcut.
bool isPlain(char16_t unit)
{
    return isLatin(unit) || isKanaOrKanji(unit);
}

/// The end of the cluster that starts at `start`.
qsizetype clusterEnd(std::u16string_view units, qsizetype start)
{
    const auto size = static_cast<qsizetype>(units.size());
    const auto at = [units](qsizetype index) { return units[static_cast<std::size_t>(index)]; };
    if (start + 1 >= size || (isPlain(at(start)) && isPlain(at(start + 1))))
        return start + 1;
    const qsizetype end = start + (QChar::isHighSurrogate(at(start)) ? 2 : 1);
    if (end >= size)
        return size;
    return clusters::isCertainBoundaryAt(units, static_cast<std::size_t>(end))
               ? end
               : clusters::following(units, start);
}

qint64 widthOf(QStringView cluster, qint64 column, int tabWidth)
{
    const char16_t first = cluster.front().unicode();
    if (first == u'\t')
        return tabWidth - column % tabWidth;
    if (cluster.size() == 1 && isPlain(first))
        return isLatin(first) ? 1 : 2;
    // Sequences of emoji and of Hangul letters have the width of one character.
    return std::clamp(terminalColumns(cluster), 1, 2);
}

ColumnStop advanced(QStringView units, ColumnStop from, ColumnStop limit, int tabWidth)
{
    const std::u16string_view view(units.utf16(), static_cast<std::size_t>(units.size()));
    while (from.offset < units.size()) {
        const qsizetype end = clusterEnd(view, from.offset);
        const QStringView cluster = units.sliced(from.offset, end - from.offset);
        const qint64 column = from.column + widthOf(cluster, from.column, tabWidth);
        if (column > limit.column || end > limit.offset)
            break;
        from = {end, column};
    }
    return from;
}

/// The end of a piece of a line that starts at `start`. It cuts no cluster.
qint64 pieceEnd(const Text &text, qint64 start, qint64 end)
{
    constexpr qint64 kPiece = 512;
    if (start + kPiece >= end)
        return end;
    const qint64 cut = text.clusterBoundaryAtOrBefore(start + kPiece);
    return cut > start ? cut : std::min(text.nextClusterBoundary(start), end);
}

} // namespace

ColumnStop lastStop(QStringView units, ColumnStop limit, int tabWidth)
{
    return advanced(units, {}, limit, tabWidth);
}

ColumnStop lastStop(const Text &text, TextRange line, ColumnStop limit, int tabWidth)
{
    ColumnStop stop;
    limit.offset = std::min(limit.offset, kColumnReach);
    while (stop.offset < line.length) {
        const qint64 start = line.location + stop.offset;
        const QString units = text.slice(start, pieceEnd(text, start, line.end()) - start);
        const ColumnStop next =
            advanced(units, {0, stop.column}, {limit.offset - stop.offset, limit.column}, tabWidth);
        stop = {stop.offset + next.offset, next.column};
        if (next.offset < units.size())
            break;
    }
    return stop;
}

} // namespace penwick
