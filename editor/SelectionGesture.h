#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"

#include <QElapsedTimer>
#include <QPointF>

namespace penwick {

/// A selection being made with the mouse: by characters, after a double click by words, after a
/// triple click by lines. Offsets are UTF-16 code units, 0-based.
class SelectionGesture final
{
public:
    enum class Unit { Character, Word, Line };

    /// The two ends a gesture leads to: the one that stays, the one under the mouse.
    struct Ends
    {
        qint64 anchor = 0;
        qint64 caret = 0;
    };

    /// True when a press at `point` comes soon after a double click nearby.
    [[nodiscard]] bool isThirdPress(QPointF point) const;
    /// A press at `point`, which hit `offset`. As a third one it selects a line.
    Ends press(const Text &text, qint64 offset, QPointF point);
    /// A press that extends a selection whose other end is `anchor`.
    void pressExtending(qint64 anchor);
    /// The second press of a double click.
    Ends doublePress(const Text &text, qint64 offset, QPointF point);
    /// The mouse moved to `offset` with the button held.
    [[nodiscard]] Ends drag(const Text &text, qint64 offset) const;

    void release() { m_isActive = false; }

    /// What is being selected.
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
