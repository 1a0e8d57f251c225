#pragma once

#include "view/TextSelection.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QObject>

#include <optional>

namespace penwick {

/// Turns mouse events of a viewport into selections: by characters, after a double click by words,
/// after a triple click by lines; with Alt, rectangles. Scrolls while the mouse is dragged above or
/// below the viewport.
class MouseSelection final : public QObject
{
public:
    /// \param viewport, selection not owned; must outlive this object.
    MouseSelection(TextViewport *viewport, TextSelection *selection);

    /// Handles a press of the left button. One on the selection selects only when it is released,
    /// because it may start a drag.
    void press(const QMouseEvent &event);
    /// Handles a press of the left button beside the text: selects the line at its height, or with
    /// Shift extends the selection to that line.
    void pressLine(const QMouseEvent &event);
    /// Handles the second press of a double click.
    void doublePress(const QMouseEvent &event);
    /// Handles a move of the mouse. Returns true when a drag of the selected text starts.
    [[nodiscard]] bool move(const QMouseEvent &event);
    /// Handles the release of the left button.
    void release(const QMouseEvent &event);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    enum class Unit { Character, Word, Line };

    [[nodiscard]] bool wouldBeThirdPress(QPointF point) const;
    [[nodiscard]] TextRange unitAround(qint64 offset) const;
    void startAt(const QMouseEvent &event);
    [[nodiscard]] bool startRectangle(const QMouseEvent &event);
    void start(Unit unit, qint64 offset);
    void extendTo(QPointF point);
    [[nodiscard]] QPointF beyond() const;
    void select(qint64 anchor, TextCaret caret);

    TextViewport *m_viewport;
    TextSelection *m_selection;
    Unit m_unit = Unit::Character;       // The unit by which the selection grows.
    TextRange m_origin;                  // What the press selected.
    std::optional<ColumnPlace> m_corner; // The fixed corner of a rectangle.
    bool m_isActive = false;
    QElapsedTimer m_sinceDoublePress;
    QPointF m_doublePressPoint;
    std::optional<QPointF> m_dragPress; // A press on the selection that may start a drag.
    QPointF m_position;                 // The last known position of the mouse in a move.
    QBasicTimer m_autoscrollTimer;
};

} // namespace penwick
