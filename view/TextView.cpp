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

TextView::TextView(TextStorage *storage, QWidget *parent)
    : TextView(storage, QFont(), parent)
{
}

TextView::TextView(TextStorage *storage, const QFont &font, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_storage(storage)
    , m_selection(storage, &m_viewport)
    , m_editing(storage, &m_viewport, &m_selection)
    , m_mouse(&m_viewport, &m_selection)
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
    connect(&m_selection, &TextSelection::caretMoved, this, &TextView::caretMoved);
    connect(&m_selection, &TextSelection::selected, this, &TextView::selected);
    connect(&m_editing, &TextEditing::edited, this, &TextView::textDidChange);
    setFont(font);
    updateStyle();
}

TextView::~TextView() = default;

void TextView::setString(const Text &text)
{
    discardComposition();
    m_storage->setText(text);
    m_viewport.scrollToStart();
    m_selection.place(0, {});
    caretMoved();
    Q_EMIT selectionDidChange();
}

void TextView::setSelectedRange(TextRange range)
{
    if (range != selectedRange() || range.end() != caretOffset())
        commitComposition(); // The composition is tied to the caret.
    m_storage->breakUndoCoalescing();
    m_selection.select(range.location, {range.location + std::max<qint64>(0, range.length), false});
}

bool TextView::hasMarkedText() const
{
    return m_viewport.composition().isActive();
}

void TextView::selected(TextRange before)
{
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
    return m_viewport.characterRect(
        string().clusterBoundaryAtOrBefore(m_selection.snapped(offset)));
}

qint64 TextView::offsetAt(QPoint point) const
{
    return m_viewport.caretAt(point).offset;
}

TextRange TextView::rowAround(qint64 offset) const
{
    return m_viewport.rowAround(m_selection.snapped(offset));
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
    m_selection.place(m_selection.anchor(), {caretOffset(), false});
    // The view's own edits end a composition beforehand, so this edit came from outside. The
    // composition was meant for the old text.
    discardComposition();
    viewport()->update();
    Q_EMIT visibleTextDidChange();
    // Last, because a listener may query the view at once.
    TextViewAccessible::announceChange(this, before, {offset, oldLength}, newLength);
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
    m_editing.replace(range, replacement);
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
    m_editing.replaceKeepingLines(range, replacement);
    didChangeText();
}

void TextView::perform(EditCommand command)
{
    if (command == EditCommand::Undo || command == EditCommand::Redo)
        discardComposition();
    else
        commitComposition();
    m_editing.perform(command);
}

void TextView::deleteSelection()
{
    commitComposition();
    m_editing.deleteSelection();
}

void TextView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_blinkTimer.timerId()) {
        m_caretIsShown = !m_caretIsShown;
        viewport()->update(
            m_viewport.caretRect(m_selection.caret()).toAlignedRect().adjusted(-2, 0, 3, 0));
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
    const bool showedCaret = !m_viewport.caretRect(m_selection.caret()).isNull();
    updateStyle();
    if (showedCaret && hasFocus())
        m_viewport.makeVisible(m_selection.caret());
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
