#include "text/TextTree.h"

#include "text/Separators.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>

namespace penwick::tree {

namespace {

qint64 breaksIn(const TextMetrics &metrics, BreakKind kind)
{
    switch (kind) {
    case BreakKind::LineFeed:
        return metrics.lineFeeds;
    case BreakKind::LineBreak:
        return metrics.lineBreaks();
    case BreakKind::Separator:
        return metrics.separators;
    case BreakKind::LoneLineFeed:
        return metrics.lineEnds(LineEnd::LineFeed);
    case BreakKind::CrLf:
        return metrics.lineEnds(LineEnd::CrLf);
    case BreakKind::LoneCarriageReturn:
        return metrics.lineEnds(LineEnd::CarriageReturn);
    }
    return 0;
}

// The two scans below run at every caret move. They are templates over the unit type of a leaf, so
// that they need not check it for each unit.

/// True when a break of `kind` ends with the separator at `index`.
template <typename Units> bool isBreak(Units units, std::size_t index, BreakKind kind)
{
    const auto value = static_cast<char16_t>(units[index]);
    const bool followsCr = index > 0 && units[index - 1] == '\r';
    const bool precedesLf = index + 1 < units.size() && units[index + 1] == '\n';
    switch (kind) {
    case BreakKind::LineFeed:
        return value == u'\n';
    case BreakKind::LineBreak:
        return value != u'\r' || !precedesLf;
    case BreakKind::Separator:
        return true;
    case BreakKind::LoneLineFeed:
        return value == u'\n' && !followsCr;
    case BreakKind::CrLf:
        return value == u'\n' && followsCr;
    case BreakKind::LoneCarriageReturn:
        return value == u'\r' && !precedesLf;
    }
    return false;
}

/// Returns the index just after the `count`th break in `units`, or their number when there are
/// fewer breaks.
template <typename Units> qint64 indexAfterBreak(Units units, qint64 count, BreakKind kind)
{
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!isSeparator(static_cast<char16_t>(units[i])) || !isBreak(units, i, kind))
            continue;
        if (--count == 0)
            return static_cast<qint64>(i) + 1;
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

} // namespace

TextMetrics metricsBefore(const TextNode *node, qint64 offset)
{
    TextMetrics before;
    auto [leaf, length] =
        findLeaf(node, offset, [&before](const TextMetrics &part) { before += part; });
    if (QChar::isLowSurrogate(leaf->unitAt(length)))
        --length;
    return before + leaf->measurePrefix(length);
}

qint64 lineBreaksBefore(const TextNode *node, qint64 offset)
{
    qint64 breaks = 0;
    const auto [leaf, index] =
        findLeaf(node, offset, [&breaks](const TextMetrics &part) { breaks += part.lineBreaks(); });
    if (leaf->metrics().separators == 0)
        return breaks;
    const auto length = static_cast<std::size_t>(index);
    return breaks + (leaf->isAscii() ? lineBreaksAmong(leaf->ascii().substr(0, length))
                                     : lineBreaksAmong(leaf->utf16().substr(0, length)));
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

bool isSameText(const TextNode *a, const TextNode *b)
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

} // namespace penwick::tree
