#pragma once

#include "controls/ManagerWindow.h"
#include "wording/ProfileManagerView.h"

#include <QObject>

namespace penwick {

/// Owns the window that shows all wording profiles.
class ProfileManagerWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Creates the window but does not show it.
    /// \param defaults stores the window's frame; not owned, must outlive this.
    ProfileManagerWindowController(const ProfileManagerView::Services &services,
                                   UserDefaults &defaults,
                                   QObject *parent = nullptr);
    /// Shows the window and brings it to the front.
    void showWindow();

    [[nodiscard]] QMainWindow *window() { return &m_window; }

    [[nodiscard]] ProfileManagerView *view() const { return m_view; }

private:
    void setTitle();

    ManagerWindow m_window;
    ProfileManagerView *m_view;
};

} // namespace penwick
