#include "window/BlankSwitch.h"

#include "command/CommandShortcut.h"
#include "platform/settings/NotificationCenter.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"

#include <QMenu>
#include <QShortcut>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kSetting = u"showsBlanks"_s;
const QString kDidChange = u"ShowsBlanksDidChange"_s;

} // namespace

BlankSwitch::BlankSwitch(TextView *view, QWidget *scope, UserDefaults &defaults)
    : QObject(scope)
    , m_defaults(defaults)
{
    connect(makeShortcut(CommandId::ShowBlanks, scope),
            &QShortcut::activated,
            this,
            &BlankSwitch::toggle);
    connect(view, &TextView::contextMenuWillOpen, this, &BlankSwitch::extendMenu);
    NotificationCenter::defaultCenter().addObserver(
        kDidChange, this, [this, view] { view->setShowsBlanks(isOn()); });
    view->setShowsBlanks(isOn());
}

bool BlankSwitch::isOn() const
{
    return m_defaults.string(kSetting) == u"true"_s;
}

void BlankSwitch::toggle()
{
    m_defaults.setBoolean(kSetting, !isOn());
    NotificationCenter::defaultCenter().post(kDidChange);
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
