#include "window/BlankSwitch.h"

#include "command/CommandShortcut.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"

#include <QMenu>
#include <QShortcut>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const QString kAll = u"all"_s; // A value of the setting `shownMarks`.

} // namespace

BlankSwitch::BlankSwitch(TextView *view, QWidget *scope, Preferences &preferences)
    : QObject(scope)
    , m_preferences(preferences)
{
    connect(makeShortcut(CommandId::ShowBlanks, scope),
            &QShortcut::activated,
            this,
            &BlankSwitch::toggle);
    connect(view, &TextView::contextMenuWillOpen, this, &BlankSwitch::extendMenu);
    const auto show = [this, view] { view->setShownMarks(marks()); };
    Preferences::observe(PreferenceId::ShowsBlanks, this, show);
    Preferences::observe(PreferenceId::ShownMarks, this, show);
    show();
}

ShownMarks BlankSwitch::marks() const
{
    if (!isOn())
        return ShownMarks::None;
    return m_preferences.text(PreferenceId::ShownMarks) == kAll ? ShownMarks::All
                                                                : ShownMarks::Blanks;
}

bool BlankSwitch::isOn() const
{
    return m_preferences.isOn(PreferenceId::ShowsBlanks);
}

void BlankSwitch::toggle()
{
    m_preferences.setOn(PreferenceId::ShowsBlanks, !isOn());
}

void BlankSwitch::toggleAll()
{
    const bool shows = !showsAll();
    m_preferences.setText(PreferenceId::ShownMarks, shows ? kAll : u"blanks"_s);
    if (shows)
        m_preferences.setOn(PreferenceId::ShowsBlanks, true);
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
