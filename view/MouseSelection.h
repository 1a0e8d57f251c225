#pragma once

#include "view/SelectionGesture.h"
#include "view/TextSelection.h"

#include <QBasicTimer>
#include <QMouseEvent>
#include <QObject>

#include <optional>

namespace penwick {

/// Turns mouse events of a viewport into selections, and scrolls while the mouse is dragged above
/// or below it.
class MouseSelection final : public QObject
{
public:
    /// \param viewport, selection not owned; must outlive this object.
    MouseSelection(TextViewport *viewport, TextSelection *selection);

    /// Handles a press of the left button. One on the selection selects only when it is released,
    /// because it may start a drag.
    void press(const QMouseEvent &event);
    /// Handles the second press of a double click.
    void doublePress(const QMouseEvent &event);
    /// Handles a move of the mouse. Returns true when a drag of the selected text starts.
    [[nodiscard]] bool move(const QMouseEvent &event);
    /// Handles the release of the left button.
    void release(const QMouseEvent &event);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void startAt(const QMouseEvent &event);
    void extendTo(QPointF point);
    void select(qint64 anchor, TextCaret caret);

    TextViewport *m_viewport;
    TextSelection *m_selection;
    SelectionGesture m_gesture;
    QBasicTimer m_autoscrollTimer;
    QPointF m_position;                 // The last known position of the mouse.
    std::optional<QPointF> m_dragPress; // A press on the selection that may start a drag.
};

} // namespace penwick
