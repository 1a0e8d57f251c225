#pragma once

#include "editor/TextLayoutCache.h"

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

    /// `origin` is the segment's top left. From index `selectionStart` of the layout to before
    /// `selectionEnd` it is selected, and with `breakIsSelected` so is its line break. Rows outside
    /// `exposed` are left out.
    struct Segment
    {
        QPointF origin;
        int selectionStart = 0;
        int selectionEnd = 0;
        bool breakIsSelected = false;
        QRectF exposed;
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
