#pragma once

#include <QByteArray>

class QWidget;

namespace penwick {

/// Shows the window in front of the others, with the keyboard in it as far as the window system
/// lets it.
void bringForward(QWidget *window);

/// What another process got from the window system when the person started it, so that the next
/// window that comes forward may take the keyboard. Tells a launcher that its start is over. Both
/// may be empty.
void allowActivation(const QByteArray &activationToken, const QByteArray &startupId);

} // namespace penwick
