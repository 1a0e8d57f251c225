#pragma once

#include "view/SelectionGesture.h"
#include "view/TextSelection.h"
#include "view/TextViewport.h"

#include <QBasicTimer>
#include <QMouseEvent>
#include <QObject>

namespace penwick {

/// Turns mouse events of a viewport into selections, and scrolls while the mouse is dragged above
/// or below it.
class MouseSelection final : public QObject
{
public:
    /// \param viewport, selection not owned; must outlive this object.
    MouseSelection(TextViewport *viewport, TextSelection *selection);

    /// True when a press of the left button would be the third of a triple click.
    [[nodiscard]] bool wouldBeThirdPress(const QMouseEvent &event) const;
    /// Handles a press of the left button.
    void press(const QMouseEvent &event);
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
    void select(qint64 anchor, TextCaret caret);
    void extendTo(QPointF point);

    TextViewport *m_viewport;
    TextSelection *m_selection;
    SelectionGesture m_gesture;
    QBasicTimer m_autoscrollTimer;
    QPointF m_position; // The last known position of the mouse.
    qreal m_height = 0;
};

} // namespace penwick
