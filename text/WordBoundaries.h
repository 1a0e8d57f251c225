#pragma once

#include "text/Text.h"

#include <utility>

namespace penwick::words {

/// Word boundaries from a dictionary, which also finds words in Japanese, written without spaces.
/// Each call reads a bounded stretch around the offset. Offsets are UTF-16 code units, 0-based.
/// Blanks are spaces and tabs, including no-break and ideographic spaces.

/// Returns the start of the word after the one at `offset`, or the size of the text when there is
/// none. Skips blanks; stops before a line break, and after one when `offset` is at it.
[[nodiscard]] qint64 nextWordStart(const Text &text, qint64 offset);
/// Returns the start of the last word that begins before `offset`, or 0 when there is none. Skips
/// blanks; stops after a line break, and before one when `offset` is directly after it.
[[nodiscard]] qint64 previousWordStart(const Text &text, qint64 offset);
/// Returns the start and end of the selection that a double click on the character after `offset`
/// makes: a word, a run of blanks, or one other character.
[[nodiscard]] std::pair<qint64, qint64> wordAround(const Text &text, qint64 offset);
/// True where a whole word may begin or end: at the start and end of the text, next to a character
/// that is no letter, digit, mark or underscore, between words of the dictionary, and where a
/// script written without spaces meets another. Safe to call from several threads at once.
[[nodiscard]] bool isWordBoundary(const Text &text, qint64 offset);

} // namespace penwick::words
