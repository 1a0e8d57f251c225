#pragma once

#include <QByteArray>

#include <optional>

/// How starters and window managers of the X Window System follow a start, beyond what the toolkit
/// does for its own process. Elsewhere nothing happens.
namespace penwick::startup {

/// The display's time at which the person started what has this id; nothing where it does not say.
[[nodiscard]] std::optional<quint32> timeOf(const QByteArray &startupId);

/// Says that the start is over, so that nobody waits for a window of that process.
void end(const QByteArray &startupId);

/// Asks for the window, by its number on the display, to come forward with the keyboard in it.
void activate(quint64 window, quint32 time);

/// The message of `end`, before it is cut to pieces.
[[nodiscard]] QByteArray endMessage(const QByteArray &startupId);

} // namespace penwick::startup
