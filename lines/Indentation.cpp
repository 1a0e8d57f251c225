#include "lines/Indentation.h"

#include "lines/LineBlock.h"
#include "lines/LineColumns.h"

#include <algorithm>

namespace penwick {

namespace {

// The part of a line that the keys look at, in code units.
constexpr qint64 kReach = 1000;

qsizetype lengthOfIndentation(QStringView line)
{
    qsizetype length = 0;
    while (length < line.size() && (line[length] == u' ' || line[length] == u'\t'))
        ++length;
    return length;
}

} // namespace

QString tabUnits(const Text &text, qint64 offset, const Indentation &style)
{
    if (!style.insertsBlanks)
        return QString(u'\t');
    const qint64 start = lineStart(text, offset);
    const bool isNear = offset - start <= kReach;
    const qint64 column =
        isNear ? columnAfter(text.slice(start, offset - start), style.tabWidth) : 0;
    return QString(style.tabWidth - column % style.tabWidth, u' ');
}

QString keptIndentation(const Text &text, qint64 offset)
{
    const qint64 start = lineStart(text, offset);
    const QString units = text.slice(start, std::min(offset - start, kReach));
    qsizetype length = 0;
    while (length < units.size() && isLineBlank(units[length]))
        ++length;
    return units.first(length);
}

QString indentedLine(QStringView line, const Indentation &style)
{
    if (line.isEmpty())
        return {};
    const QString level = style.insertsBlanks ? QString(style.tabWidth, u' ') : QString(u'\t');
    return level + line.toString();
}

QString outdentedLine(QStringView line, const Indentation &style)
{
    qsizetype length = 0;
    while (length < line.size() && length < style.tabWidth && line[length] == u' ')
        ++length;
    if (length < style.tabWidth && length < line.size() && line[length] == u'\t')
        ++length;
    return line.sliced(length).toString();
}

QString lineWithTabs(QStringView line, const Indentation &style)
{
    const qsizetype length = lengthOfIndentation(line);
    const qint64 width = columnAfter(line.first(length), style.tabWidth);
    return QString(width / style.tabWidth, u'\t') + QString(width % style.tabWidth, u' ') +
           line.sliced(length).toString();
}

QString lineWithSpaces(QStringView line, const Indentation &style)
{
    const qsizetype length = lengthOfIndentation(line);
    return QString(columnAfter(line.first(length), style.tabWidth), u' ') +
           line.sliced(length).toString();
}

} // namespace penwick
