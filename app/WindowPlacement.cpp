#include "app/WindowPlacement.h"

#include "platform/desktop/WindowActivation.h"
#include "window/EditorWindowController.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace penwick {

void bringForward(const EditorWindowController &controller)
{
    EditorWindow *window = controller.window();
    window->setCurrentController(&controller);
    bringForward(window);
}

QPoint onScreen(const QPoint &position, const QSize &size)
{
    const QScreen *screen = QGuiApplication::screenAt(position);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    const QRect available = screen->availableGeometry();
    const int right = std::max(available.left(), available.right() - size.width());
    const int bottom = std::max(available.top(), available.bottom() - size.height());
    return {std::clamp(position.x(), available.left(), right),
            std::clamp(position.y(), available.top(), bottom)};
}

} // namespace penwick
