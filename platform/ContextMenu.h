#pragma once

#include <QPoint>

class QMenu;

namespace penwick {

/// Shows `menu` with its corner at `globalPosition`, in the display's coordinates, and deletes it
/// when it is closed. Returns at once. For use in a context menu event: the rest of the click that
/// asked for the menu does not reach it.
void popUpContextMenu(QMenu *menu, QPoint globalPosition);

} // namespace penwick
