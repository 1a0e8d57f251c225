#pragma once

#include <QString>

namespace penwick {

/// The text of a menu, an item or a button that shows `title` as it is: an ampersand would be taken
/// for the mark of an access key, and a tab for the start of a shortcut.
[[nodiscard]] QString verbatimText(const QString &title);

/// The text of a tool tip that shows `text` as it is, also where it holds markup.
[[nodiscard]] QString verbatimToolTip(const QString &text);

/// `text` on one line, for names that anybody may have made up: what would break the line, steer
/// the direction of what stands around it or show nothing at all becomes a replacement character.
[[nodiscard]] QString visibleLine(const QString &text);

} // namespace penwick
