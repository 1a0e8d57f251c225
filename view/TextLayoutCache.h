#pragma once

#include "text/Text.h"
#include "view/TextDecoration.h"
#include "view/TextLayoutStyle.h"
#include "view/TextSegments.h"

#include <QTextLayout>

#include <memory>
#include <utility>
#include <vector>

namespace penwick {

/// Uncommitted text of an input method, shown at the caret. It is not part of the text.
struct TextComposition
{
    qint64 position = 0; ///< Its offset in the text, UTF-16 code units, 0-based.
    QString string;      ///< The composed text; empty means no composition.
    int cursor = 0;      ///< Caret inside `string`, UTF-16 code units, 0-based; -1: hidden.
    /// Formats of its clauses. `start` is relative to `string`.
    QList<QTextLayout::FormatRange> formats;

    [[nodiscard]] bool isActive() const { return !string.isEmpty(); }
};

/// A character in a layout that no font draws.
struct InvisibleCharacter
{
    int index = 0; ///< In the layout, UTF-16 code units, 0-based.
    char16_t unit = 0;
};

/// One segment, laid out in rows of equal height. Row numbers are 0-based.
class SegmentLayout final
{
public:
    SegmentLayout(const Text &text,
                  const TextSegment &segment,
                  const TextLayoutStyle &style,
                  const TextComposition &composition,
                  const QList<TextColorRange> &colors = {});

    [[nodiscard]] const TextSegment &segment() const { return m_segment; }

    /// Shifts the segment's offsets by `delta`, after an edit before it.
    void shift(qint64 delta);

    [[nodiscard]] int rowCount() const { return m_layout.lineCount(); }

    /// The width of the widest row with the blanks and the label at its end, in logical pixels. 0
    /// where rows wrap at the window.
    [[nodiscard]] qreal width() const { return m_width; }

    /// How far the glyphs of a row extend beyond it at most, upwards or downwards, in logical
    /// pixels.
    [[nodiscard]] qreal overhang() const { return m_overhang; }

    [[nodiscard]] const QTextLayout &layout() const { return m_layout; }

    /// The characters that need a mark or a label, ascending. Blanks only if the style shows them.
    [[nodiscard]] const std::vector<InvisibleCharacter> &invisibles() const { return m_invisibles; }

    /// The line break after the segment if it is an unusual one, neither a line feed nor CR LF;
    /// otherwise 0. The rows leave room for its label.
    [[nodiscard]] char16_t lineEnd() const { return m_lineEnd; }

    /// The row that shows the caret at `offset`. At a soft wrap, the lower row; with `atRowEnd`,
    /// the upper one.
    [[nodiscard]] int rowOf(qint64 offset, bool atRowEnd) const;
    [[nodiscard]] qint64 rowStart(int row) const;
    /// Returns a key of everything that a row's look depends on besides the style, its place and
    /// the selection: rows with the same key look the same. Rows of different layouts may have the
    /// same key.
    [[nodiscard]] quint64 lookOf(int row) const;
    /// Units of an active composition before the row, if the row starts inside the composition or
    /// right after it; otherwise meaningless. Together with `rowStart` it identifies the row.
    [[nodiscard]] int compositionBefore(int row) const;
    /// The row that `rowStart` and `compositionBefore` identify.
    [[nodiscard]] int rowStartingAt(qint64 offset, int compositionUnits) const;
    /// Offset of the caret at the end of the row.
    [[nodiscard]] qint64 rowEnd(int row) const;
    /// The caret's x in a row, in logical pixels from the left edge of the text.
    [[nodiscard]] qreal xOf(qint64 offset, int row) const;
    /// Left and right edge of the cluster from `start` to `end` in the row that shows it.
    [[nodiscard]] std::pair<qreal, qreal> edgesOf(qint64 start, qint64 end, int row) const;
    /// The offset nearest to `x` in a row; may be inside a cluster.
    [[nodiscard]] qint64 offsetAt(qreal x, int row) const;
    /// The offset of the character that covers `x` in a row; beyond the last one, the row's end.
    [[nodiscard]] qint64 characterAt(qreal x, int row) const;
    /// Indices in `layout()` of the characters that a row has from `left` to `right`, and perhaps
    /// others: where few are to be saved, all of the row.
    [[nodiscard]] std::pair<int, int> indicesBetween(qreal left, qreal right, int row) const;
    /// True when the segment's first strong character is right-to-left.
    [[nodiscard]] bool isRightToLeft() const;

    /// True when characters may run from right to left.
    [[nodiscard]] bool hasRightToLeft() const { return m_hasRightToLeft; }

    /// Index in `layout()` of an offset of the text. An active composition shifts what follows it.
    [[nodiscard]] int layoutIndex(qint64 offset) const;
    /// True when a tab of the text, not of a composition, is at `layoutIndex` in `layout()`.
    [[nodiscard]] bool isTab(int layoutIndex) const;
    /// The same for the caret, which stands inside an active composition.
    [[nodiscard]] int caretIndex(qint64 offset, const TextComposition &composition) const;

private:
    [[nodiscard]] qint64 textOffset(int layoutIndex) const;
    [[nodiscard]] int indexInSegment(qint64 offset) const;
    [[nodiscard]] int rowOfIndex(int index, bool atRowEnd) const;
    QList<QTextLayout::FormatRange>
    substituteInvisibles(QString &units, const TextLayoutStyle &style, bool endsLine);
    void insertComposition(const TextComposition &composition,
                           QList<QTextLayout::FormatRange> &formats);
    /// `shown` is the text with the composition in it.
    void addRows(const TextLayoutStyle &style, QStringView shown);
    [[nodiscard]] qreal measureOverhang(qreal rowHeight) const;
    void breakRow(QTextLine &line, const TextLayoutStyle &style, QStringView shown) const;

    TextSegment m_segment;
    QTextLayout m_layout;
    std::vector<InvisibleCharacter> m_invisibles;
    qreal m_width = 0;
    qreal m_overhang = 0;
    char16_t m_lineEnd = 0;
    int m_compositionIndex = -1;
    int m_compositionLength = 0;
    bool m_hasRightToLeft = false;
    quint64 m_ownLook = 0; // Differs for each layout; 0: the look follows from the characters.
};

/// The layouts used last. Bounded; an edit discards only the layouts that it affects.
class TextLayoutCache final
{
public:
    /// Sets the style and discards all layouts.
    void setStyle(const TextLayoutStyle &style);

    [[nodiscard]] const TextLayoutStyle &style() const { return m_style; }

    /// Sets the decoration and discards all layouts.
    /// \param decoration not owned; used until another is set. Null for none.
    void setDecoration(TextDecoration *decoration);

    [[nodiscard]] TextDecoration *decoration() const { return m_decoration; }

    /// Sets the composition, which is laid out in the segment that contains it. Discards the
    /// layouts at its old and its new position.
    void setComposition(const TextComposition &composition);

    /// Returns the layout of `segment`, which must be one of `text`. The reference stays valid
    /// until another function modifies the cache; calls of this one keep the layouts of the latest
    /// `kCapacity` calls.
    [[nodiscard]] const SegmentLayout &layout(const Text &text, const TextSegment &segment);

    /// The same as `segments::at`; faster where the segment is laid out.
    [[nodiscard]] TextSegment segmentAt(const Text &text, qint64 offset) const;

    /// Call this after each edit. Discards the layouts that it affects and shifts those after it.
    void textChanged(qint64 offset, qint64 oldLength, qint64 newLength);

    void clear() { m_entries.clear(); }

    static constexpr std::size_t kCapacity = 512;

private:
    struct Entry
    {
        std::unique_ptr<SegmentLayout> layout;
        quint64 lastUse = 0;
        quint64 colorKey = 0;
    };

    void forget(qint64 offset);
    void dropOldest();

    std::vector<Entry> m_entries; // Sorted by the segment's start.
    TextLayoutStyle m_style;
    TextComposition m_composition;
    TextDecoration *m_decoration = nullptr;
    quint64 m_clock = 0;
};

} // namespace penwick
