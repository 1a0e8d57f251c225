#pragma once

#include "macro/engine/MacroResult.h"
#include "text/Text.h"

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

class TextDocument;
class TextView;

/// Applies a macro's result to a text view. Each edit works on the text and the selection that the
/// edits before it left. Use it from the main thread.
class MacroExecution final
{
public:
    using Outcome = tl::expected<void, MacroResultError>;

    /// \param textView not owned; must outlive this.
    /// \param document receives the text after each edit; may be null; not owned, must outlive
    ///        this.
    MacroExecution(TextView *textView, TextDocument *document);

    /// Makes the edits as one undo step, then sets cursor and selection. Does nothing at all when
    /// the result has no edits. When an edit fails, the edits before it stay.
    ///
    /// An edit that replaces the whole text leaves the caret at its end. After the last edit,
    /// unless the result places the cursor or the selection, caret and selection return to the line
    /// and column that they had before the first such edit. The view does not scroll.
    [[nodiscard]] Outcome applyMacroResult(const MacroResult &result);

private:
    [[nodiscard]] Outcome applyTextEdit(const TextEditInstruction &edit);
    [[nodiscard]] Outcome apply(const ReplaceAll &edit);
    [[nodiscard]] Outcome apply(const ReplaceSelection &edit);
    [[nodiscard]] Outcome apply(const InsertAtCursor &edit);
    [[nodiscard]] Outcome apply(const ReplaceLines &edit);
    void replaceWhole(const Text &text);
    void restoreSelection();
    void applyCursorAndSelection(const MacroResult &result);
    void applyCursor(const MacroCursorResult &cursor);
    void applySelection(const MacroSelectionResult &selection);

    /// A selection in the text that it belongs to.
    struct Selection
    {
        Text text;
        qint64 anchor = 0;
        qint64 caret = 0;
    };

    TextView *m_textView;
    TextDocument *m_document;
    std::optional<Selection> m_replaced; // Before the first edit that replaced the whole text.
};

} // namespace penwick
