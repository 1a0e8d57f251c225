#pragma once

#include "macro/engine/MacroResult.h"

#include <tl/expected.hpp>

namespace penwick {

class TextDocument;
class TextView;

/// Applies a macro's result to a text view as one undo step, by the rules of `executeMacroResult`.
/// Does nothing at all when the result has no edits. When an edit fails, the edits before it stay.
/// The view scrolls only if the result places the cursor or the selection. Use it from the main
/// thread.
/// \param document receives the text after each edit; may be null.
[[nodiscard]] tl::expected<void, MacroResultError>
applyMacroResult(const MacroResult &result, TextView *textView, TextDocument *document);

} // namespace penwick
