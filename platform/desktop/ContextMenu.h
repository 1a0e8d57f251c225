#pragma once

#include <QPoint>

class QMenu;

namespace penwick {

/// Shows `menu` with its corner at `globalPosition`, in screen coordinates, and deletes it when it
/// is closed. Returns at once. Call this from a context menu event: the rest of the click that
/// opened the menu does not reach it.
void popUpContextMenu(QMenu *menu, QPoint globalPosition);

} // namespace penwick
