#include "code/CodeIndentation.h"

#include <algorithm>

namespace penwick::indentation {

namespace {

constexpr qsizetype kLevel = 4;
/// How many code units of a line are read, at most.
constexpr qint64 kReadLimit = 10'000;

bool isBlank(QChar unit)
{
    return unit == u' ' || unit == u'\t';
}

QString level()
{
    return QString(kLevel, u' ');
}

/// Returns the offset after the last line feed before `offset`.
qint64 startOfLine(const Text &text, qint64 offset)
{
    return text.offsetAfterLineFeed(text.metricsBefore(offset).lineFeeds);
}

/// Returns the end of the line at `offset`: before its line feed, or the end of the text.
qint64 lineEnd(const Text &text, qint64 offset)
{
    const qint64 feeds = text.metricsBefore(offset).lineFeeds;
    return feeds < text.metrics().lineFeeds ? text.offsetAfterLineFeed(feeds + 1) - 1 : text.size();
}

qsizetype leadingBlanks(QStringView line)
{
    return std::find_if_not(line.begin(), line.end(), isBlank) - line.begin();
}

/// Returns how many units at the end of `blanks` make up one level: a tab, or up to four spaces.
qsizetype lastLevel(QStringView blanks)
{
    if (blanks.endsWith(u'\t'))
        return 1;
    qsizetype count = 0;
    while (count < std::min(kLevel, blanks.size()) && blanks[blanks.size() - 1 - count] == u' ')
        ++count;
    return count;
}

QChar closerOf(QChar opener)
{
    switch (opener.unicode()) {
    case u'{':
        return u'}';
    case u'[':
        return u']';
    case u'(':
        return u')';
    default:
        return {};
    }
}

/// Returns the range of the lines that a selection touches, without the last line feed. A selection
/// that ends at the start of a line does not touch that line.
TextRange linesOf(const Text &text, TextRange selection)
{
    const qint64 start = startOfLine(text, selection.location);
    const bool endsAtStart =
        selection.length > 0 && startOfLine(text, selection.end()) == selection.end();
    const qint64 end = lineEnd(text, selection.end() - (endsAtStart ? 1 : 0));
    return {start, end - start};
}

bool spansLines(const Text &text, TextRange selection)
{
    return startOfLine(text, selection.end()) > selection.location;
}

template <class Change> Edit changeLines(const Text &text, TextRange selection, Change change)
{
    const TextRange range = linesOf(text, selection);
    QStringList lines = text.slice(range.location, range.length).split(u'\n');
    for (QString &line : lines)
        change(line);
    const QString replacement = lines.join(u'\n');
    if (spansLines(text, selection))
        return {range, replacement, {range.location, replacement.size()}};
    // A selection within one line moves with its text.
    const qint64 end = range.location + replacement.size();
    const qint64 start =
        std::clamp(selection.location + replacement.size() - range.length, range.location, end);
    return {range, replacement, {start, std::min(selection.length, end - start)}};
}

} // namespace

Edit lineBreak(const Text &text, TextRange selection, const IsBracket &isBracket)
{
    const qint64 start = startOfLine(text, selection.location);
    const QString before = text.slice(start, std::min(selection.location - start, kReadLimit));
    const qsizetype blanks = leadingBlanks(before);
    const QString outer = before.left(blanks);
    qsizetype last = before.size();
    while (last > blanks && isBlank(before[last - 1]))
        --last;
    const QChar closer = last > blanks ? closerOf(before[last - 1]) : QChar();
    const bool isDeeper = !closer.isNull() && isBracket(start + last - 1);
    const qint64 end = selection.end();
    const bool isClosed = isDeeper && end < text.size() && text.at(end) == closer.unicode();

    Edit edit{selection, u'\n' + outer, {}};
    if (isDeeper)
        edit.replacement += level();
    edit.selection = {selection.location + edit.replacement.size(), 0};
    if (isClosed)
        edit.replacement += u'\n' + outer;
    // The new indentation replaces the blanks after the caret. With only blanks before the caret
    // they stay, so that the text after them keeps its column.
    if (last > blanks)
        while (edit.range.end() < text.size() && isBlank(QChar(text.at(edit.range.end()))))
            ++edit.range.length;
    return edit;
}

std::optional<Edit> closingBrace(const Text &text, TextRange selection)
{
    const qint64 start = startOfLine(text, selection.location);
    const qint64 length = lineEnd(text, selection.location) - start;
    QString line = text.slice(start, std::min(length, kReadLimit));
    if (line.endsWith(u'\r'))
        line.chop(1);
    if (selection.length > 0 || line.isEmpty() || leadingBlanks(line) < line.size())
        return std::nullopt;
    const QString kept = line.chopped(lastLevel(line));
    return Edit{{start, line.size()}, kept + u'}', {start + kept.size() + 1, 0}};
}

Edit tab(const Text &text, TextRange selection)
{
    if (spansLines(text, selection))
        return indent(text, selection);
    return {selection, level(), {selection.location + kLevel, 0}};
}

Edit indent(const Text &text, TextRange selection)
{
    return changeLines(text, selection, [](QString &line) {
        if (!line.isEmpty() && line != u"\r")
            line.prepend(level());
    });
}

std::optional<Edit> unindent(const Text &text, TextRange selection)
{
    const Edit edit = changeLines(text, selection, [](QString &line) {
        const qsizetype blanks = leadingBlanks(line);
        const qsizetype count = lastLevel(QStringView(line).left(blanks));
        line.remove(blanks - count, count);
    });
    const bool changesNothing = edit.replacement.size() == edit.range.length;
    return changesNothing ? std::nullopt : std::optional(edit);
}

} // namespace penwick::indentation
