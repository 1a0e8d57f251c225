#pragma once

#include "app/MenuTable.h"

#include <functional>

class QMenu;
class QMenuBar;
class QMainWindow;
class QWidget;

namespace penwick {

/// What a menu bar asks its owner. Both functions may be called as long as a bar lives.
struct MenuHandlers
{
    std::function<void(MenuCommand)> perform;
    std::function<bool(MenuCommand)> isEnabled;
};

/// Name of the macro menu's item in the bar.
[[nodiscard]] QString macroMenuItemIdentifier();

/// Gives `window` a new menu bar with every title looked up anew; its old bar goes. The macro menu
/// is there, but empty. Items whose command is not possible for good are disabled; Undo, Redo, Cut,
/// Copy and Paste go to whatever has the keyboard focus, by the name of the operation.
void buildMenuBar(QMainWindow *window, const MenuHandlers &handlers);

/// The macro menu of a window's bar; null without a bar.
[[nodiscard]] QMenu *macroMenu(const QMainWindow *window);

} // namespace penwick
