#pragma once

#include "command/Command.h"
#include "platform/settings/UserDefaults.h"
#include "window/TabLabel.h"

#include <QList>
#include <QMainWindow>
#include <QPoint>

#include <memory>

class QMimeData;
class QStackedWidget;

namespace penwick {

class EditorTabBar;
class EditorWindowController;
class TabListButton;
class TabMimeData;

/// A top-level window with documents in tabs. Its title and edited mark are those of the current
/// tab. The tab bar is visible when there are at least two tabs, always after
/// `setTabBarAlwaysVisible(true)`, and in every window while a tab is dragged.
///
/// The controllers of its tabs own the window: it is destroyed with the last of them, or when the
/// last one moves to another window. Create it with `std::make_shared`.
class EditorWindow final : public QMainWindow,
                           public CommandTarget,
                           public std::enable_shared_from_this<EditorWindow>
{
    Q_OBJECT

public:
    /// Makes an empty window; does not show it.
    /// \param frames stores the window's frame; not owned, must outlive this. Null for a window
    ///        that is never shown.
    explicit EditorWindow(UserDefaults *frames = nullptr);
    ~EditorWindow() override;

    /// Returns the controllers in the order of their tabs.
    [[nodiscard]] QList<EditorWindowController *> controllers() const;

    [[nodiscard]] int count() const { return static_cast<int>(m_tabs.size()); }

    /// Returns the index of the controller's tab; -1 for a controller of another window.
    [[nodiscard]] int indexOf(const EditorWindowController *controller) const;

    /// The controller of the current tab; null in an empty window.
    [[nodiscard]] EditorWindowController *currentController() const { return m_current; }

    /// Makes the controller's tab current and gives the focus back to the widget in it that had it
    /// last. Ignores a controller of another window.
    void setCurrentController(const EditorWindowController *controller);
    /// Makes another tab current.
    /// \param step how many tabs forward, negative for backward; wraps around at either end.
    void stepTab(int step);

    [[nodiscard]] CommandState commandState(CommandId id) const override;
    /// Carries out the commands of `CommandPlace::Window`.
    void performCommand(CommandId id) override;

    [[nodiscard]] EditorTabBar *tabBar() const { return m_tabBar; }

    /// Keeps the bar visible with a single tab too, so that the tab can be dragged back.
    void setTabBarAlwaysVisible(bool stays);

    /// Adds a tab. This and the next functions are for the controllers.
    /// \param index -1 for after the last tab.
    /// \param controller, page not owned.
    void
    insertTab(int index, EditorWindowController *controller, QWidget *page, const TabLabel &label);
    void removeTab(const EditorWindowController *controller);
    void moveTab(const EditorWindowController *controller, int index);
    void setTabLabel(const EditorWindowController *controller, const TabLabel &label);
    /// Call after the content of the tab was replaced. Moves the focus into the new content when
    /// the tab is current and no other widget of the window has the focus.
    void contentDidChange(const EditorWindowController *controller);

Q_SIGNALS:
    /// Emitted when another tab has become current. Null after the last tab was removed.
    void currentTabChanged(penwick::EditorWindowController *controller);
    /// Emitted when the user asks to close the tab. The window only forwards this request and the
    /// next two.
    void closeRequested(penwick::EditorWindowController *controller);
    void closeOthersRequested(penwick::EditorWindowController *controller);
    /// \param position for the top left of the new window's frame, on the screen.
    void moveToNewWindowRequested(penwick::EditorWindowController *controller,
                                  const QPoint &position);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct Tab
    {
        EditorWindowController *controller;
        QWidget *page;
        TabLabel label;
        TabLabel shown; ///< `label` with the name from `tabNames`.
    };

    void makeContent();
    void connectTabBar();
    void addShortcuts();
    void currentIndexDidChange();
    void focusPage(QWidget *page);
    void nameTabs();
    void updateTabBar();
    void updateTabList();
    void updateTitle();
    void dragTab(int index, const QPoint &hotSpot);
    void endDrag(const TabMimeData &mime, const QPoint &hotSpot, bool isCancelled);
    void showTabMenu(int index, const QPoint &globalPosition);
    [[nodiscard]] QPoint newWindowPosition() const;
    [[nodiscard]] const TabMimeData *tabFromElsewhere(const QMimeData *mime) const;
    static void setTabIsDragged(bool isDragged);

    QList<Tab> m_tabs;
    EditorWindowController *m_current = nullptr;
    EditorTabBar *m_tabBar = nullptr;
    TabListButton *m_tabList = nullptr;
    QStackedWidget *m_pages = nullptr;
    bool m_tabBarAlwaysVisible = false;
};

} // namespace penwick
