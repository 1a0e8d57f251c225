#include "editor/TextLayoutCache.h"

#include <QTextOption>

#include <algorithm>
#include <limits>

namespace penwick {

namespace {

/// A sign of the same length for what no font draws, or 0 where the character speaks for itself.
char16_t substituteFor(char16_t unit, bool hasControlPictures)
{
    constexpr char16_t kControlPictures = 0x2400;
    constexpr char16_t kDeletePicture = 0x2421;
    constexpr char16_t kBox = 0x25AF;
    constexpr char16_t kObject = 0xFFFC; // The layout engine keeps it for embedded objects.
    if (unit == u'\t')
        return 0;
    if (unit < 0x20)
        return hasControlPictures ? static_cast<char16_t>(kControlPictures + unit) : kBox;
    if (unit == 0x7F)
        return hasControlPictures ? kDeletePicture : kBox;
    return (unit > 0x7F && unit < 0xA0) || unit == kObject ? kBox : u'\0';
}

QList<QTextLayout::FormatRange> substituteControls(QString &units, const TextLayoutStyle &style)
{
    QList<QTextLayout::FormatRange> formats;
    for (qsizetype i = 0; i < units.size(); ++i) {
        const char16_t substitute = substituteFor(units[i].unicode(), style.hasControlPictures);
        if (substitute == 0)
            continue;
        units[i] = QChar(substitute);
        if (!formats.isEmpty() && formats.last().start + formats.last().length == i) {
            ++formats.last().length;
            continue;
        }
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(i);
        range.length = 1;
        range.format.setForeground(style.substitutes);
        formats.append(range);
    }
    return formats;
}

bool holdsRightToLeft(const QString &units)
{
    constexpr char16_t kFirstRightToLeft = 0x0590;
    return std::any_of(units.begin(), units.end(), [](QChar c) {
        // A surrogate may belong to an old script of that kind: treated alike, it only costs time.
        return c.unicode() >= kFirstRightToLeft &&
               (c.direction() == QChar::DirR || c.direction() == QChar::DirAL ||
                c.isHighSurrogate());
    });
}

} // namespace

SegmentLayout::SegmentLayout(const Text &text,
                             const TextSegment &segment,
                             const TextLayoutStyle &style,
                             const TextComposition &composition)
    : m_segment(segment)
{
    QString units = text.slice(segment.start, segment.length());
    QList<QTextLayout::FormatRange> formats = substituteControls(units, style);
    m_layout.setText(units);
    m_hasRightToLeft = holdsRightToLeft(units);
    m_layout.setFont(style.font);
    m_layout.setCacheEnabled(true);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTabStopDistance(style.tabWidth);
    m_layout.setTextOption(option);
    if (composition.isActive() && composition.position >= segment.start &&
        composition.position <= segment.end) {
        m_compositionIndex = static_cast<int>(composition.position - segment.start);
        m_compositionLength = static_cast<int>(composition.string.size());
        m_layout.setPreeditArea(m_compositionIndex, composition.string);
        for (QTextLayout::FormatRange &range : formats)
            range.start += range.start >= m_compositionIndex ? m_compositionLength : 0;
        for (QTextLayout::FormatRange range : composition.formats) {
            range.start += m_compositionIndex;
            formats.append(range);
        }
    }
    m_layout.setFormats(formats);
    addRows(style);
}

void SegmentLayout::addRows(const TextLayoutStyle &style)
{
    m_layout.beginLayout();
    qreal y = 0;
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(style.width);
        // Fallback fonts differ in height: the rows stay even by sharing the baseline.
        line.setPosition(QPointF(0, y + style.ascent - line.ascent()));
        y += style.rowHeight;
    }
    m_layout.endLayout();
}

void SegmentLayout::shift(qint64 delta)
{
    m_segment.lineStart += delta;
    m_segment.start += delta;
    m_segment.end += delta;
}

int SegmentLayout::layoutIndex(qint64 offset) const
{
    const auto index =
        static_cast<int>(std::clamp<qint64>(offset - m_segment.start, 0, m_segment.length()));
    return m_compositionIndex >= 0 && index >= m_compositionIndex ? index + m_compositionLength
                                                                  : index;
}

int SegmentLayout::caretIndex(qint64 offset, const TextComposition &composition) const
{
    if (m_compositionIndex >= 0 && offset - m_segment.start == m_compositionIndex)
        return m_compositionIndex + std::max(0, composition.cursor);
    return layoutIndex(offset);
}

qint64 SegmentLayout::textOffset(int layoutIndex) const
{
    if (m_compositionIndex >= 0 && layoutIndex > m_compositionIndex)
        layoutIndex = std::max(m_compositionIndex, layoutIndex - m_compositionLength);
    return m_segment.start + layoutIndex;
}

int SegmentLayout::rowOf(qint64 offset, bool atRowEnd) const
{
    const int index = layoutIndex(offset);
    for (int row = 0; row + 1 < rowCount(); ++row) {
        const QTextLine line = m_layout.lineAt(row);
        const int end = line.textStart() + line.textLength();
        if (index < end || (index == end && atRowEnd))
            return row;
    }
    return std::max(0, rowCount() - 1);
}

qint64 SegmentLayout::rowStart(int row) const
{
    return textOffset(m_layout.lineAt(row).textStart());
}

qint64 SegmentLayout::rowEnd(int row) const
{
    const QTextLine line = m_layout.lineAt(row);
    return textOffset(line.textStart() + line.textLength());
}

qreal SegmentLayout::xOf(qint64 offset, int row) const
{
    return m_layout.lineAt(row).cursorToX(layoutIndex(offset));
}

qint64 SegmentLayout::offsetAt(qreal x, int row) const
{
    return textOffset(m_layout.lineAt(row).xToCursor(x));
}

qreal SegmentLayout::rowRight(int row) const
{
    return m_layout.lineAt(row).naturalTextRect().right();
}

bool SegmentLayout::isRightToLeft() const
{
    return m_layout.text().isRightToLeft();
}

void TextLayoutCache::setStyle(const TextLayoutStyle &style)
{
    m_style = style;
    m_entries.clear();
}

void TextLayoutCache::setComposition(const TextComposition &composition)
{
    forget(m_composition.position);
    m_composition = composition;
    forget(m_composition.position);
}

void TextLayoutCache::forget(qint64 offset)
{
    std::erase_if(m_entries, [offset](const Entry &entry) {
        const TextSegment &segment = entry.layout->segment();
        return segment.start <= offset && offset <= segment.end;
    });
}

const SegmentLayout &TextLayoutCache::layout(const Text &text, const TextSegment &segment)
{
    auto place = std::lower_bound(
        m_entries.begin(), m_entries.end(), segment.start, [](const Entry &entry, qint64 start) {
            return entry.layout->segment().start < start;
        });
    if (place != m_entries.end() && place->layout->segment() == segment) {
        place->lastUse = ++m_clock;
        return *place->layout;
    }
    if (place != m_entries.end() && place->layout->segment().start == segment.start)
        place = m_entries.erase(place);
    Entry entry{std::make_unique<SegmentLayout>(text, segment, m_style, m_composition), ++m_clock};
    const SegmentLayout &result = *entry.layout;
    m_entries.insert(place, std::move(entry));
    if (m_entries.size() > kCapacity)
        dropOldest();
    return result;
}

void TextLayoutCache::dropOldest()
{
    const auto oldest =
        std::min_element(m_entries.begin(), m_entries.end(), [](const Entry &a, const Entry &b) {
            return a.lastUse < b.lastUse;
        });
    m_entries.erase(oldest);
}

void TextLayoutCache::textChanged(qint64 offset, qint64 oldLength, qint64 newLength)
{
    const qint64 oldEnd = offset + oldLength;
    const qint64 delta = newLength - oldLength;
    // How far before an edit the cut between two segments of a huge line may depend on it.
    constexpr qint64 kCutReach = 2 * segments::kUnits;
    std::erase_if(m_entries, [&](const Entry &entry) {
        const TextSegment &segment = entry.layout->segment();
        const bool endsBefore = segment.nextStart() < offset &&
                                (segment.breakLength > 0 || segment.end + kCutReach < offset);
        const bool startsAfter = segment.lineStart > oldEnd;
        return !endsBefore && !startsAfter;
    });
    for (Entry &entry : m_entries) {
        if (entry.layout->segment().start > oldEnd)
            entry.layout->shift(delta);
    }
    if (m_composition.position > oldEnd)
        m_composition.position += delta;
}

} // namespace penwick
