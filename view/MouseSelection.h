#pragma once

#include "view/SelectionGesture.h"
#include "view/TextViewport.h"

#include <QBasicTimer>
#include <QMouseEvent>
#include <QObject>

#include <functional>

namespace penwick {

/// Turns mouse events of a viewport into selections, and scrolls while the mouse is dragged above
/// or below it.
class MouseSelection final : public QObject
{
public:
    /// Selects from `anchor`, the fixed end, to `caret`. Offsets are UTF-16 code units, 0-based.
    using Select = std::function<void(qint64 anchor, TextCaret caret)>;

    /// \param viewport not owned; must outlive this object.
    MouseSelection(TextViewport *viewport, Select select);

    /// True when a press of the left button would be the third of a triple click.
    [[nodiscard]] bool wouldBeThirdPress(const QMouseEvent &event) const;
    /// Handles a press of the left button.
    /// \param anchor the fixed end of the selection that a press with Shift extends.
    void press(const QMouseEvent &event, qint64 anchor);
    /// Handles the second press of a double click.
    void doublePress(const QMouseEvent &event);
    /// Handles a move of the mouse.
    /// \param height of the viewport, in logical pixels.
    void move(const QMouseEvent &event, qreal height);
    /// Handles the release of the left button.
    void release();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void extendTo(QPointF point);

    TextViewport *m_viewport;
    Select m_select;
    SelectionGesture m_gesture;
    QBasicTimer m_autoscrollTimer;
    QPointF m_position; // The last known position of the mouse.
    qreal m_height = 0;
};

} // namespace penwick
