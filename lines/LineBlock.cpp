#include "lines/LineBlock.h"

#include "text/Separators.h"

#include <algorithm>

namespace penwick {

namespace {

BlockLine firstLine(QStringView units)
{
    const auto isBreak = [](QChar unit) { return isSeparator(unit.unicode()); };
    const qsizetype end = std::find_if(units.begin(), units.end(), isBreak) - units.begin();
    const bool isPair = units.sliced(end).startsWith(u"\r\n");
    const qsizetype endLength = std::min<qsizetype>(units.size() - end, isPair ? 2 : 1);
    return {units.first(end), units.sliced(end, endLength)};
}

} // namespace

qint64 lineNumber(const Text &text, qint64 offset)
{
    const bool isInCrLf = offset > 0 && offset < text.size() && text.at(offset) == u'\n' &&
                          text.at(offset - 1) == u'\r';
    return text.lineBreaksBefore(isInCrLf ? offset - 1 : offset);
}

qint64 lineStart(const Text &text, qint64 offset)
{
    return text.offsetAfterLineBreak(lineNumber(text, offset));
}

LineSpan selectedLines(const Text &text, TextRange selection)
{
    const qint64 first = lineNumber(text, selection.location);
    qint64 last = lineNumber(text, selection.end());
    if (last > first && text.offsetAfterLineBreak(last) == selection.end())
        --last;
    return {first, last - first + 1};
}

TextRange rangeOf(const Text &text, LineSpan lines)
{
    return TextRange::between(text.offsetAfterLineBreak(lines.first),
                              text.offsetAfterLineBreak(lines.first + lines.count));
}

TextRange contentOfLine(const Text &text, qint64 line)
{
    TextRange range = rangeOf(text, {line, 1});
    if (line >= text.metrics().lineBreaks())
        return range;
    const bool isPair =
        range.length > 1 && text.at(range.end() - 1) == u'\n' && text.at(range.end() - 2) == u'\r';
    range.length -= isPair ? 2 : 1;
    return range;
}

bool isLineBlank(QChar unit)
{
    return unit == u'\t' || unit.category() == QChar::Separator_Space;
}

LineBlock::LineBlock(QString units, qint64 count)
    : m_units(std::move(units))
{
    m_lines.reserve(static_cast<std::size_t>(count));
    QStringView rest = m_units;
    while (this->count() < count) {
        m_lines.push_back(firstLine(rest));
        rest = rest.sliced(m_lines.back().content.size() + m_lines.back().end.size());
    }
}

BlockPlace LineBlock::placeAt(qint64 offset) const
{
    const auto next = std::upper_bound(
        m_lines.begin(), m_lines.end(), offset, [this](qint64 value, const BlockLine &line) {
            return value < startOf(line);
        });
    const BlockLine &line = *(next - 1);
    if (next == m_lines.end() && !line.end.isEmpty() && offset == m_units.size())
        return {count(), 0};
    return {next - m_lines.begin() - 1, offset - startOf(line)};
}

qint64 LineBlock::offsetOf(BlockPlace place) const
{
    if (place.line >= count())
        return m_units.size();
    const BlockLine &line = m_lines.at(static_cast<std::size_t>(place.line));
    return startOf(line) + std::clamp<qint64>(place.column, 0, line.content.size());
}

void LineWriter::add(QStringView content, QStringView end)
{
    const bool joins = content.isEmpty() && end == u"\n" &&
                       (m_units.isEmpty() ? m_followsCr : m_units.endsWith(u'\r'));
    m_units += content;
    m_units += joins ? QStringView(u"\r") : end;
}

} // namespace penwick
