#pragma once

#include "macro/engine/MacroResult.h"

#include <tl/expected.hpp>

namespace penwick {

class TextDocument;
class TextView;

/// Carries out on a text view what a macro asked for. Each edit finds the text and the selection as
/// the edits before it left them. Use it from the main thread.
class MacroExecution final
{
public:
    using Outcome = tl::expected<void, MacroResultError>;

    /// \param textView not owned.
    /// \param document gets the text after each edit; may be null; not owned.
    MacroExecution(TextView *textView, TextDocument *document);

    /// Makes the edits as one undo step, then places cursor and selection. Without edits it does
    /// nothing at all. Where an edit fails, those before it stay.
    [[nodiscard]] Outcome applyMacroResult(const MacroResult &result);

private:
    [[nodiscard]] Outcome applyTextEdit(const TextEditInstruction &edit);
    [[nodiscard]] Outcome apply(const ReplaceAll &edit);
    [[nodiscard]] Outcome apply(const ReplaceSelection &edit);
    [[nodiscard]] Outcome apply(const InsertAtCursor &edit);
    [[nodiscard]] Outcome apply(const ReplaceLines &edit);
    void applyCursorAndSelection(const MacroResult &result);
    void applyCursor(const MacroCursorResult &cursor);
    void applySelection(const MacroSelectionResult &selection);

    TextView *m_textView;
    TextDocument *m_document;
};

} // namespace penwick
