#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"
#include "view/CaretBlink.h"
#include "view/DragAndDrop.h"
#include "view/InputMethod.h"
#include "view/MouseSelection.h"
#include "view/PaintedRows.h"
#include "view/TextDecoration.h"
#include "view/TextEditing.h"
#include "view/TextSelection.h"
#include "view/TextViewport.h"

#include <QAbstractScrollArea>

#include <functional>
#include <vector>

class QMenu;

namespace penwick {

/// A plain-text view over a `TextStorage`. It lays out only the visible part, so the cost of a
/// keystroke, paint or scroll step does not depend on the size of the text.
///
/// Positions and ranges are in UTF-16 code units, 0-based. The caret and deletion move by grapheme
/// clusters. A composition is shown at the caret but is not part of the text until it is committed.
class TextView final : public QAbstractScrollArea
{
    Q_OBJECT

public:
    /// Where rows end.
    enum class Wrapping {
        Window, ///< At the right edge of the view.
        Off,    ///< Only where lines end.
        Column, ///< After a number of columns.
    };

    /// \param storage not owned; must outlive the view.
    explicit TextView(TextStorage *storage, QWidget *parent = nullptr)
        : TextView(storage, QFont(), parent)
    {
    }

    /// \param font set from the start, so that no other font is ever loaded and measured for the
    ///        view.
    TextView(TextStorage *storage, const QFont &font, QWidget *parent = nullptr);
    ~TextView() override;

    [[nodiscard]] TextStorage *textStorage() const { return m_storage; }

    /// The whole text; cheap to copy.
    [[nodiscard]] const Text &string() const { return m_storage->text(); }

    /// Replaces the whole text, clears the undo history, puts the caret at the start and discards a
    /// composition. Emits `selectionDidChange`, not `textDidChange`.
    void setString(const Text &text);

    /// Shows a longer text that starts with the present one, without an undo step. Selection and
    /// scroll position stay. Emits `textDidChange`.
    void extend(const Text &text);

    /// From now on the text can be scrolled, selected and copied, but not edited. Keys that would
    /// edit are left to the widgets around the view.
    void makeReadOnly();

    [[nodiscard]] bool isReadOnly() const { return m_editing.isReadOnly(); }

    /// What the user sees and has selected; see `anchorOffset`, `caretOffset`.
    struct Place
    {
        qint64 anchor = 0;
        qint64 caret = 0;
        TextViewport::Top top;
    };

    [[nodiscard]] Place place() const { return {anchorOffset(), caretOffset(), m_viewport.top()}; }

    /// Shows and selects what another view of the same size did.
    void setPlace(const Place &place);

    /// The selection; when its length is 0, the caret.
    [[nodiscard]] TextRange selectedRange() const { return m_selection.range(); }

    /// Selects `range`, clamped to the text; an end inside a surrogate pair moves to the pair's
    /// start. Scrolls the caret into view. Emits `selectionDidChange` when the range changed.
    void setSelectedRange(TextRange range);

    /// True when characters are selected, also in the rows of a rectangle.
    [[nodiscard]] bool hasSelection() const { return !m_selection.isEmpty(); }

    /// The selected rectangle, or null. `selectedRange` is then its part in the first row. Any
    /// other selection and any edit from outside end it.
    [[nodiscard]] const ColumnSelection *columns() const { return m_selection.columns(); }

    /// Selects a rectangle of lines that the text has. Does not scroll.
    void selectRectangle(const TextRectangle &rectangle)
    {
        m_selection.selectRectangle(rectangle, TextSelection::Scroll::Stay);
    }

    /// The moving end of the selection, where the caret is drawn.
    [[nodiscard]] qint64 caretOffset() const { return m_selection.caret().offset; }

    /// The other end of the selection.
    [[nodiscard]] qint64 anchorOffset() const { return m_selection.anchor(); }

    /// Selects from one offset to the other. Unlike `setSelectedRange` it does not scroll.
    void setSelectionInPlace(qint64 anchor, qint64 caret);

    /// Rectangle of a caret at `offset`, in logical pixels of the viewport; empty when it is
    /// scrolled out of view by more than a viewport.
    [[nodiscard]] QRectF caretRectAt(qint64 offset) const
    {
        return m_viewport.caretRect({offset, false});
    }

    /// The same for the whole width of the cluster that contains `offset`.
    [[nodiscard]] QRectF characterRectAt(qint64 offset) const;

    /// The offset nearest to a point of the viewport.
    [[nodiscard]] qint64 offsetAt(QPoint point) const { return m_viewport.caretAt(point).offset; }

    /// The range of the laid-out row that shows the character at `offset`, including the line break
    /// at its end. The ranges of rows are contiguous.
    [[nodiscard]] TextRange rowAround(qint64 offset) const;
    /// Scrolls as little as needed to show `offset`; centres it when it is far away.
    void scrollTo(qint64 offset);

    /// True while an input method shows a composition.
    [[nodiscard]] bool hasMarkedText() const { return m_inputMethod.isComposing(); }

    /// Ends a composition; inserts what the input method commits.
    void commitMarkedText() { m_inputMethod.commit(); }

    /// True when the clipboard offers text.
    [[nodiscard]] bool canPaste() const;

    /// Runs a drag and returns the action that was performed.
    using DragRunner = DragAndDrop::Runner;

    /// Replaces the default runner, which blocks until the user releases the mouse button. For
    /// tests.
    void setDragRunner(DragRunner runner) { m_dragAndDrop.setRunner(std::move(runner)); }

    /// The three calls of one programmatic edit. `shouldChangeText` discards a composition,
    /// prepares undo and always returns true. `replaceCharacters` changes the storage and moves the
    /// selection: one within the replaced range becomes a caret after the new text, one beyond it
    /// is shifted; the view does not scroll. `didChangeText` emits `textDidChange`.
    bool shouldChangeText(TextRange range, const Text &replacement);

    void replaceCharacters(TextRange range, const Text &replacement)
    {
        m_editing.replace(range, replacement);
    }

    void didChangeText() { Q_EMIT textDidChange(); }

    /// Performs these three calls. `selectAfter`, if given, may set the selection; it is part of
    /// the undo step, so redo restores that selection.
    void replaceText(TextRange range,
                     const Text &replacement,
                     const std::function<void()> &selectAfter = {});

    /// Performs these three calls for a change from outside or of all line ends. Where caret and
    /// selection lie within the replaced range, they keep their line and column as far as the new
    /// text has them.
    void applyOutsideChange(TextRange range, const Text &replacement);

    /// Returns the places to mark in a range of the text, ascending. Called at each paint, with the
    /// visible range.
    using Marks = std::function<const std::vector<TextRange> &(TextRange)>;

    /// \param marks called until another is set; empty for no marks.
    void setMarks(Marks marks);

    /// Repaints the view. Call this when the marks have changed.
    void updateMarks() { repaintAll(); }

    /// \param decoration not owned; used until another is set. Null for none.
    void setDecoration(TextDecoration *decoration);

    /// True: a pasted or dropped text gets the first line end of this text. Off at first.
    void setConvertsPastedLineEnds(bool converts) { m_editing.setConvertsPastedLineEnds(converts); }

    /// Sets the distance of the tab stops, and what Tab and Enter insert.
    void setIndentation(const Indentation &style);

    [[nodiscard]] const Indentation &indentation() const { return m_editing.indentation(); }

    /// Marks the line of the caret with a background colour. Off at first.
    void setMarksCurrentLine(bool marks);

    /// Sets the height of the rows, in percent of what the font needs. 100 at first.
    void setLineSpacing(int percent);

    /// None at first.
    void setShownMarks(ShownMarks marks);

    /// What ends a line: only a line feed, as for script engines, or each separator and CR LF, as
    /// for go to line.
    enum class LineCount { LineFeeds, LineBreaks };

    /// The number of lines of the text, at least 1.
    [[nodiscard]] qint64 lineCount(LineCount count) const;
    /// The number of the line that contains `offset`, 0-based. O(log n).
    [[nodiscard]] qint64 lineAt(qint64 offset, LineCount count) const;

    /// Wraps at the window at first. Caret and top line stay where they are, if they are visible.
    /// \param column for `Wrapping::Column`, at least 1; a full-width character counts two.
    void setWrapping(Wrapping wrapping, int column);

    /// The visible place of a line of the text. Lengths are in logical pixels of the viewport.
    struct VisibleLine
    {
        qint64 number = 0; ///< 0-based.
        qreal top = 0;     ///< Of its first row; above the viewport when that row is not visible.
        qreal bottom = 0;  ///< Of its last row that was laid out.

        bool operator==(const VisibleLine &) const = default;
    };

    /// The lines with at least one visible row, top to bottom.
    [[nodiscard]] std::vector<VisibleLine>
    visibleLines(LineCount count = LineCount::LineFeeds) const;

    /// Handles mouse events of the left button beside the text: a press selects the line at its
    /// height, moves and the release select lines, scrolling where needed. With Shift, the press
    /// extends the selection.
    /// \param event its position is relative to the viewport's upper edge.
    void selectLines(QMouseEvent *event);

    /// Height of each row, in logical pixels.
    [[nodiscard]] qreal rowHeight() const { return m_viewport.style().rowHeight; }

    /// Distance from a row's top to its baseline, in logical pixels.
    [[nodiscard]] qreal rowAscent() const { return m_viewport.style().ascent; }

public Q_SLOTS:

    void undo() { perform(EditCommand::Undo); }

    void redo() { perform(EditCommand::Redo); }

    void cut() { perform(EditCommand::Cut); }

    /// Leaves a composition open.
    void copy() { m_editing.perform(EditCommand::Copy); }

    void paste() { perform(EditCommand::Paste); }

    void deleteSelection() { perform(EditCommand::DeleteSelection); }

    void selectAll() { perform(EditCommand::SelectAll); }

    void deselect() { perform(EditCommand::Deselect); }

    /// Makes the selection a rectangle, or the caret one without width. Alt+Shift with arrows, or
    /// Shift, then extends it.
    void startColumns() { selectColumns({}); }

    /// Leaves only the part of the first row selected; does nothing without a rectangle.
    void endColumns();

Q_SIGNALS:
    /// The user, undo, redo or a macro changed the text.
    void textDidChange();
    /// The selected range changed, with or without an edit.
    void selectionDidChange();
    /// The availability of an edit action may have changed: undo, redo, cut, copy, paste.
    void actionStateDidChange();
    /// The context menu is about to open. Others may add entries at its end.
    void contextMenuWillOpen(QMenu *menu);
    /// The visible text, or its place, may have changed: by an edit, by scrolling, or by a new size
    /// or font. Do not query the view in the slot: it may be in the middle of the change.
    void visibleTextDidChange();

public:
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    /// Tab inserts a character and does not move the focus.
    bool focusNextPrevChild(bool /*next*/) override { return false; }

    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

    void mouseDoubleClickEvent(QMouseEvent *event) override { m_mouse.doublePress(*event); }

    void dragEnterEvent(QDragEnterEvent *event) override { m_dragAndDrop.enter(event); }

    void dragMoveEvent(QDragMoveEvent *event) override { m_dragAndDrop.move(event); }

    void dragLeaveEvent(QDragLeaveEvent *event) override { m_dragAndDrop.leave(event); }

    void dropEvent(QDropEvent *event) override { m_dragAndDrop.drop(event); }

private:
    void storageChanged(qint64 offset, qint64 oldLength, qint64 newLength);
    void selected(TextRange before);
    /// Ends a composition and performs the command.
    void perform(EditCommand command);
    void selectColumns(std::optional<CaretMove> move);
    void caretMoved();
    void updateStyle();
    /// Updates the scroll bars and repaints what has changed.
    void refresh();
    /// Repaints the rows that differ from those on the screen, in a later turn of the event loop:
    /// once for all changes of this turn.
    void repaintChanges();
    /// For a change that `PaintedRows` does not see.
    void repaintAll();
    [[nodiscard]] TextViewPicture picture() const;

    TextStorage *m_storage;
    mutable TextViewport m_viewport; // Queries may lay out text.
    TextSelection m_selection;
    TextEditing m_editing;
    InputMethod m_inputMethod;
    MouseSelection m_mouse;
    DragAndDrop m_dragAndDrop;
    CaretBlink m_caretBlink;
    Marks m_marks;
    PaintedRows m_paintedRows;
    bool m_willRepaint = false;
    bool m_isUpdatingScrollBars = false;
    int m_lineSpacing = 100; // Percent.
    ShownMarks m_shownMarks = ShownMarks::None;
    bool m_marksCurrentLine = false;
    Wrapping m_wrapping = Wrapping::Window;
    int m_wrapColumn = 0;
};

} // namespace penwick
