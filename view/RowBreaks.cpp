#include "view/RowBreaks.h"

#include "text/TerminalColumns.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace penwick::row_breaks {

namespace {

constexpr char16_t kFullWidthTilde = 0xFF5E;

/// True for kana, ideographs and the punctuation between them, U+2018 to U+2026 included.
bool isJapanese(QChar unit)
{
    constexpr char16_t kFirst = 0x2E80;
    return unit.unicode() >= kFirst || (unit.unicode() >= 0x2018 && unit.unicode() <= 0x2026);
}

char32_t characterAt(QStringView units, qsizetype index)
{
    const bool isPair = units[index].isHighSurrogate() && index + 1 < units.size();
    return isPair ? QChar::surrogateToUcs4(units[index], units[index + 1]) : units[index].unicode();
}

} // namespace

qsizetype unitsWithin(
    QStringView units, int columns, int tabWidth, int labelColumns, bool (*isLabelled)(char16_t))
{
    int column = 0;
    qsizetype index = 0;
    while (index < units.size()) {
        const char32_t character = characterAt(units, index);
        if (character == u'\t')
            column += tabWidth - column % tabWidth;
        else if (character <= 0xFFFF && isLabelled(static_cast<char16_t>(character)))
            column += labelColumns;
        else
            column += terminalColumns(character);
        if (column > columns)
            break;
        index += QChar::requiresSurrogates(character) ? 2 : 1;
    }
    return std::max<qsizetype>(1, index);
}

bool isForbidden(QStringView units, qsizetype index)
{
    return index > 0 && index < units.size() && units[index] == QChar(kFullWidthTilde) &&
           isJapanese(units[index - 1]);
}

qsizetype lastBreak(QStringView units, qsizetype index)
{
    if (index <= 0 || index >= units.size() || std::none_of(units.begin(), units.end(), isJapanese))
        return index;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, units.data(), units.size());
    finder.setPosition(index);
    qsizetype place = finder.isAtBoundary() ? index : finder.toPreviousBoundary();
    while (place > 0 && isForbidden(units, place))
        place = finder.toPreviousBoundary();
    return place > 0 ? place : index;
}

} // namespace penwick::row_breaks
