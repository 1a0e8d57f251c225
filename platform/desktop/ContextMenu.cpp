#include "platform/desktop/ContextMenu.h"

#include <QEvent>
#include <QMenu>

namespace penwick {

namespace {

/// Keeps a double click from closing the menu. Qt reports a quick second press as a press and then
/// a double click. The press opens the menu, so the double click goes to the menu, which would
/// close on the next release. The filter removes itself after the double click or after the first
/// press on the menu itself.
class DoubleClickFilter final : public QObject
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
    menu->installEventFilter(new DoubleClickFilter(menu));
    menu->popup(globalPosition);
}

} // namespace penwick
