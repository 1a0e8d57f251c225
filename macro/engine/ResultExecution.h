#pragma once

#include "macro/engine/MacroResult.h"
#include "text/SelectedText.h"

#include <functional>
#include <optional>

namespace penwick {

/// Called for each replacement that a result asks for, in order.
using OnReplacement = std::function<void(TextRange range, const Text &replacement)>;

/// What a result made of a text.
struct ExecutedResult
{
    /// What determined the selection.
    enum class Selection {
        Edits,  ///< The edits moved it, or there were none.
        Kept,   ///< The text was replaced as a whole; it returned to its line and column.
        Result, ///< The result placed it.
    };

    SelectedText state;
    Selection selection = Selection::Edits;
    std::optional<MacroResultError> error; ///< Of the edit that failed.
};

/// Makes the edits of a result, then sets cursor and selection. Each edit works on the text and the
/// selection that the edits before it left. A result without edits does nothing. When an edit
/// fails, those before it stay, and the rest of the result is ignored.
///
/// An edit that replaces the whole text leaves the caret at its end. After the last edit, unless
/// the result places the cursor or the selection, both return to the line and column that they had
/// before the first such edit.
/// \param onReplacement may be empty.
[[nodiscard]] ExecutedResult executeMacroResult(const MacroResult &result,
                                                const SelectedText &before,
                                                const OnReplacement &onReplacement = {});

} // namespace penwick
