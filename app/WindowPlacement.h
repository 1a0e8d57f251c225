#pragma once

#include <QPoint>
#include <QSize>

namespace penwick {

class EditorWindowController;

/// Puts the tab in front of its window, and that in front of all, with the keyboard in it.
void bringForward(const EditorWindowController &controller);

/// The place closest to `position` where a frame of that size is on one screen as a whole, or at
/// least its top left corner.
[[nodiscard]] QPoint onScreen(const QPoint &position, const QSize &size);

} // namespace penwick
