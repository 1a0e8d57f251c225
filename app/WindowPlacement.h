#pragma once

#include <QPoint>
#include <QSize>

namespace penwick {

class EditorWindowController;

/// Brings the tab to the front of its window, and the window to the front with the keyboard focus.
void bringForward(const EditorWindowController &controller);

/// The position closest to `position` at which a frame of that size is entirely on one screen, or
/// at least its top left corner.
[[nodiscard]] QPoint onScreen(const QPoint &position, const QSize &size);

} // namespace penwick
