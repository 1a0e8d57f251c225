#pragma once

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

/// What a person looks for.
struct FindPattern
{
    QString string; ///< As typed. Lone surrogates count as U+FFFD, as they do in a text.
    bool matchesCase = false;
    bool wholeWords = false;
    bool isRegularExpression = false;

    bool operator==(const FindPattern &) const = default;
};

/// Why a pattern cannot be looked for.
struct FindPatternError
{
    enum class Code {
        Empty,             ///< There is nothing to look for.
        InvalidExpression, ///< The regular expression does not compile.
        TooComplex,        ///< Matching took more steps than one place of a text is worth.
    };

    Code code = Code::Empty;
    qint64 offset = 0; ///< Of the fault in the pattern, UTF-16 code units, 0-based.
    QString reason;    ///< In the words of the regular expression library; may be empty.

    bool operator==(const FindPatternError &) const = default;
};

/// One place where a pattern matches: UTF-16 code units, 0-based, `end` exclusive. Empty where an
/// expression such as `^` matches without taking a character.
struct FindMatch
{
    qint64 start = 0;
    qint64 end = 0;

    [[nodiscard]] bool isEmpty() const { return start == end; }

    bool operator==(const FindMatch &) const = default;
};

/// Where a search goes on.
struct FindPlace
{
    qint64 offset = 0; ///< UTF-16 code units, 0-based.
    /// A match that is not empty ends here: then no empty match counts at `offset`, or `.*` would
    /// match each line twice.
    bool isAfterMatch = false;

    bool operator==(const FindPlace &) const = default;
};

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
/// `\b` and `\s` know Unicode. An expression sees the text in overlapping windows, not line by
/// line, so it may match across line breaks. A match is found whole when it is no longer than
/// `kTailUnits` (`kLongLineUnits` where lines are longer than that), and looks no farther than
/// `kBehindUnits` behind itself; beyond that it may be found cut.
///
/// A whole word is a match with a word boundary at either end: one between a letter, digit, mark
/// or underscore and anything else; and in scripts without blanks, such as Japanese, one that a
/// dictionary knows or where the script changes, so that `Qt` is found in `Qtで書く`. Of an
/// expression, only the leftmost match at each place is tried.
class TextFinder final
{
public:
    [[nodiscard]] static tl::expected<TextFinder, FindPatternError>
    compile(const FindPattern &pattern);

    /// A match with what its groups took; null for a plain pattern. Valid during the call.
    using Visit = std::function<bool(const FindMatch &, const QRegularExpressionMatch *)>;

    struct Step
    {
        FindPlace next;            ///< Where the next step begins.
        bool isAtEnd = false;      ///< Nothing is left to search before `end`.
        bool isStopped = false;    ///< `visit` returned false.
        bool isTooComplex = false; ///< Gave up at this place; `next` is where the step began.
    };

    /// Searches a bounded stretch of `text` from `from` on for matches that start before `end`,
    /// and calls `visit` for each, ascending, until it returns false. One step looks at no more
    /// than `kStepUnits`, however large the text; a whole search is a loop over steps.
    [[nodiscard]] Step step(const Text &text,
                            FindPlace from,
                            const Visit &visit,
                            qint64 end = std::numeric_limits<qint64>::max()) const;

    static constexpr qint64 kPlainUnits = 65'536;
    static constexpr qint64 kCoreUnits = 32'768;
    static constexpr qint64 kTailUnits = 32'768;
    static constexpr qint64 kLongLineUnits = 8'192;
    static constexpr qint64 kBehindUnits = 1'024;
    /// The most that one step reads; the length of a plain pattern comes on top.
    static constexpr qint64 kStepUnits = kCoreUnits + kTailUnits + kBehindUnits + 4;

    /// The number of groups of an expression, 0 for a plain pattern.
    [[nodiscard]] int groupCount() const { return m_expression.captureCount(); }

    [[nodiscard]] bool isRegularExpression() const { return m_isRegularExpression; }

private:
    class Window;

    TextFinder() = default;
    [[nodiscard]] std::optional<FindPatternError> compileExpression(const FindPattern &pattern);
    [[nodiscard]] Step
    stepPlain(const Text &text, FindPlace from, const Visit &visit, qint64 end) const;
    [[nodiscard]] Step
    stepExpression(const Text &text, FindPlace from, const Visit &visit, qint64 end) const;
    [[nodiscard]] QRegularExpressionMatch match(const QString &subject, qsizetype from) const;
    [[nodiscard]] bool isAccepted(const Text &text, const FindMatch &match) const;

    QStringMatcher m_matcher;
    QRegularExpression m_expression;
    QRegularExpression m_patientExpression; // Slower, but with a stack as large as it needs.
    bool m_isRegularExpression = false;
    bool m_wholeWords = false;
};

/// What a search for one match came to.
struct FindResult
{
    std::optional<FindMatch> match;
    bool isWrapped = false;    ///< It was found beyond the end of the text, or its start.
    bool isTooComplex = false; ///< The search was given up.
};

/// True when a search is no longer wanted. Asked between steps.
using FindIsCancelled = std::function<bool()>;

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

/// The offset of the character after the one at `offset`: a surrogate pair and CR LF are one.
[[nodiscard]] qint64 findOffsetAfter(const Text &text, qint64 offset);

} // namespace penwick
