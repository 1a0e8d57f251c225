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

void TextView::cut()
{
    commitComposition();
    copy();
    deleteSelection();
}

void TextView::copy()
{
    // The clipboard takes ownership of the data.
    if (selectedRange().length > 0)
        QGuiApplication::clipboard()->setMimeData(new TextMimeData(selectedText()));
}

bool TextView::canPaste() const
{
    return offersText(QGuiApplication::clipboard()->mimeData());
}

void TextView::paste()
{
    commitComposition();
    if (const auto text = textOf(QGuiApplication::clipboard()->mimeData()))
        edit(selectedRange(), *text, TextStorage::EditKind::Other);
}

Text TextView::selectedText() const
{
    const TextRange range = selectedRange();
    return m_storage->text().mid(range.location, range.length);
}

void TextView::offerPrimarySelection()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection() && selectedRange().length > 0)
        clipboard->setMimeData(new TextMimeData(selectedText()), QClipboard::Selection);
}

void TextView::pastePrimarySelection(QPointF point)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (!clipboard->supportsSelection())
        return;
    const auto text = textOf(clipboard->mimeData(QClipboard::Selection));
    if (!text)
        return;
    commitComposition();
    const TextCaret place = m_viewport.caretAt(point);
    select(place.offset, place, Scroll::Stay);
    edit({place.offset, 0}, *text, TextStorage::EditKind::Other);
}

void TextView::contextMenuEvent(QContextMenuEvent *event)
{
    commitComposition();
    QPoint position = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        // A click on the selection keeps it; a click elsewhere moves the caret.
        if (!isInSelection(event->pos())) {
            m_storage->breakUndoCoalescing();
            const TextCaret place = m_viewport.caretAt(event->pos());
            select(place.offset, place, Scroll::Stay);
        }
    } else {
        position = contextMenuPosition();
    }
    popUpContextMenu(makeTextViewMenu(this), position);
    event->accept();
}

/// Scrolls the caret into view and returns the point below it, in screen coordinates.
QPoint TextView::contextMenuPosition()
{
    m_viewport.makeVisible(m_caret);
    caretMoved();
    return viewport()->mapToGlobal(m_viewport.caretRect(m_caret).bottomLeft().toPoint());
}

bool TextView::isInSelection(QPointF point)
{
    const TextRange range = selectedRange();
    const qint64 hit = m_viewport.characterAt(point);
    return hit >= range.location && hit < range.end();
}

void TextView::startDrag()
{
    m_dragPress.reset();
    const TextRange range = selectedRange();
    const Text text = selectedText();
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
        edit(range, Text(), TextStorage::EditKind::Other);
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
    const bool isMoved = isOwn && event->dropAction() == Qt::MoveAction && selectedText() == *text;
    insertDropped(*text, place, isMoved ? selectedRange() : TextRange{place, 0});
    if (isOwn)
        m_dragged = nullptr;
    // The user continues where the text was dropped.
    activateWindow();
    setFocus(Qt::MouseFocusReason);
}

void TextView::insertDropped(const Text &text, qint64 place, TextRange removed)
{
    if (removed.length > 0 && place >= removed.location && place <= removed.end())
        return; // Dropped on itself: nothing moves.
    if (place >= removed.end())
        place -= removed.length;
    m_storage->beginUndoGrouping();
    m_storage->replaceCharacters(removed, Text());
    m_storage->replaceCharacters({place, 0}, text);
    select(place, {place + text.size(), false});
    m_storage->endUndoGrouping();
    Q_EMIT textDidChange();
}

} // namespace penwick
