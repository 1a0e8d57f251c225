#include "view/TextView.h"

#include "view/TextViewAccessible.h"

#include <QDrag>
#include <QGuiApplication>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

/// Returns the offset in `to` that has the line and column of `offset` in `from`, or the nearest
/// one.
qint64 sameLineAndColumn(const Text &from, qint64 offset, const Text &to)
{
    const qint64 line = from.lineBreaksBefore(offset);
    const qint64 column = offset - from.offsetAfterLineBreak(line);
    const qint64 start = to.offsetAfterLineBreak(line);
    const bool isLastLine = to.lineBreaksBefore(to.size()) <= line;
    const qint64 end =
        isLastLine ? to.size() : to.previousClusterBoundary(to.offsetAfterLineBreak(line + 1));
    return to.clusterBoundaryAtOrBefore(std::min(start + column, end));
}

} // namespace

TextView::TextView(TextStorage *storage, QWidget *parent)
    : TextView(storage, QFont(), parent)
{
}

TextView::TextView(TextStorage *storage, const QFont &font, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_storage(storage)
    , m_mouse(&m_viewport,
              [this](qint64 anchor, TextCaret caret) { select(anchor, caret, Scroll::Stay); })
    , m_dropTarget(&m_viewport,
                   [this] {
                       updateScrollBars();
                       viewport()->update();
                   })
    , m_dragRunner(
          [](QDrag *drag) { return drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction); })
{
    TextViewAccessible::install();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_KeyCompression, false);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setAcceptDrops(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_viewport.setText(m_storage->text());
    connect(m_storage, &TextStorage::changed, this, &TextView::storageChanged);
    connect(m_storage, &TextStorage::undoStateChanged, this, &TextView::actionStateDidChange);
    setFont(font);
    updateStyle();
}

TextView::~TextView() = default;

void TextView::setString(const Text &text)
{
    discardComposition();
    m_storage->setText(text);
    m_viewport.scrollToStart();
    m_anchor = 0;
    m_caret = {};
    m_storage->setSelectionForUndo(selectedRange());
    caretMoved();
    Q_EMIT selectionDidChange();
}

TextRange TextView::selectedRange() const
{
    const qint64 start = std::min(m_anchor, m_caret.offset);
    return {start, std::max(m_anchor, m_caret.offset) - start};
}

void TextView::setSelectedRange(TextRange range)
{
    if (range != selectedRange() || range.end() != m_caret.offset)
        commitComposition(); // The composition is tied to the caret.
    m_storage->breakUndoCoalescing();
    select(range.location, {range.location + std::max<qint64>(0, range.length), false});
}

bool TextView::hasMarkedText() const
{
    return m_viewport.composition().isActive();
}

qint64 TextView::snapped(qint64 offset) const
{
    const Text &text = m_storage->text();
    return text.pairStart(std::clamp<qint64>(offset, 0, text.size()));
}

void TextView::select(qint64 anchor, TextCaret caret, Scroll scroll)
{
    const TextRange before = selectedRange();
    m_anchor = snapped(anchor);
    m_caret = {snapped(caret.offset), caret.atRowEnd};
    m_column.reset();
    m_storage->setSelectionForUndo(selectedRange());
    if (scroll == Scroll::ToCaret)
        m_viewport.makeVisible(m_caret);
    caretMoved();
    TextViewAccessible::announceCaret(this, before);
    if (selectedRange() != before)
        Q_EMIT selectionDidChange();
}

QRectF TextView::caretRectAt(qint64 offset) const
{
    return m_viewport.caretRect({offset, false});
}

QRectF TextView::characterRectAt(qint64 offset) const
{
    return m_viewport.characterRect(string().clusterBoundaryAtOrBefore(snapped(offset)));
}

qint64 TextView::offsetAt(QPoint point) const
{
    return m_viewport.caretAt(point).offset;
}

TextRange TextView::rowAround(qint64 offset) const
{
    return m_viewport.rowAround(snapped(offset));
}

void TextView::scrollTo(qint64 offset)
{
    m_viewport.makeVisible({offset, false});
    updateScrollBars();
    viewport()->update();
}

void TextView::caretMoved()
{
    updateScrollBars();
    restartBlinking();
    viewport()->update();
    updateMicroFocus();
    Q_EMIT actionStateDidChange();
}

void TextView::storageChanged(qint64 offset, qint64 oldLength, qint64 newLength)
{
    const Text before = m_viewport.text();
    if (TextDecoration *decoration = m_viewport.decoration())
        decoration->textChanged(m_storage->text(), offset, oldLength, newLength);
    m_viewport.textChanged(m_storage->text(), offset, oldLength, newLength);
    m_anchor = snapped(m_anchor);
    m_caret = {snapped(m_caret.offset), false};
    m_column.reset();
    // The view's own edits end a composition beforehand, so this edit came from outside. The
    // composition was meant for the old text.
    discardComposition();
    viewport()->update();
    Q_EMIT visibleTextDidChange();
    // Last, because a listener may query the view at once.
    TextViewAccessible::announceChange(this, before, {offset, oldLength}, newLength);
}

void TextView::edit(TextRange range, const Text &replacement, TextStorage::EditKind kind)
{
    m_storage->replaceCharacters(range, replacement, kind);
    const qint64 end = range.location + replacement.size();
    select(end, {end, false});
    Q_EMIT textDidChange();
}

void TextView::replaceSelection(const QString &units, TextStorage::EditKind kind)
{
    edit(selectedRange(), Text(QStringView(units)), kind);
}

bool TextView::shouldChangeText(TextRange range, const Text &replacement)
{
    Q_UNUSED(range)
    Q_UNUSED(replacement)
    discardComposition();
    m_storage->setSelectionForUndo(selectedRange());
    return true;
}

void TextView::replaceCharacters(TextRange range, const Text &replacement)
{
    const TextRange before = selectedRange();
    const qint64 delta = replacement.size() - range.length;
    const qint64 newEnd = range.location + replacement.size();
    const bool isInside = before.location >= range.location && before.end() <= range.end();
    const auto moved = [&](qint64 offset) {
        if (offset <= range.location)
            return offset;
        return offset >= range.end() ? offset + delta : newEnd;
    };
    m_storage->replaceCharacters(range, replacement);
    // A programmatic edit does not scroll; the caller can scroll to the caret.
    if (isInside)
        select(newEnd, {newEnd, false}, Scroll::Stay);
    else
        select(moved(before.location), {moved(before.end()), false}, Scroll::Stay);
}

void TextView::didChangeText()
{
    Q_EMIT textDidChange();
}

void TextView::replaceText(TextRange range,
                           const Text &replacement,
                           const std::function<void()> &selectAfter)
{
    shouldChangeText(range, replacement);
    m_storage->beginUndoGrouping();
    replaceCharacters(range, replacement);
    if (selectAfter)
        selectAfter();
    m_storage->endUndoGrouping();
    didChangeText();
}

void TextView::applyOutsideChange(TextRange range, const Text &replacement)
{
    shouldChangeText(range, replacement);
    const Text before = string();
    const qint64 anchor = m_anchor;
    const qint64 caret = m_caret.offset;
    m_storage->replaceCharacters(range, replacement);
    const auto kept = [&](qint64 offset) {
        if (offset <= range.location)
            return offset;
        if (offset >= range.end())
            return offset + replacement.size() - range.length;
        return sameLineAndColumn(before, offset, string());
    };
    select(kept(anchor), {kept(caret), false}, Scroll::Stay);
    didChangeText();
}

void TextView::finishUndo(TextRange selection)
{
    select(selection.location, {selection.end(), false});
    Q_EMIT textDidChange();
}

void TextView::undo()
{
    discardComposition();
    if (m_storage->canUndo())
        finishUndo(m_storage->undo());
}

void TextView::redo()
{
    discardComposition();
    if (m_storage->canRedo())
        finishUndo(m_storage->redo());
}

void TextView::deleteSelection()
{
    commitComposition();
    if (selectedRange().length > 0)
        edit(selectedRange(), Text(), TextStorage::EditKind::Other);
}

void TextView::selectAll()
{
    commitComposition();
    m_storage->breakUndoCoalescing();
    select(0, {m_storage->length(), false}, Scroll::Stay);
    offerPrimarySelection();
}

void TextView::deleteTo(qint64 target, TextStorage::EditKind kind)
{
    if (selectedRange().length > 0) {
        deleteSelection();
        return;
    }
    const qint64 start = std::min(target, m_caret.offset);
    const qint64 end = std::max(target, m_caret.offset);
    if (start < end)
        edit({start, end - start}, Text(), kind);
}

void TextView::move(CaretMoveRequest request)
{
    m_storage->breakUndoCoalescing();
    const TextRange selection = selectedRange();
    const bool isStep = request.move == CaretMove::Left || request.move == CaretMove::Right;
    if (isStep && !request.extends && selection.length > 0) {
        const qint64 edge =
            edgeOfSelection(m_viewport, selection, request.move == CaretMove::Right);
        select(edge, {edge, false});
        return;
    }
    if (!isVertical(request.move))
        m_column.reset();
    else if (!m_column)
        m_column = m_viewport.caretX(m_caret);
    const qreal before = m_viewport.caretRect(m_caret).top();
    const TextCaret target =
        moveCaret(m_viewport, m_storage->text(), m_caret, request.move, m_column.value_or(0));
    if (request.move == CaretMove::PageUp || request.move == CaretMove::PageDown) {
        // Scroll so that the caret keeps its place on the screen.
        m_viewport.makeVisible(target);
        m_viewport.scrollByPixels(m_viewport.caretRect(target).top() - before);
    }
    const auto column = m_column; // `select` resets it.
    select(request.extends ? m_anchor : target.offset, target);
    m_column = column;
    if (request.extends)
        offerPrimarySelection();
}

void TextView::perform(EditCommand command)
{
    using Kind = TextStorage::EditKind;
    const Text &text = m_storage->text();
    const auto target = [&](CaretMove direction) {
        return moveCaret(m_viewport, text, m_caret, direction, 0).offset;
    };
    switch (command) {
    case EditCommand::Undo:
        return undo();
    case EditCommand::Redo:
        return redo();
    case EditCommand::Cut:
        return cut();
    case EditCommand::Copy:
        return copy();
    case EditCommand::Paste:
        return paste();
    case EditCommand::SelectAll:
        return selectAll();
    case EditCommand::InsertLineFeed:
        return replaceSelection(QStringLiteral("\n"), Kind::Typing);
    case EditCommand::InsertTab:
        return replaceSelection(QStringLiteral("\t"), Kind::Typing);
    case EditCommand::DeleteBackward:
        return deleteTo(text.previousClusterBoundary(m_caret.offset), Kind::DeletingBackward);
    case EditCommand::DeleteForward:
        return deleteTo(text.nextClusterBoundary(m_caret.offset), Kind::DeletingForward);
    case EditCommand::DeleteWordBackward:
        return deleteTo(target(CaretMove::WordLeft), Kind::Other);
    case EditCommand::DeleteWordForward:
        return deleteTo(target(CaretMove::WordRight), Kind::Other);
    case EditCommand::Deselect:
        return select(m_caret.offset, m_caret, Scroll::Stay);
    case EditCommand::DeleteToLineEnd:
        return deleteTo(lineEndToDelete(text, m_caret.offset), Kind::Other);
    case EditCommand::DeleteLine:
        return edit(lineAround(text, m_caret.offset), Text(), Kind::Other);
    }
}

void TextView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_blinkTimer.timerId()) {
        m_caretIsShown = !m_caretIsShown;
        viewport()->update(m_viewport.caretRect(m_caret).toAlignedRect().adjusted(-2, 0, 3, 0));
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

void TextView::restartBlinking()
{
    m_caretIsShown = true;
    const int flashTime = QGuiApplication::styleHints()->cursorFlashTime();
    if (hasFocus() && flashTime > 1)
        m_blinkTimer.start(flashTime / 2, this);
    else
        m_blinkTimer.stop();
}

void TextView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    restartBlinking();
    viewport()->update();
}

void TextView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    // A menu takes the focus only temporarily: keep the composition.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::MenuBarFocusReason)
        commitComposition();
    m_blinkTimer.stop();
    m_storage->breakUndoCoalescing();
    viewport()->update();
}

bool TextView::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
        viewport()->update();
    return QAbstractScrollArea::event(event);
}

void TextView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange ||
        event->type() == QEvent::StyleChange)
        updateStyle();
}

void TextView::updateStyle()
{
    if (TextDecoration *decoration = m_viewport.decoration())
        decoration->paletteChanged(palette());
    const QSizeF size = viewport()->size();
    const qreal width = size.width() - 2 * TextViewport::kMargin;
    m_viewport.setGeometry(makeTextLayoutStyle(font(), width), size);
    updateScrollBars();
    viewport()->update();
}

void TextView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    const bool showedCaret = !m_viewport.caretRect(m_caret).isNull();
    updateStyle();
    if (showedCaret && hasFocus())
        m_viewport.makeVisible(m_caret);
    updateScrollBars();
}

void TextView::updateScrollBars()
{
    if (m_isUpdatingScrollBars)
        return;
    m_isUpdatingScrollBars = true;
    // A bar that appears or disappears changes the width and with it the rows.
    constexpr int kPasses = 3;
    for (int pass = 0; pass < kPasses; ++pass) {
        const QSize size = viewport()->size();
        const TextViewport::ScrollRange range = m_viewport.scrollRange();
        verticalScrollBar()->setRange(0, range.maximum);
        verticalScrollBar()->setPageStep(range.pageStep);
        verticalScrollBar()->setSingleStep(std::max(1, range.pageStep / m_viewport.rowsPerPage()));
        verticalScrollBar()->setValue(range.value);
        if (viewport()->size() == size)
            break;
    }
    horizontalScrollBar()->setRange(0, 0);
    m_isUpdatingScrollBars = false;
    Q_EMIT visibleTextDidChange();
}

void TextView::scrollContentsBy(int dx, int dy)
{
    Q_UNUSED(dx)
    Q_UNUSED(dy)
    if (m_isUpdatingScrollBars)
        return;
    const QScrollBar *bar = verticalScrollBar();
    m_viewport.scrollToValue(bar->value(), bar->maximum());
    // Keep the bar's value: a correction would move its handle away from the mouse.
    viewport()->update();
    updateMicroFocus();
    Q_EMIT visibleTextDidChange();
}

} // namespace penwick
