#pragma once

#include "editor/TextStorage.h"
#include "view/TextSelection.h"

namespace penwick {

/// The edits of a text view in the rows of a rectangular selection. Each is one undo step, or
/// coalesces with the one before it like other typing and deleting. Each function returns true when
/// the text has changed.
class ColumnEditing final
{
public:
    using Kind = TextStorage::EditKind;

    /// \param storage, selection not owned; must outlive this object.
    ColumnEditing(TextStorage *storage, TextSelection *selection);

    /// Replaces each row of the selected rectangle. A line break in `text` ends the selection.
    /// \param kind `Typing` or `Other`.
    bool replaceRows(const Text &text, Kind kind);
    /// What Backspace and Delete do in a rectangle.
    bool deleteBackward();
    bool deleteForward();
    /// Pastes the lines of a copied rectangle into the rows of the selected one, or from the caret
    /// on. Adds lines at the end of the text if it has too few.
    bool pasteRectangle(const Text &text);
    /// Pastes a text into the selected rectangle: line by line if it has as many lines as there are
    /// rows, otherwise the whole into each row.
    bool paste(const Text &text);

private:
    bool finish(const ColumnSelection &columns, const std::optional<RowsChange> &change, Kind kind);
    bool finishAtCaret(const std::optional<RowsChange> &change);
    bool pasteLines(const ColumnSelection &columns, const Text &text, qint64 count, bool isAligned);

    TextStorage *m_storage;
    TextSelection *m_selection;
};

} // namespace penwick
