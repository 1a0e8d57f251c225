#pragma once

#include "editor/CaretMover.h"
#include "editor/DropPlace.h"
#include "editor/EditKeys.h"
#include "editor/MouseSelection.h"
#include "editor/TextDecoration.h"
#include "editor/TextFinder.h"
#include "editor/TextStorage.h"
#include "editor/TextViewport.h"
#include "text/Text.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>

#include <functional>
#include <optional>
#include <vector>

class QDrag;
class QMimeData;

namespace penwick {

/// A plain-text view over a `TextStorage`. It lays out only what can be seen, so its cost per
/// keystroke, paint and scroll step does not depend on the size of the text.
///
/// Positions and ranges are in UTF-16 code units, 0-based. The caret and deletion move by grapheme
/// clusters. A composition of an input method is shown at the caret but is not part of the text
/// until it is committed.
class TextView final : public QAbstractScrollArea
{
    Q_OBJECT

public:
    /// \param storage not owned; must outlive the view.
    explicit TextView(TextStorage *storage, QWidget *parent = nullptr);
    /// \param font given here, it is the only one that is ever loaded and measured for the view.
    TextView(TextStorage *storage, const QFont &font, QWidget *parent = nullptr);
    ~TextView() override;

    [[nodiscard]] TextStorage *textStorage() const { return m_storage; }

    /// The whole text; copying it is cheap.
    [[nodiscard]] const Text &string() const { return m_storage->text(); }

    /// Replaces the whole text without registering it for undo, puts the caret at the start and
    /// ends a composition. Emits `selectionDidChange`, not `textDidChange`.
    void setString(const Text &text);

    /// The selection; of length 0 it is the caret.
    [[nodiscard]] TextRange selectedRange() const;
    /// Clamped to the text; an end inside a surrogate pair moves to the pair's start. Scrolls the
    /// caret into view. Emits `selectionDidChange` when the range changed.
    void setSelectedRange(TextRange range);

    /// The end of the selection that moves: where the caret is drawn.
    [[nodiscard]] qint64 caretOffset() const { return m_caret.offset; }

    /// Where a caret at `offset` stands, in logical pixels of the viewport; empty when it is
    /// scrolled away by more than a viewport.
    [[nodiscard]] QRectF caretRectAt(qint64 offset) const;
    /// The same for the cluster that `offset` belongs to, over its whole width.
    [[nodiscard]] QRectF characterRectAt(qint64 offset) const;
    /// The offset nearest to a point of the viewport.
    [[nodiscard]] qint64 offsetAt(QPoint point) const;
    /// The row of the laid-out text that shows the character at `offset`, with the line break at
    /// its end. Rows meet without gaps.
    [[nodiscard]] TextRange rowAround(qint64 offset) const;
    /// Scrolls as little as shows `offset`.
    void scrollTo(qint64 offset);

    /// True while an input method shows a composition that is not committed yet.
    [[nodiscard]] bool hasMarkedText() const;

    /// True when the clipboard offers text.
    [[nodiscard]] bool canPaste() const;

    /// Carries a drag out and returns what became of what was dragged.
    using DragRunner = std::function<Qt::DropAction(QDrag *drag)>;

    /// By default a drag runs until the person lets go; a test, which has no hand, sets its own.
    void setDragRunner(DragRunner runner) { m_dragRunner = std::move(runner); }

    /// The three calls of one programmatic edit. `shouldChangeText` always allows it and prepares
    /// undo; `replaceCharacters` changes the storage and moves the selection: a selection that lies
    /// within the replaced range becomes a caret after the new text, one beyond it moves along, and
    /// the view stays where it is; `didChangeText` emits `textDidChange`.
    bool shouldChangeText(TextRange range, const Text &replacement);
    void replaceCharacters(TextRange range, const Text &replacement);
    void didChangeText();

    /// As these three at once, for a change that came from elsewhere. Where caret and selection lie
    /// within the replaced range, they keep their line and column as far as there are such ones.
    void takeIn(TextRange range, const Text &replacement);

    /// The places to mark in a stretch of the text, ascending. Asked at each paint, with the
    /// stretch that can be seen.
    using Marks = std::function<const std::vector<FindMatch> &(TextRange)>;

    /// \param marks called until another is set; empty for no marks.
    void setMarks(Marks marks);
    /// Told when the marks have become others.
    void updateMarks();

    /// \param decoration not owned; told and asked until another is set, null for none.
    void setDecoration(TextDecoration *decoration);

    /// Where a line of the text, which ends with a line feed, can be seen. Logical pixels of the
    /// viewport.
    struct VisibleLine
    {
        qint64 number = 0; ///< 0-based.
        qreal top = 0;     ///< Of its first row; above the viewport when that one is out of sight.
        qreal bottom = 0;  ///< Of its last row that was laid out.
    };

    /// The lines of which a row can be seen, top to bottom.
    [[nodiscard]] std::vector<VisibleLine> visibleLines() const;

    /// Height of each row, and from its top to its baseline, in logical pixels.
    [[nodiscard]] qreal rowHeight() const { return m_viewport.style().rowHeight; }

    [[nodiscard]] qreal rowAscent() const { return m_viewport.style().ascent; }

public Q_SLOTS:
    void undo();
    void redo();
    void cut();
    void copy();
    void paste();
    void deleteSelection();
    void selectAll();

Q_SIGNALS:
    /// The person, undo, redo or a macro changed the text.
    void textDidChange();
    /// The selected range changed, by an edit or without one.
    void selectionDidChange();
    /// What the edit actions may do changed: undo, redo, cut, copy, paste.
    void actionStateDidChange();
    /// What can be seen, or where, may have become other: by an edit, by scrolling, by another size
    /// or font. Not the moment to ask the view, which may be amid the change.
    void visibleTextDidChange();

public:
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    bool focusNextPrevChild(bool next) override;
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
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    enum class Scroll { ToCaret, Stay };

    void storageChanged(qint64 offset, qint64 oldLength, qint64 newLength);
    /// `offset` clamped to the text, and moved out of a surrogate pair.
    [[nodiscard]] qint64 snapped(qint64 offset) const;
    void select(qint64 anchor, TextCaret caret, Scroll scroll = Scroll::ToCaret);
    /// An edit that the person made: replaces `range` and puts the caret behind the new text.
    void edit(TextRange range, const Text &replacement, TextStorage::EditKind kind);
    void replaceSelection(const QString &units, TextStorage::EditKind kind);
    void finishUndo(TextRange selection);
    void deleteTo(qint64 target, TextStorage::EditKind kind);
    void perform(EditCommand command);
    void move(CaretMoveRequest request);
    /// Ends a composition: what it shows is lost, or becomes text as far as the input method hands
    /// it over.
    void discardComposition();
    void commitComposition();
    void showComposition(const TextComposition &composition);
    [[nodiscard]] Text selectedText() const;
    /// Makes the selection the one that a middle click anywhere pastes.
    void offerPrimarySelection();
    void pastePrimarySelection(QPointF point);
    [[nodiscard]] QPoint contextMenuPosition();
    [[nodiscard]] bool isInSelection(QPointF point);
    void startDrag();
    bool acceptsDrop(QDropEvent *event) const;
    /// One undo step; `removed` is what a move within the view takes away, of length 0 for none.
    void insertDropped(const Text &text, qint64 place, TextRange removed);
    void updateStyle();
    void updateScrollBars();
    [[nodiscard]] TextRange visibleRange();
    void restartBlinking();
    void caretMoved();

    TextStorage *m_storage;
    mutable TextViewport m_viewport; // Answering a query may lay text out.
    qint64 m_anchor = 0;             // The end of the selection that stays.
    TextCaret m_caret;               // The end that moves.
    std::optional<qreal> m_column;   // x that moves from row to row keep.
    MouseSelection m_mouse;
    DropPlace m_dropPlace;
    DragRunner m_dragRunner;
    std::optional<QPointF> m_dragPress;   // On the selection, which may be about to be dragged.
    const QMimeData *m_dragged = nullptr; // What is being dragged from here, until it is dropped.
    QBasicTimer m_blinkTimer;
    Marks m_marks;
    bool m_caretIsShown = true;
    bool m_isUpdatingScrollBars = false;
    bool m_ignoresCommits = false;
};

} // namespace penwick
