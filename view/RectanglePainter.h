#pragma once

#include "view/TextViewPainter.h"

#include <optional>

namespace penwick {

/// Paints what a selection has beyond its characters: in rows of a rectangle that are shorter than
/// it, the columns past the line's end, and a caret in each row of one without width. Also tells
/// which part of a line is selected. Each line is read once per paint.
class RectanglePainter final
{
public:
    /// \param picture, viewport not owned; must outlive this.
    RectanglePainter(const TextViewPicture &picture, TextViewport &viewport);

    /// The selected range of the line that contains `segment`; of the whole text without a
    /// rectangle.
    [[nodiscard]] TextRange selectionAround(const TextSegment &segment);

    /// Call this after `selectionAround` for the same segment.
    /// \param origin the top left of the segment, in logical pixels.
    void paint(QPainter &painter,
               const SegmentLayout &layout,
               QPointF origin,
               const QColor &background) const;

private:
    void paintBlanks(QPainter &painter,
                     const SegmentLayout &layout,
                     QPointF origin,
                     const QColor &background) const;
    void paintCaret(QPainter &painter, const SegmentLayout &layout, QPointF origin) const;

    const TextViewPicture &m_picture;
    TextViewport &m_viewport;
    qint64 m_lineStart = -1;
    std::optional<RectangleRow> m_row; // Of that line; none outside the rectangle.
    bool m_isFirst = false;            // It is the first one.
};

} // namespace penwick
