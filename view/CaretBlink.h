#pragma once

#include <QTimer>

#include <functional>

namespace penwick {

/// The blinking of a caret, at the rate of the desktop.
class CaretBlink final
{
public:
    /// \param toggled called when the timer has shown or hidden the caret.
    explicit CaretBlink(const std::function<void()> &toggled);

    [[nodiscard]] bool isShown() const { return m_isShown; }

    /// Shows the caret and, if `hasFocus`, starts to blink.
    void restart(bool hasFocus);

private:
    QTimer m_timer;
    bool m_isShown = true;
};

} // namespace penwick
