#include "view/MouseSelection.h"

#include "text/WordBoundaries.h"
#include "view/CaretMover.h"

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

bool MouseSelection::wouldBeThirdPress(QPointF point) const
{
    const QStyleHints *hints = QGuiApplication::styleHints();
    return m_sinceDoublePress.isValid() &&
           m_sinceDoublePress.elapsed() < hints->mouseDoubleClickInterval() &&
           (point - m_doublePressPoint).manhattanLength() < hints->startDragDistance();
}

TextRange MouseSelection::unitAround(qint64 offset) const
{
    switch (m_unit) {
    case Unit::Character:
        break;
    case Unit::Word: {
        const auto [start, end] = words::wordAround(m_viewport->text(), offset);
        return {start, end - start};
    }
    case Unit::Line:
        return lineAround(m_viewport->text(), offset);
    }
    return {offset, 0};
}

void MouseSelection::press(const QMouseEvent &event)
{
    const bool mayDrag = !(event.modifiers() & (Qt::ShiftModifier | Qt::AltModifier)) &&
                         m_selection->columns() == nullptr &&
                         !wouldBeThirdPress(event.position()) &&
                         m_selection->contains(event.position());
    if (mayDrag)
        m_dragPress = event.position();
    else
        startAt(event);
}

/// Returns false where no column is counted.
bool MouseSelection::startRectangle(const QMouseEvent &event)
{
    const auto place = m_selection->placeAt(event.position());
    const auto former = m_selection->rectangle();
    const bool extends = event.modifiers().testFlag(Qt::ShiftModifier) && former;
    if (!place)
        return false;
    m_corner = extends ? former->anchor : *place;
    m_isActive = true;
    m_selection->selectRectangle({*m_corner, *place}, TextSelection::Scroll::Stay);
    return true;
}

void MouseSelection::startAt(const QMouseEvent &event)
{
    const bool extendsRectangle =
        event.modifiers().testFlag(Qt::ShiftModifier) && m_selection->columns() != nullptr;
    const bool isRectangle = extendsRectangle || event.modifiers().testFlag(Qt::AltModifier);
    if (isRectangle && startRectangle(event))
        return;
    const TextCaret hit = m_viewport->caretAt(event.position());
    if (event.modifiers() & Qt::ShiftModifier) {
        start(Unit::Character, m_selection->anchor());
        select(m_selection->anchor(), hit);
        return;
    }
    const bool isTriple = wouldBeThirdPress(event.position());
    m_sinceDoublePress.invalidate();
    start(isTriple ? Unit::Line : Unit::Character, hit.offset);
    select(m_origin.location, {m_origin.end(), m_origin.isEmpty() && hit.atRowEnd});
}

void MouseSelection::pressLine(const QMouseEvent &event)
{
    m_dragPress.reset();
    const bool extends = event.modifiers().testFlag(Qt::ShiftModifier);
    start(Unit::Line,
          extends ? m_selection->anchor() : m_viewport->caretAt(event.position()).offset);
    extendTo(event.position());
}

void MouseSelection::start(Unit unit, qint64 offset)
{
    m_unit = unit;
    m_corner.reset();
    m_origin = unitAround(offset);
    m_isActive = true;
}

void MouseSelection::doublePress(const QMouseEvent &event)
{
    m_dragPress.reset();
    if (event.button() != Qt::LeftButton)
        return;
    m_sinceDoublePress.start();
    m_doublePressPoint = event.position();
    // Use the character under the mouse, not the nearest place between two characters.
    start(Unit::Word, m_viewport->characterAt(event.position()));
    select(m_origin.location, {m_origin.end(), false});
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
    if (!m_isActive)
        return false;
    m_position = event.position();
    extendTo(m_position);
    const bool isOutside = !beyond().isNull();
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
    m_isActive = false;
    m_autoscrollTimer.stop();
    m_selection->offerAsPrimary();
}

void MouseSelection::extendTo(QPointF point)
{
    if (m_corner) {
        if (const auto place = m_selection->placeAt(point))
            m_selection->selectRectangle({*m_corner, *place}, TextSelection::Scroll::Stay);
        return;
    }
    TextCaret hit = m_viewport->caretAt(point);
    if (m_unit == Unit::Word)
        hit = {m_viewport->characterAt(point), false};
    const TextRange unit = unitAround(hit.offset);
    const bool isBackward = hit.offset < m_origin.location;
    const qint64 caret = isBackward ? unit.location : std::max(unit.end(), m_origin.end());
    select(isBackward ? m_origin.end() : m_origin.location,
           {caret, caret == hit.offset && hit.atRowEnd});
}

void MouseSelection::select(qint64 anchor, TextCaret caret)
{
    m_selection->select(anchor, caret, TextSelection::Scroll::Stay);
}

void MouseSelection::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_autoscrollTimer.timerId())
        return;
    // Scroll faster the farther outside the mouse is.
    const QPointF distance = beyond();
    m_viewport->scrollByPixels(distance.y() / 2);
    if (distance.x() != 0)
        m_viewport->scrollSidewaysBy(distance.x() / 2);
    extendTo(m_position);
}

/// Returns how far outside the viewport the mouse is.
QPointF MouseSelection::beyond() const
{
    const auto outside = [](qreal place, qreal size) {
        return place < 0 ? place : std::max<qreal>(0, place - size);
    };
    const QSizeF size = m_viewport->size();
    return {m_viewport->scrollsSideways() ? outside(m_position.x(), size.width()) : 0,
            outside(m_position.y(), size.height())};
}

} // namespace penwick
