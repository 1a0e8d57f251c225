#include "app/FileDrop.h"

#include "view/TextMimeData.h"

#include <QApplication>
#include <QDropEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

/// True when a modal dialog blocks the window, which then accepts no files. The notice of a running
/// macro blocks its own window only.
bool isBlockedByDialog(const QWidget *window)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [window](const QWidget *other) {
        if (other == window || !other->isVisible() || !other->isModal())
            return false;
        return other->windowModality() == Qt::ApplicationModal ||
               other->parentWidget() == nullptr || other->parentWidget()->window() == window;
    });
}

} // namespace

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
    if (widget == nullptr || !m_isTarget(widget->window()) || isBlockedByDialog(widget->window()))
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
