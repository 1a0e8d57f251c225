#include "lines/ColumnSelection.h"

namespace penwick {

ColumnSelection::ColumnSelection(const Text &text, const TextRectangle &rectangle, int tabWidth)
    : m_base(text)
    , m_rectangle(rectangle)
    , m_lines(rangeOf(text, rectangle.lines()))
    , m_tabWidth(tabWidth)
{
}

RectangleRow ColumnSelection::rowAt(const Text &now, qint64 line) const
{
    RectangleRow row = rowOf(m_base, m_rectangle, line, m_tabWidth);
    if (!m_isEdited)
        return row;
    const qint64 inLine = row.range.location - contentOfLine(m_base, line).location;
    row.range = {contentOfLine(now, line).location + inLine, 0};
    if (!m_inserted.isEmpty()) {
        row.range.location += row.blanksToLeft + m_inserted.size();
        row.blanksToLeft = 0;
    }
    row.blanksToRight = row.blanksToLeft;
    return row;
}

TextRectangle ColumnSelection::rectangle(const Text &now) const
{
    if (!m_isEdited)
        return m_rectangle;
    const RectangleRow row = rowAt(now, m_rectangle.caret.line);
    const auto place = placeOf(now, row.range.location, m_tabWidth);
    TextRectangle result = m_rectangle;
    result.caret.column = place ? place->column + row.blanksToLeft : kColumnReach;
    result.anchor.column = result.caret.column;
    return result;
}

std::optional<RowsChange>
ColumnSelection::edit(const Text &now, const TextRectangle &rectangle, const QString &inserted)
{
    const RowContents contents{rectangle.lines().count,
                               [&inserted](qint64) { return QStringView(inserted); }};
    auto change = replaceRows(m_base, rectangle, contents, m_tabWidth);
    if (!change)
        return std::nullopt;
    m_rectangle = rectangle;
    m_inserted = inserted;
    m_isEdited = true;
    change->range = std::exchange(m_lines, {m_lines.location, change->replacement.size()});
    if (now.mid(change->range.location, change->range.length) == change->replacement)
        return std::nullopt;
    return change;
}

std::optional<RowsChange> ColumnSelection::insert(const Text &now, QStringView units)
{
    return edit(now, m_rectangle, m_inserted + units.toString());
}

std::optional<RowsChange> ColumnSelection::insertRows(const Text &now,
                                                      const RowContents &contents) const
{
    QString row;
    RowContents whole = contents;
    whole.at = [&](qint64 index) {
        row = m_inserted + contents.at(index).toString();
        return QStringView(row);
    };
    if (whole.width > 0)
        whole.width += penwick::columnAfter(m_inserted, m_tabWidth);
    auto change = replaceRows(m_base, m_rectangle, whole, m_tabWidth);
    if (!change)
        return std::nullopt;
    // Contents of further rows replace further lines.
    const qint64 further = change->range.length - rangeOf(m_base, lines()).length;
    change->range = {m_lines.location, m_lines.length + further};
    if (now.mid(change->range.location, change->range.length) == change->replacement)
        return std::nullopt;
    return change;
}

std::optional<RowsChange> ColumnSelection::deleteBackward(const Text &now)
{
    if (!isEmpty())
        return edit(now, m_rectangle, {});
    if (!m_inserted.isEmpty()) {
        const Text units(m_inserted);
        return edit(
            now, m_rectangle, m_inserted.first(units.previousClusterBoundary(units.size())));
    }
    TextRectangle wider = m_rectangle;
    const ColumnPlace corner{wider.caret.line, wider.left()};
    (wider.anchor.column < wider.caret.column ? wider.anchor : wider.caret).column =
        columnBefore(m_base, corner, m_tabWidth);
    return edit(now, wider, {});
}

std::optional<RowsChange> ColumnSelection::deleteForward(const Text &now)
{
    if (!isEmpty())
        return edit(now, m_rectangle, {});
    TextRectangle wider = m_rectangle;
    const ColumnPlace corner{wider.caret.line, wider.right()};
    (wider.anchor.column > wider.caret.column ? wider.anchor : wider.caret).column =
        columnAfter(m_base, corner, m_tabWidth);
    return edit(now, wider, m_inserted);
}

qint64 columnBefore(const Text &text, ColumnPlace place, int tabWidth)
{
    const qint64 target = std::max<qint64>(0, place.column - 1);
    const TextRange line = contentOfLine(text, place.line);
    const ColumnStop stop = lastStop(text, line, {kNoColumnLimit, target}, tabWidth);
    return stop.offset == line.length ? target : stop.column;
}

qint64 columnAfter(const Text &text, ColumnPlace place, int tabWidth)
{
    const TextRange line = contentOfLine(text, place.line);
    const ColumnStop stop = lastStop(text, line, {kNoColumnLimit, place.column}, tabWidth);
    const qint64 rest =
        std::min<qint64>(text.nextClusterBoundary(line.location + stop.offset), line.end()) -
        line.location;
    const ColumnStop next = lastStop(text, line, {rest, kNoColumnLimit}, tabWidth);
    return std::min(std::max(next.column, place.column + 1), kColumnReach);
}

} // namespace penwick
