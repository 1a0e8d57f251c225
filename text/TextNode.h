#pragma once

#include "text/TextMetrics.h"

#include <QExplicitlySharedDataPointer>
#include <QSharedData>

#include <memory>
#include <string_view>
#include <utility>

namespace penwick {

class TextNode;
using TextNodePtr = QExplicitlySharedDataPointer<const TextNode>;

/// One node of the balanced tree behind a `Text`: a leaf with a chunk of characters, or a branch
/// over two subtrees whose heights differ by at most one. Immutable, shared between texts.
///
/// Invariant: where two leaves meet, a cluster certainly ends (`clusters::isCertainBoundary`), so
/// a CR LF pair and a surrogate pair never span leaves and every metric adds up.
class TextNode final : public QSharedData
{
public:
    /// Units that a leaf holds at most, unless no certain boundary allows a cut.
    static constexpr qsizetype kLeafUnits = PENWICK_LEAF_UNITS;

    /// Leaves with a copy of the characters; not empty.
    [[nodiscard]] static TextNodePtr makeAsciiLeaf(std::string_view characters);
    /// Stored as ASCII where it is nothing else. Holds no lone surrogate.
    [[nodiscard]] static TextNodePtr makeLeaf(std::u16string_view units);

    /// The two texts one after the other, balanced. Either may be null. Fits the seam: leaves that
    /// meet at no certain boundary, or are both small, are made anew.
    [[nodiscard]] static TextNodePtr concat(const TextNodePtr &left, const TextNodePtr &right);

    /// The parts before and from `offset`, which must not be inside a surrogate pair.
    [[nodiscard]] static std::pair<TextNodePtr, TextNodePtr> split(const TextNodePtr &node,
                                                                   qint64 offset);

    /// A balanced tree over leaves that already meet at certain boundaries.
    [[nodiscard]] static TextNodePtr fromLeaves(const TextNodePtr *begin, const TextNodePtr *end);

    [[nodiscard]] const TextMetrics &metrics() const { return m_metrics; }

    [[nodiscard]] qint64 size() const { return m_metrics.utf16Units; }

    [[nodiscard]] bool isLeaf() const { return m_height == 0; }

    [[nodiscard]] bool isAscii() const { return m_ascii != nullptr; }

    [[nodiscard]] const TextNodePtr &left() const { return m_left; }

    [[nodiscard]] const TextNodePtr &right() const { return m_right; }

    /// Of a leaf only, matching `isAscii`.
    [[nodiscard]] std::string_view ascii() const
    {
        return {m_ascii.get(), static_cast<std::size_t>(size())};
    }

    [[nodiscard]] std::u16string_view utf16() const
    {
        return {m_utf16.get(), static_cast<std::size_t>(size())};
    }

    /// The unit at `index` of a leaf.
    [[nodiscard]] char16_t unitAt(qint64 index) const
    {
        return m_ascii ? static_cast<char16_t>(static_cast<unsigned char>(m_ascii[index]))
                       : m_utf16[index];
    }

    /// Metrics of the first `length` units of a leaf, as if they stood alone.
    [[nodiscard]] TextMetrics measurePrefix(qint64 length) const;

private:
    TextNode() = default;
    TextNode(TextNodePtr left, TextNodePtr right);

    static TextNodePtr join(const TextNodePtr &left, const TextNodePtr &right);
    static TextNodePtr balance(const TextNodePtr &left, const TextNodePtr &right);
    static TextNodePtr branch(const TextNodePtr &left, const TextNodePtr &right);
    static std::pair<TextNodePtr, TextNodePtr> splitLeaf(const TextNodePtr &leaf, qint64 offset);
    static std::pair<TextNodePtr, TextNodePtr> popFirstLeaf(const TextNodePtr &node);
    static std::pair<TextNodePtr, TextNodePtr> popLastLeaf(const TextNodePtr &node);
    static TextNodePtr merged(const TextNode &left, const TextNode &right);

    TextMetrics m_metrics;
    int m_height = 0;
    std::unique_ptr<char[]> m_ascii;
    std::unique_ptr<char16_t[]> m_utf16;
    TextNodePtr m_left;
    TextNodePtr m_right;
};

/// Metrics of a stretch of characters that stands alone.
[[nodiscard]] TextMetrics measureAscii(std::string_view characters);
[[nodiscard]] TextMetrics measureUtf16(std::u16string_view units);

} // namespace penwick
