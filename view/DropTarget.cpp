#include "view/DropTarget.h"

#include <QTimerEvent>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

constexpr int kScrollInterval = 30; // Milliseconds.

} // namespace

DropTarget::DropTarget(TextViewport *viewport, std::function<void()> changed)
    : m_viewport(viewport)
    , m_changed(std::move(changed))
{
}

void DropTarget::moveTo(QPointF point)
{
    m_point = point;
    m_caret = m_viewport->caretAt(point);
    if (scrollDistance() == 0)
        m_scrollTimer.stop();
    else if (!m_scrollTimer.isActive())
        m_scrollTimer.start(kScrollInterval, this);
    m_changed();
}

void DropTarget::clear()
{
    m_scrollTimer.stop();
    if (!m_caret)
        return;
    m_caret.reset();
    m_changed();
}

/// Returns the logical pixels to scroll per timer event, more the nearer the mouse is to the edge;
/// 0 outside the two stripes that scroll.
qreal DropTarget::scrollDistance() const
{
    const qreal height = m_viewport->size().height();
    const qreal stripe = std::min(m_viewport->style().rowHeight, height / 4);
    if (m_point.y() < stripe)
        return (m_point.y() - stripe) / 3 - 1;
    const qreal below = m_point.y() - (height - stripe);
    return below > 0 ? below / 3 + 1 : 0;
}

void DropTarget::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_scrollTimer.timerId())
        return;
    m_viewport->scrollByPixels(scrollDistance());
    m_caret = m_viewport->caretAt(m_point);
    m_changed();
}

} // namespace penwick
