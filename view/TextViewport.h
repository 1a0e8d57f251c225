#pragma once

#include "editor/TextStorage.h"
#include "view/LineWidths.h"
#include "view/TextLayoutCache.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <functional>
#include <optional>

namespace penwick {

/// A caret: an offset, and the side of a soft wrap on which it is shown.
struct TextCaret
{
    qint64 offset = 0;     ///< UTF-16 code units, 0-based.
    bool atRowEnd = false; ///< At a soft wrap: shown at the end of the upper row.

    bool operator==(const TextCaret &) const = default;
};

/// The visible part of the laid-out text: which rows are visible and where, how points map to
/// offsets and back, and the scroll range. It lays out only the rows that a query needs; the size
/// of the rest is estimated.
///
/// Points are logical pixels relative to the viewport's upper left corner. The scroll position is
/// stored as an offset of the text, so a corrected estimate cannot make the view jump.
///
/// Where rows are wider than the viewport, or do not wrap, the viewport also scrolls sideways. A
/// line that does not wrap is one row; the segments of a huge one stand side by side in it, from
/// left to right. `LineWidths` estimates the places of those that were not laid out.
class TextViewport final
{
public:
    void setText(const Text &text);
    /// Call this after each edit, with the text that it led to.
    void textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength);

    /// The text laid out. It lacks edits that were not yet reported through `textChanged`.
    [[nodiscard]] const Text &text() const { return m_text; }

    void setComposition(const TextComposition &composition);

    /// The composition shown now; inactive when there is none.
    [[nodiscard]] const TextComposition &composition() const { return m_composition; }

    /// \param size of the viewport, margins included.
    void setGeometry(const TextLayoutStyle &style, QSizeF size);

    [[nodiscard]] QSizeF size() const { return m_size; }

    [[nodiscard]] const TextLayoutStyle &style() const { return m_cache.style(); }

    /// As `TextLayoutCache::setDecoration`.
    void setDecoration(TextDecoration *decoration) { m_cache.setDecoration(decoration); }

    [[nodiscard]] TextDecoration *decoration() const { return m_cache.decoration(); }

    /// Free space around the text, in logical pixels.
    static constexpr qreal kMargin = 6;

    /// Calls `visit` for each visible segment, top to bottom, then left to right, with the y of its
    /// first row.
    void forEachVisible(const std::function<void(const SegmentLayout &, qreal)> &visit);

    /// The x of a segment's left edge.
    [[nodiscard]] qreal leftOf(const SegmentLayout &layout);

    /// The range of the visible segments, at least.
    [[nodiscard]] TextRange visibleRange();

    /// The caret nearest to a point, snapped to clusters. A point above or below the text gives a
    /// caret in its first or last row.
    [[nodiscard]] TextCaret caretAt(QPointF point);
    /// The start of the cluster that covers a point. Points outside as above.
    [[nodiscard]] qint64 characterAt(QPointF point);
    /// Where the caret is drawn; empty when it is scrolled out of view by more than a viewport.
    [[nodiscard]] QRectF caretRect(TextCaret caret);
    /// Where the cluster at `offset` is drawn; for a line break, the caret's rectangle. Empty as
    /// above.
    [[nodiscard]] QRectF characterRect(qint64 offset);
    /// Distance of the caret from the left edge of the text, scrolled out or not.
    [[nodiscard]] qreal caretX(TextCaret caret);

    /// Returns the caret `rows` rows further down (up when negative) in the column `x`, or as far
    /// as the text has rows.
    /// \param moved set to whether there was such a row at all.
    [[nodiscard]] TextCaret verticalMove(TextCaret caret, int rows, qreal x, bool &moved);
    [[nodiscard]] TextCaret rowStart(TextCaret caret);
    [[nodiscard]] TextCaret rowEnd(TextCaret caret);
    /// The range of the row that shows the character at `offset`, including the line break at its
    /// end; of the segment where a line does not wrap.
    [[nodiscard]] TextRange rowAround(qint64 offset);
    [[nodiscard]] bool isRightToLeft(qint64 offset);
    /// True when characters around `offset` may run from right to left.
    [[nodiscard]] bool hasRightToLeft(qint64 offset);

    /// Number of rows that fit completely, at least 1.
    [[nodiscard]] int rowsPerPage() const;

    void scrollByPixels(qreal distance);
    /// True when rows can be wider than the viewport.
    [[nodiscard]] bool scrollsSideways() const;
    /// Scrolls to the right, or to the left if `distance` is negative.
    void scrollSidewaysBy(qreal distance);
    void scrollToStart();

    /// What is at the upper edge: the start of a row, and how much of that row is scrolled out, in
    /// logical pixels.
    struct Top
    {
        qint64 offset = 0;
        qreal hidden = 0;
    };

    [[nodiscard]] Top top() const { return {m_anchor, m_pixel}; }

    void scrollTo(Top top);
    /// Scrolls as little as needed to show the caret and the whole composition at it, the caret
    /// first; centres it when it is far away.
    void makeVisible(TextCaret caret);

    /// Scroll bar values, in steps of 1/16 of an estimated row (larger ones for huge texts). Exact
    /// at both ends of the text.
    struct ScrollRange
    {
        int maximum = 0; ///< 0: the whole text is visible.
        int value = 0;
        int pageStep = 1;
    };

    [[nodiscard]] ScrollRange scrollRange();
    void scrollToValue(int value, int maximum);

    /// The same sideways, in logical pixels (larger steps for huge lines). The width of the text is
    /// that of the widest row seen since the last edit of that row; the part of a huge line that
    /// was not laid out is estimated. Exact at the ends of the visible lines.
    [[nodiscard]] ScrollRange sidewaysRange();
    /// \param steps how far the value was moved. If it is at neither end, this alone counts: the
    ///        value may be one of an estimate that has changed since.
    void scrollSidewaysToValue(int value, int maximum, int steps);

private:
    struct Row
    {
        TextSegment segment;
        int row = 0;
    };

    [[nodiscard]] const SegmentLayout &layoutOf(const TextSegment &segment);
    [[nodiscard]] Row rowOfCaret(TextCaret caret);
    [[nodiscard]] Row topRow();
    [[nodiscard]] Row rowAt(qreal y);

    [[nodiscard]] TextSegment segmentAt(qint64 offset) const
    {
        return m_cache.segmentAt(m_text, offset);
    }

    [[nodiscard]] std::optional<TextSegment> segmentBelow(const TextSegment &segment) const;
    [[nodiscard]] std::optional<TextSegment> segmentAbove(const TextSegment &segment) const;
    [[nodiscard]] int rowCountOf(const TextSegment &segment);
    [[nodiscard]] qint64 placeOf(const TextSegment &segment) const;
    [[nodiscard]] TextSegment segmentAt(const TextSegment &segment, qreal x);
    [[nodiscard]] qreal textWidth() const;
    [[nodiscard]] qreal indent(const SegmentLayout &layout);
    void noteWidth(const SegmentLayout &layout);
    void forgetWidest(qint64 offset, qint64 oldLength, qint64 newLength);
    void visitParts(const TextSegment &segment,
                    const std::function<void(const SegmentLayout &)> &visit);
    void measureVisible();
    void scrollToTop();
    [[nodiscard]] std::optional<TextSegment> firstVisiblePart();
    void setLeft(qreal left);
    [[nodiscard]] qreal sidewaysSteps() const;
    void keepPlace(const TextLayoutStyle &before, qint64 place);
    void makeVisibleSideways(TextCaret caret, const TextComposition &composition);
    [[nodiscard]] bool stepDown(Row &row);
    [[nodiscard]] bool stepUp(Row &row);
    [[nodiscard]] TextCaret caretInRow(const Row &row, qreal x);
    [[nodiscard]] qreal textTop() const;
    void setAnchor(const Row &row, qreal pixel);
    void clampToEnd();
    [[nodiscard]] qreal estimatedRows(qint64 offset) const;
    [[nodiscard]] qint64 offsetOfEstimatedRows(qreal rows) const;
    /// `composition` is the one shown, with any cursor.
    [[nodiscard]] QRectF caretRect(TextCaret caret, const TextComposition &composition);
    void makeVisible(TextCaret caret, const TextComposition &composition);
    [[nodiscard]] bool fits();
    [[nodiscard]] bool endIsVisible();
    [[nodiscard]] int rowsBetween(Row from, const Row &to, int limit);

    Text m_text;
    TextLayoutCache m_cache;
    TextComposition m_composition;
    QSizeF m_size;
    qint64 m_anchor = 0; // Offset of the first unit of the first visible row.
    // If that row starts inside a composition: units of the composition above it.
    int m_anchorComposition = 0;
    qreal m_pixel = 0;    // How much of that row is scrolled out, in logical pixels.
    qreal m_columns = 80; // ASCII characters that fit in one row.
    LineWidths m_widths;  // Of huge lines, while lines do not wrap.
    qreal m_left = 0;     // What is scrolled out on the left, in whole logical pixels.

    struct Widest
    {
        qint64 lineStart = 0;
        qreal width = 0;
    };

    Widest m_widest; // Of the lines seen, while the viewport can scroll sideways.
};

} // namespace penwick
