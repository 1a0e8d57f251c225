#pragma once

#include "editor/SelectionGesture.h"
#include "editor/TextViewport.h"

#include <QBasicTimer>
#include <QMouseEvent>
#include <QObject>

#include <functional>

namespace penwick {

/// Turns the mouse's events over a viewport into selections, and scrolls while the mouse is held
/// above or below it.
class MouseSelection final : public QObject
{
public:
    /// Selects from `anchor`, which stays, to `caret`. UTF-16 code units, 0-based.
    using Select = std::function<void(qint64 anchor, TextCaret caret)>;

    /// \param viewport not owned; must outlive this object.
    MouseSelection(TextViewport *viewport, Select select);

    /// True when a press of the left button would be the third of a triple click.
    [[nodiscard]] bool isThirdPress(const QMouseEvent &event) const;
    /// The left button went down. \param anchor where a selection that Shift extends begins.
    void press(const QMouseEvent &event, qint64 anchor);
    /// It went down for the second time.
    void doublePress(const QMouseEvent &event);
    /// The mouse moved. \param height of the viewport, logical pixels.
    void move(const QMouseEvent &event, qreal height);
    /// The left button went up.
    void release();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void extendTo(QPointF point);

    TextViewport *m_viewport;
    Select m_select;
    SelectionGesture m_gesture;
    QBasicTimer m_autoscrollTimer;
    QPointF m_position; // Where the mouse was seen last.
    qreal m_height = 0;
};

} // namespace penwick
