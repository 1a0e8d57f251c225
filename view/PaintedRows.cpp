#include "view/PaintedRows.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace penwick {

namespace {

/// Returns the part of `selection` that lies in a row or selects its end, relative to its start.
TextRange selectionWithin(const SegmentLayout &layout, int row, TextRange selection)
{
    const qint64 rowStart = layout.rowStart(row);
    const qint64 start = std::max(selection.location, rowStart);
    const qint64 end = std::min(selection.end(), layout.rowEnd(row) + 1);
    return start < end ? TextRange{start - rowStart, end - start} : TextRange();
}

QRect caretArea(const TextViewPicture &picture, TextViewport &viewport)
{
    constexpr int kRounding = 2;
    const QRectF caret = viewport.caretRect(picture.caret);
    const int width = kRounding + static_cast<int>(std::ceil(picture.caretWidth));
    return caret.toAlignedRect().adjusted(-kRounding, 0, width, 0);
}

} // namespace

PaintedRows::Picture PaintedRows::pictureOf(const TextViewPicture &picture, TextViewport &viewport)
{
    Picture result;
    const qreal rowHeight = viewport.style().rowHeight;
    viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const TextSegment &segment = layout.segment();
        Row row;
        row.overhang = layout.overhang();
        row.isOnCurrentLine = segment.lineStart == picture.currentLine;
        if (const TextDecoration *decoration = viewport.decoration())
            row.background = decoration->background(segment);
        for (int i = 0; i < layout.rowCount(); ++i) {
            row.look = layout.lookOf(i);
            row.place = QPointF(viewport.leftOf(layout), y + i * rowHeight);
            row.selection = selectionWithin(layout, i, picture.selection);
            result.rows.push_back(row);
        }
    });
    result.caret = caretArea(picture, viewport);
    result.isActive = picture.isActive;
    result.size = picture.size;
    return result;
}

QRegion PaintedRows::differences(const Picture &a, const Picture &b, qreal rowHeight)
{
    QRegion area = QRegion(a.caret) + b.caret;
    const auto add = [&](const Row &row) {
        const QRectF whole(0, row.place.y(), b.size.width(), rowHeight);
        area += whole.adjusted(0, -row.overhang, 0, row.overhang).toAlignedRect();
    };
    const auto isBefore = [](const Row &one, const Row &other) {
        return std::pair(one.place.y(), one.place.x()) <
               std::pair(other.place.y(), other.place.x());
    };
    auto old = a.rows.begin();
    auto now = b.rows.begin();
    while (old != a.rows.end() && now != b.rows.end()) {
        if (*old == *now) {
            ++old;
            ++now;
        } else if (isBefore(*now, *old)) {
            add(*now++);
        } else {
            add(*old++);
        }
    }
    std::for_each(old, a.rows.end(), add);
    std::for_each(now, b.rows.end(), add);
    return area;
}

QRegion PaintedRows::changesTo(const TextViewPicture &picture, TextViewport &viewport)
{
    const QRect everything(QPoint(), picture.size.toSize());
    const bool hasMarks = picture.marks != nullptr && !picture.marks->empty();
    if (hasMarks || picture.columns != nullptr) {
        forget();
        return everything;
    }
    const std::optional<Picture> last = std::exchange(m_last, pictureOf(picture, viewport));
    if (!last || last->isActive != m_last->isActive || last->size != m_last->size)
        return everything;
    return differences(*last, *m_last, viewport.style().rowHeight) & everything;
}

} // namespace penwick
