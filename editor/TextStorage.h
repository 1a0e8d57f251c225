#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

#include <QObject>

#include <chrono>
#include <deque>
#include <functional>
#include <vector>

namespace penwick {

/// One replacement: `inserted` replaced `removed` at `offset`.
struct TextChange
{
    qint64 offset = 0; ///< UTF-16 code units, 0-based.
    Text removed;
    Text inserted;
};

/// Returns the time of an edit. It never goes back. Tests pass their own clock.
using EditClock = std::function<std::chrono::steady_clock::time_point()>;

/// A mutable text with undo, redo and a save point. Every operation costs O(log n) of the text's
/// size plus the size of a small insertion.
///
/// The unit of undo is the undo step. All edits between `beginUndoGrouping` and `endUndoGrouping`
/// form one step (groups nest; the outermost counts); outside of a group each edit is a step of its
/// own. Runs of typing and of deleting coalesce into one step, see `EditKind`.
class TextStorage final : public QObject
{
    Q_OBJECT

public:
    /// What the user does in an edit. Consecutive `Typing` edits whose ranges meet become one undo
    /// step, until a line break is typed, the user pauses for a second, or `breakUndoCoalescing` is
    /// called; so do `DeletingBackward` and `DeletingForward` edits. `TypingInRows` and
    /// `DeletingInRows` replace several lines; they coalesce with an edit of the same kind whose
    /// new text is exactly what they replace. `Other` edits never coalesce.
    enum class EditKind {
        Typing,
        DeletingBackward,
        DeletingForward,
        TypingInRows,
        DeletingInRows,
        Other
    };

    /// The initial limit, see `setUndoLimit`.
    static constexpr qint64 kUndoLimit = 1'000'000'000;

    explicit TextStorage(EditClock clock = &std::chrono::steady_clock::now,
                         QObject *parent = nullptr);

    [[nodiscard]] const Text &text() const { return m_text; }

    /// Length in UTF-16 code units.
    [[nodiscard]] qint64 length() const { return m_text.size(); }

    /// Replaces the whole text and clears the undo history. The edited state does not change, so a
    /// text loaded into a new storage is unedited.
    void setText(const Text &text);

    /// Replaces the text by a longer one that starts with it. Registers nothing for undo. Call it
    /// only while the undo history is empty.
    void extend(const Text &text);

    /// Replaces `range` (clamped to the text) and registers the change for undo. Replacing an empty
    /// range by an empty text does nothing and registers nothing.
    void
    replaceCharacters(TextRange range, const Text &replacement, EditKind kind = EditKind::Other);

    void beginUndoGrouping();
    void endUndoGrouping();

    /// True inside an undo group.
    [[nodiscard]] bool isGrouping() const { return m_groupingLevel > 0; }

    /// Makes the next edit start an undo step of its own. Called when the caret moves, on saving,
    /// and so on.
    void breakUndoCoalescing();

    /// Sets how much text the steps that can be undone may have removed, in bytes as UTF-8. Each
    /// edit drops the oldest steps beyond it, and never the last one.
    void setUndoLimit(qint64 bytes) { m_undoLimit = bytes; }

    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    /// Reverts the last step; does nothing without one or inside a group. Returns the selection
    /// from before the step's first edit, as set by `setSelectionForUndo`.
    TextRange undo();
    /// Repeats the step undone last. Returns the selection from after the step's last edit.
    TextRange redo();

    /// Sets the view's selection, which undo and redo restore. Call it whenever the selection
    /// changes. A step remembers the last selection set before its first edit and the first one set
    /// after its last edit; in a group, the last one set within the group.
    void setSelectionForUndo(TextRange selection);

    /// Marks the current text as the one on the disk.
    void setSavePoint();
    /// Marks the current text as the one that is being written to the disk. Edits may continue;
    /// undoing them leads back to this state. A second call replaces the first.
    void beginSaving();
    /// Ends the save that `beginSaving` started. On success, the save point is the state at that
    /// call; it is unreachable when later edits have dropped that state from the undo history.
    void endSaving(bool succeeded);
    /// Discards the save point: neither the current text nor any earlier state is on the disk. A
    /// save in progress still sets a save point.
    void forgetSavePoint();
    /// True when the current state of the undo history is not the save point. The texts are not
    /// compared.
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
        bool open = false; // Further edits of the same kind may coalesce with it.
        TextRange selectionBefore;
        TextRange selectionAfter;
        qint64 bytes = 0; // Of what its changes removed.
    };

    void apply(qint64 offset, qint64 length, const Text &replacement);
    void record(TextChange change, EditKind kind);
    [[nodiscard]] bool coalesce(const TextChange &change, EditKind kind);
    void addBytes(qint64 bytes);
    void dropOldSteps();
    void publishStates();

    EditClock m_clock;
    std::chrono::steady_clock::time_point m_lastEdit;
    Text m_text;
    std::deque<Step> m_steps;
    std::size_t m_position = 0;   // Steps before this are done, those from it on undone.
    qint64 m_savePosition = 0;    // -1: the saved state can no longer be reached.
    qint64 m_savingPosition = -1; // The same for the state that is being written.
    qint64 m_undoLimit = kUndoLimit;
    qint64 m_bytes = 0; // Of the steps that are done.
    int m_groupingLevel = 0;
    bool m_groupHasStep = false;
    bool m_awaitsSelection = false; // The last step's `selectionAfter` is still to be set.
    bool m_publishedModified = false;
    TextRange m_selection;
};

} // namespace penwick
