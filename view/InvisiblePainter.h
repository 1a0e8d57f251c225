#pragma once

#include "view/TextLayoutCache.h"

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QRectF>

namespace penwick {

/// Draws the marks of one segment's invisible characters over its text.
class InvisiblePainter final
{
public:
    /// \param painter, style not owned; must outlive this object.
    /// \param plain, selected colours of marks outside and inside the selection.
    InvisiblePainter(QPainter &painter,
                     const TextLayoutStyle &style,
                     const QColor &plain,
                     const QColor &selected);

    /// Where a segment is drawn and which part of it is selected.
    struct Segment
    {
        QPointF origin;               ///< Its upper left corner.
        int selectionStart = 0;       ///< Index in the layout of the first selected unit.
        int selectionEnd = 0;         ///< Index in the layout after the last selected unit.
        bool breakIsSelected = false; ///< True when its line break is selected too.
        QRectF exposed;               ///< Rows outside this rectangle are not drawn.
    };

    void paint(const SegmentLayout &layout, const Segment &segment);

private:
    void paintRow(const SegmentLayout &layout, int row, const Segment &segment);
    void paintLineEnd(const SegmentLayout &layout, const Segment &segment);
    [[nodiscard]] QRectF rowRect(int row, const Segment &segment) const;

    QPainter &m_painter;
    const TextLayoutStyle &m_style;
    QColor m_plain;
    QColor m_selected;
};

} // namespace penwick
