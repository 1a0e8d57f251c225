#include "app/MenuBar.h"

#include "app/MenuStyle.h"
#include "app/ResponderActions.h"
#include "command/CommandShortcut.h"
#include "controls/VerbatimText.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>

#include <map>

namespace penwick {

namespace {

QAction::MenuRole menuRole(CommandId command)
{
    switch (command) {
    case CommandId::About:
        return QAction::AboutRole;
    case CommandId::Quit:
        return QAction::QuitRole;
    default:
        // Without `NoRole`, Qt guesses the role from the text, such as a macro's name.
        return QAction::NoRole;
    }
}

void addItem(QMenu *menu, const MenuItemRow &row, const MenuHandlers &handlers)
{
    if (!row.command) {
        menu->addSeparator();
        return;
    }
    const CommandId command = *row.command;
    QAction *action = menu->addAction(verbatimText(commandTitle(command)));
    action->setShortcut(shownKey(command));
    action->setMenuRole(menuRole(command));
    action->setData(QVariant::fromValue(static_cast<int>(command)));
    if (isResponderCommand(command)) {
        QObject::connect(
            action, &QAction::triggered, action, [command] { performResponderCommand(command); });
    } else {
        QObject::connect(action, &QAction::triggered, action, [command, handlers] {
            handlers.perform(command);
        });
        action->setEnabled(handlers.isEnabled(command));
    }
}

void setEditStates(const QMenu *menu, bool isOpen)
{
    for (QAction *action : menu->actions()) {
        const auto command = static_cast<CommandId>(action->data().toInt());
        if (!action->isSeparator() && isResponderCommand(command))
            action->setEnabled(!isOpen || canPerformResponderCommand(command));
    }
}

/// Shows in the open menu which edit commands are possible. While the menu is closed all of them
/// are enabled: a disabled item would keep blocking its shortcut after the reason is gone.
void validateWhileOpen(QMenu *menu)
{
    QObject::connect(menu, &QMenu::aboutToShow, menu, [menu] { setEditStates(menu, true); });
    QObject::connect(menu, &QMenu::aboutToHide, menu, [menu] { setEditStates(menu, false); });
}

} // namespace

QString macroMenuItemIdentifier()
{
    return QStringLiteral("macroMenuItem");
}

void buildMenuBar(QMainWindow *window, const MenuHandlers &handlers)
{
    auto *bar = new QMenuBar;
    auto *style = new MenuStyle(bar);
    bar->setStyle(style);
    std::map<MenuId, QMenu *> menus;
    for (const MenuRow &row : menuRows()) {
        QMenu *menu = bar->addMenu(verbatimText(menuTitle(row)));
        menu->setStyle(style);
        menus[row.menu] = menu;
        if (row.menu == MenuId::Macro)
            menu->menuAction()->setObjectName(macroMenuItemIdentifier());
    }
    for (const MenuItemRow &row : menuItemRows())
        addItem(menus.at(row.menu), row, handlers);
    validateWhileOpen(menus.at(MenuId::Edit));
    rememberFocusBefore(bar);
    auto *open = makeShortcut(CommandId::OpenMenuBar, bar);
    QObject::connect(open, &QShortcut::activated, bar, [bar] {
        bar->setActiveAction(bar->actions().constFirst());
    });
    window->setMenuBar(bar); // The window deletes the old bar.
}

QMenu *macroMenu(const QMainWindow *window)
{
    const auto *bar = qobject_cast<const QMenuBar *>(window->menuWidget());
    if (bar == nullptr)
        return nullptr;
    for (QAction *action : bar->actions())
        if (action->objectName() == macroMenuItemIdentifier())
            return action->menu();
    return nullptr;
}

} // namespace penwick
