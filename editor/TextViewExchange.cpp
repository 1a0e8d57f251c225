// What a text view does with the clipboard, the primary selection, drag and drop, and its context
// menu. What comes out of it, edits and selections, is in TextView.cpp.

#include "editor/DragPicture.h"
#include "editor/TextMimeData.h"
#include "editor/TextView.h"
#include "editor/TextViewMenu.h"
#include "platform/ContextMenu.h"

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
    // The clipboard owns what it gets.
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
        // What is clicked on is what is meant: the selection, or else this place.
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

/// Below the caret, which is scrolled into view.
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
    auto *drag = new QDrag(this); // It deletes itself.
    drag->setMimeData(mime);
    drag->setPixmap(dragPicture(text, font(), palette(), devicePixelRatioF()));
    m_dragged = mime;
    const QPointer<TextView> self(this);
    const Qt::DropAction action = m_dragRunner(drag);
    if (self.isNull()) // The window was closed meanwhile.
        return;
    // Dropped in this view, it has been moved already. While it was under way, a macro may have
    // changed the text; what is no longer there is not deleted.
    const bool isToBeRemoved = std::exchange(m_dragged, nullptr) != nullptr &&
                               action == Qt::MoveAction &&
                               m_storage->text().mid(range.location, range.length) == text;
    if (isToBeRemoved)
        edit(range, Text(), TextStorage::EditKind::Other);
}

bool TextView::acceptsDrop(QDropEvent *event) const
{
    // Files are no text; the window opens them.
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
        m_dropPlace.moveTo(event->position(), viewport()->height());
}

void TextView::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_dropPlace.clear();
    event->accept();
}

void TextView::dropEvent(QDropEvent *event)
{
    m_dropPlace.clear();
    if (!acceptsDrop(event))
        return;
    const auto text = textOf(event->mimeData());
    if (!text)
        return;
    commitComposition();
    const qint64 place = m_viewport.caretAt(event->position()).offset;
    // What is moved within the view goes in the same step; moved elsewhere, it goes when the drag
    // has ended.
    const bool isOwn = m_dragged == event->mimeData();
    const bool isMoved = isOwn && event->dropAction() == Qt::MoveAction && selectedText() == *text;
    insertDropped(*text, place, isMoved ? selectedRange() : TextRange{place, 0});
    if (isOwn)
        m_dragged = nullptr;
    // The person goes on where the text went.
    activateWindow();
    setFocus(Qt::MouseFocusReason);
}

void TextView::insertDropped(const Text &text, qint64 place, TextRange removed)
{
    if (removed.length > 0 && place >= removed.location && place <= removed.end())
        return; // Moved to where it is.
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
