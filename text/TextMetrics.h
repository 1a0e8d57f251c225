#pragma once

#include <QtGlobal>

namespace penwick {

/// The line ends that files use. The other separators, such as U+2028, are no line ends of a file.
enum class LineEnd { LineFeed, CrLf, CarriageReturn };

constexpr LineEnd kLineEnds[] = {LineEnd::LineFeed, LineEnd::CrLf, LineEnd::CarriageReturn};

/// What a stretch of text holds, counted once per chunk and added up along the tree. The sums add
/// up only over stretches that meet at a certain cluster boundary; `Text` sees to that.
struct TextMetrics
{
    qint64 utf16Units = 0;      ///< Length in UTF-16 code units.
    qint64 utf8Bytes = 0;       ///< Length in bytes once encoded as UTF-8.
    qint64 lineFeeds = 0;       ///< Number of U+000A.
    qint64 carriageReturns = 0; ///< Number of U+000D.
    /// Number of U+000A, U+000B, U+000C, U+000D, U+0085, U+2028 and U+2029, each by itself: CR LF
    /// counts two.
    qint64 separators = 0;
    qint64 crLfPairs = 0; ///< Number of U+000D directly followed by U+000A.
    qint64 clusters = 0;  ///< Number of extended grapheme clusters.

    /// Visual line breaks: every separator, a CR LF pair once.
    [[nodiscard]] qint64 lineBreaks() const { return separators - crLfPairs; }

    /// Number of line ends of one kind; a CR LF pair counts as `CrLf` only.
    [[nodiscard]] qint64 lineEnds(LineEnd kind) const
    {
        switch (kind) {
        case LineEnd::LineFeed:
            return lineFeeds - crLfPairs;
        case LineEnd::CrLf:
            return crLfPairs;
        case LineEnd::CarriageReturn:
            return carriageReturns - crLfPairs;
        }
        return 0;
    }

    /// Number of line ends of all kinds.
    [[nodiscard]] qint64 lineEnds() const { return lineFeeds + carriageReturns - crLfPairs; }

    /// True when there is no line end of another kind.
    [[nodiscard]] bool hasOnly(LineEnd kind) const { return lineEnds(kind) == lineEnds(); }

    /// True when there are line ends of at least two kinds.
    [[nodiscard]] bool hasMixedLineEnds() const
    {
        return !hasOnly(LineEnd::LineFeed) && !hasOnly(LineEnd::CrLf) &&
               !hasOnly(LineEnd::CarriageReturn);
    }

    TextMetrics &operator+=(const TextMetrics &other)
    {
        utf16Units += other.utf16Units;
        utf8Bytes += other.utf8Bytes;
        lineFeeds += other.lineFeeds;
        carriageReturns += other.carriageReturns;
        separators += other.separators;
        crLfPairs += other.crLfPairs;
        clusters += other.clusters;
        return *this;
    }

    friend TextMetrics operator+(TextMetrics a, const TextMetrics &b) { return a += b; }

    bool operator==(const TextMetrics &) const = default;
};

} // namespace penwick
