#include "view/CaretBlink.h"

#include <QGuiApplication>
#include <QStyleHints>

namespace penwick {

CaretBlink::CaretBlink(const std::function<void()> &toggled)
{
    m_timer.callOnTimeout([this, toggled] {
        m_isShown = !m_isShown;
        toggled();
    });
}

void CaretBlink::restart(bool hasFocus)
{
    m_isShown = true;
    const int flashTime = QGuiApplication::styleHints()->cursorFlashTime();
    if (hasFocus && flashTime > 1)
        m_timer.start(flashTime / 2);
    else
        m_timer.stop();
}

} // namespace penwick
