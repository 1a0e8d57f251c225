#include "view/InvisiblePainter.h"

#include "view/InvisibleMarks.h"
#include "view/TextViewport.h"

#include <algorithm>
#include <utility>

namespace penwick {

InvisiblePainter::InvisiblePainter(QPainter &painter,
                                   const TextLayoutStyle &style,
                                   const QColor &plain,
                                   const QColor &selected)
    : m_painter(painter)
    , m_style(style)
    , m_plain(plain)
    , m_selected(selected)
{
}

QRectF InvisiblePainter::rowRect(int row, const Segment &segment) const
{
    return {segment.exposed.x(),
            segment.origin.y() + row * m_style.rowHeight + m_style.spaceAbove,
            segment.exposed.width(),
            m_style.rowHeight - m_style.spaceAbove - m_style.spaceBelow};
}

void InvisiblePainter::paint(const SegmentLayout &layout, const Segment &segment)
{
    for (int row = 0; !layout.invisibles().empty() && row < layout.rowCount(); ++row)
        if (rowRect(row, segment).intersects(segment.exposed))
            paintRow(layout, row, segment);
    const bool showsLineEnd =
        m_style.shownMarks == ShownMarks::All && layout.segment().breakLength > 0;
    if (layout.lineEnd() != 0 || showsLineEnd)
        paintLineEnd(layout, segment);
}

void InvisiblePainter::paintRow(const SegmentLayout &layout, int row, const Segment &segment)
{
    const QTextLine line = layout.layout().lineAt(row);
    const auto &characters = layout.invisibles();
    const auto byIndex = [](const InvisibleCharacter &character, int index) {
        return character.index < index;
    };
    const auto [start, end] = layout.indicesBetween(segment.exposed.left() - segment.origin.x(),
                                                    segment.exposed.right() - segment.origin.x(),
                                                    row);
    const auto first = std::lower_bound(characters.begin(), characters.end(), start, byIndex);
    for (auto it = first; it != characters.end() && it->index < end; ++it) {
        const qreal a = line.cursorToX(it->index, QTextLine::Leading);
        // A tab has no glyph whose edge the layout could return.
        const qreal b = it->unit == u'\t' ? line.cursorToX(it->index + 1)
                                          : line.cursorToX(it->index, QTextLine::Trailing);
        QRectF cell = rowRect(row, segment);
        cell.setLeft(segment.origin.x() + std::min(a, b));
        cell.setRight(segment.origin.x() + std::max(a, b));
        const bool isSelected =
            it->index >= segment.selectionStart && it->index < segment.selectionEnd;
        const QColor &color = isSelected ? m_selected : m_plain;
        const QStringView label = invisible::label(it->unit);
        if (it->unit == u' ' || invisible::isBlank(it->unit))
            invisible::paintBlank(m_painter, it->unit, cell, color);
        else if (label.isEmpty())
            invisible::paintMark(m_painter, cell, color);
        else
            invisible::paintLabel(m_painter, label, cell, m_style.font, color);
    }
}

void InvisiblePainter::paintLineEnd(const SegmentLayout &layout, const Segment &segment)
{
    const bool hasLabel = layout.lineEnd() != 0;
    const int row = layout.rowCount() - 1;
    const QTextLine line = layout.layout().lineAt(row);
    const QRectF text = line.naturalTextRect();
    const qreal width = (hasLabel ? invisible::kLabelColumns : 1) * m_style.columnWidth;
    qreal left = layout.isRightToLeft() ? text.left() - width : text.right();
    if (!hasLabel) {
        if (!layout.hasRightToLeft()) // Behind the blanks, which may hang over the row's end.
            left = std::max(left, line.cursorToX(line.textStart() + line.textLength()));
        if (m_style.wraps) { // A full row leaves it only the margin.
            const qreal last = m_style.width + TextViewport::kMargin - width;
            left = std::max(-TextViewport::kMargin, std::min(left, last));
        }
    }
    QRectF cell = rowRect(row, segment);
    cell.setLeft(segment.origin.x() + left);
    cell.setWidth(width);
    const QColor &color = segment.breakIsSelected ? m_selected : m_plain;
    if (hasLabel)
        invisible::paintLabel(
            m_painter, invisible::label(layout.lineEnd()), cell, m_style.font, color);
    else
        invisible::paintLineEnd(m_painter, layout.segment().breakLength == 2, cell, color);
}

} // namespace penwick
