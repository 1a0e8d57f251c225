#include "command/Headings.h"

#include "text/Separators.h"

#include <algorithm>

namespace penwick {

namespace {

constexpr qint64 kStep = 65'536; // UTF-16 code units.
constexpr qint64 kLongest = 200; // Of a heading, in UTF-16 code units.
constexpr qsizetype kMostHashes = 6;
constexpr qsizetype kMostDigits = 8;

bool endsLine(QChar c)
{
    return isSeparator(c.unicode());
}

bool isNumbered(QStringView line)
{
    constexpr QStringView kDigits = u"〇零一二三四五六七八九十百千";
    constexpr QStringView kUnits = u"章節編部話回巻幕";
    if (!line.startsWith(u'第'))
        return false;
    qsizetype end = 1;
    while (end < line.size() && end <= kMostDigits &&
           (line.at(end).isDigit() || kDigits.contains(line.at(end))))
        ++end;
    return end > 1 && end < line.size() && kUnits.contains(line.at(end));
}

bool hasHashes(QStringView line)
{
    const auto end = std::find_if(line.begin(), line.end(), [](QChar c) { return c != u'#'; });
    const qsizetype count = end - line.begin();
    return count > 0 && count <= kMostHashes && end != line.end() &&
           (end->isSpace() || end->unicode() > 0x7F);
}

} // namespace

bool isHeading(QStringView line)
{
    constexpr QStringView kMarks = u"■□◆◇";
    const QStringView start = line.trimmed();
    return !start.isEmpty() &&
           (kMarks.contains(start.front()) || hasHashes(start) || isNumbered(start));
}

QList<Heading> HeadingScan::step()
{
    QList<Heading> found;
    // Beyond the step, so that a heading at its end is whole.
    const QString part = m_text.slice(m_offset, kStep + kLongest);
    const qsizetype end = std::min<qsizetype>(kStep, part.size());
    for (qsizetype at = 0; at < end; ++at) {
        if (m_isAtLineStart) {
            const QStringView rest = QStringView(part).mid(at, kLongest);
            const QStringView line(rest.begin(), std::find_if(rest.begin(), rest.end(), endsLine));
            if (isHeading(line))
                found.append({m_offset + at, m_line, line.trimmed().toString()});
        }
        const QChar unit = part.at(at);
        m_isAtLineStart = endsLine(unit);
        const bool isPair = m_isAfterCr && unit == u'\n'; // Counted at its CR.
        m_line += m_isAtLineStart && !isPair ? 1 : 0;
        m_isAfterCr = unit == u'\r';
    }
    m_offset += end;
    return found;
}

} // namespace penwick
