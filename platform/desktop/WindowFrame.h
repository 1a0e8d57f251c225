#pragma once

#include "platform/settings/UserDefaults.h"

#include <QString>
#include <QWidget>

namespace penwick {

/// Restores the position and size that the last window of this name had, and stores them for the
/// next one, whenever they change and when the window closes. A window that was closed on the full
/// screen comes back with its position and size before that. If none are stored under the name,
/// the window stays as it is.
///
/// Returns false, and does nothing, while another open window uses the name; hiding or closing a
/// window frees its name.
/// \param window a top-level window that is not shown yet.
/// \param defaults not owned; must outlive the window.
[[nodiscard]] bool
setFrameAutosaveName(QWidget *window, const QString &name, UserDefaults &defaults);

/// Cuts the window to what its screen has available, its frame included, and moves a window whose
/// position is set onto the screen. Lowers a minimum size that is in the way. Until the window is
/// first shown, the size of its frame is a guess, so the call fits the window once more then.
void fitToScreen(QWidget *window);

/// Centers the window on its screen.
void centerWindow(QWidget *window);

/// The position closest to `position` at which a frame of that size is entirely on one screen, or
/// at least its top left corner.
[[nodiscard]] QPoint positionOnScreen(const QPoint &position, const QSize &size);

} // namespace penwick
