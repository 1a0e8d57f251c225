#pragma once

#include "app/MenuBar.h"
#include "macro/library/Macro.h"

#include <QList>

class QMenu;

namespace penwick {

/// Adds entries at the end of the context menu of a text: macros, and going to a line.
/// \param macros those that are disabled get no entry.
/// \param runMacro called with the id of the chosen macro.
void extendTextMenu(QMenu *menu,
                    const QList<Macro> &macros,
                    const MenuHandlers &handlers,
                    const std::function<void(const QString &id)> &runMacro);

} // namespace penwick
