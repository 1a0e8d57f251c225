#include "editor/TextViewPainter.h"

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

/// The part of a selection that lies in one segment, as indices of its layout.
struct LayoutSelection
{
    int start = 0;
    int end = 0;
    bool coversBreak = false; // The selection goes on behind the segment.

    [[nodiscard]] bool isEmpty() const { return start >= end && !coversBreak; }
};

LayoutSelection selectionIn(const SegmentLayout &layout, TextRange selection)
{
    const TextSegment &segment = layout.segment();
    const qint64 start = std::max(selection.location, segment.start);
    const qint64 end = std::min(selection.end(), segment.end);
    LayoutSelection result;
    if (selection.length == 0 || start > segment.end || end < segment.start)
        return result;
    result.start = layout.layoutIndex(start);
    result.end = layout.layoutIndex(end);
    result.coversBreak = selection.end() > segment.end;
    return result;
}

/// Fills what is selected of one segment, behind its text.
class SelectionPainter
{
public:
    /// `origin` is the top left of the segment; the selection of a break reaches to `right`.
    SelectionPainter(QPainter &painter, const QColor &color, QPointF origin, qreal right)
        : m_painter(painter)
        , m_color(color)
        , m_origin(origin)
        , m_right(right)
    {
    }

    void paint(const SegmentLayout &layout, const LayoutSelection &selection, qreal rowHeight)
    {
        for (int row = 0; row < layout.rowCount(); ++row) {
            m_row = QRectF(m_origin.x(), m_origin.y() + row * rowHeight, 0, rowHeight);
            const QTextLine line = layout.layout().lineAt(row);
            const int lineEnd = line.textStart() + line.textLength();
            if (selection.end < line.textStart() || selection.start > lineEnd)
                continue;
            fillText(layout, line, selection);
            const bool isLastRow = row + 1 == layout.rowCount();
            const bool goesOn = isLastRow ? selection.coversBreak
                                          : selection.end >= lineEnd && selection.start < lineEnd &&
                                                (selection.end > lineEnd || selection.coversBreak);
            if (goesOn)
                fill(m_row.x() + std::max<qreal>(0, layout.rowRight(row)), m_right);
        }
    }

private:
    void fill(qreal left, qreal right)
    {
        if (left < right)
            m_painter.fillRect(QRectF(left, m_row.y(), right - left, m_row.height()), m_color);
    }

    /// Right-to-left stretches divide a row into pieces, so those are filled character by
    /// character.
    void
    fillText(const SegmentLayout &layout, const QTextLine &line, const LayoutSelection &selection)
    {
        const int start = std::max(selection.start, line.textStart());
        const int end = std::min(selection.end, line.textStart() + line.textLength());
        const int step = layout.hasRightToLeft() ? 1 : std::max(1, end - start);
        for (int i = start; i < end; i += step) {
            const qreal a = line.cursorToX(i);
            const qreal b = line.cursorToX(i + step);
            fill(m_row.x() + std::min(a, b), m_row.x() + std::max(a, b));
        }
    }

    QPainter &m_painter;
    QColor m_color;
    QPointF m_origin;
    qreal m_right = 0;
    QRectF m_row; // Without width.
};

} // namespace

void paintTextView(QPainter &painter,
                   const QRectF &exposed,
                   TextViewport &viewport,
                   const TextViewPicture &picture)
{
    const QPalette &palette = picture.palette;
    const auto group = picture.isActive ? QPalette::Active : QPalette::Inactive;
    painter.setPen(palette.color(QPalette::Text));
    viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const QPointF origin(TextViewport::kMargin, y);
        const LayoutSelection selection = selectionIn(layout, picture.selection);
        QList<QTextLayout::FormatRange> formats;
        if (!selection.isEmpty()) {
            SelectionPainter(painter,
                             palette.color(group, QPalette::Highlight),
                             origin,
                             picture.size.width() - TextViewport::kMargin)
                .paint(layout, selection, viewport.style().rowHeight);
            QTextLayout::FormatRange range;
            range.start = selection.start;
            range.length = selection.end - selection.start;
            range.format.setForeground(palette.color(group, QPalette::HighlightedText));
            if (range.length > 0)
                formats.append(range);
        }
        layout.layout().draw(&painter, origin, formats, exposed);
    });
    if (!picture.caretIsShown)
        return;
    QRectF caret = viewport.caretRect(picture.caret);
    if (caret.isNull())
        return;
    caret.moveLeft(std::round(caret.left()));
    caret.setWidth(picture.caretWidth);
    painter.fillRect(caret.adjusted(0, 1, 0, -1), palette.color(QPalette::Text));
}

} // namespace penwick
