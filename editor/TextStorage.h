#pragma once

#include "text/Text.h"

#include <QObject>

#include <vector>

namespace penwick {

/// A range of text in UTF-16 code units, 0-based.
struct TextRange
{
    qint64 location = 0;
    qint64 length = 0;

    [[nodiscard]] qint64 end() const { return location + length; }

    bool operator==(const TextRange &) const = default;
};

/// One replacement: `removed` stood at `offset` and `inserted` stands there now.
struct TextChange
{
    qint64 offset = 0; ///< UTF-16 code units, 0-based.
    Text removed;
    Text inserted;
};

/// The mutable holder of a text: edits, undo and redo, and the save point. Every operation costs
/// O(log n) of the text's size plus the size of what is inserted by hand.
///
/// Undo works in groups: what happens between `beginUndoGrouping` and `endUndoGrouping` is one step
/// (groups nest; the outermost counts), and so is each single edit outside of one. Runs of typing
/// and of deleting coalesce as native text views do it, see `EditKind`.
class TextStorage final : public QObject
{
    Q_OBJECT

public:
    /// What an edit is to the person who makes it. Consecutive `Typing` edits whose ranges meet
    /// become one undo step, until a line break is typed or `breakUndoCoalescing` is called; so do
    /// `DeletingBackward` and `DeletingForward`. `Other` edits never coalesce.
    enum class EditKind { Typing, DeletingBackward, DeletingForward, Other };

    explicit TextStorage(QObject *parent = nullptr);

    [[nodiscard]] const Text &text() const { return m_text; }

    /// Length in UTF-16 code units.
    [[nodiscard]] qint64 length() const { return m_text.size(); }

    /// Replaces the whole text without a trace: the undo history is emptied. The edited state stays
    /// as it was, so a text loaded into a new storage is unedited.
    void setText(const Text &text);

    /// Replaces `range` (clamped to the text) and registers the change for undo. Nothing happens,
    /// and nothing is registered, when an empty range is replaced by an empty text.
    void
    replaceCharacters(TextRange range, const Text &replacement, EditKind kind = EditKind::Other);

    void beginUndoGrouping();
    void endUndoGrouping();

    /// True between the two calls above.
    [[nodiscard]] bool isGrouping() const { return m_groupingLevel > 0; }

    /// The next edit starts an undo step of its own. Called when the caret moves, on saving, ...
    void breakUndoCoalescing();

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    /// Takes the last step back; does nothing without one or inside a group. Returns the selection
    /// that the step's first edit found (as told through `setSelectionForUndo`).
    TextRange undo();
    /// Repeats the step undone last. Returns the selection that the step's last edit left.
    TextRange redo();

    /// Tells the storage the view's selection, to be restored by undo and redo. Call it whenever
    /// the selection changed: the next step remembers what was told last before its first edit, and
    /// the first selection told after its last edit (in a group, the last one told in it).
    void setSelectionForUndo(TextRange selection);

    /// The text as it is now is the text on disk.
    void setSavePoint();
    /// The text as it is now is being written to the disk. Edits may go on meanwhile; undoing them
    /// leads back to this very state. A second call forgets the first.
    void beginSaving();
    /// The writing is over. When it succeeded, the save point is where `beginSaving` was called, or
    /// out of reach where the edits since then have thrown that state away.
    void endSaving(bool succeeded);
    /// The text as it is now, and as it was at any time before, is not what stands on the disk. A
    /// writing that is under way still leads to a save point.
    void forgetSavePoint();
    /// True when the text differs in history from the one at the last save point.
    [[nodiscard]] bool isModified() const;

Q_SIGNALS:
    /// The text changed: `oldLength` units at `offset` were replaced by `newLength` units.
    void changed(qint64 offset, qint64 oldLength, qint64 newLength);
    void undoStateChanged();
    void modifiedChanged(bool modified);

private:
    struct Step
    {
        std::vector<TextChange> changes;
        EditKind kind = EditKind::Other;
        bool open = false; // More edits of the same kind may still join.
        TextRange selectionBefore;
        TextRange selectionAfter;
    };

    void apply(qint64 offset, qint64 length, const Text &replacement);
    void record(TextChange change, EditKind kind);
    [[nodiscard]] bool coalesce(const TextChange &change, EditKind kind);
    void publishStates();

    Text m_text;
    std::vector<Step> m_steps;
    std::size_t m_position = 0;   // Steps before it are done, those from it on are undone.
    qint64 m_savePosition = 0;    // -1: the saved state can no longer be reached.
    qint64 m_savingPosition = -1; // The same for the state that is being written.
    int m_groupingLevel = 0;
    bool m_groupHasStep = false;
    bool m_awaitsSelection = false; // The last step does not know yet what selection it left.
    bool m_unsavedOnLoad = false;
    bool m_publishedModified = false;
    TextRange m_selection;
};

} // namespace penwick
