#pragma once

#include <QKeySequence>
#include <QString>

#include <span>

namespace penwick {

/// The menus of the bar, from the leading edge. The macro menu is filled elsewhere.
enum class MenuId { Application, File, Edit, Macro, Profile, Help };

/// What a menu item does.
enum class MenuCommand {
    Separator,
    About,
    Quit,
    NewDocument,
    OpenDocument,
    PerformClose,
    SaveDocument,
    SaveDocumentAs,
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    ShowProfileManager,
    CheckForUpdates,
    ShowMacroManager,
    RunTestMacro,
    RunTestMacroSelection,
};

/// One menu of the bar.
struct MenuRow
{
    MenuId menu;
    QStringView titleKey;
};

/// One item of a menu.
struct MenuItemRow
{
    MenuId menu;
    MenuCommand command;
    QStringView titleKey = {};
    QStringView titleSuffix = {}; ///< Appended to the looked-up title.
    char16_t key = 0;             ///< With Ctrl, and Shift for a capital letter. 0: none.
};

[[nodiscard]] std::span<const MenuRow> menuRows();
[[nodiscard]] std::span<const MenuItemRow> menuItemRows();

/// The title in the active wording.
[[nodiscard]] QString menuTitle(const MenuRow &row);
[[nodiscard]] QString menuTitle(const MenuItemRow &row);

/// Empty when the item has no key.
[[nodiscard]] QKeySequence keyEquivalent(const MenuItemRow &row);

} // namespace penwick
