#include "view/TextViewPainter.h"

#include "view/InvisibleMarks.h"
#include "view/InvisiblePainter.h"
#include "view/LineColors.h"
#include "view/RectanglePainter.h"

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

/// The part of a selection that lies in one segment, as indices of its layout.
struct LayoutSelection
{
    int start = 0;
    int end = 0;
    bool coversBreak = false; // The selection extends beyond the segment.

    [[nodiscard]] bool isEmpty() const { return start >= end && !coversBreak; }
};

/// \param wraps whether each segment begins a new row.
LayoutSelection selectionIn(const SegmentLayout &layout, TextRange selection, bool wraps)
{
    const TextSegment &segment = layout.segment();
    const qint64 start = std::max(selection.location, segment.start);
    const qint64 end = std::min(selection.end(), segment.end);
    LayoutSelection result;
    if (selection.length == 0 || start > segment.end || end < segment.start)
        return result;
    result.start = layout.layoutIndex(start);
    result.end = layout.layoutIndex(end);
    result.coversBreak = selection.end() > segment.end && (wraps || segment.breakLength > 0);
    return result;
}

/// Fills the background of parts of rows.
class RowFiller
{
public:
    RowFiller(QPainter &painter, const QColor &color)
        : m_painter(painter)
        , m_color(color)
    {
    }

    void fill(const QRectF &area)
    {
        if (area.width() > 0)
            m_painter.fillRect(area, m_color);
    }

    /// \param part start and end index in the layout, within the row.
    /// \param place the row's left edge, top and height.
    void fillText(const SegmentLayout &layout,
                  const QTextLine &line,
                  std::pair<int, int> part,
                  const QRectF &place)
    {
        const auto [start, end] = part;
        if (start >= end)
            return;
        if (layout.hasRightToLeft())
            fillPieces(layout, line, part, place);
        else
            fillBetween(line.cursorToX(start), line.cursorToX(end), place);
    }

private:
    void fillBetween(qreal a, qreal b, const QRectF &place)
    {
        fill({place.x() + std::min(a, b), place.y(), std::abs(b - a), place.height()});
    }

    /// Fills the background of each glyph run. Where text of both directions is mixed, part of a
    /// row consists of several pieces, and caret positions do not give their edges: at a change of
    /// direction one caret position stands for two.
    void fillPieces(const SegmentLayout &layout,
                    const QTextLine &line,
                    std::pair<int, int> part,
                    const QRectF &place)
    {
        const auto [start, end] = part;
        const QList<QGlyphRun> runs = line.glyphRuns(start, end - start);
        for (const QGlyphRun &run : runs) {
            const QRectF rect = run.boundingRect();
            fillBetween(rect.left(), rect.right(), place);
        }
        for (int i = start; i < end; ++i)
            if (layout.isTab(i)) // A tab has no glyph.
                fillBetween(line.cursorToX(i), line.cursorToX(i, QTextLine::Trailing), place);
    }

    QPainter &m_painter;
    QColor m_color;
};

/// Fills the background of the selected part of one segment.
class SelectionPainter
{
public:
    /// \param origin the top left of the segment.
    /// \param left, right where the highlight of a selected line break ends.
    SelectionPainter(
        QPainter &painter, const QColor &color, QPointF origin, qreal left, qreal right)
        : m_filler(painter, color)
        , m_origin(origin)
        , m_left(left)
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
            const int start = std::max(selection.start, line.textStart());
            m_filler.fillText(layout, line, {start, std::min(selection.end, lineEnd)}, m_row);
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
        // Start at the text's advance width, not at the edge of its ink, which may overhang, and
        // round towards the text to a whole pixel. Otherwise a gap would remain between the two
        // fills.
        const QTextLine line = layout.layout().lineAt(row);
        const qreal left = line.naturalTextRect().left();
        if (layout.isRightToLeft())
            fill(m_left, m_row.x() + std::ceil(left));
        else
            fill(m_row.x() + std::floor(left + line.horizontalAdvance()), m_right);
    }

    void fill(qreal left, qreal right)
    {
        m_filler.fill({left, m_row.y(), right - left, m_row.height()});
    }

    RowFiller m_filler;
    QPointF m_origin;
    qreal m_left = 0;
    qreal m_right = 0;
    QRectF m_row; // Without width.
};

/// The colours of a selection. Where the palette has the same colour for views with and without the
/// focus, a view without it gets a paler one.
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

/// Returns the formats of the selected part of a segment. Characters shown by labels are excluded,
/// so that they stay transparent.
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

void fillRows(QPainter &painter, const SegmentLayout &layout, const QRectF &row, QColor color)
{
    if (color.isValid())
        painter.fillRect(QRectF(row.x(), row.y(), row.width(), row.height() * layout.rowCount()),
                         color);
}

/// Paints the marks of one segment, behind selection and text. Its cost is bounded by the rows that
/// are painted, regardless of the number of marks.
class MarkPainter
{
public:
    MarkPainter(QPainter &painter, const TextViewPicture &picture, qreal rowHeight)
        : m_filler(painter, textMarkColor(picture.palette))
        , m_marks(*picture.marks)
        , m_rowHeight(rowHeight)
    {
    }

    void paint(const SegmentLayout &layout, QPointF origin, const QRectF &exposed)
    {
        const auto rowAt = [&](qreal y) {
            const qreal row = std::floor((y - origin.y()) / m_rowHeight);
            return static_cast<int>(std::clamp<qreal>(row, 0, layout.rowCount() - 1));
        };
        const int last = rowAt(exposed.bottom());
        for (int row = rowAt(exposed.top()); row <= last; ++row) {
            const qreal top = origin.y() + row * m_rowHeight;
            paintRow(layout,
                     row,
                     QRectF(origin.x(), top + 1, 0, m_rowHeight - 2),
                     layout.indicesBetween(
                         exposed.left() - origin.x(), exposed.right() - origin.x(), row));
        }
    }

private:
    /// \param shown the indices in the layout that can be seen.
    void
    paintRow(const SegmentLayout &layout, int row, const QRectF &place, std::pair<int, int> shown)
    {
        // Maximum per row. Only characters without width could make more.
        constexpr int kPieces = 400;
        const TextSegment &segment = layout.segment();
        const QTextLine line = layout.layout().lineAt(row);
        const int lineEnd = line.textStart() + line.textLength();
        // At the boundary of two rows, a thin mark belongs to the second.
        const int lastIndex = row + 1 == layout.rowCount() ? lineEnd : lineEnd - 1;
        const qint64 rowStart = layout.rowStart(row);
        const qint64 rowEnd = layout.rowEnd(row);
        auto mark = std::partition_point(
            m_marks.begin(), m_marks.end(), [&](const TextRange &m) { return m.end() < rowStart; });
        std::pair<int, int> piece; // Adjacent marks are merged.
        int pieces = 0;
        for (; mark != m_marks.end() && mark->location <= rowEnd && pieces < kPieces; ++mark) {
            const int start = layout.layoutIndex(std::max(mark->location, segment.start));
            const int end = layout.layoutIndex(std::min(mark->end(), segment.end));
            if (end < shown.first)
                continue;
            if (start > shown.second)
                break;
            if (start == end) {
                const bool isHere = start >= line.textStart() && start <= lastIndex;
                pieces += isHere ? paintThin(*mark, segment, line.cursorToX(start), place) : 0;
                continue;
            }
            const std::pair part(std::max(start, line.textStart()), std::min(end, lineEnd));
            if (part.first != piece.second) {
                m_filler.fillText(layout, line, piece, place);
                piece.first = part.first;
                ++pieces;
            }
            piece.second = part.second;
        }
        m_filler.fillText(layout, line, piece, place);
    }

    /// Paints a mark without width: an empty match or a line break. Returns the number of pieces.
    int paintThin(const TextRange &mark, const TextSegment &segment, qreal x, const QRectF &place)
    {
        constexpr qreal kThin = 3;
        // A match that only ends where this segment begins is painted in the segment before.
        if (!mark.isEmpty() && mark.end() <= segment.end)
            return 0;
        m_filler.fill({place.x() + x, place.y(), kThin, place.height()});
        return 1;
    }

    RowFiller m_filler;
    const std::vector<TextRange> &m_marks;
    qreal m_rowHeight;
};

void paintCaret(QPainter &painter, TextViewport &viewport, const TextViewPicture &picture)
{
    if (!picture.caretIsShown)
        return;
    QRectF caret = viewport.caretRect(picture.caret);
    if (caret.isNull())
        return;
    caret.moveLeft(std::round(caret.left()));
    caret.setWidth(picture.caretWidth);
    const TextLayoutStyle &style = viewport.style();
    painter.fillRect(caret.adjusted(0, style.spaceAbove + 1, 0, -style.spaceBelow - 1),
                     picture.palette.color(QPalette::Text));
}

} // namespace

QColor textMarkColor(const QPalette &palette)
{
    // Yellow, in a shade on which the text colour is legible.
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    return isDark ? QColor(107, 83, 0) : QColor(255, 225, 120);
}

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
    RectanglePainter rectangle(picture, viewport);
    painter.setPen(palette.color(QPalette::Text));
    const bool wraps = viewport.style().wraps;
    viewport.forEachVisible([&](const SegmentLayout &layout, qreal y) {
        const bool startsLine = wraps || layout.segment().start == layout.segment().lineStart;
        const QPointF origin(viewport.leftOf(layout), y);
        const qreal rowHeight = viewport.style().rowHeight;
        if (y - layout.overhang() > exposed.bottom() ||
            y + layout.rowCount() * rowHeight + layout.overhang() < exposed.top())
            return;
        // A segment before on the same row has its own background.
        const QRectF row(startsLine ? 0 : origin.x(), y, picture.size.width(), rowHeight);
        if (layout.segment().lineStart == picture.currentLine)
            fillRows(painter, layout, row, LineColors(palette).currentLine);
        if (const TextDecoration *decoration = viewport.decoration())
            fillRows(painter, layout, row, decoration->background(layout.segment()));
        if (picture.marks != nullptr)
            MarkPainter(painter, picture, rowHeight).paint(layout, origin, exposed);
        const LayoutSelection selection =
            selectionIn(layout, rectangle.selectionAround(layout.segment()), wraps);
        QList<QTextLayout::FormatRange> formats;
        if (!selection.isEmpty()) {
            SelectionPainter(painter, colors.background, origin, TextViewport::kMargin, right)
                .paint(layout, selection, rowHeight);
            formats = selectedFormats(layout, selection, colors.text);
        }
        rectangle.paint(painter, layout, origin, colors.background);
        // Rows outside the given area are omitted, although their glyphs may reach into it.
        const QRectF around = exposed.adjusted(0, -layout.overhang(), 0, layout.overhang());
        layout.layout().draw(&painter, origin, formats, around);
        invisibles.paint(layout,
                         {origin, selection.start, selection.end, selection.coversBreak, exposed});
    });
    paintCaret(painter, viewport, picture);
}

} // namespace penwick
