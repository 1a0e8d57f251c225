#pragma once

#include <QByteArray>

class QWidget;

namespace penwick {

/// Shows the window in front of the others and gives it the keyboard focus as far as the window
/// system allows.
void bringForward(QWidget *window);

/// Passes on what another process got from the window system when the user started it, so that the
/// next window that comes forward may take the focus. Announces to the launcher that the start is
/// complete. Both arguments may be empty.
void allowActivation(const QByteArray &activationToken, const QByteArray &startupId);

} // namespace penwick
