#include "platform/WindowActivation.h"

#include "platform/StartupNotification.h"

#include <QWidget>

#include <optional>
#include <utility>

namespace penwick {

namespace {

/// When the person asked for the next window to come forward, in the display's own time.
std::optional<quint32> &askedAt()
{
    static std::optional<quint32> time;
    return time;
}

} // namespace

void bringForward(QWidget *window)
{
    // Not showNormal(), which would take a maximised window's size away.
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
    // The toolkit asks with the time of the last key that it saw itself, and a window manager may
    // take that for a window that pushes in front of the person.
    if (const auto time = std::exchange(askedAt(), std::nullopt))
        startup::activate(window->winId(), *time);
}

void allowActivation(const QByteArray &activationToken, const QByteArray &startupId)
{
    // The toolkit takes it from there with the next window that it activates.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    askedAt() = startup::timeOf(startupId);
    if (!startupId.isEmpty())
        startup::end(startupId);
}

} // namespace penwick
