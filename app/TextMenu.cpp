#include "app/TextMenu.h"

#include "app/MacroMenu.h"
#include "command/CommandShortcut.h"
#include "view/TextViewMenu.h"

#include <QMenu>

namespace penwick {

void extendTextMenu(QMenu *menu,
                    const QList<Macro> &macros,
                    const MenuHandlers &handlers,
                    const std::function<void(const QString &id)> &runMacro)
{
    menu->addSeparator();
    menu->addAction(textMenuEntry(commandTitle(CommandId::GoToLine), shownKey(CommandId::GoToLine)),
                    menu,
                    [handlers] { handlers.perform(CommandId::GoToLine); });
    menu->addSeparator();
    menu->setToolTipsVisible(true);
    addMacroItems(menu, macros, runMacro);
}

} // namespace penwick
