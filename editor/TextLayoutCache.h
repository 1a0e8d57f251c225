#pragma once

#include "editor/TextDecoration.h"
#include "editor/TextLayoutStyle.h"
#include "editor/TextSegments.h"
#include "text/Text.h"

#include <QTextLayout>

#include <memory>
#include <utility>
#include <vector>

namespace penwick {

/// What an input method shows at the caret without it being part of the text.
struct TextComposition
{
    qint64 position = 0; ///< Where it stands in the text, UTF-16 code units, 0-based.
    QString string;      ///< The composed text; empty means no composition.
    int cursor = 0;      ///< Caret inside `string`, UTF-16 code units, 0-based; -1: hidden.
    /// Looks of its clauses. `start` counts from the beginning of `string`.
    QList<QTextLayout::FormatRange> formats;

    [[nodiscard]] bool isActive() const { return !string.isEmpty(); }
};

/// A character that no font draws, in a layout.
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

    /// Moves the segment in the text, after an edit before it.
    void shift(qint64 delta);

    [[nodiscard]] int rowCount() const { return m_layout.lineCount(); }

    [[nodiscard]] const QTextLayout &layout() const { return m_layout; }

    /// What has to be made visible, ascending.
    [[nodiscard]] const std::vector<InvisibleCharacter> &invisibles() const { return m_invisibles; }

    /// The line break behind the segment where it is one that readers should see: neither a line
    /// feed nor CR LF. Otherwise 0. The last row has room for its label.
    [[nodiscard]] char16_t lineEnd() const { return m_lineEnd; }

    /// The row that shows the caret at `offset`. Where a row ends and the next begins it is the
    /// next one, or with `atRowEnd` the first one.
    [[nodiscard]] int rowOf(qint64 offset, bool atRowEnd) const;
    [[nodiscard]] qint64 rowStart(int row) const;
    /// Units of an open composition that lie before the row, when the row starts inside or right
    /// behind it; otherwise without meaning. With `rowStart` it names the row.
    [[nodiscard]] int compositionBefore(int row) const;
    /// The row named by what the two above answered.
    [[nodiscard]] int rowStartingAt(qint64 offset, int compositionUnits) const;
    /// Where the caret stands at the end of the row.
    [[nodiscard]] qint64 rowEnd(int row) const;
    /// The caret's place in a row, from the left edge of the text.
    [[nodiscard]] qreal xOf(qint64 offset, int row) const;
    /// Left and right edge of the cluster from `start` to `end`, which the row shows.
    [[nodiscard]] std::pair<qreal, qreal> edgesOf(qint64 start, qint64 end, int row) const;
    /// The offset nearest to `x` in a row; may be inside a cluster.
    [[nodiscard]] qint64 offsetAt(qreal x, int row) const;
    /// The offset of the character that covers `x` in a row; at its end the row's end.
    [[nodiscard]] qint64 characterAt(qreal x, int row) const;
    /// True when the line's first strong character asks for it.
    [[nodiscard]] bool isRightToLeft() const;

    /// True when some characters run from right to left.
    [[nodiscard]] bool hasRightToLeft() const { return m_hasRightToLeft; }

    /// Index in `layout()` of an offset of the text: an open composition moves what follows it.
    [[nodiscard]] int layoutIndex(qint64 offset) const;
    /// True when a tab of the text stands at an index of `layout()`.
    [[nodiscard]] bool isTab(int layoutIndex) const;
    /// As `layoutIndex`, for the caret, which stands inside an open composition.
    [[nodiscard]] int caretIndex(qint64 offset, const TextComposition &composition) const;

private:
    [[nodiscard]] qint64 textOffset(int layoutIndex) const;
    [[nodiscard]] int indexInSegment(qint64 offset) const;
    [[nodiscard]] int rowOfIndex(int index, bool atRowEnd) const;
    QList<QTextLayout::FormatRange> substituteInvisibles(QString &units,
                                                         const TextLayoutStyle &style);
    void insertComposition(const TextComposition &composition,
                           QList<QTextLayout::FormatRange> &formats);
    void addRows(const TextLayoutStyle &style);

    TextSegment m_segment;
    QTextLayout m_layout;
    std::vector<InvisibleCharacter> m_invisibles;
    char16_t m_lineEnd = 0;
    int m_compositionIndex = -1;
    int m_compositionLength = 0;
    bool m_hasRightToLeft = false;
};

/// The layouts used last, by the place of their segment. Bounded; an edit keeps what it left alone.
class TextLayoutCache final
{
public:
    /// Forgets everything when the style is another one.
    void setStyle(const TextLayoutStyle &style);

    [[nodiscard]] const TextLayoutStyle &style() const { return m_style; }

    /// \param decoration not owned; asked until another is set, null for none.
    void setDecoration(TextDecoration *decoration);

    [[nodiscard]] TextDecoration *decoration() const { return m_decoration; }

    /// A composition takes part in the layout of the segment it stands in.
    void setComposition(const TextComposition &composition);

    /// The layout of `segment`, which must be one of `text`. Valid until the next call of anything
    /// but this function; the cache never drops what was asked for in the latest `kCapacity` calls.
    [[nodiscard]] const SegmentLayout &layout(const Text &text, const TextSegment &segment);

    /// Told after each edit: forgets what it touched and moves what follows.
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

    std::vector<Entry> m_entries; // Ascending by the segment's start.
    TextLayoutStyle m_style;
    TextComposition m_composition;
    TextDecoration *m_decoration = nullptr;
    quint64 m_clock = 0;
};

} // namespace penwick
