#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"

#include <QElapsedTimer>
#include <QPointF>

namespace penwick {

/// The state of a selection with the mouse: by characters, after a double click by words, after a
/// triple click by lines. Offsets are UTF-16 code units, 0-based.
class SelectionGesture final
{
public:
    enum class Unit { Character, Word, Line };

    /// The ends of the selection: `anchor` is fixed, `caret` follows the mouse.
    struct Ends
    {
        qint64 anchor = 0;
        qint64 caret = 0;
    };

    /// True when a press at `point` would be the third press of a triple click: it is close to the
    /// last double click in time and place.
    [[nodiscard]] bool wouldBeThirdPress(QPointF point) const;
    /// Handles a press at `point`, over `offset`. The third press of a triple click selects a line.
    Ends press(const Text &text, qint64 offset, QPointF point);
    /// Handles a press that extends the selection with the fixed end `anchor`.
    void pressExtending(qint64 anchor);
    /// Handles the second press of a double click.
    Ends doublePress(const Text &text, qint64 offset, QPointF point);
    /// Returns the ends when the mouse is dragged to `offset`.
    [[nodiscard]] Ends drag(const Text &text, qint64 offset) const;

    void release() { m_isActive = false; }

    /// The unit by which the selection grows.
    [[nodiscard]] Unit unit() const { return m_unit; }

    [[nodiscard]] bool isActive() const { return m_isActive; }

private:
    [[nodiscard]] TextRange unitAround(const Text &text, qint64 offset) const;

    Unit m_unit = Unit::Character;
    TextRange m_origin; // What the press selected.
    bool m_isActive = false;
    QElapsedTimer m_sinceDoublePress;
    QPointF m_doublePressPoint;
};

} // namespace penwick
