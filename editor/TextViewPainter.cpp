#include "editor/TextViewPainter.h"

#include "editor/InvisibleMarks.h"
#include "editor/InvisiblePainter.h"

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
                fillBehind(layout, row);
        }
    }

private:
    void fillBehind(const SegmentLayout &layout, int row)
    {
        // Not to where the text's ink ends, which may lean out of its last character, and to the
        // whole pixel under it: else a gap is left between the two.
        const QTextLine line = layout.layout().lineAt(row);
        const qreal left = line.naturalTextRect().left();
        if (layout.isRightToLeft())
            fill(m_row.x(), m_row.x() + std::ceil(left));
        else
            fill(m_row.x() + std::floor(left + line.horizontalAdvance()), m_right);
    }

    void fill(qreal left, qreal right)
    {
        if (left < right)
            m_painter.fillRect(QRectF(left, m_row.y(), right - left, m_row.height()), m_color);
    }

    void
    fillText(const SegmentLayout &layout, const QTextLine &line, const LayoutSelection &selection)
    {
        const int start = std::max(selection.start, line.textStart());
        const int end = std::min(selection.end, line.textStart() + line.textLength());
        if (start >= end)
            return;
        if (layout.hasRightToLeft())
            fillPieces(layout, line, start, end);
        else
            fill(m_row.x() + line.cursorToX(start), m_row.x() + line.cursorToX(end));
    }

    /// Stretches of another direction divide what is selected of a row into pieces. Carets do not
    /// tell where those end, because at such a place one caret stands for two.
    void fillPieces(const SegmentLayout &layout, const QTextLine &line, int start, int end)
    {
        const QList<QGlyphRun> runs = line.glyphRuns(start, end - start);
        for (const QGlyphRun &run : runs) {
            const QRectF rect = run.boundingRect();
            fill(m_origin.x() + rect.left(), m_origin.x() + rect.right());
        }
        for (int i = start; i < end; ++i) {
            if (!layout.isTab(i)) // It has no glyph.
                continue;
            const qreal a = line.cursorToX(i);
            const qreal b = line.cursorToX(i, QTextLine::Trailing);
            fill(m_row.x() + std::min(a, b), m_row.x() + std::max(a, b));
        }
    }

    QPainter &m_painter;
    QColor m_color;
    QPointF m_origin;
    qreal m_right = 0;
    QRectF m_row; // Without width.
};

/// The colours of a selection. Where the palette makes no difference between a view with the
/// keyboard focus and one without, the latter gets a paler one.
struct SelectionColors
{
    SelectionColors(const QPalette &palette, bool isActive)
        : background(
              palette.color(isActive ? QPalette::Active : QPalette::Inactive, QPalette::Highlight))
        , text(palette.color(isActive ? QPalette::Active : QPalette::Inactive,
                             QPalette::HighlightedText))
    {
        if (isActive || background != palette.color(QPalette::Active, QPalette::Highlight))
            return;
        const QColor base = palette.color(QPalette::Base);
        const auto mixed = [](int a, int b) { return (a + 2 * b) / 3; };
        background = QColor(mixed(background.red(), base.red()),
                            mixed(background.green(), base.green()),
                            mixed(background.blue(), base.blue()));
        text = palette.color(QPalette::Text);
    }

    QColor background;
    QColor text;
};

QColor muted(QColor color)
{
    constexpr qreal kMuted = 0.6;
    color.setAlphaF(static_cast<float>(kMuted * color.alphaF()));
    return color;
}

/// How the selected part of a segment differs from the rest. What labels stand for is left out, so
/// that it stays unseen.
QList<QTextLayout::FormatRange>
selectedFormats(const SegmentLayout &layout, const LayoutSelection &selection, const QColor &text)
{
    QList<QTextLayout::FormatRange> formats;
    QTextLayout::FormatRange range;
    range.start = selection.start;
    range.format.setForeground(text);
    const auto endAt = [&](int index) {
        range.length = index - range.start;
        if (range.length > 0)
            formats.append(range);
    };
    for (const InvisibleCharacter &character : layout.invisibles()) {
        if (character.index < selection.start || character.index >= selection.end ||
            invisible::label(character.unit).isEmpty())
            continue;
        endAt(character.index);
        range.start = character.index + 1;
    }
    endAt(selection.end);
    return formats;
}

/// Yellow as from a marker pen, in the shade that the text's colour can be read on.
QColor markColor(const QPalette &palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    return isDark ? QColor(107, 83, 0) : QColor(255, 225, 120);
}

/// Marks what was found in one segment, behind selection and text.
class MarkPainter
{
public:
    MarkPainter(QPainter &painter, const TextViewPicture &picture, qreal rowHeight)
        : m_painter(painter)
        , m_marks(*picture.marks)
        , m_color(markColor(picture.palette))
        , m_rowHeight(rowHeight)
    {
    }

    void paint(const SegmentLayout &layout, QPointF origin)
    {
        const TextSegment &segment = layout.segment();
        auto mark = std::partition_point(m_marks.begin(), m_marks.end(), [&](const FindMatch &m) {
            return m.end < segment.start;
        });
        for (; mark != m_marks.end() && mark->start <= segment.end; ++mark) {
            const qint64 start = std::max(mark->start, segment.start);
            const qint64 end = std::min(mark->end, segment.end);
            // What ends with the line before, or begins with the break after, shows there.
            if (mark->isEmpty() || start < end || mark->end > segment.end)
                fill(layout, {start, end}, origin);
        }
    }

private:
    void fill(const SegmentLayout &layout, const FindMatch &part, QPointF origin)
    {
        constexpr qreal kThin = 3; // Of what has no width: an empty match, a line break.
        const int last = layout.rowOf(part.end, !part.isEmpty());
        for (int row = layout.rowOf(part.start, false); row <= last; ++row) {
            const QTextLine line = layout.layout().lineAt(row);
            const int lineEnd = line.textStart() + line.textLength();
            const int start = std::max(layout.layoutIndex(part.start), line.textStart());
            const int end = std::min(layout.layoutIndex(part.end), lineEnd);
            const qreal top = origin.y() + row * m_rowHeight;
            // Pieces of rows that run from right to left need not be in one place.
            const int step = layout.hasRightToLeft() ? 1 : std::max(1, end - start);
            for (int i = start; i < end; i += step)
                fillBetween(
                    origin.x() + line.cursorToX(i), origin.x() + line.cursorToX(i + step), top);
            if (start >= end) {
                const qreal x = origin.x() + line.cursorToX(start);
                fillBetween(x, x + kThin, top);
            }
        }
    }

    void fillBetween(qreal a, qreal b, qreal top)
    {
        const QRectF area(std::min(a, b), top, std::abs(b - a), m_rowHeight);
        m_painter.fillRect(area.adjusted(0, 1, 0, -1), m_color);
    }

    QPainter &m_painter;
    const std::vector<FindMatch> &m_marks;
    QColor m_color;
    qreal m_rowHeight;
};

} // namespace

void paintTextView(QPainter &painter,
                   const QRectF &exposed,
                   TextViewport &viewport,
                   const TextViewPicture &picture)
{
    const QPalette &palette = picture.palette;
    const SelectionColors colors(palette, picture.isActive);
    const qreal right = picture.size.width() - TextViewport::kMargin;
    InvisiblePainter invisibles(
        painter, viewport.style(), muted(palette.color(QPalette::Text)), muted(colors.text));
    painter.setPen(palette.color(QPalette::Text));
    viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const QPointF origin(TextViewport::kMargin, y);
        if (picture.marks != nullptr)
            MarkPainter(painter, picture, viewport.style().rowHeight).paint(layout, origin);
        const LayoutSelection selection = selectionIn(layout, picture.selection);
        QList<QTextLayout::FormatRange> formats;
        if (!selection.isEmpty()) {
            SelectionPainter(painter, colors.background, origin, right)
                .paint(layout, selection, viewport.style().rowHeight);
            formats = selectedFormats(layout, selection, colors.text);
        }
        layout.layout().draw(&painter, origin, formats, exposed);
        invisibles.paint(layout,
                         {origin, selection.start, selection.end, selection.coversBreak, exposed});
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
