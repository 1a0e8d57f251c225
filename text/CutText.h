#pragma once

#include <QString>

namespace penwick {

// The longest texts of unknown origin that widgets and assistive technology get, in UTF-16 code
// units: the cost of a layout grows with its text, and a text may have any length.

/// A name within a message, so that the rest of the message is shown, too.
inline constexpr qsizetype kLongestName = 1000;
/// A line or a message.
inline constexpr qsizetype kLongestShown = 2000;
/// A tool tip, which shows more of a cut text.
inline constexpr qsizetype kLongestToolTip = 4000;

/// Returns `text`, or if it is longer than `longest` its start with an ellipsis: at most `longest`
/// UTF-16 code units of whole grapheme clusters; of a first cluster that is longer itself, whole
/// characters. The cost does not depend on the length of `text`.
/// \param longest at least 2.
[[nodiscard]] QString cutText(const QString &text, qsizetype longest);

} // namespace penwick
