#pragma once

#include <QByteArray>

#include <optional>

/// Startup notification for launchers and window managers of the X Window System, beyond what Qt
/// does for its own process. Does nothing on other window systems.
namespace penwick::startup {

/// Returns the display's time of the user action that `startupId` belongs to; std::nullopt if the
/// id does not contain it.
[[nodiscard]] std::optional<quint32> timeOf(const QByteArray &startupId);

/// Announces that the start is complete, so that no launcher waits for a window of that process.
void end(const QByteArray &startupId);

/// Asks the window manager to raise and focus a window.
/// \param window the window's number on the display.
/// \param time the display's time of the user's request.
void activate(quint64 window, quint32 time);

/// The message that `end` sends, before it is split into pieces.
[[nodiscard]] QByteArray endMessage(const QByteArray &startupId);

} // namespace penwick::startup
