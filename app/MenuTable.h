#pragma once

#include "command/Command.h"

#include <QString>

#include <optional>
#include <span>

namespace penwick {

/// The menus of the bar, from the leading edge. The macro menu is filled elsewhere.
enum class MenuId { Application, File, Edit, Macro, Profile, Help };

/// One menu of the bar.
struct MenuRow
{
    MenuId menu;
    QStringView titleKey;
};

/// One item of a menu: a command, or a separator.
struct MenuItemRow
{
    MenuId menu;
    std::optional<CommandId> command = std::nullopt;
};

[[nodiscard]] std::span<const MenuRow> menuRows();
[[nodiscard]] std::span<const MenuItemRow> menuItemRows();

/// The title in the active wording.
[[nodiscard]] QString menuTitle(const MenuRow &row);
} // namespace penwick
