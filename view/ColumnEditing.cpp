#include "view/ColumnEditing.h"

#include <algorithm>

namespace penwick {

namespace {

/// The number of lines in a pasted text. A line break at its end starts none.
qint64 pastedLines(const Text &text)
{
    const qint64 breaks = text.metrics().lineBreaks();
    return contentOfLine(text, breaks).isEmpty() && breaks > 0 ? breaks : breaks + 1;
}

} // namespace

ColumnEditing::ColumnEditing(TextStorage *storage, TextSelection *selection)
    : m_storage(storage)
    , m_selection(selection)
{
}

bool ColumnEditing::finish(const ColumnSelection &columns,
                           const std::optional<RowsChange> &change,
                           Kind kind)
{
    if (change)
        m_storage->replaceCharacters(change->range, change->replacement, kind);
    m_selection->selectColumns(columns);
    return change.has_value();
}

bool ColumnEditing::finishAtCaret(const std::optional<RowsChange> &change)
{
    if (!change)
        return false;
    m_storage->replaceCharacters(change->range, change->replacement);
    m_selection->select(change->caret, {change->caret, false});
    return true;
}

bool ColumnEditing::replaceRows(const Text &text, Kind kind)
{
    ColumnSelection columns = *m_selection->columns();
    const QString units = text.toString();
    if (text.metrics().separators > 0) {
        const RowContents contents{columns.lines().count,
                                   [&units](qint64) { return QStringView(units); }};
        return finishAtCaret(columns.insertRows(m_storage->text(), contents));
    }
    const auto change = columns.insert(m_storage->text(), units);
    return finish(columns, change, kind == Kind::Typing ? Kind::TypingInRows : Kind::Other);
}

bool ColumnEditing::deleteBackward()
{
    ColumnSelection columns = *m_selection->columns();
    const Kind kind = columns.isEmpty() ? Kind::DeletingInRows : Kind::Other;
    const auto change = columns.deleteBackward(m_storage->text());
    return finish(columns, change, kind);
}

bool ColumnEditing::deleteForward()
{
    ColumnSelection columns = *m_selection->columns();
    const Kind kind = columns.isEmpty() ? Kind::DeletingInRows : Kind::Other;
    const auto change = columns.deleteForward(m_storage->text());
    return finish(columns, change, kind);
}

bool ColumnEditing::pasteLines(const ColumnSelection &columns,
                               const Text &text,
                               qint64 count,
                               bool isAligned)
{
    const LineBlock block(text.toString(), count);
    const auto contentAt = [&block](qint64 row) {
        return block.lines().at(static_cast<std::size_t>(row)).content;
    };
    RowContents contents{count, contentAt};
    for (qint64 row = 0; isAligned && row < count; ++row)
        contents.width = std::max(contents.width, columnAfter(contentAt(row), columns.tabWidth()));
    return finishAtCaret(columns.insertRows(m_storage->text(), contents));
}

bool ColumnEditing::pasteRectangle(const Text &text)
{
    // Its lines are separated by line feeds, so an empty last one is a row, too.
    const qint64 count = text.metrics().lineBreaks() + 1;
    if (const ColumnSelection *columns = m_selection->columns())
        return pasteLines(*columns, text, count, true);
    const TextRange range = m_selection->range();
    const auto place = placeOf(m_storage->text(), range.location, m_selection->tabWidth());
    if (!place)
        return false;
    m_storage->beginUndoGrouping();
    m_storage->replaceCharacters(range, Text());
    const ColumnSelection carets(
        m_storage->text(), TextRectangle{*place, *place}, m_selection->tabWidth());
    const bool isPasted = pasteLines(carets, text, count, true);
    m_storage->endUndoGrouping();
    return isPasted || !range.isEmpty();
}

bool ColumnEditing::paste(const Text &text)
{
    const ColumnSelection columns = *m_selection->columns();
    const qint64 count = pastedLines(text);
    if (count > 1 && count == columns.lines().count)
        return pasteLines(columns, text, count, false);
    return replaceRows(text, Kind::Other);
}

} // namespace penwick
