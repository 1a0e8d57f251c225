#include "macro/engine/LineEdits.h"

#include "text/TextBuilder.h"

#include <algorithm>

namespace penwick {

namespace {

qint64 lineCountOf(const Text &text)
{
    return text.metrics().lineFeeds + 1;
}

/// Appends a copy of the text.
void append(TextBuilder &builder, const Text &text)
{
    text.forEachChunk(0, text.size(), [&builder](const TextChunkView &chunk) {
        const auto length = static_cast<std::size_t>(chunk.length);
        if (chunk.ascii != nullptr)
            builder.appendAscii({chunk.ascii, length});
        else
            builder.appendUtf16({chunk.utf16, length});
        return true;
    });
}

/// Shares the long ones: copying them takes time, and adding many short ones by sharing would.
Text joined(const QList<Text> &lines)
{
    constexpr qint64 kLong = 65536; // UTF-16 code units.
    Text result;
    TextBuilder builder;
    for (const Text &line : lines) {
        if (&line != &lines.front())
            builder.appendAscii("\n");
        if (line.size() < kLong)
            append(builder, line);
        else
            result = result.appended(builder.finish()).appended(line);
    }
    return result.appended(builder.finish());
}

// Returns the end of the line's content: before its line feed, or the end of the text.
qint64 lineEnd(const Text &text, qint64 line)
{
    const bool isLast = line + 1 == lineCountOf(text);
    return isLast ? text.size() : text.offsetAfterLineFeed(line + 1) - 1;
}

} // namespace

std::optional<Text> textWithLinesReplaced(const Text &text, const ReplaceLines &edit)
{
    const qint64 lineCount = lineCountOf(text);
    if (edit.startLine < 0 || edit.startLine >= edit.endLine || edit.endLine > lineCount)
        return std::nullopt;
    qint64 start = text.offsetAfterLineFeed(edit.startLine);
    qint64 end = lineEnd(text, edit.endLine - 1);
    if (edit.lines.isEmpty()) {
        // No line is inserted, so one of the line feeds around the range is removed too.
        if (edit.endLine < lineCount)
            ++end;
        else if (edit.startLine > 0)
            --start;
    }
    return text.replaced(start, end - start, joined(edit.lines));
}

qint64 offsetForLineColumn(qint64 line, qint64 column, const Text &text)
{
    if (line < 0 || line >= lineCountOf(text))
        return text.metrics().clusters;
    const qint64 start = text.offsetAfterLineFeed(line);
    // Each line is counted on its own: a CR before its line feed is a cluster here, while the text
    // as a whole counts CR LF as one cluster.
    const TextMetrics before = text.metricsBefore(start);
    const Text content = text.mid(start, lineEnd(text, line) - start);
    return before.clusters + before.crLfPairs +
           std::clamp<qint64>(column, 0, content.metrics().clusters);
}

} // namespace penwick
