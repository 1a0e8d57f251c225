#pragma once

#include "find/TextFinder.h"
#include "text/Text.h"

#include <QString>

#include <vector>

namespace penwick {

/// The replacement for a match. For a plain pattern it is inserted literally. For a regular
/// expression, `$1` to `$9` stand for what a group captured (nothing if the group took no part),
/// `$0` and `$&` for the whole match, `$$` for a dollar sign, `\n`, `\r` and `\t` for these
/// characters, and `\\` for a backslash. Anything else stands for itself, also a `$` with the
/// number of a group that the expression lacks. Immutable, safe to use from several threads at
/// once.
class FindReplacement final
{
public:
    FindReplacement(const QString &string, const TextFinder &finder);

    /// Returns the text that replaces a match.
    /// \param captures as a finder passes it to its visitor; null for a plain pattern.
    [[nodiscard]] QString expand(const QRegularExpressionMatch *captures) const;

private:
    struct Piece
    {
        QString literal;
        int group = -1; // The group after the literal; -1: none.
    };

    void parse(QStringView string, int groupCount);

    std::vector<Piece> m_pieces;
};

/// The outcome of replacing all matches.
struct ReplaceAllResult
{
    qint64 count = 0;
    /// The part of the old text from the first match to the last, UTF-16 code units, 0-based.
    TextRange range;
    Text replacement;          ///< The new text for `range`.
    qint64 caret = 0;          ///< Offset of the caret in the new text.
    bool isTooComplex = false; ///< The search was abandoned: replace nothing.
};

/// Computes the text with all matches replaced, in one pass over `text`. Long stretches without a
/// match share the storage of `text`. Stops early when cancelled; discard the result then.
/// \param caret its offset in `text`, which `ReplaceAllResult::caret` maps to the new text.
[[nodiscard]] ReplaceAllResult replaceAllMatches(const TextFinder &finder,
                                                 const FindReplacement &replacement,
                                                 const Text &text,
                                                 qint64 caret,
                                                 const FindIsCancelled &isCancelled = {});

/// Returns the replacement for `match`, or nothing when the pattern does not match exactly there.
[[nodiscard]] std::optional<QString> replacementAt(const TextFinder &finder,
                                                   const FindReplacement &replacement,
                                                   const Text &text,
                                                   const TextRange &match,
                                                   const FindIsCancelled &isCancelled = {});

} // namespace penwick
