#pragma once

#include "text/TextMetrics.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QExplicitlySharedDataPointer>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>
#include <tl/expected.hpp>
#include <utility>

namespace penwick {

class TextNode;

/// One contiguous stretch of a text's storage. Valid while the `Text` it came from lives.
/// Exactly one of the two pointers is set.
struct TextChunkView
{
    const char *ascii = nullptr;     ///< Set when the stretch is stored as 8-bit ASCII.
    const char16_t *utf16 = nullptr; ///< Set otherwise.
    qsizetype length = 0;            ///< In UTF-16 code units (for ASCII: also bytes).
};

/// An immutable Unicode text of any size. Copying it copies a pointer; replacing a part shares
/// everything else with the old value. Safe to read from several threads at once.
///
/// Every offset and length is in UTF-16 code units, 0-based, and must lie within the text: offsets
/// past the end are clamped to it, negative ones to 0. A text never holds a lone surrogate: what
/// comes in with one gets U+FFFD in its place. An offset inside a surrogate pair is treated as the
/// start of the pair (as its end where it ends a range), so a pair is replaced whole or not at all.
class Text final
{
public:
    /// Where a UTF-8 text stops being valid.
    struct Utf8Error
    {
        qint64 byteOffset = 0; ///< Of the first byte that is not part of a valid sequence, 0-based.
        bool operator==(const Utf8Error &) const = default;
    };

    /// The empty text.
    Text() noexcept;
    /// Keeps every code unit but lone surrogates, which become U+FFFD.
    explicit Text(QStringView utf16);
    Text(const Text &) noexcept;
    Text(Text &&) noexcept;
    Text &operator=(const Text &) noexcept;
    Text &operator=(Text &&) noexcept;
    ~Text();

    /// Decodes strictly: overlong forms, surrogates, code points past U+10FFFF and truncated
    /// sequences fail the whole read. Nothing is added, dropped or converted; U+FEFF stays.
    [[nodiscard]] static tl::expected<Text, Utf8Error> fromUtf8(QByteArrayView bytes);

    /// The bytes that `fromUtf8` would read back to this text. No byte-order mark is added.
    [[nodiscard]] QByteArray toUtf8() const;
    /// The same bytes in blocks of bounded size, in order, until `visit` returns false. Returns
    /// false when it did. Nothing of the size of the text is allocated.
    bool forEachUtf8Block(const std::function<bool(QByteArrayView)> &visit) const;
    /// A copy in one piece. Costs memory for the whole text: for a part use `slice`.
    [[nodiscard]] QString toString() const;

    [[nodiscard]] bool isEmpty() const { return size() == 0; }

    /// Length in UTF-16 code units.
    [[nodiscard]] qint64 size() const;
    [[nodiscard]] TextMetrics metrics() const;
    /// The metrics of the part before `offset`, as if it stood alone. O(log n).
    [[nodiscard]] TextMetrics metricsBefore(qint64 offset) const;

    /// `metricsBefore(offset).lineBreaks()` at a fraction of the cost: no cluster is counted.
    [[nodiscard]] qint64 lineBreaksBefore(qint64 offset) const;

    /// The code unit at `offset`, which must be less than `size()`. O(log n).
    [[nodiscard]] char16_t at(qint64 offset) const;
    /// A copy of just the `length` units from `offset` (cut at the end of the text): the one range
    /// that may begin or end inside a surrogate pair.
    [[nodiscard]] QString slice(qint64 offset, qint64 length) const;
    /// The same stretch as a value that shares storage. O(log n).
    [[nodiscard]] Text mid(qint64 offset, qint64 length) const;

    /// The start of the surrogate pair that `offset` lies inside; `offset` itself elsewhere.
    [[nodiscard]] qint64 pairStart(qint64 offset) const;
    /// The end of the surrogate pair that `offset` lies inside; `offset` itself elsewhere.
    [[nodiscard]] qint64 pairEnd(qint64 offset) const;

    /// The text with `length` units from `offset` replaced. O(log n + size of a small insertion).
    [[nodiscard]] Text replaced(qint64 offset, qint64 length, const Text &insertion) const;

    [[nodiscard]] Text appended(const Text &tail) const { return replaced(size(), 0, tail); }

    /// Offset just after the `count`th line feed; 0 for 0, the size where there are fewer.
    /// O(log n).
    [[nodiscard]] qint64 offsetAfterLineFeed(qint64 count) const;
    /// Offset just after the `count`th visual line break (CR LF is one). As above.
    [[nodiscard]] qint64 offsetAfterLineBreak(qint64 count) const;
    /// Offset just after the `count`th separator (CR LF is two). As above.
    [[nodiscard]] qint64 offsetAfterSeparator(qint64 count) const;

    /// Offset just after the `count`th line end of one kind. As above.
    [[nodiscard]] qint64 offsetAfterLineEnd(LineEnd kind, qint64 count) const;

    /// The text with every line end replaced by `lineEnd`; other separators stay. Costs O(n) of the
    /// parts that have other line ends, and shares the rest.
    [[nodiscard]] Text withLineEnds(LineEnd lineEnd) const;

    /// The status bar's cursor position: the number of pieces of the part before `offset` split at
    /// each separator (1-based line), and the clusters in its last piece (0-based column).
    /// O(log n).
    [[nodiscard]] std::pair<qint64, qint64> separatorLineAndColumn(qint64 offset) const;
    /// The script interface's position: line feeds before `offset`, and the clusters between the
    /// last of them and `offset`. Both 0-based. O(log n).
    [[nodiscard]] std::pair<qint64, qint64> lineFeedLineAndColumn(qint64 offset) const;

    /// The cluster boundary next before `offset` (0 at the start). Looks at a bounded window.
    [[nodiscard]] qint64 previousClusterBoundary(qint64 offset) const;
    /// The cluster boundary next after `offset` (the size at the end).
    [[nodiscard]] qint64 nextClusterBoundary(qint64 offset) const;
    /// `offset` itself when it is a cluster boundary, else the one before.
    [[nodiscard]] qint64 clusterBoundaryAtOrBefore(qint64 offset) const;

    /// The same where that can be told from at most `reach` units before `offset`. Inside a cluster
    /// longer than that it cannot, and looking farther would cost as much as the cluster is long.
    [[nodiscard]] std::optional<qint64> clusterBoundaryWithin(qint64 offset, qint64 reach) const;

    /// Calls `visit` for each stored stretch of [offset, offset + length), in order, until it
    /// returns false.
    void forEachChunk(qint64 offset,
                      qint64 length,
                      const std::function<bool(const TextChunkView &)> &visit) const;

    /// True when both hold the same code units. At once for two copies of one value; otherwise
    /// shared parts are skipped.
    [[nodiscard]] bool operator==(const Text &other) const;

    /// True when both are copies of one value: a quick answer that may be false for equal texts.
    [[nodiscard]] bool isSameValue(const Text &other) const { return m_root == other.m_root; }

private:
    using NodePtr = QExplicitlySharedDataPointer<const TextNode>;

    explicit Text(NodePtr root) noexcept;

    friend class TextBuilder;

    NodePtr m_root; // Null for the empty text.
};

} // namespace penwick
