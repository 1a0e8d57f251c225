#pragma once

#include "view/InputMethod.h"

#include <QBasicTimer>
#include <QDragEnterEvent>
#include <QWidget>

#include <functional>
#include <optional>

class QDrag;

namespace penwick {

/// Drags the selection out of a text view, and takes text that is dropped on it. Scrolls while a
/// drag is near the upper or lower edge.
class DragAndDrop final : public QObject
{
public:
    /// Runs a drag and returns the action that was performed.
    using Runner = std::function<Qt::DropAction(QDrag *drag)>;

    /// \param view, viewport, editing, inputMethod not owned; must outlive this object.
    /// \param targetChanged called when `target` may have changed or the viewport has scrolled.
    DragAndDrop(QWidget *view,
                TextViewport *viewport,
                TextEditing *editing,
                InputMethod *inputMethod,
                std::function<void()> targetChanged);

    /// Replaces the default runner, which blocks until the user releases the mouse button.
    void setRunner(Runner runner) { m_runner = std::move(runner); }

    /// Drags the selection. The view, and this object with it, may be destroyed meanwhile.
    void drag();

    /// Handle the events of a drag over the viewport.
    void enter(QDragEnterEvent *event) { accepts(event); }

    void move(QDragMoveEvent *event);
    void leave(QDragLeaveEvent *event);
    void drop(QDropEvent *event);

    /// The caret where a drop would insert the text; none while no drag is over the viewport.
    [[nodiscard]] std::optional<TextCaret> target() const { return m_target; }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    static bool accepts(QDropEvent *event);
    void updateTarget();
    void clearTarget();
    [[nodiscard]] QPointF scrollDistance() const;

    QWidget *m_view;
    TextViewport *m_viewport;
    TextEditing *m_editing;
    InputMethod *m_inputMethod;
    std::function<void()> m_targetChanged;
    Runner m_runner;
    const QMimeData *m_dragged = nullptr; // Dragged from here; null once dropped here.
    std::optional<TextCaret> m_target;
    QPointF m_point; // Of the drag over the viewport.
    QBasicTimer m_scrollTimer;
};

} // namespace penwick
