#pragma once

#include <QString>

namespace penwick {

/// Returns the text for a menu, an item or a button that shows `title` literally: an ampersand
/// would mark an access key, and a tab would start a shortcut.
[[nodiscard]] QString verbatimText(const QString &title);

/// Returns the text for a tool tip that shows `text` literally, even if it contains markup.
[[nodiscard]] QString verbatimToolTip(const QString &text);

/// The same for a long text: its line breaks stay, long lines wrap, and a text of more than 2000
/// UTF-16 code units or 30 lines ends there with an ellipsis.
[[nodiscard]] QString longToolTip(const QString &text);

/// Returns `text` on one line, for names from untrusted sources: line breaks, control characters
/// and characters that change the text direction become U+FFFD.
[[nodiscard]] QString visibleLine(const QString &text);

} // namespace penwick
