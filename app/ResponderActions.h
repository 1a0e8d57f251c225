#pragma once

#include "app/MenuTable.h"

class QMenuBar;

namespace penwick {

/// True for the commands that go to the widget with the keyboard focus: Undo, Redo, Cut, Copy,
/// Paste, Select All, Deselect.
[[nodiscard]] bool isResponderCommand(CommandId command);

/// Calls the operation of the command's name (`undo`, `cut`, ...) on the widget with the keyboard
/// focus, or on its nearest ancestor in the window that has the operation. Does nothing when none
/// has it. When a menu bar has the focus, starts from the widget that had it before.
void performResponderCommand(CommandId command);

/// Records the widget that had the keyboard focus before `bar`, each time that `bar` gets it.
void rememberFocusBefore(QMenuBar *bar);

/// False when the widget that would receive the command is known to have no use for it now.
[[nodiscard]] bool canPerformResponderCommand(CommandId command);

} // namespace penwick
