#include "controls/ManagerWindow.h"

#include "platform/desktop/WindowFrame.h"

#include <QCloseEvent>
#include <QScreen>
#include <QShortcut>

#include <utility>

namespace penwick {

ManagerWindow::ManagerWindow(QString frameName,
                             QSize contentSize,
                             QSize minimumSize,
                             InitialPosition firstPlace,
                             UserDefaults &defaults)
    : m_frameName(std::move(frameName))
    , m_defaults(defaults)
{
    resize(contentSize);
    setMinimumSize(minimumSize);
    fitToScreen(this);
    move(screen()->availableGeometry().topLeft());
    if (firstPlace == InitialPosition::Center)
        centerWindow(this);
    keepFrame();
    auto *close = new QShortcut(QKeySequence::Close, this);
    connect(close, &QShortcut::activated, this, &QWidget::close);
}

void ManagerWindow::keepFrame()
{
    if (!setFrameAutosaveName(this, m_frameName, m_defaults))
        centerWindow(this);
}

void ManagerWindow::showInFront()
{
    if (m_wasHidden) {
        fitToScreen(this);
        keepFrame(); // Hiding the window freed its frame name.
    }
    m_wasHidden = false;
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
}

void ManagerWindow::setCloseGuard(std::function<bool()> mayClose)
{
    m_closeGuard = std::move(mayClose);
}

void ManagerWindow::closeEvent(QCloseEvent *event)
{
    if (m_closeGuard && !m_closeGuard()) {
        event->ignore();
        return;
    }
    event->accept();
    m_wasHidden = true;
}

} // namespace penwick
