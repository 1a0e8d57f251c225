#pragma once

#include "text/CutText.h"

#include <QString>

class QAbstractButton;
class QLabel;

namespace penwick {

// Texts of unknown origin: the results are bounded, cut as by `cutText`, whatever the arguments
// are.

/// Returns the text for a menu, an item or a button that shows `title` literally: an ampersand
/// would mark an access key, and a tab would start a shortcut. Cut at `kLongestShown`.
[[nodiscard]] QString verbatimText(const QString &title);

/// Sets the text of a label or a button, which shows it literally, cut at `kLongestShown`. Set the
/// label's buddy before: a label with a buddy takes an ampersand for the mark of an access key, one
/// without does not.
void setVerbatimText(QLabel *label, const QString &text);
void setVerbatimText(QAbstractButton *button, const QString &text);

/// Returns the text for a tool tip that shows `text` literally, even if it contains markup. The
/// text is cut at `kLongestToolTip`.
/// \param hint stands on a line of its own below the text; empty for none.
[[nodiscard]] QString verbatimToolTip(const QString &text, const QString &hint = {});

/// The same for a long text: its line breaks stay, long lines wrap, and a text of more than 30
/// lines ends there with an ellipsis, too.
[[nodiscard]] QString longToolTip(const QString &text);

/// Returns `text` on one line, for names from untrusted sources: line breaks, control characters
/// and characters that change the text direction become U+FFFD.
/// \param longest where the line is cut, in UTF-16 code units.
[[nodiscard]] QString visibleLine(const QString &text, qsizetype longest = kLongestName);

} // namespace penwick
