#pragma once

#include "app/MenuBar.h"
#include "macro/library/Macro.h"

#include <QList>

#include <functional>

namespace penwick {

/// Adds an item for each enabled macro. Returns their number.
/// \param runMacro called with the id of the chosen macro.
int addMacroItems(QMenu *menu,
                  const QList<Macro> &macros,
                  const std::function<void(const QString &id)> &runMacro);

/// Refills the macro menu: the enabled macros of `macros` in their order, or a disabled item saying
/// that there are none; then the manager and the two test macros. Names are shown verbatim; a long
/// one is cut in the middle and is the item's tool tip. A macro's item has its id as data.
/// \param runMacro called with the id of the macro whose item was chosen.
void rebuildMacroMenu(QMenu *menu,
                      const QList<Macro> &macros,
                      const MenuHandlers &handlers,
                      const std::function<void(const QString &id)> &runMacro);

} // namespace penwick
