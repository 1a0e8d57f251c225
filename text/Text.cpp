#include "text/Text.h"

#include "text/ClusterSearch.h"
#include "text/TextBuilder.h"
#include "text/TextTree.h"
#include "text/Utf8.h"

#include <algorithm>

namespace penwick {

Text::Text() noexcept = default;
Text::Text(const Text &) noexcept = default;
Text::Text(Text &&) noexcept = default;
Text &Text::operator=(const Text &) noexcept = default;
Text &Text::operator=(Text &&) noexcept = default;
Text::~Text() = default;

Text::Text(NodePtr root) noexcept
    : m_root(std::move(root))
{
}

Text::Text(QStringView utf16)
{
    TextBuilder builder;
    builder.appendUtf16({utf16.utf16(), static_cast<std::size_t>(utf16.size())});
    m_root = builder.finishNode();
}

tl::expected<Text, Text::Utf8Error> Text::fromUtf8(QByteArrayView bytes)
{
    Utf8Reader reader;
    reader.append(bytes);
    return reader.finish();
}

bool Text::forEachUtf8Block(const std::function<bool(QByteArrayView)> &visit) const
{
    bool shouldContinue = true;
    forEachChunk(0, size(), [&](const TextChunkView &chunk) {
        if (chunk.ascii) {
            shouldContinue = visit(QByteArrayView(chunk.ascii, chunk.length));
        } else {
            // A chunk never splits a surrogate pair, so each can be encoded alone.
            shouldContinue = visit(QStringView(chunk.utf16, chunk.length).toUtf8());
        }
        return shouldContinue;
    });
    return shouldContinue;
}

QByteArray Text::toUtf8() const
{
    QByteArray bytes;
    bytes.reserve(metrics().utf8Bytes);
    forEachUtf8Block([&](QByteArrayView block) {
        bytes.append(block);
        return true;
    });
    return bytes;
}

QString Text::toString() const
{
    return slice(0, size());
}

qint64 Text::size() const
{
    return m_root ? m_root->size() : 0;
}

TextMetrics Text::metrics() const
{
    return m_root ? m_root->metrics() : TextMetrics();
}

TextMetrics Text::metricsBefore(qint64 offset) const
{
    if (offset <= 0)
        return {};
    return offset < size() ? tree::metricsBefore(m_root.data(), offset) : metrics();
}

qint64 Text::lineBreaksBefore(qint64 offset) const
{
    if (offset <= 0)
        return 0;
    return offset < size() ? tree::lineBreaksBefore(m_root.data(), offset) : metrics().lineBreaks();
}

char16_t Text::at(qint64 offset) const
{
    Q_ASSERT(offset >= 0 && offset < size());
    const auto [leaf, index] = tree::findLeaf(m_root.data(), offset);
    return leaf->unitAt(index);
}

QString Text::slice(qint64 offset, qint64 length) const
{
    QString result;
    forEachChunk(offset, length, [&](const TextChunkView &chunk) {
        if (result.isEmpty())
            result.reserve(static_cast<qsizetype>(std::min(length, size())));
        if (chunk.ascii)
            result.append(QLatin1StringView(chunk.ascii, chunk.length));
        else
            result.append(QStringView(chunk.utf16, chunk.length));
        return true;
    });
    return result;
}

Text Text::mid(qint64 offset, qint64 length) const
{
    const qint64 start = std::clamp<qint64>(offset, 0, size());
    const qint64 end = std::clamp<qint64>(length, 0, size() - start) + start;
    if (start == end)
        return {}; // An empty range stays empty, also inside a surrogate pair.
    const auto [head, rest] = TextNode::split(m_root, pairStart(start));
    return Text(TextNode::split(rest, pairEnd(end) - pairStart(start)).first);
}

qint64 Text::pairStart(qint64 offset) const
{
    if (offset <= 0 || offset >= size())
        return offset;
    return QChar::isLowSurrogate(at(offset)) ? offset - 1 : offset;
}

qint64 Text::pairEnd(qint64 offset) const
{
    if (offset <= 0 || offset >= size())
        return offset;
    return QChar::isLowSurrogate(at(offset)) ? offset + 1 : offset;
}

Text Text::replaced(qint64 offset, qint64 length, const Text &insertion) const
{
    const qint64 from = std::clamp<qint64>(offset, 0, size());
    const qint64 start = pairStart(from);
    const qint64 end = length > 0 ? pairEnd(from + std::min(length, size() - from)) : start;
    const auto [head, rest] = TextNode::split(m_root, start);
    const auto [removed, tail] = TextNode::split(rest, end - start);
    return Text(TextNode::concat(TextNode::concat(head, insertion.m_root), tail));
}

qint64 Text::offsetAfterLineFeed(qint64 count) const
{
    return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::LineFeed);
}

qint64 Text::offsetAfterLineBreak(qint64 count) const
{
    return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::LineBreak);
}

qint64 Text::offsetAfterSeparator(qint64 count) const
{
    return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::Separator);
}

qint64 Text::offsetAfterLineEnd(LineEnd kind, qint64 count) const
{
    switch (kind) {
    case LineEnd::LineFeed:
        return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::LoneLineFeed);
    case LineEnd::CrLf:
        return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::CrLf);
    case LineEnd::CarriageReturn:
        return tree::offsetAfterBreak(m_root.data(), count, tree::BreakKind::LoneCarriageReturn);
    }
    return size();
}

Text Text::withLineEnds(LineEnd lineEnd) const
{
    return m_root ? Text(tree::withLineEnds(m_root, lineEnd)) : Text();
}

std::pair<qint64, qint64> Text::separatorLineAndColumn(qint64 offset) const
{
    const TextMetrics before = metricsBefore(offset);
    const TextMetrics beforeLine = metricsBefore(offsetAfterSeparator(before.separators));
    // Between CR and LF, both measurements count the CR as a cluster of its own.
    return {before.separators + 1, before.clusters - beforeLine.clusters};
}

std::pair<qint64, qint64> Text::lineFeedLineAndColumn(qint64 offset) const
{
    const TextMetrics before = metricsBefore(offset);
    const TextMetrics beforeLine = metricsBefore(offsetAfterLineFeed(before.lineFeeds));
    return {before.lineFeeds, before.clusters - beforeLine.clusters};
}

qint64 Text::previousClusterBoundary(qint64 offset) const
{
    return clusters::previousBoundary(*this, offset);
}

qint64 Text::nextClusterBoundary(qint64 offset) const
{
    return clusters::nextBoundary(*this, offset);
}

qint64 Text::clusterBoundaryAtOrBefore(qint64 offset) const
{
    return clusters::boundaryAtOrBefore(*this, offset);
}

std::optional<qint64> Text::clusterBoundaryWithin(qint64 offset, qint64 reach) const
{
    return clusters::boundaryWithin(*this, offset, reach);
}

void Text::forEachChunk(qint64 offset,
                        qint64 length,
                        const std::function<bool(const TextChunkView &)> &visit) const
{
    qint64 start = std::clamp<qint64>(offset, 0, size());
    const qint64 end = start + std::clamp<qint64>(length, 0, size() - start);
    while (start < end) {
        const auto [leaf, index] = tree::findLeaf(m_root.data(), start);
        TextChunkView chunk;
        chunk.length = std::min(leaf->size() - index, end - start);
        if (leaf->isAscii())
            chunk.ascii = leaf->ascii().data() + index;
        else
            chunk.utf16 = leaf->utf16().data() + index;
        if (!visit(chunk))
            return;
        start += chunk.length;
    }
}

bool Text::operator==(const Text &other) const
{
    if (m_root == other.m_root)
        return true;
    return metrics() == other.metrics() && tree::isSameText(m_root.data(), other.m_root.data());
}

} // namespace penwick
