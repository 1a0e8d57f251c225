#pragma once

#include "controls/ManagerWindow.h"
#include "macro/library/MacroManagerView.h"

#include <QObject>

namespace penwick {

/// Owns the window for managing macros.
class MacroManagerWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Makes the window; does not show it.
    /// \param defaults stores the window's frame; not owned, must outlive this.
    MacroManagerWindowController(const MacroManagerView::Services &services,
                                 UserDefaults &defaults,
                                 QObject *parent = nullptr);

    /// Shows the window and brings it to the front.
    void showWindow();

    /// Asks about unsaved edits, if there are any. Returns false when the user cancels.
    [[nodiscard]] bool mayClose();

    [[nodiscard]] QMainWindow *window() { return &m_window; }

    [[nodiscard]] MacroManagerView *view() const { return m_view; }

private:
    void handleProfileDidChange();

    ManagerWindow m_window;
    MacroManagerView *m_view;
};

} // namespace penwick
