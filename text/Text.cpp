#include "text/Text.h"

#include "text/GraphemeClusters.h"
#include "text/Separators.h"
#include "text/TextBuilder.h"
#include "text/TextNode.h"
#include "text/Utf8.h"

#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <cstring>

namespace penwick {

namespace {

std::u16string_view viewOf(QStringView string)
{
    return {string.utf16(), static_cast<std::size_t>(string.size())};
}

/// A leaf and the offset of its first unit in the whole text.
struct LeafPosition
{
    const TextNode *leaf = nullptr;
    qint64 start = 0;
};

/// Returns the leaf that holds the unit at `offset`, or the last leaf when `offset` is the size of
/// the text.
LeafPosition findLeaf(const TextNode *node, qint64 offset)
{
    qint64 start = 0;
    while (!node->isLeaf()) {
        const qint64 leftSize = node->left()->size();
        if (offset - start < leftSize) {
            node = node->left().data();
        } else {
            start += leftSize;
            node = node->right().data();
        }
    }
    return {node, start};
}

/// Walks the leaves of a tree from left to right.
class LeafWalker final
{
public:
    explicit LeafWalker(const TextNode *root)
    {
        if (root)
            descend(root);
    }

    [[nodiscard]] const TextNode *leaf() const { return m_leaf; }

    void advance()
    {
        m_leaf = nullptr;
        if (m_pending.isEmpty())
            return;
        const TextNode *next = m_pending.last();
        m_pending.removeLast();
        descend(next);
    }

private:
    void descend(const TextNode *node)
    {
        while (!node->isLeaf()) {
            m_pending.append(node->right().data());
            node = node->left().data();
        }
        m_leaf = node;
    }

    const TextNode *m_leaf = nullptr;
    QVarLengthArray<const TextNode *, 64> m_pending;
};

enum class BreakKind { LineFeed, LineBreak, Separator };

qint64 breaksIn(const TextMetrics &metrics, BreakKind kind)
{
    switch (kind) {
    case BreakKind::LineFeed:
        return metrics.lineFeeds;
    case BreakKind::LineBreak:
        return metrics.lineBreaks();
    case BreakKind::Separator:
        return metrics.separators;
    }
    return 0;
}

// The two scans below run at every caret move. They are templates over the unit type of a leaf, so
// that they need not check it for each unit.

/// Returns the index just after the `count`th break in `units`, or their number when there are
/// fewer breaks.
template <typename Units> qint64 indexAfterBreak(Units units, qint64 count, BreakKind kind)
{
    const auto *const end = units.data() + units.size();
    for (const auto *unit = units.data(); unit != end; ++unit) {
        const auto value = static_cast<char16_t>(*unit);
        const bool isBreak = kind == BreakKind::LineFeed ? value == u'\n' : isSeparator(value);
        if (!isBreak)
            continue;
        const bool isFirstOfPair = value == u'\r' && unit + 1 != end && unit[1] == '\n';
        if (kind == BreakKind::LineBreak && isFirstOfPair)
            continue;
        if (--count == 0)
            return unit + 1 - units.data();
    }
    return static_cast<qint64>(units.size());
}

/// Returns the number of line breaks in `units`, as if they were a whole text.
template <typename Units> qint64 lineBreaksAmong(Units units)
{
    qint64 breaks = 0;
    char16_t previous = 0;
    for (const auto unit : units) {
        const auto value = static_cast<char16_t>(unit);
        if (isSeparator(value))
            breaks += value == u'\n' && previous == u'\r' ? 0 : 1;
        previous = value;
    }
    return breaks;
}

qint64 offsetAfterBreak(const TextNode *node, qint64 count, BreakKind kind)
{
    if (!node || count <= 0)
        return 0;
    if (count > breaksIn(node->metrics(), kind))
        return node->size();
    qint64 start = 0;
    while (!node->isLeaf()) {
        const qint64 leftBreaks = breaksIn(node->left()->metrics(), kind);
        if (count <= leftBreaks) {
            node = node->left().data();
        } else {
            count -= leftBreaks;
            start += node->left()->size();
            node = node->right().data();
        }
    }
    return start + (node->isAscii() ? indexAfterBreak(node->ascii(), count, kind)
                                    : indexAfterBreak(node->utf16(), count, kind));
}

bool sameUnits(const TextNode &a, qint64 aStart, const TextNode &b, qint64 bStart, qint64 length)
{
    const auto size = static_cast<std::size_t>(length);
    if (a.isAscii() && b.isAscii())
        return std::memcmp(a.ascii().data() + aStart, b.ascii().data() + bStart, size) == 0;
    if (!a.isAscii() && !b.isAscii()) {
        return std::memcmp(a.utf16().data() + aStart,
                           b.utf16().data() + bStart,
                           size * sizeof(char16_t)) == 0;
    }
    for (qint64 i = 0; i < length; ++i)
        if (a.unitAt(aStart + i) != b.unitAt(bStart + i))
            return false;
    return true;
}

bool sameText(const TextNode *a, const TextNode *b)
{
    LeafWalker left(a);
    LeafWalker right(b);
    qint64 leftStart = 0;
    qint64 rightStart = 0;
    while (left.leaf() && right.leaf()) {
        const qint64 length =
            std::min(left.leaf()->size() - leftStart, right.leaf()->size() - rightStart);
        const bool isShared = left.leaf() == right.leaf() && leftStart == rightStart;
        if (!isShared && !sameUnits(*left.leaf(), leftStart, *right.leaf(), rightStart, length))
            return false;
        leftStart += length;
        rightStart += length;
        if (leftStart == left.leaf()->size()) {
            left.advance();
            leftStart = 0;
        }
        if (rightStart == right.leaf()->size()) {
            right.advance();
            rightStart = 0;
        }
    }
    return !left.leaf() && !right.leaf();
}

/// A copy of a stretch of a text, and the offset of its start.
struct Window
{
    QString units;
    qint64 start = 0;
};

/// True when a cluster certainly ends before `units[index]`. False inside a surrogate pair, and
/// where a pair next to the index is cut off by an end of `units`: its code point is unknown.
bool isCertainBoundaryAt(std::u16string_view units, std::size_t index)
{
    const char16_t before = units[index - 1];
    const char16_t after = units[index];
    if (QChar::isLowSurrogate(after) || (QChar::isLowSurrogate(before) && index < 2) ||
        (QChar::isHighSurrogate(after) && index + 1 >= units.size()))
        return false;
    const char32_t first =
        QChar::isLowSurrogate(before) ? QChar::surrogateToUcs4(units[index - 2], before) : before;
    const char32_t second =
        QChar::isHighSurrogate(after) ? QChar::surrogateToUcs4(after, units[index + 1]) : after;
    return clusters::isCertainBoundary(first, second);
}

/// Units to read on either side of an offset in the first search for a cluster boundary. The window
/// grows when it holds none.
constexpr qint64 kBoundaryWindow = 128;

/// Returns a stretch around `offset` that begins at a certain cluster boundary or at the start of
/// the text, and ends `reach` units after `offset`. None when neither lies within `reach` units
/// before `offset`.
std::optional<Window> windowWithin(const Text &text, qint64 offset, qint64 reach)
{
    Window window;
    window.start = std::max<qint64>(0, offset - reach);
    window.units = text.slice(window.start, offset - window.start + reach);
    if (window.start == 0)
        return window;
    const std::u16string_view units = viewOf(window.units);
    for (std::size_t i = 1; i + 1 < units.size() && qint64(i) < reach; ++i) {
        if (isCertainBoundaryAt(units, i)) {
            window.units.remove(0, static_cast<qsizetype>(i));
            window.start += static_cast<qint64>(i);
            return window;
        }
    }
    return std::nullopt;
}

/// As `windowWithin`, but widens `reach` until a boundary is found; the start of the text is always
/// one.
Window windowAround(const Text &text, qint64 offset, qint64 reach)
{
    while (true) {
        if (auto window = windowWithin(text, offset, reach))
            return *window;
        reach *= 4;
    }
}

qint64 boundaryAtOrBefore(const Window &window, qint64 offset)
{
    const std::u16string_view units = viewOf(window.units);
    if (clusters::isBoundary(units, offset - window.start))
        return offset;
    return window.start + clusters::preceding(units, offset - window.start);
}

} // namespace

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
    builder.appendUtf16(viewOf(utf16));
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
    TextMetrics before;
    if (!m_root || offset <= 0)
        return before;
    if (offset >= size())
        return metrics();
    const TextNode *node = m_root.data();
    while (!node->isLeaf()) {
        const TextNode *left = node->left().data();
        if (offset < left->size()) {
            node = left;
        } else {
            before += left->metrics();
            offset -= left->size();
            node = node->right().data();
        }
    }
    // An offset inside a surrogate pair counts as the start of the pair.
    if (offset > 0 && QChar::isLowSurrogate(node->unitAt(offset)))
        --offset;
    return before + node->measurePrefix(offset);
}

qint64 Text::lineBreaksBefore(qint64 offset) const
{
    if (!m_root || offset <= 0)
        return 0;
    if (offset >= size())
        return metrics().lineBreaks();
    qint64 breaks = 0;
    const TextNode *node = m_root.data();
    while (!node->isLeaf()) {
        const TextNode *left = node->left().data();
        if (offset < left->size()) {
            node = left;
        } else {
            breaks += left->metrics().lineBreaks();
            offset -= left->size();
            node = node->right().data();
        }
    }
    if (node->metrics().separators == 0)
        return breaks;
    const auto length = static_cast<std::size_t>(offset);
    return breaks + (node->isAscii() ? lineBreaksAmong(node->ascii().substr(0, length))
                                     : lineBreaksAmong(node->utf16().substr(0, length)));
}

char16_t Text::at(qint64 offset) const
{
    Q_ASSERT(offset >= 0 && offset < size());
    const auto [leaf, start] = findLeaf(m_root.data(), offset);
    return leaf->unitAt(offset - start);
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
    const qint64 start = pairStart(std::clamp<qint64>(offset, 0, size()));
    const qint64 wantedEnd =
        std::clamp<qint64>(offset, 0, size()) +
        std::clamp<qint64>(length, 0, size() - std::clamp<qint64>(offset, 0, size()));
    const qint64 end = length > 0 ? pairEnd(wantedEnd) : start;
    const auto [head, rest] = TextNode::split(m_root, start);
    const auto [removed, tail] = TextNode::split(rest, end - start);
    return Text(TextNode::concat(TextNode::concat(head, insertion.m_root), tail));
}

qint64 Text::offsetAfterLineFeed(qint64 count) const
{
    return offsetAfterBreak(m_root.data(), count, BreakKind::LineFeed);
}

qint64 Text::offsetAfterLineBreak(qint64 count) const
{
    return offsetAfterBreak(m_root.data(), count, BreakKind::LineBreak);
}

qint64 Text::offsetAfterSeparator(qint64 count) const
{
    return offsetAfterBreak(m_root.data(), count, BreakKind::Separator);
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
    // Inside a surrogate pair, ICU's iterator searches from the start of the pair and would go one
    // boundary too far.
    offset = pairEnd(std::min(offset, size()));
    if (offset <= 0)
        return 0;
    // The window for `offset - 1` begins before `offset`, so it holds the boundary.
    const Window window = windowAround(*this, offset - 1, kBoundaryWindow);
    return window.start + clusters::preceding(viewOf(window.units), offset - window.start);
}

qint64 Text::nextClusterBoundary(qint64 offset) const
{
    offset = std::max<qint64>(offset, 0);
    for (qint64 reach = kBoundaryWindow; offset < size(); reach *= 4) {
        const Window window = windowAround(*this, offset, reach);
        const qsizetype end = clusters::following(viewOf(window.units), offset - window.start);
        // A boundary at the end of the window is not reliable: the cluster may continue, and the
        // last unit may be half of a surrogate pair.
        const bool isCutOff = end + 1 >= window.units.size() && window.start + end < size();
        if (isCutOff && window.start + window.units.size() == size())
            return window.start + end;
        if (!isCutOff)
            return window.start + end;
    }
    return size();
}

qint64 Text::clusterBoundaryAtOrBefore(qint64 offset) const
{
    if (offset <= 0)
        return 0;
    if (offset >= size())
        return size();
    offset = pairStart(offset);
    return boundaryAtOrBefore(windowAround(*this, offset, kBoundaryWindow), offset);
}

std::optional<qint64> Text::clusterBoundaryWithin(qint64 offset, qint64 reach) const
{
    if (offset <= 0)
        return 0;
    if (offset >= size())
        return size();
    offset = pairStart(offset);
    for (qint64 distance = std::min(kBoundaryWindow, reach); distance <= reach; distance *= 4)
        if (const auto window = windowWithin(*this, offset, distance))
            return boundaryAtOrBefore(*window, offset);
    return std::nullopt;
}

void Text::forEachChunk(qint64 offset,
                        qint64 length,
                        const std::function<bool(const TextChunkView &)> &visit) const
{
    qint64 start = std::clamp<qint64>(offset, 0, size());
    const qint64 end = start + std::clamp<qint64>(length, 0, size() - start);
    while (start < end) {
        const auto [leaf, leafStart] = findLeaf(m_root.data(), start);
        const qint64 inLeaf = start - leafStart;
        TextChunkView chunk;
        chunk.length = std::min(leaf->size() - inLeaf, end - start);
        if (leaf->isAscii())
            chunk.ascii = leaf->ascii().data() + inLeaf;
        else
            chunk.utf16 = leaf->utf16().data() + inLeaf;
        if (!visit(chunk))
            return;
        start += chunk.length;
    }
}

bool Text::operator==(const Text &other) const
{
    if (m_root == other.m_root)
        return true;
    return metrics() == other.metrics() && sameText(m_root.data(), other.m_root.data());
}

} // namespace penwick
