#include "window/TabListButton.h"

#include "command/CommandShortcut.h"
#include "controls/VerbatimText.h"
#include "platform/desktop/ContextMenu.h"
#include "platform/settings/NotificationCenter.h"
#include "view/TextViewMenu.h"
#include "window/EditorTabBar.h"
#include "window/TabNames.h"
#include "wording/UIWordingProfileManager.h"

#include <QMenu>
#include <QShortcut>

using namespace Qt::StringLiterals;

namespace penwick {

TabListButton::TabListButton(EditorTabBar *bar, QWidget *parent)
    : QToolButton(parent)
    , m_bar(bar)
{
    setObjectName(u"tabList"_s);
    setArrowType(Qt::DownArrow);
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus); // A click leaves the focus in the text.
    connect(this, &QToolButton::clicked, this, &TabListButton::popUp);
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *press = new QShortcut(key, this);
        press->setContext(Qt::WidgetShortcut);
        connect(press, &QShortcut::activated, this, &QToolButton::click);
    }
    // A child of the window: a shortcut of a hidden widget does nothing.
    connect(makeShortcut(CommandId::ShowTabList, parent),
            &QShortcut::activated,
            this,
            &TabListButton::popUp);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { relabel(); });
    relabel();
}

void TabListButton::relabel()
{
    const QString name = commandTitle(CommandId::ShowTabList);
    setAccessibleName(name);
    setToolTip(
        verbatimToolTip(name, shownKey(CommandId::ShowTabList).toString(QKeySequence::NativeText)));
}

void TabListButton::popUp()
{
    constexpr int kWidth = 60; // In widths of an average character.
    auto *menu = new QMenu(this);
    menu->setToolTipsVisible(true);
    menu->setStyleSheet(u"QMenu { menu-scrollable: 1 }"_s); // In one column, however long.
    const QFontMetrics metrics = menu->fontMetrics();
    const QStringList names =
        distinctNames(m_bar->names(), [&metrics](qsizetype /*index*/, const QString &name) {
            return metrics.elidedText(name, Qt::ElideMiddle, kWidth * metrics.averageCharWidth());
        });
    for (int i = 0; i < m_bar->count(); ++i) {
        const QString mark = m_bar->isEdited(i) ? u"\t●"_s : QString();
        QAction *action = menu->addAction(verbatimText(names.at(i)) + mark);
        action->setToolTip(m_bar->tabToolTip(i));
        action->setCheckable(true);
        action->setChecked(i == m_bar->currentIndex());
        connect(action, &QAction::triggered, m_bar, [bar = m_bar, i] { bar->setCurrentIndex(i); });
        if (action->isChecked())
            menu->setActiveAction(action);
    }
    const QWidget *place = isVisible() ? static_cast<QWidget *>(this) : m_bar;
    const int x = place->width() - menu->sizeHint().width();
    popUpContextMenu(menu, place->mapToGlobal(QPoint(x, place->height())));
}

} // namespace penwick
