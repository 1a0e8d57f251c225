#include "view/TextLayoutCache.h"

#include "view/InvisibleMarks.h"
#include "view/RowBreaks.h"

#include <QGlyphRun>
#include <QRawFont>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace penwick {

namespace {

/// Replaces, in the layout, a character that is shown by a label. Neutral in direction.
constexpr QChar kPlaceholder(0x25AF);

/// Wider than any segment, and within the range of the toolkit's fixed-point numbers.
constexpr qreal kUnlimited = 1 << 24;

/// Returns the line break after `segment` if it is neither a line feed nor CR LF, else 0.
char16_t unusualLineEnd(const Text &text, const TextSegment &segment)
{
    const char16_t unit = segment.breakLength == 1 ? text.at(segment.end) : u'\n';
    return unit == u'\n' ? u'\0' : unit;
}

bool holdsRightToLeft(QStringView units)
{
    constexpr char16_t kFirstRightToLeft = 0x0590;
    for (qsizetype i = 0; i < units.size(); ++i) {
        char32_t character = units[i].unicode();
        if (character < kFirstRightToLeft)
            continue;
        if (QChar::isHighSurrogate(character) && i + 1 < units.size())
            character = QChar::surrogateToUcs4(units[i], units[i + 1]);
        const QChar::Direction direction = QChar::direction(character);
        if (direction == QChar::DirR || direction == QChar::DirAL)
            return true;
    }
    return false;
}

bool holdsMarks(QStringView units)
{
    constexpr char16_t kFirstMark = 0x0300;
    return std::any_of(units.begin(), units.end(), [](QChar unit) {
        return unit >= kFirstMark && unit.category() == QChar::Mark_NonSpacing;
    });
}

/// True for a character that begins a row in a layout even where rows do not wrap.
bool beginsRow(QChar character)
{
    return character == u'\n' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

/// Returns the width of a row with the blanks at its end.
qreal widthOf(const QTextLine &line)
{
    return std::max(line.naturalTextRect().right(),
                    line.cursorToX(line.textStart() + line.textLength()));
}

/// Unlike `QGlyphRun::boundingRect`, which may tell the height of the line.
QRectF inkOf(const QGlyphRun &run)
{
    const QRawFont font = run.rawFont();
    const QList<QPointF> positions = run.positions();
    const QList<quint32> glyphs = run.glyphIndexes();
    QRectF ink;
    for (qsizetype i = 0; i < std::min(positions.size(), glyphs.size()); ++i)
        ink |= font.boundingRect(glyphs[i]).translated(positions[i]);
    return ink;
}

/// U+FE0F requests the emoji presentation of the character before it. The layout engine ignores
/// that and takes the first font that has the character, which may draw it in black and white. The
/// returned formats select the emoji font.
QList<QTextLayout::FormatRange> emojiPresentations(QStringView units, const QString &emojiFamily)
{
    constexpr QChar kEmojiPresentation(0xFE0F);
    constexpr QChar kKeycap(0x20E3);
    QList<QTextLayout::FormatRange> formats;
    for (qsizetype i = units.indexOf(kEmojiPresentation); i > 0;
         i = units.indexOf(kEmojiPresentation, i + 1)) {
        const bool isPair = i >= 2 && units[i - 1].isLowSurrogate();
        const bool isKeycap = i + 1 < units.size() && units[i + 1] == kKeycap;
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(i - (isPair ? 2 : 1));
        range.length = static_cast<int>(i + (isKeycap ? 2 : 1)) - range.start;
        range.format.setFontFamilies(QStringList(emojiFamily));
        formats.append(range);
    }
    return formats;
}

quint64 newLook()
{
    static quint64 last = 0;
    return ++last;
}

QList<QTextLayout::FormatRange> colorFormats(const QList<TextColorRange> &colors)
{
    QList<QTextLayout::FormatRange> formats;
    for (const TextColorRange &color : colors) {
        QTextLayout::FormatRange range;
        range.start = color.start;
        range.length = color.length;
        range.format.setForeground(color.color);
        formats.append(range);
    }
    return formats;
}

} // namespace

SegmentLayout::SegmentLayout(const Text &text,
                             const TextSegment &segment,
                             const TextLayoutStyle &style,
                             const TextComposition &composition,
                             const QList<TextColorRange> &colors)
    : m_segment(segment)
{
    QString units = text.slice(segment.start, segment.length());
    QString shown = units;
    // The transparent formats of labelled characters come last, so that they override the colours.
    QList<QTextLayout::FormatRange> formats = colorFormats(colors);
    const bool isLast = segment.breakLength == 0 && segment.end == text.size();
    formats += substituteInvisibles(units, style, segment.breakLength > 0 || isLast);
    if (!style.emojiFamily.isEmpty())
        formats += emojiPresentations(units, style.emojiFamily);
    m_lineEnd = unusualLineEnd(text, segment);
    m_layout.setText(units);
    m_hasRightToLeft = holdsRightToLeft(units);
    m_layout.setFont(style.font);
    m_layout.setCacheEnabled(true);
    QTextOption option;
    option.setWrapMode(style.wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                   : QTextOption::NoWrap);
    option.setTabStopDistance(style.tabWidth);
    // The viewport aligns rows that do not wrap.
    option.setAlignment(style.wraps && isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
    m_layout.setTextOption(option);
    // At the boundary of two segments of a line, the second one shows the composition.
    if (composition.isActive() && composition.position >= segment.start &&
        (composition.position < segment.nextStart() || isLast))
        insertComposition(composition, formats);
    m_layout.setFormats(formats);
    if (m_compositionLength > 0)
        shown.insert(m_compositionIndex, composition.string);
    if (!formats.isEmpty() || m_compositionLength > 0 || m_hasRightToLeft ||
        !m_invisibles.empty() || m_lineEnd != 0)
        m_ownLook = newLook();
    addRows(style, shown);
    // Other glyphs rarely extend beyond the row, and not far. Marks may be stacked.
    m_overhang = holdsMarks(shown) ? measureOverhang(style.rowHeight) : style.rowHeight;
}

qreal SegmentLayout::measureOverhang(qreal rowHeight) const
{
    qreal overhang = rowHeight;
    for (int row = 0; row < rowCount(); ++row) {
        const qreal top = row * rowHeight;
        for (const QGlyphRun &run : m_layout.lineAt(row).glyphRuns()) {
            const QRectF ink = inkOf(run);
            overhang = std::max({overhang, top - ink.top(), ink.bottom() - top - rowHeight});
        }
    }
    return std::ceil(overhang);
}

QList<QTextLayout::FormatRange>
SegmentLayout::substituteInvisibles(QString &units, const TextLayoutStyle &style, bool endsLine)
{
    QList<QTextLayout::FormatRange> formats;
    const bool showsBlanks = style.shownMarks != ShownMarks::None;
    const bool showsSpaces = style.shownMarks == ShownMarks::All;
    const qsizetype trailing =
        showsBlanks && endsLine ? invisible::lengthWithoutTrailingBlanks(units) : units.size();
    for (qsizetype i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i].unicode();
        const bool hasLabel = !invisible::label(unit).isEmpty();
        const bool isShownBlank = i >= trailing || (showsBlanks && invisible::isBlank(unit)) ||
                                  (showsSpaces && unit == u' ');
        if (hasLabel || isShownBlank || invisible::isMarked(unit))
            m_invisibles.push_back({static_cast<int>(i), unit});
        if (!hasLabel)
            continue;
        units[i] = kPlaceholder;
        if (!formats.isEmpty() && formats.last().start + formats.last().length == i) {
            ++formats.last().length;
            continue;
        }
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(i);
        range.length = 1;
        range.format.setForeground(Qt::transparent); // The label is painted over it.
        range.format.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        range.format.setFontLetterSpacing((invisible::kLabelColumns - 1) * style.columnWidth);
        formats.append(range);
    }
    return formats;
}

void SegmentLayout::insertComposition(const TextComposition &composition,
                                      QList<QTextLayout::FormatRange> &formats)
{
    m_compositionIndex = indexInSegment(composition.position);
    m_compositionLength = static_cast<int>(composition.string.size());
    m_hasRightToLeft = m_hasRightToLeft || holdsRightToLeft(composition.string);
    QString shown = composition.string;
    if (m_layout.textOption().wrapMode() == QTextOption::NoWrap)
        std::replace_if(shown.begin(), shown.end(), beginsRow, QChar(u' '));
    m_layout.setPreeditArea(m_compositionIndex, shown);
    QList<QTextLayout::FormatRange> moved;
    for (QTextLayout::FormatRange range : std::as_const(formats)) {
        const int before = std::clamp(m_compositionIndex - range.start, 0, range.length);
        QTextLayout::FormatRange head = range;
        head.length = before;
        if (head.length > 0)
            moved.append(head);
        range.start += before + m_compositionLength;
        range.length -= before;
        if (range.length > 0)
            moved.append(range);
    }
    for (InvisibleCharacter &character : m_invisibles)
        if (character.index >= m_compositionIndex)
            character.index += m_compositionLength;
    for (QTextLayout::FormatRange range : composition.formats) {
        range.start += m_compositionIndex;
        moved.append(range);
    }
    formats = moved;
}

int SegmentLayout::indexInSegment(qint64 offset) const
{
    return static_cast<int>(std::clamp<qint64>(offset - m_segment.start, 0, m_segment.length()));
}

/// Breaks a row in Japanese text, and at a column, where the toolkit would not. It does so in a row
/// that is only as wide as the part to keep.
void SegmentLayout::breakRow(QTextLine &line, const TextLayoutStyle &style, QStringView shown) const
{
    if (m_hasRightToLeft) // The part to keep has no one place on the screen.
        return;
    const int start = line.textStart();
    const auto endBefore = [&](int index) {
        constexpr qreal kTolerance = 0.5; // Of positions that are rounded.
        line.setLineWidth(line.cursorToX(index) - line.cursorToX(start) + kTolerance);
    };
    if (style.wrapColumn > 0) {
        const auto isLabelled = [](char16_t unit) { return !invisible::label(unit).isEmpty(); };
        const int reserved = m_lineEnd != 0 ? invisible::kLabelColumns : 0;
        const auto tabWidth = static_cast<int>(std::round(style.tabWidth / style.columnWidth));
        const qsizetype most = row_breaks::unitsWithin(shown.sliced(start),
                                                       std::max(1, style.wrapColumn - reserved),
                                                       std::max(1, tabWidth),
                                                       invisible::kLabelColumns,
                                                       isLabelled);
        if (most < line.textLength())
            endBefore(start + static_cast<int>(most));
    }
    const int end = start + line.textLength();
    if (end - 1 > start && row_breaks::isForbidden(shown, end))
        endBefore(end - 1);
}

void SegmentLayout::addRows(const TextLayoutStyle &style, QStringView shown)
{
    constexpr qreal kWidest = 3; // Relative to the mean, of the characters of any font.
    const bool countsColumns = style.wrapColumn > 0 && !m_hasRightToLeft;
    const qreal reserved = m_lineEnd != 0 ? invisible::kLabelColumns * style.columnWidth : 0;
    const qreal left = isRightToLeft() ? reserved : 0;
    m_layout.beginLayout();
    qreal y = 0;
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        const qreal width = countsColumns ? kWidest * style.width : style.width - reserved;
        line.setLineWidth(style.wraps ? std::max<qreal>(1, width) : kUnlimited);
        if (style.wraps)
            breakRow(line, style, shown);
        // Fallback fonts differ in height. Aligning the baselines keeps the rows evenly spaced.
        line.setPosition(QPointF(left, y + style.ascent - line.ascent()));
        y += style.rowHeight;
        if (!style.wraps || style.wrapColumn > 0)
            m_width = std::max(m_width, widthOf(line) + reserved - left);
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
    const int index = indexInSegment(offset);
    return m_compositionIndex >= 0 && index >= m_compositionIndex ? index + m_compositionLength
                                                                  : index;
}

bool SegmentLayout::isTab(int layoutIndex) const
{
    if (m_compositionIndex >= 0 && layoutIndex >= m_compositionIndex) {
        layoutIndex -= m_compositionLength;
        if (layoutIndex < m_compositionIndex)
            return false;
    }
    const QString text = m_layout.text(); // Without the composition.
    return layoutIndex >= 0 && layoutIndex < text.size() && text.at(layoutIndex) == u'\t';
}

int SegmentLayout::caretIndex(qint64 offset, const TextComposition &composition) const
{
    if (m_compositionIndex >= 0 && indexInSegment(offset) == m_compositionIndex)
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
    return rowOfIndex(layoutIndex(offset), atRowEnd);
}

int SegmentLayout::rowOfIndex(int index, bool atRowEnd) const
{
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

quint64 SegmentLayout::lookOf(int row) const
{
    if (m_ownLook != 0)
        return qHashMulti(0, m_ownLook, row);
    // Punctuation and digits get the font of the script before them, however far away that is.
    // Fonts may form a ligature with characters of the next row.
    constexpr int kContext = 8;
    const QTextLine line = m_layout.lineAt(row);
    const QString text = m_layout.text();
    const int end = line.textStart() + line.textLength() + kContext;
    const qint64 lineEnd = row + 1 == rowCount() ? m_segment.breakLength : 0; // May have a mark.
    return qHashMulti(0,
                      lineEnd,
                      line.textStart(),
                      QStringView(text).first(std::min<qsizetype>(end, text.size())));
}

int SegmentLayout::compositionBefore(int row) const
{
    const int index = m_layout.lineAt(row).textStart() - m_compositionIndex;
    return m_compositionIndex < 0 ? 0 : std::clamp(index, 0, m_compositionLength);
}

int SegmentLayout::rowStartingAt(qint64 offset, int compositionUnits) const
{
    const int index = indexInSegment(offset);
    if (m_compositionIndex < 0 || index != m_compositionIndex)
        return rowOf(offset, false);
    return rowOfIndex(index + std::min(compositionUnits, m_compositionLength), false);
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

std::pair<qreal, qreal> SegmentLayout::edgesOf(qint64 start, qint64 end, int row) const
{
    const QTextLine line = m_layout.lineAt(row);
    const int index = layoutIndex(start);
    const int length = layoutIndex(end) - index;
    std::pair<qreal, qreal> edges =
        std::minmax(line.cursorToX(index, QTextLine::Leading),
                    line.cursorToX(index + length - 1, QTextLine::Trailing));
    if (!m_hasRightToLeft)
        return edges;
    // Where the direction changes, caret positions differ from character edges: use the glyphs.
    bool isFirst = true;
    for (const QGlyphRun &run : line.glyphRuns(index, length)) {
        const QList<QPointF> positions = run.positions();
        const QList<QPointF> advances = run.rawFont().advancesForGlyphIndexes(run.glyphIndexes());
        for (qsizetype i = 0; i < std::min(positions.size(), advances.size()); ++i) {
            const qreal left = positions[i].x();
            const qreal right = left + advances[i].x();
            edges = isFirst ? std::pair(left, right)
                            : std::pair(std::min(edges.first, left), std::max(edges.second, right));
            isFirst = false;
        }
    }
    return edges;
}

qint64 SegmentLayout::offsetAt(qreal x, int row) const
{
    return textOffset(m_layout.lineAt(row).xToCursor(x));
}

qint64 SegmentLayout::characterAt(qreal x, int row) const
{
    return textOffset(m_layout.lineAt(row).xToCursor(x, QTextLine::CursorOnCharacter));
}

std::pair<int, int> SegmentLayout::indicesBetween(qreal left, qreal right, int row) const
{
    constexpr int kFew = 512;
    const QTextLine line = m_layout.lineAt(row);
    const int end = line.textStart() + line.textLength();
    if (line.textLength() <= kFew || m_hasRightToLeft)
        return {line.textStart(), end};
    return {std::max(line.textStart(), line.xToCursor(left) - 1),
            std::min(end, line.xToCursor(right) + 1)};
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

void TextLayoutCache::setDecoration(TextDecoration *decoration)
{
    m_decoration = decoration;
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
        return segment.start <= offset && offset <= segment.nextStart();
    });
}

const SegmentLayout &TextLayoutCache::layout(const Text &text, const TextSegment &segment)
{
    auto place = std::lower_bound(
        m_entries.begin(), m_entries.end(), segment.start, [](const Entry &entry, qint64 start) {
            return entry.layout->segment().start < start;
        });
    const quint64 key = m_decoration != nullptr ? m_decoration->colorKey(segment) : 0;
    if (place != m_entries.end() && place->layout->segment() == segment && place->colorKey == key) {
        place->lastUse = ++m_clock;
        return *place->layout;
    }
    if (place != m_entries.end() && place->layout->segment().start == segment.start)
        place = m_entries.erase(place);
    const QList<TextColorRange> colors =
        m_decoration != nullptr ? m_decoration->colors(segment) : QList<TextColorRange>();
    auto layout = std::make_unique<SegmentLayout>(text, segment, m_style, m_composition, colors);
    const SegmentLayout &result = *layout;
    m_entries.insert(place, {std::move(layout), ++m_clock, key});
    if (m_entries.size() > kCapacity)
        dropOldest();
    return result;
}

TextSegment TextLayoutCache::segmentAt(const Text &text, qint64 offset) const
{
    const auto after = std::upper_bound(
        m_entries.begin(), m_entries.end(), offset, [](qint64 value, const Entry &entry) {
            return value < entry.layout->segment().start;
        });
    if (after != m_entries.begin()) {
        const TextSegment &segment = std::prev(after)->layout->segment();
        if (offset < segment.nextStart())
            return segment;
    }
    return segments::at(text, offset);
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
    // An edit can move a cut between two segments of a huge line up to this far before it.
    constexpr qint64 kCutReach = 2 * segments::kUnits;
    std::erase_if(m_entries, [&](const Entry &entry) {
        const TextSegment &segment = entry.layout->segment();
        const bool endsBefore = segment.nextStart() < offset &&
                                (segment.breakLength > 0 || segment.end + kCutReach < offset);
        const bool startsAfter = segment.lineStart > oldEnd;
        return !endsBefore && !startsAfter;
    });
    for (Entry &entry : m_entries)
        if (entry.layout->segment().start > oldEnd)
            entry.layout->shift(delta);
}

} // namespace penwick
