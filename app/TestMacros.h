#pragma once

#include "macro/library/Macro.h"

namespace penwick {

// The macros that are part of the menu and not of the store; only id, name and code are set.

/// A macro that replaces the whole text by a message with the present time.
[[nodiscard]] Macro replaceAllTestMacro();
/// A macro that wraps the selected text in a message; without a selection it shows a notification.
[[nodiscard]] Macro replaceSelectionTestMacro();

} // namespace penwick
