#pragma once

#include "editor/TextFinder.h"
#include "text/Text.h"

#include <QString>

#include <vector>

namespace penwick {

/// What a match is replaced by. For a plain pattern: exactly that. For a regular expression, `$1`
/// to
/// `$9` stand for what a group took (nothing if it took no part), `$0` and `$&` for the whole
/// match,
/// `$$` for a dollar sign, `\n`, `\r` and `\t` for the characters, `\\` for a backslash; anything
/// else, also a `$` with the number of a group that the expression lacks, stands for itself.
/// Immutable, and safe to use from several threads at once.
class FindReplacement final
{
public:
    FindReplacement(const QString &string, const TextFinder &finder);

    /// What takes the place of a match; `captures` as a finder hands it to its visitor.
    [[nodiscard]] QString expand(const QRegularExpressionMatch *captures) const;

private:
    struct Piece
    {
        QString literal;
        int group = -1; // Follows the literal; -1: none.
    };

    void parse(QStringView string, int groupCount);

    std::vector<Piece> m_pieces;
};

/// What replacing every match came to.
struct ReplaceAllResult
{
    qint64 count = 0;
    /// The part of the old text from the first match to the last, UTF-16 code units, 0-based.
    FindMatch range;
    Text replacement;          ///< What takes the place of `range`.
    qint64 caret = 0;          ///< Where the caret asked about stands in the new text.
    bool isTooComplex = false; ///< The search was given up: nothing is to be replaced.
};

/// Works out the text with every match replaced, in one pass over `text`. Long stretches without a
/// match share the storage of `text`. Stops early when cancelled; the result is then of no use.
[[nodiscard]] ReplaceAllResult replaceAllMatches(const TextFinder &finder,
                                                 const FindReplacement &replacement,
                                                 const Text &text,
                                                 qint64 caret,
                                                 const FindIsCancelled &isCancelled = {});

/// What `match` would be replaced by; nothing when the pattern does not match there.
[[nodiscard]] std::optional<QString> replacementAt(const TextFinder &finder,
                                                   const FindReplacement &replacement,
                                                   const Text &text,
                                                   const FindMatch &match,
                                                   const FindIsCancelled &isCancelled = {});

} // namespace penwick
