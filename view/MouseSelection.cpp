#include "view/MouseSelection.h"

#include <QGuiApplication>
#include <QStyleHints>
#include <QTimerEvent>

#include <algorithm>

namespace penwick {

namespace {

constexpr int kAutoscrollInterval = 30; // Milliseconds.

} // namespace

MouseSelection::MouseSelection(TextViewport *viewport, TextSelection *selection)
    : m_viewport(viewport)
    , m_selection(selection)
{
}

void MouseSelection::press(const QMouseEvent &event)
{
    const bool mayDrag = !event.modifiers().testFlag(Qt::ShiftModifier) &&
                         !m_gesture.wouldBeThirdPress(event.position()) &&
                         m_selection->contains(event.position());
    if (mayDrag)
        m_dragPress = event.position();
    else
        startAt(event);
}

void MouseSelection::startAt(const QMouseEvent &event)
{
    m_position = event.position();
    const TextCaret hit = m_viewport->caretAt(m_position);
    if (event.modifiers() & Qt::ShiftModifier) {
        m_gesture.pressExtending(m_selection->anchor());
        select(m_selection->anchor(), hit);
        return;
    }
    const auto ends = m_gesture.press(m_viewport->text(), hit.offset, m_position);
    select(ends.anchor, {ends.caret, ends.anchor == ends.caret && hit.atRowEnd});
}

void MouseSelection::doublePress(const QMouseEvent &event)
{
    m_dragPress.reset();
    if (event.button() != Qt::LeftButton)
        return;
    m_position = event.position();
    // Use the character under the mouse, not the nearest place between two characters.
    const qint64 hit = m_viewport->characterAt(m_position);
    const auto ends = m_gesture.doublePress(m_viewport->text(), hit, m_position);
    select(ends.anchor, {ends.caret, false});
}

bool MouseSelection::move(const QMouseEvent &event)
{
    if (!event.buttons().testFlag(Qt::LeftButton))
        return false;
    if (m_dragPress) {
        const QPointF way = event.position() - *m_dragPress;
        if (way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
            return false;
        m_dragPress.reset();
        return true;
    }
    if (!m_gesture.isActive())
        return false;
    m_position = event.position();
    extendTo(m_position);
    const bool isOutside = m_position.y() < 0 || m_position.y() > m_viewport->size().height();
    if (isOutside && !m_autoscrollTimer.isActive())
        m_autoscrollTimer.start(kAutoscrollInterval, this);
    else if (!isOutside)
        m_autoscrollTimer.stop();
    return false;
}

void MouseSelection::release(const QMouseEvent &event)
{
    if (m_dragPress) { // A click, not a drag.
        m_dragPress.reset();
        startAt(event);
    }
    m_gesture.release();
    m_autoscrollTimer.stop();
    m_selection->offerAsPrimary();
}

void MouseSelection::extendTo(QPointF point)
{
    TextCaret hit = m_viewport->caretAt(point);
    if (m_gesture.unit() == SelectionGesture::Unit::Word)
        hit = {m_viewport->characterAt(point), false};
    const auto ends = m_gesture.drag(m_viewport->text(), hit.offset);
    select(ends.anchor, {ends.caret, ends.caret == hit.offset && hit.atRowEnd});
}

void MouseSelection::select(qint64 anchor, TextCaret caret)
{
    m_selection->select(anchor, caret, TextSelection::Scroll::Stay);
}

void MouseSelection::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_autoscrollTimer.timerId())
        return;
    const qreal y = m_position.y();
    // Scroll faster the farther outside the mouse is.
    const qreal distance = y < 0 ? y : std::max<qreal>(0, y - m_viewport->size().height());
    m_viewport->scrollByPixels(distance / 2);
    extendTo(m_position);
}

} // namespace penwick
