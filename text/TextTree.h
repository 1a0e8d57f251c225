#pragma once

#include "text/TextNode.h"

namespace penwick::tree {

// What a `Text` looks up in its tree. Offsets are UTF-16 code units, 0-based.

/// A place in a leaf.
struct LeafPosition
{
    const TextNode *leaf;
    qint64 index; ///< Of a unit of the leaf; its size for the end of the text.
};

/// Returns the place of `offset`, which must lie within the text of `node`.
/// \param skip called with the metrics of each subtree before the leaf, in order.
template <typename Skip>
LeafPosition findLeaf(const TextNode *node, qint64 offset, const Skip &skip)
{
    while (!node->isLeaf()) {
        const TextNode *left = node->left().data();
        if (offset < left->size()) {
            node = left;
        } else {
            skip(left->metrics());
            offset -= left->size();
            node = node->right().data();
        }
    }
    return {node, offset};
}

inline LeafPosition findLeaf(const TextNode *node, qint64 offset)
{
    return findLeaf(node, offset, [](const TextMetrics &) {});
}

/// The metrics of the text before `offset`, which must be less than the size, as if that part stood
/// alone. An offset inside a surrogate pair counts as the start of the pair.
[[nodiscard]] TextMetrics metricsBefore(const TextNode *node, qint64 offset);
/// The line breaks among them at a fraction of the cost.
[[nodiscard]] qint64 lineBreaksBefore(const TextNode *node, qint64 offset);

/// Places that a text can be searched for: every U+000A, every visual line break, every separator,
/// or the line ends of one kind.
enum class BreakKind {
    LineFeed,
    LineBreak,
    Separator,
    LoneLineFeed,
    CrLf,
    LoneCarriageReturn,
};

/// Returns the offset just after the `count`th break; 0 for 0, the size when there are fewer.
/// \param node null for the empty text, as in the next function.
[[nodiscard]] qint64 offsetAfterBreak(const TextNode *node, qint64 count, BreakKind kind);

/// Returns the text of `node` with its line ends replaced by `lineEnd`. Subtrees that have no other
/// line end are shared.
[[nodiscard]] TextNodePtr withLineEnds(const TextNodePtr &node, LineEnd lineEnd);

/// True when both texts hold the same code units.
[[nodiscard]] bool isSameText(const TextNode *a, const TextNode *b);

} // namespace penwick::tree
