#include "editor/TextView.h"

#include "editor/InputMethod.h"
#include "editor/TextViewAccessible.h"
#include "editor/TextViewPainter.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethod>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyleHints>
#include <QTimerEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace penwick {

namespace {

constexpr int kWheelRows = 3;
constexpr int kAutoscrollInterval = 30; // Milliseconds.

} // namespace

TextView::TextView(TextStorage *storage, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_storage(storage)
{
    TextViewAccessible::install();
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    setAttribute(Qt::WA_KeyCompression, false);
    viewport()->setCursor(Qt::IBeamCursor);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_viewport.setText(m_storage->text());
    connect(m_storage, &TextStorage::changed, this, &TextView::storageChanged);
    connect(m_storage, &TextStorage::undoStateChanged, this, &TextView::actionStateDidChange);
    updateStyle();
}

TextView::~TextView() = default;

void TextView::setString(const Text &text)
{
    endComposition();
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
    m_storage->breakUndoCoalescing();
    select(range.location, {range.location + std::max<qint64>(0, range.length), false});
}

bool TextView::hasMarkedText() const
{
    return m_viewport.composition().isActive();
}

void TextView::select(qint64 anchor, TextCaret caret, Scroll scroll)
{
    const Text &text = m_storage->text();
    const auto snapped = [&text](qint64 offset) {
        offset = std::clamp<qint64>(offset, 0, text.size());
        const bool isInsidePair =
            offset > 0 && offset < text.size() && QChar::isLowSurrogate(text.at(offset));
        return isInsidePair ? offset - 1 : offset;
    };
    const TextRange before = selectedRange();
    m_anchor = snapped(anchor);
    m_caret = {snapped(caret.offset), caret.atRowEnd};
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

qint64 TextView::offsetAt(QPoint point) const
{
    return m_viewport.caretAt(point).offset;
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
    TextViewAccessible::announceChange(this, m_viewport.text(), {offset, oldLength}, newLength);
    m_viewport.textChanged(m_storage->text(), offset, oldLength, newLength);
    m_anchor = std::min(m_anchor, m_storage->length());
    m_caret.offset = std::min(m_caret.offset, m_storage->length());
    m_column.reset();
    viewport()->update();
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
    endComposition();
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
    // A program's edit does not carry the view away; it shows the caret if it wants to.
    if (isInside)
        select(newEnd, {newEnd, false}, Scroll::Stay);
    else
        select(moved(before.location), {moved(before.end()), false}, Scroll::Stay);
}

void TextView::didChangeText()
{
    Q_EMIT textDidChange();
}

void TextView::finishUndo(TextRange selection)
{
    select(selection.location, {selection.end(), false});
    Q_EMIT textDidChange();
}

void TextView::undo()
{
    endComposition();
    if (m_storage->canUndo())
        finishUndo(m_storage->undo());
}

void TextView::redo()
{
    endComposition();
    if (m_storage->canRedo())
        finishUndo(m_storage->redo());
}

void TextView::cut()
{
    copy();
    deleteSelection();
}

void TextView::copy()
{
    const TextRange range = selectedRange();
    if (range.length == 0)
        return;
    auto *mime = new QMimeData; // Owned by the clipboard.
    mime->setText(m_storage->text().slice(range.location, range.length));
    QGuiApplication::clipboard()->setMimeData(mime);
}

void TextView::paste()
{
    endComposition();
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    if (mime && mime->hasText() && !mime->text().isEmpty())
        replaceSelection(mime->text(), TextStorage::EditKind::Other);
}

void TextView::deleteSelection()
{
    endComposition();
    if (selectedRange().length > 0)
        edit(selectedRange(), Text(), TextStorage::EditKind::Other);
}

void TextView::selectAll()
{
    endComposition();
    m_storage->breakUndoCoalescing();
    select(0, {m_storage->length(), false}, Scroll::Stay);
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
        const bool toEnd =
            (request.move == CaretMove::Right) != m_viewport.isRightToLeft(m_caret.offset);
        const qint64 offset = toEnd ? selection.end() : selection.location;
        m_column.reset();
        select(offset, {offset, false});
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
        // The page turns under the caret, which keeps its place on the screen.
        m_viewport.makeVisible(target);
        m_viewport.scrollByPixels(m_viewport.caretRect(target).top() - before);
    }
    const auto column = m_column;
    select(request.extends ? m_anchor : target.offset, target);
    m_column = column;
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
    case EditCommand::DeleteToLineEnd:
        return deleteTo(target(CaretMove::BlockEnd), Kind::Other);
    }
}

void TextView::keyPressEvent(QKeyEvent *event)
{
    if (const auto request = caretMoveFor(*event))
        move(*request);
    else if (const auto command = editCommandFor(*event))
        perform(*command);
    else if (entersText(*event))
        replaceSelection(event->text(), TextStorage::EditKind::Typing);
    else
        event->ignore();
}

bool TextView::focusNextPrevChild(bool next)
{
    // Tab is a character here, not a way out.
    Q_UNUSED(next)
    return false;
}

void TextView::showComposition(const TextComposition &composition)
{
    m_viewport.setComposition(composition);
    m_viewport.makeVisible(m_caret);
    caretMoved();
}

void TextView::endComposition()
{
    if (!hasMarkedText())
        return;
    showComposition({});
    QGuiApplication::inputMethod()->reset();
}

void TextView::inputMethodEvent(QInputMethodEvent *event)
{
    if (!event->commitString().isEmpty() || event->replacementLength() > 0) {
        m_viewport.setComposition({});
        TextRange range = selectedRange();
        if (event->replacementLength() > 0) {
            range.location = std::max<qint64>(0, m_caret.offset + event->replacementStart());
            range.length = event->replacementLength();
        }
        const Text committed{QStringView(event->commitString())};
        edit(range, committed, TextStorage::EditKind::Typing);
    }
    showComposition(compositionOf(*event, m_caret.offset));
    event->accept();
}

QVariant TextView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return isEnabled();
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine | Qt::ImhNoAutoUppercase);
    case Qt::ImFont:
        return font();
    case Qt::ImCursorRectangle:
        return m_viewport.caretRect(m_caret).translated(viewport()->pos());
    case Qt::ImAnchorRectangle:
        return m_viewport.caretRect({m_anchor, false}).translated(viewport()->pos());
    default:
        break;
    }
    const QVariant answer =
        SurroundingText(m_storage->text(), m_anchor, m_caret.offset).answer(query);
    return answer.isValid() ? answer : QAbstractScrollArea::inputMethodQuery(query);
}

void TextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    if (hasMarkedText())
        QGuiApplication::inputMethod()->commit();
    m_storage->breakUndoCoalescing();
    m_column.reset();
    m_lastMousePosition = event->position();
    const TextCaret hit = m_viewport.caretAt(event->position());
    if (event->modifiers() & Qt::ShiftModifier) {
        m_gesture.pressExtending(m_anchor);
        select(m_anchor, hit, Scroll::Stay);
        return;
    }
    const auto ends = m_gesture.press(m_storage->text(), hit.offset, event->position());
    select(ends.anchor, {ends.caret, ends.anchor == ends.caret && hit.atRowEnd}, Scroll::Stay);
}

void TextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const TextCaret hit = m_viewport.caretAt(event->position());
    const auto ends = m_gesture.doublePress(m_storage->text(), hit.offset, event->position());
    select(ends.anchor, {ends.caret, false}, Scroll::Stay);
}

void TextView::extendTo(QPointF point)
{
    const TextCaret hit = m_viewport.caretAt(point);
    const auto ends = m_gesture.drag(m_storage->text(), hit.offset);
    select(ends.anchor, {ends.caret, ends.caret == hit.offset && hit.atRowEnd}, Scroll::Stay);
}

void TextView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_gesture.isActive() || !(event->buttons() & Qt::LeftButton))
        return;
    m_lastMousePosition = event->position();
    extendTo(m_lastMousePosition);
    const bool isOutside =
        m_lastMousePosition.y() < 0 || m_lastMousePosition.y() > viewport()->height();
    if (isOutside && !m_autoscrollTimer.isActive())
        m_autoscrollTimer.start(kAutoscrollInterval, this);
    else if (!isOutside)
        m_autoscrollTimer.stop();
}

void TextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_gesture.release();
    m_autoscrollTimer.stop();
}

void TextView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_blinkTimer.timerId()) {
        m_caretIsShown = !m_caretIsShown;
        viewport()->update(m_viewport.caretRect(m_caret).toAlignedRect().adjusted(-2, 0, 3, 0));
    } else if (event->timerId() == m_autoscrollTimer.timerId()) {
        const qreal y = m_lastMousePosition.y();
        // The farther outside, the faster.
        const qreal distance = y < 0 ? y : std::max<qreal>(0, y - viewport()->height());
        m_viewport.scrollByPixels(distance / 2);
        extendTo(m_lastMousePosition);
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
    const QSizeF size = viewport()->size();
    const qreal width = size.width() - 2 * TextViewport::kMargin;
    m_viewport.setGeometry(makeTextLayoutStyle(font(), palette(), width), size);
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
    const TextViewport::ScrollRange range = m_viewport.scrollRange();
    verticalScrollBar()->setRange(0, range.maximum);
    verticalScrollBar()->setPageStep(range.pageStep);
    verticalScrollBar()->setSingleStep(std::max(1, range.pageStep / m_viewport.rowsPerPage()));
    verticalScrollBar()->setValue(range.value);
    horizontalScrollBar()->setRange(0, 0);
    m_isUpdatingScrollBars = false;
}

void TextView::scrollContentsBy(int dx, int dy)
{
    Q_UNUSED(dx)
    Q_UNUSED(dy)
    if (m_isUpdatingScrollBars)
        return;
    const QScrollBar *bar = verticalScrollBar();
    m_viewport.scrollToValue(bar->value(), bar->maximum());
    // The bar keeps what the hand gave it: a correction would pull it away from the mouse.
    viewport()->update();
    updateMicroFocus();
}

void TextView::wheelEvent(QWheelEvent *event)
{
    const QPoint pixels = event->pixelDelta();
    qreal distance = -pixels.y();
    if (pixels.isNull()) {
        constexpr qreal kNotch = 120;
        distance = -event->angleDelta().y() / kNotch * kWheelRows * m_viewport.style().rowHeight;
    }
    m_viewport.scrollByPixels(distance);
    updateScrollBars();
    viewport()->update();
    updateMicroFocus();
    event->accept();
}

void TextView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    TextViewPicture picture;
    picture.selection = selectedRange();
    picture.caret = m_caret;
    picture.isActive = hasFocus() && isActiveWindow();
    const bool isHidden = hasMarkedText() && m_viewport.composition().cursor < 0;
    picture.caretIsShown = hasFocus() && m_caretIsShown && !isHidden;
    picture.caretWidth = style()->pixelMetric(QStyle::PM_TextCursorWidth, nullptr, this);
    paintTextView(
        painter, QRectF(event->rect()), QSizeF(viewport()->size()), palette(), m_viewport, picture);
}

} // namespace penwick
