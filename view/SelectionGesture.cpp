#include "view/SelectionGesture.h"

#include "text/WordBoundaries.h"
#include "view/CaretMover.h"

#include <QGuiApplication>
#include <QStyleHints>

namespace penwick {

TextRange SelectionGesture::unitAround(const Text &text, qint64 offset) const
{
    switch (m_unit) {
    case Unit::Character:
        break;
    case Unit::Word: {
        const auto [start, end] = words::wordAround(text, offset);
        return {start, end - start};
    }
    case Unit::Line:
        return lineAround(text, offset);
    }
    return {offset, 0};
}

bool SelectionGesture::wouldBeThirdPress(QPointF point) const
{
    const QStyleHints *hints = QGuiApplication::styleHints();
    return m_sinceDoublePress.isValid() &&
           m_sinceDoublePress.elapsed() < hints->mouseDoubleClickInterval() &&
           (point - m_doublePressPoint).manhattanLength() < hints->startDragDistance();
}

SelectionGesture::Ends SelectionGesture::press(const Text &text, qint64 offset, QPointF point)
{
    const bool isTriple = wouldBeThirdPress(point);
    m_sinceDoublePress.invalidate();
    m_unit = isTriple ? Unit::Line : Unit::Character;
    m_origin = unitAround(text, offset);
    m_isActive = true;
    return {m_origin.location, m_origin.end()};
}

void SelectionGesture::pressExtending(qint64 anchor)
{
    m_unit = Unit::Character;
    m_origin = {anchor, 0};
    m_isActive = true;
}

SelectionGesture::Ends SelectionGesture::doublePress(const Text &text, qint64 offset, QPointF point)
{
    m_sinceDoublePress.start();
    m_doublePressPoint = point;
    m_unit = Unit::Word;
    m_origin = unitAround(text, offset);
    m_isActive = true;
    return {m_origin.location, m_origin.end()};
}

SelectionGesture::Ends SelectionGesture::drag(const Text &text, qint64 offset) const
{
    const TextRange unit = unitAround(text, offset);
    if (offset < m_origin.location)
        return {m_origin.end(), unit.location};
    return {m_origin.location, std::max(unit.end(), m_origin.end())};
}

} // namespace penwick
