#include "window/BlankSwitch.h"

#include "platform/settings/NotificationCenter.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"
#include "wording/WordingLookup.h"

#include <QMenu>
#include <QShortcut>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QKeyCombination kKey = Qt::CTRL | Qt::SHIFT | Qt::Key_B;
const QString kSetting = u"showsBlanks"_s;
const QString kDidChange = u"ShowsBlanksDidChange"_s;

} // namespace

BlankSwitch::BlankSwitch(TextView *view, QWidget *scope, UserDefaults &defaults)
    : QObject(scope)
    , m_defaults(defaults)
{
    auto *shortcut = new QShortcut(kKey, scope);
    connect(shortcut, &QShortcut::activated, this, &BlankSwitch::toggle);
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
        textMenuEntry(wording::text(u"editor.showBlanks"_s), kKey), this, &BlankSwitch::toggle);
    action->setCheckable(true);
    action->setChecked(isOn());
}

} // namespace penwick
