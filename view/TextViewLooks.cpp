// The appearance of a text view: marks, decoration, visible lines and painting.

#include "view/TextView.h"
#include "view/TextViewPainter.h"

#include <QPainter>
#include <QStyle>

#include <utility>

namespace penwick {

void TextView::setMarks(Marks marks)
{
    m_marks = std::move(marks);
    updateMarks();
}

void TextView::updateMarks()
{
    viewport()->update();
}

void TextView::setDecoration(TextDecoration *decoration)
{
    m_viewport.setDecoration(decoration);
    if (decoration != nullptr)
        decoration->textChanged(string(), 0, 0, string().size());
    updateStyle();
}

std::vector<TextView::VisibleLine> TextView::visibleLines() const
{
    std::vector<VisibleLine> lines;
    m_viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const qint64 start = layout.segment().start;
        const bool startsLine = start == 0 || string().at(start - 1) == u'\n';
        const qreal bottom = y + layout.rowCount() * rowHeight();
        if (bottom <= 0 || y >= viewport()->height())
            return;
        // When the segment that starts the line is not laid out, it is not visible: use a top above
        // the viewport.
        if (startsLine || lines.empty())
            lines.push_back(
                {string().metricsBefore(start).lineFeeds, startsLine ? y : y - rowHeight(), 0});
        lines.back().bottom = bottom;
    });
    return lines;
}

TextRange TextView::visibleRange()
{
    TextRange range;
    bool isFirst = true;
    m_viewport.forEachVisible([&](const SegmentLayout &layout, qreal) {
        if (std::exchange(isFirst, false))
            range.location = layout.segment().start;
        range.length = layout.segment().end - range.location;
    });
    return range;
}

void TextView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    TextViewPicture picture;
    picture.selection = selectedRange();
    picture.caret = m_selection.caret();
    picture.isActive = hasFocus() && isActiveWindow();
    const bool isHidden = hasMarkedText() && m_viewport.composition().cursor < 0;
    picture.caretIsShown = hasFocus() && m_caretIsShown && !isHidden;
    if (const auto place = m_dropTarget.caret()) { // Where a drop would insert the text.
        picture.caret = *place;
        picture.caretIsShown = true;
    }
    picture.caretWidth = style()->pixelMetric(QStyle::PM_TextCursorWidth, nullptr, this);
    picture.size = QSizeF(viewport()->size());
    picture.palette = palette();
    if (m_marks) {
        picture.marks = &m_marks(visibleRange());
        // With marks, keep the selected match distinct even while the focus is elsewhere in the
        // window.
        picture.isActive = picture.isActive || (!picture.marks->empty() && isActiveWindow());
    }
    paintTextView(painter, QRectF(event->rect()), m_viewport, picture);
}

} // namespace penwick
