#include "platform/ContextMenu.h"

#include <QEvent>
#include <QMenu>

namespace penwick {

namespace {

/// Keeps from a menu the double click that the toolkit reports behind a second press which is quick
/// enough. The press has opened the menu, so the double click goes to the menu, which would close
/// on the release after it. A press that the menu gets itself ends the watch.
class RestOfClick final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *menu, QEvent *event) override
    {
        const bool isDoubleClick = event->type() == QEvent::MouseButtonDblClick;
        if (isDoubleClick || event->type() == QEvent::MouseButtonPress)
            menu->removeEventFilter(this);
        return isDoubleClick;
    }
};

} // namespace

void popUpContextMenu(QMenu *menu, QPoint globalPosition)
{
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->installEventFilter(new RestOfClick(menu));
    menu->popup(globalPosition);
}

} // namespace penwick
