#include "app/MenuStyle.h"

#include <QStyleOptionMenuItem>

namespace penwick {

MenuStyle::MenuStyle(QObject *parent)
{
    setParent(parent);
}

void MenuStyle::drawControl(ControlElement element,
                            const QStyleOption *option,
                            QPainter *painter,
                            const QWidget *widget) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element != CE_MenuBarItem || item == nullptr || !item->state.testFlag(State_Selected)) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    QStyleOptionMenuItem highlighted = *item;
    highlighted.state |= State_Sunken; // As with an open menu.
    QProxyStyle::drawControl(element, &highlighted, painter, widget);
}

int MenuStyle::styleHint(StyleHint hint,
                         const QStyleOption *option,
                         const QWidget *widget,
                         QStyleHintReturn *returnData) const
{
    return hint == SH_Menu_Scrollable ? 1
                                      : QProxyStyle::styleHint(hint, option, widget, returnData);
}

} // namespace penwick
