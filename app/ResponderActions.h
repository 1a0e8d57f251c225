#pragma once

#include "app/MenuTable.h"

class QMenuBar;

namespace penwick {

/// True for the commands that go to whatever has the keyboard focus: Undo, Redo, Cut, Copy, Paste.
[[nodiscard]] bool isResponderCommand(MenuCommand command);

/// Calls the operation of the command's name (`undo`, `cut`, ...) on the widget with the keyboard
/// focus, or on the first of its parents that has one. Nothing happens when none has. A menu bar
/// that is walked through by keyboard stands for the widget that it took the focus from.
void performResponderCommand(MenuCommand command);

/// Keeps in mind which widget `bar` takes the keyboard focus from, each time that it does.
void rememberFocusBefore(QMenuBar *bar);

/// False when the widget that would take the command is known to have no use for it now.
[[nodiscard]] bool canPerformResponderCommand(MenuCommand command);

} // namespace penwick
