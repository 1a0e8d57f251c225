#include "text/TerminalColumns.h"

#include <QList>

#include <unicode/uchar.h>

namespace penwick {

using namespace Qt::StringLiterals;

int terminalColumns(char32_t character)
{
    if (character >= 0x20 && character < 0x7F)
        return 1;
    const auto point = static_cast<UChar32>(character);
    const auto category = U_GET_GC_MASK(point);
    if ((category & (U_GC_M_MASK | U_GC_CC_MASK | U_GC_CF_MASK)) != 0)
        return 0;
    const int width = u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

int terminalColumns(QStringView text)
{
    int columns = 0;
    for (const auto character : text.toUcs4())
        columns += terminalColumns(static_cast<char32_t>(character));
    return columns;
}

QString endWithinColumns(const QString &text, int columns)
{
    if (terminalColumns(text) <= columns)
        return text;
    const auto characters = text.toUcs4();
    int rest = columns - 1; // The ellipsis takes one.
    qsizetype start = characters.size();
    while (start > 0) {
        const int width = terminalColumns(static_cast<char32_t>(characters.at(start - 1)));
        if (width > rest)
            break;
        rest -= width;
        --start;
    }
    const QList<uint> end = characters.sliced(start);
    return u"…"_s +
           QString::fromUcs4(reinterpret_cast<const char32_t *>(end.constData()), end.size());
}

} // namespace penwick
