#include "macro/engine/ResultExecution.h"

#include "macro/engine/LineEdits.h"

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

struct Replacement
{
    TextRange range;
    Text text;
};

using Planned = tl::expected<Replacement, MacroResultError>;

tl::unexpected<MacroResultError> refusal(MacroResultError::Code code)
{
    return tl::unexpected(MacroResultError{code, {}});
}

TextRange wholeOf(const SelectedText &state)
{
    return {0, state.text.size()};
}

Planned plan(const ReplaceAll &edit, const SelectedText &state)
{
    return Replacement{wholeOf(state), edit.text};
}

// The script's snapshot had a selection, but an earlier edit may have removed it.
Planned plan(const ReplaceSelection &edit, const SelectedText &state)
{
    if (state.selection().isEmpty())
        return refusal(MacroResultError::Code::NoSelectionForReplaceSelection);
    return Replacement{state.selection(), edit.text};
}

Planned plan(const InsertAtCursor &edit, const SelectedText &state)
{
    return Replacement{{state.selection().end(), 0}, edit.text};
}

Planned plan(const ReplaceLines &edit, const SelectedText &state)
{
    std::optional<Text> text = textWithLinesReplaced(state.text, edit);
    if (!text)
        return refusal(MacroResultError::Code::InvalidReplaceLines);
    return Replacement{wholeOf(state), *std::move(text)};
}

bool replacesWholeText(const TextEditInstruction &edit)
{
    return std::holds_alternative<ReplaceAll>(edit) || std::holds_alternative<ReplaceLines>(edit);
}

/// Returns whether the result names a place for the cursor, or says anything about the selection.
bool placesSelection(const MacroResult &result)
{
    const auto &cursor = result.cursor;
    return result.selection || (cursor && (cursor->offset || (cursor->line && cursor->column)));
}

/// Returns whether the cursor was set.
bool place(const MacroCursorResult &cursor, SelectedText &state)
{
    qint64 position = 0;
    if (cursor.offset)
        position = *cursor.offset;
    else if (cursor.line && cursor.column)
        position = offsetForLineColumn(*cursor.line, *cursor.column, state.text);
    else
        return false;
    state.select(position, position);
    return true;
}

/// Returns whether the selection was set.
bool place(const MacroSelectionResult &selection, SelectedText &state)
{
    const auto *select = std::get_if<MacroSelect>(&selection);
    if (select == nullptr) {
        state.select(state.selection().location, state.selection().location);
        return true;
    }
    const qint64 start = std::clamp<qint64>(select->startOffset, 0, state.text.size());
    if (select->endOffset < start)
        return false;
    state.select(start, select->endOffset);
    return true;
}

/// Returns whether the cursor or the selection was set. The selection is set last.
bool place(const MacroResult &result, SelectedText &state)
{
    const bool isCursorSet = result.cursor && place(*result.cursor, state);
    const bool isSelectionSet = result.selection && place(*result.selection, state);
    return isCursorSet || isSelectionSet;
}

} // namespace

ExecutedResult executeMacroResult(const MacroResult &result,
                                  const SelectedText &before,
                                  const OnReplacement &onReplacement)
{
    using Selection = ExecutedResult::Selection;
    ExecutedResult executed{before, Selection::Edits, std::nullopt};
    SelectedText &state = executed.state;
    std::optional<SelectedText> replaced; // Before the first edit that replaced the whole text.
    for (const TextEditInstruction &edit : result.textEdits) {
        const Planned planned = std::visit(
            [&state](const auto &instruction) { return plan(instruction, state); }, edit);
        if (!planned) {
            executed.error = planned.error();
            break;
        }
        if (!replaced && replacesWholeText(edit))
            replaced = state;
        state.replace(planned->range, planned->text);
        if (onReplacement)
            onReplacement(planned->range, planned->text);
    }
    if (!executed.error && !result.textEdits.isEmpty() && placesSelection(result)) {
        if (place(result, state))
            executed.selection = Selection::Result;
    } else if (replaced) {
        state.select(sameLineAndColumn(replaced->text, replaced->anchor, state.text),
                     sameLineAndColumn(replaced->text, replaced->caret, state.text));
        executed.selection = Selection::Kept;
    }
    return executed;
}

} // namespace penwick
