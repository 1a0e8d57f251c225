#include "code/JavaScriptDecoration.h"

#include <QPalette>

#include <algorithm>
#include <limits>

namespace penwick {

namespace {

/// Text after this many units of a line is shown plain: such a line is generated, and reading all
/// of it at each keystroke would be slow.
constexpr qint64 kLongestLine = 10'000;

} // namespace

JavaScriptDecoration::JavaScriptDecoration()
    : m_lines([this](qint64 number) { return line(number); })
    , m_colors(QPalette())
{
}

QString JavaScriptDecoration::line(qint64 number) const
{
    const qint64 start = m_text.offsetAfterLineBreak(number);
    const qint64 length = m_text.offsetAfterLineBreak(number + 1) - start;
    QString units = m_text.slice(start, std::min(length, kLongestLine));
    if (length > kLongestLine)
        units += u'\n'; // Ends a string that was cut.
    return units;
}

void JavaScriptDecoration::textChanged(const Text &text,
                                       qint64 offset,
                                       qint64 oldLength,
                                       qint64 newLength)
{
    // One unit more on either side: a CR there and an LF here form one line break.
    const qint64 before = std::max<qint64>(0, offset - 1);
    const qint64 first = text.lineBreaksBefore(before);
    const qint64 oldLast = m_text.lineBreaksBefore(std::min(m_text.size(), offset + oldLength + 1));
    const qint64 newLast = text.lineBreaksBefore(std::min(text.size(), offset + newLength + 1));
    const bool isOtherText = offset == 0 && oldLength == m_text.size();
    m_text = text;
    if (isOtherText)
        m_lines.reset();
    else
        m_lines.linesChanged(first, oldLast - first + 1, newLast - first + 1);
    m_errorLine.reset();
    ++m_edits;
}

void JavaScriptDecoration::paletteChanged(const QPalette &palette)
{
    m_colors = CodeColors(palette);
}

quint64 JavaScriptDecoration::colorKey(const TextSegment &segment)
{
    const int state = m_lines.stateNumberAt(m_text.lineBreaksBefore(segment.lineStart));
    const bool isWholeLine = segment.start == segment.lineStart &&
                             (segment.breakLength > 0 || segment.end == m_text.size());
    // The tokens in a part of a line depend on the rest of the line, so each edit changes the key.
    return static_cast<quint64>(state) + (isWholeLine ? 0 : m_edits << 32U);
}

QList<JavaScriptToken> JavaScriptDecoration::tokensOf(qint64 number)
{
    JavaScriptState state = m_lines.stateAt(number);
    return tokenizeJavaScript(line(number), state);
}

QList<TextColorRange> JavaScriptDecoration::colors(const TextSegment &segment)
{
    QList<TextColorRange> ranges;
    const qint64 first = segment.start - segment.lineStart;
    for (const JavaScriptToken &token : tokensOf(m_text.lineBreaksBefore(segment.lineStart))) {
        const QColor color = m_colors.colorOf(token.kind);
        const qint64 start = std::max<qint64>(token.start - first, 0);
        const qint64 end = std::min<qint64>(token.end() - first, segment.length());
        if (color.isValid() && start < end)
            ranges.append({static_cast<int>(start), static_cast<int>(end - start), color});
    }
    return ranges;
}

QColor JavaScriptDecoration::background(const TextSegment &segment) const
{
    const bool isError = m_errorLine && segment.start >= m_errorStart && segment.start < m_errorEnd;
    return isError ? m_colors.errorLine : QColor();
}

void JavaScriptDecoration::setErrorLine(std::optional<qint64> line)
{
    m_errorLine = line;
    if (!line)
        return;
    m_errorStart = m_text.offsetAfterLineFeed(*line);
    m_errorEnd = *line < m_text.metrics().lineFeeds ? m_text.offsetAfterLineFeed(*line + 1)
                                                    : std::numeric_limits<qint64>::max();
}

bool JavaScriptDecoration::isPunctuation(qint64 offset)
{
    const qint64 number = m_text.lineBreaksBefore(offset);
    const qint64 index = offset - m_text.offsetAfterLineBreak(number);
    const QList<JavaScriptToken> tokens = tokensOf(number);
    return std::any_of(tokens.begin(), tokens.end(), [index](const JavaScriptToken &token) {
        return token.kind == JavaScriptToken::Kind::Punctuation && token.start <= index &&
               index < token.end();
    });
}

} // namespace penwick
