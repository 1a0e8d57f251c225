#include "window/MacroExecution.h"

#include "editor/TextDocument.h"
#include "macro/engine/ResultExecution.h"
#include "view/TextView.h"

#include <QScopeGuard>

namespace penwick {

tl::expected<void, MacroResultError>
applyMacroResult(const MacroResult &result, TextView *textView, TextDocument *document)
{
    if (result.textEdits.isEmpty())
        return {};
    TextStorage *storage = textView->textStorage();
    storage->beginUndoGrouping();
    const auto endGrouping = qScopeGuard([storage] { storage->endUndoGrouping(); });
    const auto replace = [textView, document](TextRange range, const Text &replacement) {
        textView->replaceText(range, replacement);
        if (document != nullptr)
            document->publishContentString(textView->string());
    };
    const ExecutedResult executed = executeMacroResult(
        result, {textView->string(), textView->anchorOffset(), textView->caretOffset()}, replace);
    const SelectedText &state = executed.state;
    if (executed.selection == ExecutedResult::Selection::Result)
        textView->setSelectedRange(state.selection());
    else if (executed.selection == ExecutedResult::Selection::Kept)
        textView->setSelectionInPlace(state.anchor, state.caret);
    if (executed.error)
        return tl::unexpected(*executed.error);
    return {};
}

} // namespace penwick
