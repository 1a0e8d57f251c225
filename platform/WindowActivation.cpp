#include "platform/WindowActivation.h"

#include <QWidget>

namespace penwick {

void bringForward(QWidget *window)
{
    // Not showNormal(), which would take a maximised window's size away.
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

void allowActivation(const QByteArray &activationToken, const QByteArray & /*startupId*/)
{
    // The toolkit takes it from there with the next window that it activates.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken);
}

} // namespace penwick
