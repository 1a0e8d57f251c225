// The clipboard, the primary selection, drag and drop, and the context menu of a text view. The
// edits and selections that result are in TextView.cpp.

#include "platform/desktop/ContextMenu.h"
#include "view/DragPicture.h"
#include "view/TextMimeData.h"
#include "view/TextView.h"
#include "view/TextViewMenu.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDrag>
#include <QGuiApplication>
#include <QPointer>

#include <utility>

namespace penwick {

bool TextView::canPaste() const
{
    return offersText(QGuiApplication::clipboard()->mimeData());
}

void TextView::pastePrimarySelection(QPointF point)
{
    const auto text = textOf(QGuiApplication::clipboard()->mimeData(QClipboard::Selection));
    if (!text)
        return;
    commitComposition();
    m_editing.insertAt(m_viewport.caretAt(point), *text);
}

void TextView::contextMenuEvent(QContextMenuEvent *event)
{
    commitComposition();
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        // A click on the selection keeps it; a click elsewhere moves the caret.
        if (!m_selection.contains(event->pos())) {
            m_storage->breakUndoCoalescing();
            const TextCaret place = m_viewport.caretAt(event->pos());
            m_selection.select(place.offset, place, TextSelection::Scroll::Stay);
        }
    } else {
        m_selection.showCaret();
        const QRectF caret = m_viewport.caretRect(m_selection.caret());
        position = viewport()->mapToGlobal(caret.bottomLeft().toPoint());
    }
    popUpContextMenu(makeTextViewMenu(this), position);
    event->accept();
}

void TextView::startDrag()
{
    m_dragPress.reset();
    const TextRange range = selectedRange();
    const Text text = m_selection.text();
    auto *mime = new TextMimeData(text);
    auto *drag = new QDrag(this); // Deletes itself.
    drag->setMimeData(mime);
    drag->setPixmap(dragPicture(text, font(), palette(), devicePixelRatioF()));
    m_dragged = mime;
    const QPointer<TextView> self(this);
    const Qt::DropAction action = m_dragRunner(drag);
    if (self.isNull()) // The window was closed during the drag.
        return;
    // A drop in this view has already moved the text. During the drag, a macro may have changed the
    // text: delete the range only if it still holds what was dragged.
    const bool isToBeRemoved = std::exchange(m_dragged, nullptr) != nullptr &&
                               action == Qt::MoveAction &&
                               m_storage->text().mid(range.location, range.length) == text;
    if (isToBeRemoved)
        m_editing.edit(range, Text(), TextEditing::Kind::Other);
}

bool TextView::acceptsDrop(QDropEvent *event) const
{
    // Files are left to the window, which opens them.
    if (!offersText(event->mimeData()) || !localFilesOf(event->mimeData()).isEmpty()) {
        event->ignore();
        return false;
    }
    if (event->proposedAction() == Qt::MoveAction || event->proposedAction() == Qt::CopyAction)
        event->acceptProposedAction();
    else
        event->setDropAction(Qt::CopyAction);
    event->accept();
    return true;
}

void TextView::dragEnterEvent(QDragEnterEvent *event)
{
    acceptsDrop(event);
}

void TextView::dragMoveEvent(QDragMoveEvent *event)
{
    if (acceptsDrop(event))
        m_dropTarget.moveTo(event->position(), viewport()->height());
}

void TextView::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_dropTarget.clear();
    event->accept();
}

void TextView::dropEvent(QDropEvent *event)
{
    m_dropTarget.clear();
    if (!acceptsDrop(event))
        return;
    const auto text = textOf(event->mimeData());
    if (!text)
        return;
    commitComposition();
    const qint64 place = m_viewport.caretAt(event->position()).offset;
    // A move within the view deletes the source in the same undo step; a move to elsewhere deletes
    // it when the drag has ended.
    const bool isOwn = m_dragged == event->mimeData();
    const bool isMoved =
        isOwn && event->dropAction() == Qt::MoveAction && m_selection.text() == *text;
    m_editing.insertDropped(*text, place, isMoved ? selectedRange() : TextRange{place, 0});
    if (isOwn)
        m_dragged = nullptr;
    // The user continues where the text was dropped.
    activateWindow();
    setFocus(Qt::MouseFocusReason);
}

} // namespace penwick
