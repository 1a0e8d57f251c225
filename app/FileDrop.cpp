#include "app/FileDrop.h"

#include "app/OpenDialogs.h"
#include "view/TextMimeData.h"

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
    const auto *widget = qobject_cast<const QWidget *>(watched);
    if (widget == nullptr || !m_isTarget(widget->window()) || OpenDialogs::block(widget->window()))
        return false;
    auto *drop = static_cast<QDropEvent *>(event);
    const QStringList paths = localFilesOf(drop->mimeData());
    if (paths.isEmpty())
        return false;
    // Offer no move: the files stay where they are.
    const bool canCopy = drop->possibleActions().testFlag(Qt::CopyAction);
    drop->setDropAction(canCopy ? Qt::CopyAction : Qt::LinkAction);
    drop->accept();
    const auto open = [this, paths] { m_open(paths); };
    if (isDrop)
        QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
    return true;
}

} // namespace penwick
