#pragma once

#include "platform/UserDefaults.h"

#include <QString>
#include <QWidget>

namespace penwick {

/// Gives a window the place and size that the last window of this name had, and keeps them for the
/// next one, whenever they change and when the window closes. A name that was never used leaves the
/// window as it is.
///
/// Returns false, and does nothing, while another open window holds the name; hiding or closing a
/// window sets its name free.
/// \param window a top-level window that is not shown yet.
/// \param defaults not owned; must outlive the window.
[[nodiscard]] bool
setFrameAutosaveName(QWidget *window, const QString &name, UserDefaults &defaults);

/// Puts the window into the middle of its screen.
void centerWindow(QWidget *window);

} // namespace penwick
