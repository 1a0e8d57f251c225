#pragma once

#include "editor/FindExpression.h"
#include "editor/FindPattern.h"
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

/// True when a search is no longer wanted. Asked between steps.
using FindIsCancelled = std::function<bool()>;

/// A pattern made ready to search with. Immutable, cheaply copied, and safe to use from several
/// threads at once.
///
/// The matches of a text are those found from its start on, none overlapping the one before. They
/// are code units, literally: a match may begin or end inside a grapheme cluster, never inside a
/// surrogate pair.
///
/// Plain patterns ignore case by Unicode's simple case folding, as QString does.
///
/// Regular expressions are those of PCRE2. `^` and `$` match at every line break that the editor
/// shows (CR LF, LF, CR, VT, FF, NEL, U+2028, U+2029), `.` matches anything else, and `\w`, `\d`,
/// `\b` and `\s` know Unicode. An expression finds what it would find in the whole text, however
/// long lines and matches are; where that takes too much, the search says so.
///
/// A whole word is a match with a word boundary at either end: one between a letter, digit, mark
/// or underscore and anything else; and in scripts without blanks, such as Japanese, one that a
/// dictionary knows or where the script changes, so that `Qt` is found in `Qtで書く`. Of an
/// expression, only the leftmost match at each place is tried.
class TextFinder final
{
public:
    [[nodiscard]] static tl::expected<TextFinder, FindPatternError>
    compile(const FindPattern &pattern, const FindSizes &sizes = {});

    /// A match with what its groups took; null for a plain pattern. Valid during the call.
    using Visit = std::function<bool(const FindMatch &, const QRegularExpressionMatch *)>;

    struct Step
    {
        FindPlace next;            ///< Where the next step begins.
        bool isAtEnd = false;      ///< Nothing is left to search before `end`.
        bool isStopped = false;    ///< `visit` returned false.
        bool isTooComplex = false; ///< Gave up at this place; `next` is where it is.
        qint64 effort = 0;         ///< Processor time that an expression took, in nanoseconds.
    };

    /// Searches a bounded stretch of `text` from `from` on for matches that start before `end`,
    /// and calls `visit` for each, ascending, until it returns false. One step takes about
    /// `kStepTime` at most and gets no farther than `kStepUnits`, unless a match is longer; a whole
    /// search is a loop over steps.
    [[nodiscard]] Step step(const Text &text,
                            FindPlace from,
                            const Visit &visit,
                            qint64 end = std::numeric_limits<qint64>::max()) const;

    /// Such a loop, from `from` until there is nothing left before `end`, `visit` returns false,
    /// the search is cancelled, or it has become too much, as `FindEffort` tells.
    Step search(const Text &text,
                FindPlace from,
                const Visit &visit,
                qint64 end = std::numeric_limits<qint64>::max(),
                const FindIsCancelled &isCancelled = {}) const;

    static constexpr qint64 kStepUnits = 65'536;
    static constexpr int kStepTime = 30; ///< Milliseconds.

    /// The number of groups of an expression, 0 for a plain pattern.
    [[nodiscard]] int groupCount() const { return m_expression ? m_expression->groupCount() : 0; }

    [[nodiscard]] bool isRegularExpression() const { return m_expression.has_value(); }

    /// True when a match may begin behind the place where it was tried.
    [[nodiscard]] bool movesStart() const { return m_expression && m_expression->movesStart(); }

private:
    class Stepper;

    TextFinder() = default;
    [[nodiscard]] QString comparable(QString units) const;
    void stepPlain(Stepper &stepper) const;
    void stepExpression(Stepper &stepper) const;
    [[nodiscard]] bool isAccepted(const Text &text, const FindMatch &match) const;

    QStringMatcher m_matcher; // Of a folded pattern in a folded text where case is ignored.
    std::optional<FindExpression> m_expression;
    bool m_ignoresCase = false;
    bool m_wholeWords = false;
};

/// Adds up what the steps of one search have cost, and tells when that is out of proportion to how
/// far they have come: some expressions would take hours.
class FindEffort final
{
public:
    void add(FindPlace from, const TextFinder::Step &step);

    [[nodiscard]] bool isTooMuch() const;

private:
    qint64 m_effort = 0; // Nanoseconds.
    qint64 m_units = 0;
};

/// What a search for one match came to.
struct FindResult
{
    std::optional<FindMatch> match;
    bool isWrapped = false;    ///< It was found beyond the end of the text, or its start.
    bool isTooComplex = false; ///< The search was given up.
};

/// The first match at or after `from`. With `wraps` the search goes on at the text's start and ends
/// where it began.
[[nodiscard]] FindResult findNext(const TextFinder &finder,
                                  const Text &text,
                                  FindPlace from,
                                  bool wraps,
                                  const FindIsCancelled &isCancelled = {});
/// The last match that starts before `offset` and ends at or before it. With `wraps` the search
/// goes on at the text's end and ends where it began.
[[nodiscard]] FindResult findPrevious(const TextFinder &finder,
                                      const Text &text,
                                      qint64 offset,
                                      bool wraps,
                                      const FindIsCancelled &isCancelled = {});

/// Where to begin so that the matches before `end` are met as from the text's start: some way
/// before it, at a line's start if that is near.
[[nodiscard]] qint64 findBlockStart(const Text &text, qint64 end);

/// The offset of the character after the one at `offset`: a surrogate pair and CR LF are one.
[[nodiscard]] qint64 findOffsetAfter(const Text &text, qint64 offset);

} // namespace penwick
