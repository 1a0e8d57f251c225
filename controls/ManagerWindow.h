#pragma once

#include "platform/settings/UserDefaults.h"

#include <QMainWindow>

#include <functional>

namespace penwick {

/// A window of the application that shows no document. Closing hides it: it is created once and
/// shown again. Its frame is stored under a name.
class ManagerWindow final : public QMainWindow
{
    Q_OBJECT

public:
    /// The position of a window whose name has no stored frame. If another window uses the name,
    /// this one is always centered.
    enum class InitialPosition { Origin, Center };

    /// \param frameName as for `setFrameAutosaveName`.
    /// \param contentSize, minimumSize in device-independent pixels.
    /// \param defaults not owned; must outlive the window.
    ManagerWindow(QString frameName,
                  QSize contentSize,
                  QSize minimumSize,
                  InitialPosition firstPlace,
                  UserDefaults &defaults);

    /// Shows the window, restores it if it is minimised, and brings it to the front.
    void showInFront();

    /// Sets the function that is called before the window closes; false keeps it open.
    void setCloseGuard(std::function<bool()> mayClose);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void keepFrame();

    const QString m_frameName;
    UserDefaults &m_defaults;
    std::function<bool()> m_closeGuard;
    bool m_wasHidden = false;
};

} // namespace penwick
