// The keyboard, input method and mouse events of a text view. The edits and selections that result
// are in TextView.cpp.

#include "view/InputMethod.h"
#include "view/TextView.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QStyleHints>
#include <QWheelEvent>

namespace penwick {

namespace {

constexpr int kWheelRows = 3;

} // namespace

void TextView::keyPressEvent(QKeyEvent *event)
{
    // A key event that arrives here is not part of the composition, which therefore ends first.
    if (const auto request = caretMoveFor(*event)) {
        commitComposition();
        m_selection.move(*request);
    } else if (const auto command = editCommandFor(*event)) {
        perform(*command);
    } else if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        QContextMenuEvent menu(QContextMenuEvent::Keyboard, {}, {}, event->modifiers());
        contextMenuEvent(&menu);
    } else if (isTextInput(*event)) {
        commitComposition();
        m_editing.replaceSelection(Text(event->text()), TextEditing::Kind::Typing);
    } else {
        event->ignore();
    }
}

bool TextView::focusNextPrevChild(bool next)
{
    // Tab inserts a character and does not move the focus.
    Q_UNUSED(next)
    return false;
}

void TextView::showComposition(const TextComposition &composition)
{
    m_viewport.setComposition(composition);
    m_selection.showCaret();
}

void TextView::discardComposition()
{
    if (!hasMarkedText())
        return;
    showComposition({});
    // Some input methods commit on a reset what they should discard.
    m_ignoresCommits = true;
    QGuiApplication::inputMethod()->reset();
    m_ignoresCommits = false;
}

void TextView::commitComposition()
{
    if (!hasMarkedText())
        return;
    QGuiApplication::inputMethod()->commit();
    // Some input methods commit only on a reset.
    if (hasMarkedText())
        QGuiApplication::inputMethod()->reset();
    if (hasMarkedText())
        showComposition({});
}

void TextView::inputMethodEvent(QInputMethodEvent *event)
{
    event->accept();
    if (m_ignoresCommits)
        return;
    if (!event->commitString().isEmpty() || event->replacementLength() > 0) {
        m_viewport.setComposition({});
        const TextRange range =
            replacedRange(*event, m_storage->text(), selectedRange(), caretOffset());
        m_editing.edit(range, Text(event->commitString()), TextEditing::Kind::Typing);
    }
    showComposition(compositionOf(*event, caretOffset()));
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
        return m_viewport.caretRect(m_selection.caret()).translated(viewport()->pos());
    case Qt::ImAnchorRectangle:
        return m_viewport.caretRect({m_selection.anchor(), false}).translated(viewport()->pos());
    default:
        break;
    }
    const QVariant answer =
        SurroundingText(m_storage->text(), m_selection.anchor(), caretOffset()).answer(query);
    return answer.isValid() ? answer : QAbstractScrollArea::inputMethodQuery(query);
}

void TextView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::MiddleButton)
        return; // It pastes on release.
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    commitComposition();
    m_storage->breakUndoCoalescing();
    const bool mayDrag = !event->modifiers().testFlag(Qt::ShiftModifier) &&
                         !m_mouse.wouldBeThirdPress(*event) &&
                         m_selection.contains(event->position());
    if (mayDrag)
        m_dragPress = event->position();
    else
        m_mouse.press(*event);
}

void TextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_dragPress.reset();
    if (event->button() == Qt::LeftButton)
        m_mouse.doublePress(*event);
}

void TextView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragPress) {
        m_mouse.move(*event, viewport()->height());
        return;
    }
    const QPointF way = event->position() - *m_dragPress;
    if (event->buttons().testFlag(Qt::LeftButton) &&
        way.manhattanLength() >= QGuiApplication::styleHints()->startDragDistance())
        startDrag();
}

void TextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::MiddleButton && viewport()->rect().contains(event->pos()))
        pastePrimarySelection(event->position());
    if (event->button() != Qt::LeftButton)
        return;
    if (m_dragPress) { // A click, not a drag.
        m_dragPress.reset();
        m_mouse.press(*event);
    }
    m_mouse.release();
    m_selection.offerAsPrimary();
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

} // namespace penwick
