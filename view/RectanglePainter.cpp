#include "view/RectanglePainter.h"

#include <algorithm>
#include <cmath>

namespace penwick {

RectanglePainter::RectanglePainter(const TextViewPicture &picture, TextViewport &viewport)
    : m_picture(picture)
    , m_viewport(viewport)
{
}

TextRange RectanglePainter::selectionAround(const TextSegment &segment)
{
    if (m_picture.columns == nullptr)
        return m_picture.selection;
    if (segment.lineStart != m_lineStart) {
        m_lineStart = segment.lineStart;
        const LineSpan lines = m_picture.columns->lines();
        const qint64 row = lineNumber(m_viewport.text(), m_lineStart) - lines.first;
        m_isFirst = row == 0;
        m_row.reset();
        if (row >= 0 && row < lines.count)
            m_row = m_picture.columns->rowAt(m_viewport.text(), lines.first + row);
    }
    return m_row ? m_row->range : TextRange{};
}

void RectanglePainter::paint(QPainter &painter,
                             const SegmentLayout &layout,
                             QPointF origin,
                             const QColor &background) const
{
    if (!m_row)
        return;
    const bool isEmpty = m_picture.columns->isEmpty();
    if (isEmpty && (!m_isFirst || m_row->blanksToLeft > 0))
        paintCaret(painter, layout, origin);
    else if (!isEmpty && m_row->blanksToRight > 0 && !layout.isRightToLeft())
        paintBlanks(painter, layout, origin, background);
}

void RectanglePainter::paintBlanks(QPainter &painter,
                                   const SegmentLayout &layout,
                                   QPointF origin,
                                   const QColor &background) const
{
    const TextSegment &segment = layout.segment();
    if (segment.breakLength == 0 && segment.end < m_viewport.text().size())
        return; // The line goes on.
    const TextLayoutStyle &style = m_viewport.style();
    const int row = layout.rowCount() - 1;
    const qreal end = layout.xOf(segment.end, row);
    const auto edge = [&](qint64 blanks) {
        return std::min(end + static_cast<qreal>(blanks) * style.columnWidth, style.width);
    };
    // Rounded towards selected text, so that no gap remains between the two fills.
    const qreal left = m_row->blanksToLeft > 0 ? edge(m_row->blanksToLeft) : std::floor(end);
    painter.fillRect(QRectF(origin.x() + left,
                            origin.y() + row * style.rowHeight,
                            edge(m_row->blanksToRight) - left,
                            style.rowHeight),
                     background);
}

void RectanglePainter::paintCaret(QPainter &painter,
                                  const SegmentLayout &layout,
                                  QPointF origin) const
{
    const TextSegment &segment = layout.segment();
    const qint64 offset = m_row->range.location;
    const bool endsLine = segment.breakLength > 0 || segment.end == m_viewport.text().size();
    if (offset < segment.start || offset > segment.end || (offset == segment.end && !endsLine))
        return;
    const TextLayoutStyle &style = m_viewport.style();
    const int row = layout.rowOf(offset, false);
    const qreal blanks = static_cast<qreal>(m_row->blanksToLeft) * style.columnWidth;
    const qreal x = std::min(layout.xOf(offset, row) + blanks, style.width);
    painter.fillRect(QRectF(std::round(origin.x() + x),
                            origin.y() + row * style.rowHeight + 1,
                            m_picture.caretWidth,
                            style.rowHeight - 2),
                     m_picture.palette.color(QPalette::Text));
}

} // namespace penwick
