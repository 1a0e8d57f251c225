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

/// Fills the selected part of one row over its whole height. Right-to-left stretches divide it into
/// pieces, so those rows are filled character by character.
void fillRowSelection(QPainter &painter,
                      const SegmentLayout &layout,
                      const QTextLine &line,
                      const LayoutSelection &selection,
                      QPointF rowOrigin,
                      qreal rowHeight,
                      const QColor &color)
{
    const int lineEnd = line.textStart() + line.textLength();
    const int start = std::max(selection.start, line.textStart());
    const int end = std::min(selection.end, lineEnd);
    const auto fill = [&](int from, int to) {
        const qreal a = line.cursorToX(from);
        const qreal b = line.cursorToX(to);
        painter.fillRect(
            QRectF(rowOrigin.x() + std::min(a, b), rowOrigin.y(), std::abs(b - a), rowHeight),
            color);
    };
    if (start < end && !layout.hasRightToLeft()) {
        fill(start, end);
    } else {
        for (int i = start; i < end; ++i)
            fill(i, i + 1);
    }
}

void paintSelection(QPainter &painter,
                    const SegmentLayout &layout,
                    const LayoutSelection &selection,
                    QPointF origin,
                    const TextLayoutStyle &style,
                    qreal right,
                    const QColor &color)
{
    for (int row = 0; row < layout.rowCount(); ++row) {
        const QTextLine line = layout.layout().lineAt(row);
        const int lineEnd = line.textStart() + line.textLength();
        if (selection.end < line.textStart() || selection.start > lineEnd)
            continue;
        const QPointF rowOrigin(origin.x(), origin.y() + row * style.rowHeight);
        fillRowSelection(painter, layout, line, selection, rowOrigin, style.rowHeight, color);
        const bool isLastRow = row + 1 == layout.rowCount();
        const bool goesOn = isLastRow ? selection.coversBreak
                                      : selection.end >= lineEnd && selection.start < lineEnd &&
                                            (selection.end > lineEnd || selection.coversBreak);
        if (!goesOn)
            continue;
        const qreal left = rowOrigin.x() + std::max<qreal>(0, layout.rowRight(row));
        painter.fillRect(
            QRectF(left, rowOrigin.y(), std::max<qreal>(0, right - left), style.rowHeight), color);
    }
}

} // namespace

void paintTextView(QPainter &painter,
                   const QRectF &exposed,
                   const QSizeF &size,
                   const QPalette &palette,
                   TextViewport &viewport,
                   const TextViewPicture &picture)
{
    const auto group = picture.isActive ? QPalette::Active : QPalette::Inactive;
    painter.setPen(palette.color(QPalette::Text));
    viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const QPointF origin(TextViewport::kMargin, y);
        const LayoutSelection selection = selectionIn(layout, picture.selection);
        QList<QTextLayout::FormatRange> formats;
        if (!selection.isEmpty()) {
            paintSelection(painter,
                           layout,
                           selection,
                           origin,
                           viewport.style(),
                           size.width() - TextViewport::kMargin,
                           palette.color(group, QPalette::Highlight));
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
