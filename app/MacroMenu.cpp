#include "app/MacroMenu.h"

#include "controls/VerbatimText.h"
#include "text/CutText.h"
#include "wording/WordingLookup.h"

#include <QAction>
#include <QMenu>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QAction *addPlainItem(QMenu *menu, const QString &title)
{
    QAction *action = menu->addAction(verbatimText(title));
    action->setMenuRole(QAction::NoRole); // Qt could take a macro's name such as "Quit" for a role.
    return action;
}

/// Returns the name, or its start and its end if it is so long that it would widen the menu much.
QString cutTitle(const QMenu *menu, const QString &name)
{
    constexpr int kMaximumWidth = 60; // In widths of an average character.
    // A name that fits if its characters have up to twice that width is not measured: the menu is
    // filled at the start, and measuring would load a glyph for each character from the font.
    if (name.size() <= kMaximumWidth / 2)
        return name;
    const QFontMetrics metrics = menu->fontMetrics();
    return metrics.elidedText(
        cutText(name, kLongestName), Qt::ElideMiddle, kMaximumWidth * metrics.averageCharWidth());
}

void addCommandItem(QMenu *menu, CommandId command, const MenuHandlers &handlers)
{
    QAction *action = addPlainItem(menu, commandTitle(command));
    action->setEnabled(handlers.isEnabled(command));
    QObject::connect(
        action, &QAction::triggered, action, [command, handlers] { handlers.perform(command); });
}

} // namespace

int addMacroItems(QMenu *menu,
                  const QList<Macro> &macros,
                  const std::function<void(const QString &id)> &runMacro)
{
    int count = 0;
    for (const Macro &macro : macros) {
        if (!macro.isEnabled)
            continue;
        const QString title = cutTitle(menu, macro.name);
        QAction *action = addPlainItem(menu, title);
        if (title != macro.name)
            action->setToolTip(verbatimToolTip(macro.name));
        action->setData(macro.id);
        QObject::connect(action, &QAction::triggered, action, [action, runMacro] {
            runMacro(action->data().toString());
        });
        ++count;
    }
    return count;
}

void rebuildMacroMenu(QMenu *menu,
                      const QList<Macro> &macros,
                      const MenuHandlers &handlers,
                      const std::function<void(const QString &id)> &runMacro)
{
    menu->clear();
    menu->setToolTipsVisible(true);
    if (addMacroItems(menu, macros, runMacro) == 0)
        addPlainItem(menu, wording::text(u"macro.notification.noMacro"_s))->setEnabled(false);
    menu->addSeparator();
    addCommandItem(menu, CommandId::ShowMacroManager, handlers);
    menu->addSeparator();
    addCommandItem(menu, CommandId::RunTestMacro, handlers);
    addCommandItem(menu, CommandId::RunTestMacroSelection, handlers);
}

} // namespace penwick
