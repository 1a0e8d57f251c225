#pragma once

#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace penwick::test {

/// Returns the size that a window of that size has on its screen. The offscreen platform's screen
/// is narrower than the windows that are 900 wide.
inline QSize cutToScreen(const QWidget *window, const QSize &size)
{
    const QWindow *handle = window->windowHandle();
    const bool isShown = handle != nullptr && handle->isExposed();
    return size.boundedTo(window->screen()->availableGeometry().size().shrunkBy(
        isShown ? handle->frameMargins() : QMargins()));
}

} // namespace penwick::test
