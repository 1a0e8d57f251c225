#pragma once

#include "find/FindExpression.h"
#include "find/FindPattern.h"
#include "text/Text.h"

#include <QRegularExpression>
#include <QString>
#include <QStringMatcher>

#include <functional>
#include <limits>
#include <optional>
#include <tl/expected.hpp>
#include <utility>

namespace penwick {

/// Returns true when a search is no longer wanted. Called between steps.
using FindIsCancelled = std::function<bool()>;

/// A compiled pattern. Immutable, cheap to copy, and safe to use from several threads at once.
///
/// The matches of a text are those found from its start on; they never overlap. Matching is
/// literal, without normalization: a match may begin or end inside a grapheme cluster, but never
/// inside a surrogate pair.
///
/// Plain patterns that ignore case use Unicode's simple case folding, as QString does.
///
/// Regular expressions are those of PCRE2. `^` and `$` match at every line break that the editor
/// shows (CR LF, LF, CR, VT, FF, NEL, U+2028, U+2029), `.` matches anything else, and `\w`, `\d`,
/// `\b` and `\s` are Unicode-aware. An expression finds what it would find in the whole text,
/// however long lines and matches are. If that exceeds the limits, the search reports it.
///
/// A whole word is a match with a word boundary at both ends. A word boundary lies between a
/// letter, digit, mark or underscore and anything else. In scripts without blanks, such as
/// Japanese, it also lies at the boundaries of dictionary words and where the script changes, so
/// that `Qt` is found in `Qtで書く`. Of an expression, only the first match at each place is
/// considered.
class TextFinder final
{
public:
    [[nodiscard]] static tl::expected<TextFinder, FindPatternError>
    compile(const FindPattern &pattern, const FindSizes &sizes = {});

    /// Receives a match and its captures, which are null for a plain pattern and valid during the
    /// call only. Returns false to stop the search.
    using Visit = std::function<bool(const TextRange &, const QRegularExpressionMatch *)>;

    struct Step
    {
        FindPlace next;            ///< Where the next step begins.
        bool isAtEnd = false;      ///< Nothing is left to search before `end`.
        bool isStopped = false;    ///< `visit` returned false.
        bool isTooComplex = false; ///< Matching was abandoned at `next`.
        qint64 effort = 0;         ///< CPU time that an expression took, in nanoseconds.
    };

    /// Searches a bounded stretch of `text` from `from` on for matches that start before `end`, and
    /// calls `visit` for each, ascending, until it returns false. One step takes at most about
    /// `kStepTime` and covers at most `kStepUnits`, unless a match is longer. A whole search is a
    /// loop over steps.
    [[nodiscard]] Step step(const Text &text,
                            FindPlace from,
                            const Visit &visit,
                            qint64 end = std::numeric_limits<qint64>::max()) const;

    /// Runs steps from `from` until nothing is left before `end`, `visit` returns false, the search
    /// is cancelled, or it becomes too expensive (see `FindEffort`).
    Step search(const Text &text,
                FindPlace from,
                const Visit &visit,
                qint64 end = std::numeric_limits<qint64>::max(),
                const FindIsCancelled &isCancelled = {}) const;

    static constexpr qint64 kStepUnits = 65'536;
    static constexpr int kStepTime = 30; ///< Milliseconds.

    /// The number of capture groups of an expression, 0 for a plain pattern.
    [[nodiscard]] int groupCount() const { return m_expression ? m_expression->groupCount() : 0; }

    [[nodiscard]] bool isRegularExpression() const { return m_expression.has_value(); }

    /// True when a match may begin after the place where it was tried.
    [[nodiscard]] bool movesStart() const { return m_expression && m_expression->movesStart(); }

private:
    class Stepper;

    TextFinder() = default;
    [[nodiscard]] QString comparable(QString units) const;
    void stepPlain(Stepper &stepper) const;
    void stepExpression(Stepper &stepper) const;
    [[nodiscard]] bool isAccepted(const Text &text, const TextRange &match) const;

    QStringMatcher m_matcher; // When case is ignored, pattern and text are folded.
    std::optional<FindExpression> m_expression;
    bool m_ignoresCase = false;
    bool m_wholeWords = false;
};

/// Adds up the cost of the steps of one search and detects when it is out of proportion to the text
/// searched: some expressions would take hours.
class FindEffort final
{
public:
    void add(FindPlace from, const TextFinder::Step &step);

    [[nodiscard]] bool isTooMuch() const;

private:
    qint64 m_effort = 0; // Nanoseconds.
    qint64 m_units = 0;
};

/// The outcome of a search for one match.
struct FindResult
{
    std::optional<TextRange> match;
    bool isWrapped = false;    ///< It was found after continuing at the other end.
    bool isTooComplex = false; ///< The search was abandoned.
};

/// Returns the first match at or after `from`. If there is none and `wraps` is true, searches again
/// from the text's start.
[[nodiscard]] FindResult findNext(const TextFinder &finder,
                                  const Text &text,
                                  FindPlace from,
                                  bool wraps,
                                  const FindIsCancelled &isCancelled = {});
/// Returns the last match that starts before `offset` and ends at or before it. If there is none
/// and `wraps` is true, searches from the text's end back to `offset`.
[[nodiscard]] FindResult findPrevious(const TextFinder &finder,
                                      const Text &text,
                                      qint64 offset,
                                      bool wraps,
                                      const FindIsCancelled &isCancelled = {});

/// Returns where to start a search so that it meets the matches before `end` as a search from the
/// text's start does: some way before `end`, at a line's start if one is near.
[[nodiscard]] qint64 findBlockStart(const Text &text, qint64 end);

/// Returns the offset of the character after the one at `offset`; a surrogate pair and CR LF are
/// one character. At the text's end, returns its size + 1.
[[nodiscard]] qint64 findOffsetAfter(const Text &text, qint64 offset);

} // namespace penwick
