#pragma once

#include "text/Text.h"

#include <QString>

#include <algorithm>

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

/// True where a text may be divided for a search: neither a surrogate pair nor CR LF is.
[[nodiscard]] inline bool canCutForFinding(const Text &text, qint64 offset)
{
    if (offset <= 0 || offset >= text.size())
        return true;
    const char16_t after = text.at(offset);
    return !QChar::isLowSurrogate(after) && !(after == u'\n' && text.at(offset - 1) == u'\r');
}

/// `offset`, clamped to the text, or the next one where the text may be divided.
[[nodiscard]] inline qint64 findCutAtOrAfter(const Text &text, qint64 offset)
{
    const qint64 inside = std::clamp<qint64>(offset, 0, text.size());
    return canCutForFinding(text, inside) ? inside : inside + 1;
}

} // namespace penwick
