#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

namespace penwick {

/// The characters of a line end.
[[nodiscard]] QStringView lineEndUnits(LineEnd lineEnd);

/// The first line end of `text`; a line feed when it has none. O(log n), as is the next function.
[[nodiscard]] LineEnd firstLineEnd(const Text &text);
/// The line end that `text` has most often; of several, the one that comes first.
[[nodiscard]] LineEnd mostFrequentLineEnd(const Text &text);

/// The line end to insert in place of `range` for a new line: the first one of the text, unless it
/// would join a lone CR or LF beside it to one CR LF; then another of that character.
[[nodiscard]] LineEnd lineEndToInsert(const Text &text, TextRange range);

/// `range`, widened where its line ends, once they are replaced by `lineEnd`, would join a CR or LF
/// outside it to one CR LF. A CR LF pair is inside or outside as a whole.
[[nodiscard]] TextRange rangeOfLineEnds(const Text &text, TextRange range, LineEnd lineEnd);

} // namespace penwick
