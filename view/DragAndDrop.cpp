#include "view/DragAndDrop.h"

#include "view/DragPicture.h"
#include "view/TextMimeData.h"

#include <QDrag>
#include <QPointer>

#include <utility>

namespace penwick {

DragAndDrop::DragAndDrop(QWidget *view,
                         TextViewport *viewport,
                         TextEditing *editing,
                         InputMethod *inputMethod,
                         std::function<void()> targetChanged)
    : m_view(view)
    , m_viewport(viewport)
    , m_editing(editing)
    , m_inputMethod(inputMethod)
    , m_target(viewport, std::move(targetChanged))
    , m_runner(
          [](QDrag *drag) { return drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction); })
{
}

void DragAndDrop::drag()
{
    const TextRange range = m_editing->selection().range();
    const Text text = m_editing->selection().text();
    auto *mime = new TextMimeData(text);
    auto *drag = new QDrag(m_view); // Deletes itself.
    drag->setMimeData(mime);
    drag->setPixmap(
        dragPicture(text, m_view->font(), m_view->palette(), m_view->devicePixelRatioF()));
    m_dragged = mime;
    const QPointer<QWidget> view(m_view);
    const Qt::DropAction action = m_runner(drag);
    if (view.isNull()) // The window was closed during the drag.
        return;
    // A drop in this view has already moved the text. During the drag, a macro may have changed the
    // text: delete the range only if it still holds what was dragged.
    const bool isToBeRemoved = std::exchange(m_dragged, nullptr) != nullptr &&
                               action == Qt::MoveAction &&
                               m_viewport->text().mid(range.location, range.length) == text;
    if (isToBeRemoved)
        m_editing->edit(range, Text(), TextEditing::Kind::Other);
}

bool DragAndDrop::accepts(QDropEvent *event)
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

void DragAndDrop::move(QDragMoveEvent *event)
{
    if (accepts(event))
        m_target.moveTo(event->position());
}

void DragAndDrop::leave(QDragLeaveEvent *event)
{
    m_target.clear();
    event->accept();
}

void DragAndDrop::drop(QDropEvent *event)
{
    m_target.clear();
    if (!accepts(event))
        return;
    const auto text = textOf(event->mimeData());
    if (!text)
        return;
    m_inputMethod->commit();
    const qint64 place = m_viewport->caretAt(event->position()).offset;
    // A move within the view deletes the source in the same undo step; a move to elsewhere deletes
    // it when the drag has ended.
    const TextSelection &selection = m_editing->selection();
    const bool isOwn = m_dragged == event->mimeData();
    const bool isMoved =
        isOwn && event->dropAction() == Qt::MoveAction && selection.text() == *text;
    m_editing->insertDropped(*text, place, isMoved ? selection.range() : TextRange{place, 0});
    if (isOwn)
        m_dragged = nullptr;
    // The user continues where the text was dropped.
    m_view->activateWindow();
    m_view->setFocus(Qt::MouseFocusReason);
}

} // namespace penwick
