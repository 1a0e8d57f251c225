#pragma once

#include "controls/ElidedLabel.h"

namespace penwick {

/// The message of the status bar. A click dismisses it. Return, Enter, Space and Escape do so while
/// it has the keyboard focus, as does its press action for assistive technology.
class StatusMessageLabel final : public ElidedLabel
{
    Q_OBJECT

public:
    explicit StatusMessageLabel(QWidget *parent = nullptr);

    void dismiss() { Q_EMIT dismissed(); }

Q_SIGNALS:
    void dismissed();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    [[nodiscard]] QColor textColor() const override;
};

} // namespace penwick
