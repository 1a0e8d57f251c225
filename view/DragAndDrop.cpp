#include "view/DragAndDrop.h"

#include "view/TextMimeData.h"
#include "view/TextSegments.h"

#include <QDrag>
#include <QFontMetrics>
#include <QPainter>
#include <QPointer>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace penwick {

namespace {

constexpr int kScrollInterval = 30; // Milliseconds.

/// Draws the picture at the mouse pointer while `text` is dragged out of `view`: the beginning of
/// its first line.
QPixmap dragPicture(const Text &text, const QWidget *view)
{
    constexpr qint64 kMostUnits = 60;
    constexpr int kMostWidth = 240;
    constexpr int kMargin = 4;
    const qint64 lineEnd = segments::lineAt(text, 0).end;
    const qint64 end = text.clusterBoundaryAtOrBefore(std::min(lineEnd, kMostUnits));
    QString line = text.slice(0, end).simplified();
    if (end < text.size())
        line += QChar(0x2026);
    const QFontMetrics metrics(view->font());
    const qreal scale = view->devicePixelRatioF();
    const QPalette &palette = view->palette();
    line = metrics.elidedText(line, Qt::ElideRight, kMostWidth);
    const QSize size(metrics.horizontalAdvance(line) + 2 * kMargin, metrics.height() + kMargin);
    QPixmap pixmap(QSize(static_cast<int>(std::ceil(size.width() * scale)),
                         static_cast<int>(std::ceil(size.height() * scale))));
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(palette.color(QPalette::Active, QPalette::Highlight));
    QPainter painter(&pixmap);
    painter.setFont(view->font());
    painter.setPen(palette.color(QPalette::Active, QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter | Qt::TextSingleLine, line);
    return pixmap;
}

} // namespace

DragAndDrop::DragAndDrop(QWidget *view,
                         TextViewport *viewport,
                         TextEditing *editing,
                         InputMethod *inputMethod,
                         std::function<void()> targetChanged)
    : m_view(view)
    , m_viewport(viewport)
    , m_editing(editing)
    , m_inputMethod(inputMethod)
    , m_targetChanged(std::move(targetChanged))
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
    drag->setPixmap(dragPicture(text, m_view));
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
    if (!accepts(event))
        return;
    m_point = event->position();
    if (scrollDistance().isNull())
        m_scrollTimer.stop();
    else if (!m_scrollTimer.isActive())
        m_scrollTimer.start(kScrollInterval, this);
    updateTarget();
}

void DragAndDrop::updateTarget()
{
    m_target = m_viewport->caretAt(m_point);
    m_targetChanged();
}

void DragAndDrop::clearTarget()
{
    m_scrollTimer.stop();
    if (std::exchange(m_target, std::nullopt))
        m_targetChanged();
}

/// Returns the logical pixels to scroll per timer event, more the nearer the drag is to the edge; 0
/// outside the stripes that scroll.
QPointF DragAndDrop::scrollDistance() const
{
    const auto distance = [this](qreal place, qreal size) {
        const qreal stripe = std::min(m_viewport->style().rowHeight, size / 4);
        if (place < stripe)
            return (place - stripe) / 3 - 1;
        const qreal beyond = place - (size - stripe);
        return beyond > 0 ? beyond / 3 + 1 : 0;
    };
    const QSizeF size = m_viewport->size();
    return {m_viewport->scrollsSideways() ? distance(m_point.x(), size.width()) : 0,
            distance(m_point.y(), size.height())};
}

void DragAndDrop::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_scrollTimer.timerId())
        return;
    const QPointF distance = scrollDistance();
    m_viewport->scrollByPixels(distance.y());
    if (distance.x() != 0)
        m_viewport->scrollSidewaysBy(distance.x());
    updateTarget();
}

void DragAndDrop::leave(QDragLeaveEvent *event)
{
    clearTarget();
    event->accept();
}

void DragAndDrop::drop(QDropEvent *event)
{
    clearTarget();
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
