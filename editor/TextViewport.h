#pragma once

#include "editor/TextLayoutCache.h"
#include "editor/TextStorage.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <functional>

namespace penwick {

/// A caret: an offset, and on which side of a soft wrap it shows.
struct TextCaret
{
    qint64 offset = 0;     ///< UTF-16 code units, 0-based.
    bool atRowEnd = false; ///< At a wrap: behind the upper row, not before the lower one.

    bool operator==(const TextCaret &) const = default;
};

/// The window onto the laid-out text: which rows are seen and where, how to get from a point to a
/// place in the text and back, and how far the text goes on below. It lays out what it is asked
/// about and nothing else; what lies far away is estimated.
///
/// Points are logical pixels relative to the viewport's upper left corner. What is on top is
/// remembered as a place in the text, so no correction of an estimate can make the view jump.
class TextViewport final
{
public:
    void setText(const Text &text);
    /// Told after each edit, with the text it led to.
    void textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength);

    /// The text laid out: as it was before an edit that `textChanged` was not told of yet.
    [[nodiscard]] const Text &text() const { return m_text; }

    void setComposition(const TextComposition &composition);

    /// What the input method shows at present.
    [[nodiscard]] const TextComposition &composition() const { return m_composition; }

    /// \param size of the viewport, margins included.
    void setGeometry(const TextLayoutStyle &style, QSizeF size);

    [[nodiscard]] const TextLayoutStyle &style() const { return m_cache.style(); }

    /// As `TextLayoutCache::setDecoration`.
    void setDecoration(TextDecoration *decoration) { m_cache.setDecoration(decoration); }

    [[nodiscard]] TextDecoration *decoration() const { return m_cache.decoration(); }

    /// Free space around the text.
    static constexpr qreal kMargin = 6;

    /// Calls `visit` for each segment that can be seen, top to bottom, with the y of its first row.
    void forEachVisible(const std::function<void(const SegmentLayout &, qreal)> &visit);

    /// The caret nearest to a point, snapped to clusters; points outside give the nearest row.
    [[nodiscard]] TextCaret caretAt(QPointF point);
    /// The start of the cluster that covers a point, as above.
    [[nodiscard]] qint64 characterAt(QPointF point);
    /// Where the caret is drawn; empty when it is scrolled away by more than a viewport.
    [[nodiscard]] QRectF caretRect(TextCaret caret);
    /// Where the cluster at `offset` is drawn; a line break has the caret's place. Empty as above.
    [[nodiscard]] QRectF characterRect(qint64 offset);
    [[nodiscard]] qreal caretX(TextCaret caret);

    /// The caret `rows` further down (up when negative) in the column `x`. Stays where the text
    /// ends; `moved` tells whether there was such a row.
    [[nodiscard]] TextCaret verticalMove(TextCaret caret, int rows, qreal x, bool &moved);
    [[nodiscard]] TextCaret rowStart(TextCaret caret);
    [[nodiscard]] TextCaret rowEnd(TextCaret caret);
    /// What one row shows, with the line break at its end: the row of the character at `offset`.
    [[nodiscard]] TextRange rowAround(qint64 offset);
    [[nodiscard]] bool isRightToLeft(qint64 offset);
    /// True when around `offset` some characters run from right to left.
    [[nodiscard]] bool hasRightToLeft(qint64 offset);

    /// Rows that fit whole, at least 1.
    [[nodiscard]] int rowsPerPage() const;

    void scrollByPixels(qreal distance);
    void scrollToStart();
    /// Scrolls as little as shows the caret; a far caret comes to the middle.
    void makeVisible(TextCaret caret);

    /// Scroll bar values. The estimate counts rows in 1/16 and is exact at both ends.
    struct ScrollRange
    {
        int maximum = 0; ///< 0: everything can be seen.
        int value = 0;
        int pageStep = 1;
    };

    [[nodiscard]] ScrollRange scrollRange();
    void scrollToValue(int value, int maximum);

    /// What was laid out last at the top, for tests and for keeping the place: the offset of the
    /// first row, which may be scrolled out in part.
    [[nodiscard]] qint64 topOffset() const { return m_anchor; }

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
    [[nodiscard]] bool stepDown(Row &row);
    [[nodiscard]] bool stepUp(Row &row);
    [[nodiscard]] TextCaret caretInRow(const Row &row, qreal x);
    [[nodiscard]] qreal textTop() const;
    void setAnchor(const Row &row, qreal pixel);
    void clampToEnd();
    [[nodiscard]] qreal estimatedRows(qint64 offset) const;
    [[nodiscard]] qint64 offsetOfEstimatedRows(qreal rows) const;
    [[nodiscard]] bool endIsVisible();
    [[nodiscard]] int rowsBetween(Row from, const Row &to, int limit);

    Text m_text;
    TextLayoutCache m_cache;
    TextComposition m_composition;
    QSizeF m_size;
    qint64 m_anchor = 0; // Offset of the first unit of the first visible row.
    // Where that row starts inside a composition: units of it that lie above.
    int m_anchorComposition = 0;
    qreal m_pixel = 0;    // How much of that row is scrolled out.
    qreal m_columns = 80; // Characters of usual width that fit one row.
};

} // namespace penwick
