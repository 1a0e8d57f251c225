#pragma once

#include "macro/engine/MacroResult.h"
#include "text/Text.h"

#include <optional>

namespace penwick {

/// Returns the text with some of its lines replaced. Returns nothing when `edit` names no line (an
/// empty range) or a line that the text does not have. A final line feed is followed by one more,
/// empty line. The rest of the text is shared, not copied.
[[nodiscard]] std::optional<Text> textWithLinesReplaced(const Text &text, const ReplaceLines &edit);

/// Returns a script's line and column as a count of grapheme clusters from the start of the text,
/// where each line feed counts as one. The count is used as an offset in UTF-16 code units, which
/// is right only where every cluster is one unit long; existing scripts rely on this. O(log n).
///
/// \param line 0-based. For a line that the text does not have, the result is the number of
///        clusters in the text.
/// \param column 0-based; clamped to the line.
[[nodiscard]] qint64 offsetForLineColumn(qint64 line, qint64 column, const Text &text);

} // namespace penwick
