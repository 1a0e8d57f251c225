#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

#include <QString>

#include <algorithm>

namespace penwick {

/// What the user searches for.
struct FindPattern
{
    QString string; ///< As typed. Lone surrogates count as U+FFFD, as in a text.
    bool matchesCase = false;
    bool wholeWords = false;
    bool isRegularExpression = false;

    bool operator==(const FindPattern &) const = default;
};

/// Why a pattern cannot be searched for.
struct FindPatternError
{
    enum class Code {
        Empty,             ///< The pattern is empty.
        InvalidExpression, ///< The regular expression does not compile.
        TooComplex,        ///< Matching exceeded the limits on time and memory.
    };

    Code code = Code::Empty;
    qint64 offset = 0; ///< Of the error in the pattern, UTF-16 code units, 0-based.
    QString reason;    ///< The message of the regular expression library, in English; may be empty.

    bool operator==(const FindPatternError &) const = default;
};

/// Where a search continues.
struct FindPlace
{
    qint64 offset = 0; ///< UTF-16 code units, 0-based.
    /// A non-empty match ends at `offset`. An empty match there is then ignored; otherwise `.*`
    /// would match each line twice.
    bool isAfterMatch = false;

    bool operator==(const FindPlace &) const = default;
};

/// True when a search may split the text at `offset`: not inside a surrogate pair or CR LF.
[[nodiscard]] inline bool canCutForFinding(const Text &text, qint64 offset)
{
    if (offset <= 0 || offset >= text.size())
        return true;
    const char16_t after = text.at(offset);
    return !QChar::isLowSurrogate(after) && !(after == u'\n' && text.at(offset - 1) == u'\r');
}

/// Returns `offset`, clamped to the text, or the next offset where a search may split the text.
[[nodiscard]] inline qint64 findCutAtOrAfter(const Text &text, qint64 offset)
{
    const qint64 inside = std::clamp<qint64>(offset, 0, text.size());
    return canCutForFinding(text, inside) ? inside : inside + 1;
}

} // namespace penwick
