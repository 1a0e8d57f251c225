#include "window/BlankSwitch.h"

#include "command/CommandShortcut.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"

#include <QMenu>
#include <QShortcut>

namespace penwick {

BlankSwitch::BlankSwitch(TextView *view, QWidget *scope, Preferences &preferences)
    : QObject(scope)
    , m_preferences(preferences)
{
    connect(makeShortcut(CommandId::ShowBlanks, scope),
            &QShortcut::activated,
            this,
            &BlankSwitch::toggle);
    connect(view, &TextView::contextMenuWillOpen, this, &BlankSwitch::extendMenu);
    Preferences::observe(
        PreferenceId::ShowsBlanks, this, [this, view] { view->setShowsBlanks(isOn()); });
    view->setShowsBlanks(isOn());
}

bool BlankSwitch::isOn() const
{
    return m_preferences.isOn(PreferenceId::ShowsBlanks);
}

void BlankSwitch::toggle()
{
    m_preferences.setOn(PreferenceId::ShowsBlanks, !isOn());
}

void BlankSwitch::extendMenu(QMenu *menu)
{
    menu->addSeparator();
    QAction *action = menu->addAction(
        textMenuEntry(commandTitle(CommandId::ShowBlanks), shownKey(CommandId::ShowBlanks)),
        this,
        &BlankSwitch::toggle);
    action->setCheckable(true);
    action->setChecked(isOn());
}

} // namespace penwick
