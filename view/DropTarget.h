#pragma once

#include "view/TextViewport.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointF>

#include <functional>
#include <optional>

namespace penwick {

/// The caret in a viewport at which the text of a drag would be dropped. Scrolls the viewport while
/// the mouse is near its upper or lower edge.
class DropTarget final : public QObject
{
public:
    /// \param viewport not owned; must outlive this object.
    /// \param changed called when the caret may have moved or the viewport has scrolled.
    DropTarget(TextViewport *viewport, std::function<void()> changed);

    /// Moves the caret to the place nearest to `point`.
    void moveTo(QPointF point);
    /// Removes the caret and stops scrolling. Call this when the drag leaves the viewport or ends.
    void clear();

    /// The caret, or none while no drag is over the viewport.
    [[nodiscard]] std::optional<TextCaret> caret() const { return m_caret; }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    [[nodiscard]] qreal scrollDistance() const;

    TextViewport *m_viewport;
    std::function<void()> m_changed;
    std::optional<TextCaret> m_caret;
    QPointF m_point;
    QBasicTimer m_scrollTimer;
};

} // namespace penwick
