#include "app/FileDrop.h"

#include "editor/TextMimeData.h"

#include <QApplication>
#include <QDropEvent>
#include <QWidget>

#include <utility>

namespace penwick {

FileDrop::FileDrop(IsTarget isTarget, Open open, QObject *parent)
    : QObject(parent)
    , m_isTarget(std::move(isTarget))
    , m_open(std::move(open))
{
    qApp->installEventFilter(this);
}

bool FileDrop::eventFilter(QObject *watched, QEvent *event)
{
    const bool isDrop = event->type() == QEvent::Drop;
    if (!isDrop && event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove)
        return false;
    // A window behind an open question takes nothing.
    const auto *widget = qobject_cast<const QWidget *>(watched);
    if (widget == nullptr || QApplication::activeModalWidget() != nullptr ||
        !m_isTarget(widget->window()))
        return false;
    auto *drop = static_cast<QDropEvent *>(event);
    const QStringList paths = localFilesOf(drop->mimeData());
    if (paths.isEmpty())
        return false;
    // Never a move: the files stay where they are.
    const bool canCopy = drop->possibleActions().testFlag(Qt::CopyAction);
    drop->setDropAction(canCopy ? Qt::CopyAction : Qt::LinkAction);
    drop->accept();
    if (isDrop)
        QMetaObject::invokeMethod(
            this, [this, paths] { m_open(paths); }, Qt::QueuedConnection);
    return true;
}

} // namespace penwick
