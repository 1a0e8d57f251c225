#pragma once

#include "editor/TextStorage.h"
#include "lines/Indentation.h"
#include "view/ColumnEditing.h"
#include "view/EditKeys.h"
#include "view/TextSelection.h"

#include <QObject>

namespace penwick {

/// The edits of a text view. Each changes the storage and moves the selection. A composition must
/// have ended before. Offsets are UTF-16 code units, 0-based.
class TextEditing final : public QObject
{
    Q_OBJECT

public:
    using Kind = TextStorage::EditKind;

    /// \param storage, viewport, selection not owned; must outlive this object.
    TextEditing(TextStorage *storage, TextViewport *viewport, TextSelection *selection);

    [[nodiscard]] TextSelection &selection() const { return *m_selection; }

    /// True: a pasted or dropped text gets the line end that the text of the view has first. False,
    /// the default: it is inserted as it is.
    void setConvertsPastedLineEnds(bool converts) { m_convertsPastedLineEnds = converts; }

    /// How Tab and Enter indent.
    void setIndentation(const Indentation &style) { m_indentation = style; }

    [[nodiscard]] const Indentation &indentation() const { return m_indentation; }

    /// From now on no call changes the text.
    void makeReadOnly() { m_isReadOnly = true; }

    [[nodiscard]] bool isReadOnly() const { return m_isReadOnly; }

    /// Performs a command of the user; does nothing when it is not possible now.
    void perform(EditCommand command);
    /// Performs an edit of the user: replaces `range` and puts the caret after the new text.
    void edit(TextRange range, const Text &replacement, Kind kind);
    /// The same for the selected range, or each row of the selected rectangle.
    void replaceSelection(const Text &replacement, Kind kind);
    /// Moves the caret to `place` and pastes `text` there.
    void insertAt(TextCaret place, const Text &text);
    /// Inserts a dropped text as one undo step and selects it. `removed` is the source of a move
    /// within the text, of length 0 for none.
    void insertDropped(const Text &text, qint64 place, TextRange removed);

    /// Replaces `range` without scrolling: a selection within it becomes a caret after the new
    /// text, one beyond it is shifted. Does not emit `edited`; nor does the next function.
    void replace(TextRange range, const Text &replacement);
    /// The same, but where anchor and caret lie within `range`, they keep their line and column as
    /// far as the new text has them.
    void replaceKeepingLines(TextRange range, const Text &replacement);

Q_SIGNALS:
    /// The user, undo or redo changed the text.
    void edited();

private:
    [[nodiscard]] Text adapted(const Text &text) const;
    void finishUndo(TextRange selection);
    void finishRows(bool hasChanged);
    void paste();
    void deleteSelection();
    void insertLineEnd();
    void insertTab();
    void deleteTo(qint64 target, Kind kind);

    TextStorage *m_storage;
    TextViewport *m_viewport;
    TextSelection *m_selection;
    ColumnEditing m_columns;
    Indentation m_indentation;
    bool m_convertsPastedLineEnds = false;
    bool m_isReadOnly = false;
};

} // namespace penwick
