#pragma once

#include "text/Text.h"

#include <utility>

namespace penwick::words {

/// Words as a dictionary finds them, so that Japanese without blanks divides sensibly. Each call
/// looks at a bounded stretch around the offset. Offsets are UTF-16 code units, 0-based.

/// Start of the word that follows the one at `offset`; blanks between are skipped, a line break is
/// stopped at. The text's size at the end.
[[nodiscard]] qint64 nextWordStart(const Text &text, qint64 offset);
/// End of the word at or after `offset`.
[[nodiscard]] qint64 nextWordEnd(const Text &text, qint64 offset);
/// Start of the word at or before `offset`. 0 at the start.
[[nodiscard]] qint64 previousWordStart(const Text &text, qint64 offset);
/// Start and end of what a double click on the character after `offset` selects: a word, a run of
/// blanks, or one other character.
[[nodiscard]] std::pair<qint64, qint64> wordAround(const Text &text, qint64 offset);
/// True where a whole word may begin or end: at the text's ends; next to anything that is no
/// letter, digit, mark or underscore; between words that the dictionary knows, or where a script
/// that is written without blanks meets another. Safe to call from several threads at once.
[[nodiscard]] bool isWordBoundary(const Text &text, qint64 offset);

} // namespace penwick::words
