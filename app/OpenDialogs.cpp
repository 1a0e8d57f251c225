#include "app/OpenDialogs.h"

#include "window/MacroRunNotice.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>

#include <algorithm>

namespace penwick {

namespace {

/// Returns a visible modal window that fulfils the condition; null when there is none.
template <typename Condition> QWidget *modalWindow(const Condition &condition)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.begin(), windows.end(), [&](const QWidget *window) {
        return window->isVisible() && window->isModal() && condition(window);
    });
    return found != windows.end() ? *found : nullptr;
}

} // namespace

QWidget *OpenDialogs::front()
{
    return QApplication::activeModalWidget();
}

QWidget *OpenDialogs::question()
{
    return modalWindow([](const QWidget *modal) {
        return qobject_cast<const MacroRunNotice *>(modal) == nullptr;
    });
}

bool OpenDialogs::areOpen()
{
    return front() != nullptr || QApplication::activePopupWidget() != nullptr;
}

bool OpenDialogs::block(const QWidget *window)
{
    const auto blocksIt = [window](const QWidget *modal) {
        if (modal == window)
            return false;
        return modal->windowModality() == Qt::ApplicationModal ||
               modal->parentWidget() == nullptr || modal->parentWidget()->window() == window;
    };
    return modalWindow(blocksIt) != nullptr;
}

void OpenDialogs::watch()
{
    qApp->installEventFilter(this);
}

bool OpenDialogs::eventFilter(QObject *watched, QEvent *event)
{
    const auto *widget = event->type() == QEvent::Hide ? qobject_cast<QWidget *>(watched) : nullptr;
    if (widget == nullptr || !widget->isWindow())
        return false;
    qApp->removeEventFilter(this);
    // The event loop of the dialog ends with the present turn, and no `awake` comes before that
    // end. A call that is queued now could come earlier, if code in this turn sends posted events
    // itself.
    connect(QAbstractEventDispatcher::instance(),
            &QAbstractEventDispatcher::awake,
            this,
            &OpenDialogs::closed,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    return false;
}

} // namespace penwick
