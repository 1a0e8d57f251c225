#pragma once

#include "macro/engine/MacroResult.h"
#include "text/Text.h"

#include <optional>

namespace penwick {

/// The text with some of its lines replaced. Nothing when `edit` names no line (an empty range), or
/// one that the text does not have: after a final line feed there is one more, empty line. The rest
/// of the text is shared, not copied.
[[nodiscard]] std::optional<Text> textWithLinesReplaced(const Text &text, const ReplaceLines &edit);

/// Where a script's line and column are, counting grapheme clusters and one for each line feed from
/// the start of the text. Scripts use the number as an offset in UTF-16 code units, which it is
/// only where every cluster is one unit long; they rely on it as it is. O(log n).
///
/// \param line 0-based; for one that the text does not have, the end of the text is meant.
/// \param column 0-based; past the end of the line, its end is meant, and 0 where it is negative.
[[nodiscard]] qint64 offsetForLineColumn(qint64 line, qint64 column, const Text &text);

} // namespace penwick
