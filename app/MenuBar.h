#pragma once

#include "app/MenuTable.h"

#include <functional>

class QMenu;
class QMenuBar;
class QMainWindow;
class QWidget;

namespace penwick {

/// The callbacks of a menu bar. Both may be called for as long as the bar exists.
struct MenuHandlers
{
    std::function<void(CommandId)> perform;
    std::function<bool(CommandId)> isEnabled;
};

/// Object name of the macro menu's item in the bar.
[[nodiscard]] QString macroMenuItemIdentifier();

/// Gives `window` a new menu bar with every title looked up anew, and deletes the old bar. The
/// macro menu is still empty. Items whose command `isEnabled` refuses are disabled; Undo, Redo,
/// Cut, Copy and Paste go to the widget with the keyboard focus, by the name of the operation. F10
/// opens the first menu.
void buildMenuBar(QMainWindow *window, const MenuHandlers &handlers);

/// The macro menu of a window's bar; null without a bar.
[[nodiscard]] QMenu *macroMenu(const QMainWindow *window);

} // namespace penwick
