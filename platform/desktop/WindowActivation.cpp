#include "platform/desktop/WindowActivation.h"

#include "platform/desktop/StartupNotification.h"

#include <QWidget>

#include <optional>
#include <utility>

namespace penwick {

namespace {

/// The display's time of the user action that the next window comes forward for.
std::optional<quint32> &askedAt()
{
    static std::optional<quint32> time;
    return time;
}

} // namespace

void bringForward(QWidget *window)
{
    // Not showNormal(), which would restore the normal size of a maximised window.
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
    // Qt requests activation with the time of the last key that this process received, and a window
    // manager may refuse that as focus stealing.
    if (const auto time = std::exchange(askedAt(), std::nullopt))
        startup::activate(window->winId(), *time);
}

void allowActivation(const QByteArray &activationToken, const QByteArray &startupId)
{
    // Qt uses the token for the next window that it activates.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    askedAt() = startup::timeOf(startupId);
    if (!startupId.isEmpty())
        startup::end(startupId);
}

} // namespace penwick
