#include "view/TextEditing.h"

#include "text/LineEnds.h"
#include "text/SelectedText.h"
#include "view/TextMimeData.h"

#include <QGuiApplication>

#include <algorithm>

namespace penwick {

TextEditing::TextEditing(TextStorage *storage, TextViewport *viewport, TextSelection *selection)
    : m_storage(storage)
    , m_viewport(viewport)
    , m_selection(selection)
    , m_columns(storage, selection)
{
}

void TextEditing::edit(TextRange range, const Text &replacement, Kind kind)
{
    if (m_isReadOnly)
        return;
    m_storage->replaceCharacters(range, replacement, kind);
    const qint64 end = range.location + replacement.size();
    m_selection->select(end, {end, false});
    Q_EMIT edited();
}

void TextEditing::replaceSelection(const Text &replacement, Kind kind)
{
    if (m_isReadOnly)
        return;
    if (m_selection->columns() != nullptr)
        finishRows(m_columns.replaceRows(replacement, kind));
    else
        edit(m_selection->range(), replacement, kind);
}

void TextEditing::finishRows(bool hasChanged)
{
    if (hasChanged)
        Q_EMIT edited();
}

void TextEditing::deleteSelection()
{
    if (!m_selection->isEmpty())
        replaceSelection(Text(), Kind::Other);
}

/// Returns `text` as it is pasted or dropped.
Text TextEditing::adapted(const Text &text) const
{
    return m_convertsPastedLineEnds ? text.withLineEnds(firstLineEnd(m_storage->text())) : text;
}

void TextEditing::insertAt(TextCaret place, const Text &text)
{
    m_selection->select(place.offset, place, TextSelection::Scroll::Stay);
    edit({place.offset, 0}, adapted(text), Kind::Other);
}

void TextEditing::insertDropped(const Text &text, qint64 place, TextRange removed)
{
    if (removed.length > 0 && place >= removed.location && place <= removed.end())
        return; // Dropped on itself: nothing moves.
    if (m_isReadOnly)
        return;
    if (place >= removed.end())
        place -= removed.length;
    const Text inserted = adapted(text);
    m_storage->beginUndoGrouping();
    m_storage->replaceCharacters(removed, Text());
    m_storage->replaceCharacters({place, 0}, inserted);
    m_selection->select(place, {place + inserted.size(), false});
    m_storage->endUndoGrouping();
    Q_EMIT edited();
}

void TextEditing::replace(TextRange range, const Text &replacement)
{
    if (m_isReadOnly)
        return;
    const TextRange moved =
        selectionAfterReplacement(m_selection->range(), range, replacement.size());
    m_storage->replaceCharacters(range, replacement);
    m_selection->select(moved.location, {moved.end(), false}, TextSelection::Scroll::Stay);
}

void TextEditing::replaceKeepingLines(TextRange range, const Text &replacement)
{
    if (m_isReadOnly)
        return;
    const Text before = m_storage->text();
    const qint64 anchor = m_selection->anchor();
    const qint64 caret = m_selection->caret().offset;
    m_storage->replaceCharacters(range, replacement);
    const auto kept = [&](qint64 offset) {
        if (offset <= range.location)
            return offset;
        if (offset >= range.end())
            return offset + replacement.size() - range.length;
        return sameLineAndColumn(before, offset, m_storage->text());
    };
    m_selection->select(kept(anchor), {kept(caret), false}, TextSelection::Scroll::Stay);
}

void TextEditing::finishUndo(TextRange selection)
{
    m_selection->select(selection.location, {selection.end(), false});
    Q_EMIT edited();
}

void TextEditing::insertLineEnd()
{
    const Text &text = m_storage->text();
    const TextRange range = m_selection->range();
    QString inserted = lineEndUnits(lineEndToInsert(text, range)).toString();
    if (m_indentation.isKept)
        inserted += keptIndentation(text, range.location);
    replaceSelection(Text(inserted), Kind::Typing);
}

void TextEditing::deleteTo(qint64 target, Kind kind)
{
    const qint64 caret = m_selection->caret().offset;
    if (!m_selection->isEmpty())
        deleteSelection();
    else if (target != caret)
        edit(TextRange::between(std::min(target, caret), std::max(target, caret)), Text(), kind);
}

void TextEditing::paste()
{
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    const auto pasted = textOf(mime);
    if (!pasted || m_isReadOnly)
        return;
    if (offersRectangle(mime) && m_selection->rectangle())
        finishRows(m_columns.pasteRectangle(*pasted));
    else if (m_selection->columns() != nullptr)
        finishRows(m_columns.paste(adapted(*pasted)));
    else
        replaceSelection(adapted(*pasted), Kind::Other);
}

void TextEditing::insertTab()
{
    const Text &text = m_storage->text();
    QString units = tabUnits(text, m_selection->range().location, m_indentation);
    if (m_selection->columns() != nullptr && m_indentation.insertsBlanks) {
        const qint64 column = m_selection->columns()->rectangle(text).left();
        units = QString(m_indentation.tabWidth - column % m_indentation.tabWidth, u' ');
    }
    replaceSelection(Text(units), Kind::Typing);
}

void TextEditing::perform(EditCommand command)
{
    if (m_isReadOnly && changesText(command))
        return;
    const bool isInColumns = m_selection->columns() != nullptr;
    const Text &text = m_storage->text();
    const TextCaret caret = m_selection->caret();
    const auto target = [&](CaretMove direction) {
        return moveCaret(*m_viewport, text, caret, direction, 0).offset;
    };
    switch (command) {
    case EditCommand::Undo:
        if (m_storage->canUndo())
            finishUndo(m_storage->undo());
        return;
    case EditCommand::Redo:
        if (m_storage->canRedo())
            finishUndo(m_storage->redo());
        return;
    case EditCommand::Cut:
        perform(EditCommand::Copy);
        return deleteSelection();
    case EditCommand::Copy:
        return offerText(m_selection->text(), QClipboard::Clipboard, isInColumns);
    case EditCommand::Paste:
        return paste();
    case EditCommand::SelectAll:
        m_storage->breakUndoCoalescing();
        m_selection->select(0, {text.size(), false}, TextSelection::Scroll::Stay);
        return m_selection->offerAsPrimary();
    case EditCommand::InsertLineEnd:
        return insertLineEnd();
    case EditCommand::InsertTab:
        return insertTab();
    case EditCommand::DeleteSelection:
        return deleteSelection();
    case EditCommand::DeleteBackward:
        if (isInColumns)
            return finishRows(m_columns.deleteBackward());
        return deleteTo(text.previousClusterBoundary(caret.offset), Kind::DeletingBackward);
    case EditCommand::DeleteForward:
        if (isInColumns)
            return finishRows(m_columns.deleteForward());
        return deleteTo(text.nextClusterBoundary(caret.offset), Kind::DeletingForward);
    case EditCommand::DeleteWordBackward:
        return deleteTo(target(CaretMove::WordLeft), Kind::Other);
    case EditCommand::DeleteWordForward:
        return deleteTo(target(CaretMove::WordRight), Kind::Other);
    case EditCommand::Deselect:
        return m_selection->select(caret.offset, caret, TextSelection::Scroll::Stay);
    case EditCommand::DeleteToLineEnd:
        return deleteTo(lineEndToDelete(text, caret.offset), Kind::Other);
    case EditCommand::DeleteLine:
        return edit(lineAround(text, caret.offset), Text(), Kind::Other);
    }
}

} // namespace penwick
