#pragma once

#include "controls/ManagerWindow.h"
#include "preferences/PreferencesView.h"

#include <QObject>

namespace penwick {

/// Owns the window that shows all settings. Escape closes it.
class PreferencesWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Creates the window but does not show it.
    /// \param defaults stores the window's frame; not owned, must outlive this.
    PreferencesWindowController(const PreferencesView::Services &services,
                                UserDefaults &defaults,
                                QObject *parent = nullptr);
    /// Shows the window and brings it to the front.
    void showWindow();

    [[nodiscard]] QMainWindow *window() { return &m_window; }

    [[nodiscard]] PreferencesView *view() const { return m_view; }

private:
    void setTitle();

    ManagerWindow m_window;
    PreferencesView *m_view;
};

} // namespace penwick
