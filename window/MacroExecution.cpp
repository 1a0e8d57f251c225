#include "window/MacroExecution.h"

#include "editor/TextDocument.h"
#include "macro/engine/LineEdits.h"
#include "view/TextView.h"

#include <QScopeGuard>

#include <algorithm>

namespace penwick {

namespace {

tl::unexpected<MacroResultError> failure(MacroResultError::Code code)
{
    return tl::unexpected(MacroResultError{code, {}});
}

/// Returns whether the result names a place for the cursor, or says anything about the selection.
bool placesSelection(const MacroResult &result)
{
    const auto &cursor = result.cursor;
    return result.selection || (cursor && (cursor->offset || (cursor->line && cursor->column)));
}

} // namespace

MacroExecution::MacroExecution(TextView *textView, TextDocument *document)
    : m_textView(textView)
    , m_document(document)
{
}

MacroExecution::Outcome MacroExecution::applyMacroResult(const MacroResult &result)
{
    if (result.textEdits.isEmpty())
        return {};
    TextStorage *storage = m_textView->textStorage();
    storage->beginUndoGrouping();
    const auto endGrouping = qScopeGuard([storage] { storage->endUndoGrouping(); });
    m_replaced.reset();
    Outcome applied;
    for (const TextEditInstruction &edit : result.textEdits)
        if (applied = applyTextEdit(edit); !applied)
            break;
    if (applied && placesSelection(result))
        applyCursorAndSelection(result);
    else
        restoreSelection();
    return applied;
}

void MacroExecution::replaceWhole(const Text &text)
{
    const Text before = m_textView->string();
    if (!m_replaced)
        m_replaced = Selection{before, m_textView->anchorOffset(), m_textView->caretOffset()};
    m_textView->replaceText({0, before.size()}, text);
}

void MacroExecution::restoreSelection()
{
    if (m_replaced)
        m_textView->selectSamePlaces(m_replaced->text, m_replaced->anchor, m_replaced->caret);
}

MacroExecution::Outcome MacroExecution::applyTextEdit(const TextEditInstruction &edit)
{
    Outcome applied =
        std::visit([this](const auto &instruction) { return apply(instruction); }, edit);
    if (applied && m_document != nullptr)
        m_document->publishContentString(m_textView->string());
    return applied;
}

MacroExecution::Outcome MacroExecution::apply(const ReplaceAll &edit)
{
    replaceWhole(Text(edit.text));
    return {};
}

// The script's snapshot had a selection, but an earlier edit may have removed it.
MacroExecution::Outcome MacroExecution::apply(const ReplaceSelection &edit)
{
    const TextRange selected = m_textView->selectedRange();
    if (selected.length < 1)
        return failure(MacroResultError::Code::NoSelectionForReplaceSelection);
    m_textView->replaceText(selected, Text(edit.text));
    return {};
}

MacroExecution::Outcome MacroExecution::apply(const InsertAtCursor &edit)
{
    m_textView->replaceText({m_textView->selectedRange().end(), 0}, Text(edit.text));
    return {};
}

MacroExecution::Outcome MacroExecution::apply(const ReplaceLines &edit)
{
    const std::optional<Text> text = textWithLinesReplaced(m_textView->string(), edit);
    if (!text)
        return failure(MacroResultError::Code::InvalidReplaceLines);
    replaceWhole(*text);
    return {};
}

void MacroExecution::applyCursorAndSelection(const MacroResult &result)
{
    if (result.cursor)
        applyCursor(*result.cursor);
    if (result.selection)
        applySelection(*result.selection);
}

void MacroExecution::applyCursor(const MacroCursorResult &cursor)
{
    const Text &text = m_textView->string();
    qint64 position = 0;
    if (cursor.offset)
        position = *cursor.offset;
    else if (cursor.line && cursor.column)
        position = offsetForLineColumn(*cursor.line, *cursor.column, text);
    else
        return;
    m_textView->setSelectedRange({std::clamp<qint64>(position, 0, text.size()), 0});
}

void MacroExecution::applySelection(const MacroSelectionResult &selection)
{
    const auto *select = std::get_if<MacroSelect>(&selection);
    if (select == nullptr) {
        m_textView->setSelectedRange({m_textView->selectedRange().location, 0});
        return;
    }
    const qint64 length = m_textView->string().size();
    const qint64 start = std::clamp<qint64>(select->startOffset, 0, length);
    if (select->endOffset >= start)
        m_textView->setSelectedRange({start, std::min(select->endOffset, length) - start});
}

} // namespace penwick
