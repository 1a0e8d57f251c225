#pragma once

#include "platform/UserDefaults.h"

#include <QMainWindow>

#include <functional>

namespace penwick {

/// A window of the application beside its documents. Closing hides it: it is made once and shown
/// again. Its place and size are kept under a name.
class ManagerWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// Where a window stands that was never shown before, or whose name another one holds.
    enum class FirstPlace { Origin, Center };

    /// \param frameName as `setFrameAutosaveName` takes it.
    /// \param contentSize, minimumSize in points.
    /// \param defaults not owned; must outlive the window.
    ManagerWindow(QString frameName,
                  QSize contentSize,
                  QSize minimumSize,
                  FirstPlace firstPlace,
                  UserDefaults &defaults);

    /// Shows the window, out of the dock if need be, and brings it to the front.
    void showInFront();

    /// Asked before the window closes; false keeps it open.
    void setMayClose(std::function<bool()> mayClose);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void keepFrame();

    const QString m_frameName;
    UserDefaults &m_defaults;
    std::function<bool()> m_mayClose;
    bool m_wasHidden = false;
};

} // namespace penwick
