#pragma once

#include "macro/engine/TabLabel.h"
#include "platform/UserDefaults.h"

#include <QList>
#include <QMainWindow>
#include <QPoint>

#include <memory>

class QMimeData;
class QStackedWidget;

namespace penwick {

class EditorTabBar;
class EditorWindowController;
class TabMimeData;

/// A top-level window with documents in tabs, one of them in front; title and edited mark are those
/// of the front tab. The bar with the tabs shows from the second tab on, in a window that a tab was
/// dragged out to always, and everywhere while a tab is dragged.
///
/// It belongs to the controllers whose tabs stand in it: the last one to leave takes it along. Make
/// it by `std::make_shared`.
class EditorWindow final : public QMainWindow, public std::enable_shared_from_this<EditorWindow>
{
    Q_OBJECT

public:
    /// Makes an empty window; it is not shown.
    /// \param frames where the window's frame is remembered; not owned, must outlive this. Null for
    ///        a window that is never shown.
    explicit EditorWindow(UserDefaults *frames = nullptr);
    ~EditorWindow() override;

    /// In the order of their tabs.
    [[nodiscard]] QList<EditorWindowController *> controllers() const;

    [[nodiscard]] int count() const { return static_cast<int>(m_tabs.size()); }

    /// -1 for a controller whose tab stands elsewhere.
    [[nodiscard]] int indexOf(const EditorWindowController *controller) const;

    /// The controller of the tab in front; null in an empty window.
    [[nodiscard]] EditorWindowController *currentController() const { return m_current; }

    /// Brings a tab to the front of the window and puts the keyboard where it was in it. A
    /// controller whose tab stands elsewhere is ignored.
    void setCurrentController(const EditorWindowController *controller);
    /// \param step how many tabs farther; goes on at the other end.
    void stepTab(int step);

    [[nodiscard]] EditorTabBar *tabBar() const { return m_tabBar; }

    /// Keeps the bar in sight with a single tab too, so that it can be dragged back.
    void setTabBarStays(bool stays);

    /// For the controllers, which put in what they show, and take it out again. `index` is -1 for
    /// behind all.
    /// \param page not owned.
    void
    insertTab(int index, EditorWindowController *controller, QWidget *page, const TabLabel &label);
    void removeTab(const EditorWindowController *controller);
    void moveTab(const EditorWindowController *controller, int index);
    void setTabLabel(const EditorWindowController *controller, const TabLabel &label);
    /// The content of the tab has changed. Where the keyboard was in it, it is in the new one.
    void contentDidChange(const EditorWindowController *controller);

Q_SIGNALS:
    /// Another tab is in front, or the content has gone with the last one (null).
    void currentTabChanged(penwick::EditorWindowController *controller);
    /// The person wants the tab closed, or all others of the window, or the tab in a window of its
    /// own. Nothing has happened yet.
    void closeRequested(penwick::EditorWindowController *controller);
    void closeOthersRequested(penwick::EditorWindowController *controller);
    /// \param position of the window's frame, on the screen.
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
        TabLabel shown; ///< With the name that tells it apart.
    };

    void makeContent();
    void connectTabBar();
    void addShortcuts();
    void currentIndexDidChange();
    void focusPage(QWidget *page);
    void nameTabs();
    void updateTabBar();
    void updateTitle();
    void dragTab(int index, const QPoint &hotSpot);
    void endDrag(const TabMimeData &mime, const QPoint &hotSpot, bool isGivenUp);
    void showTabMenu(int index, const QPoint &globalPosition);
    [[nodiscard]] QPoint besideThis() const;
    [[nodiscard]] const TabMimeData *tabFromElsewhere(const QMimeData *mime) const;
    static void setTabIsDragged(bool isDragged);

    QList<Tab> m_tabs;
    EditorWindowController *m_current = nullptr;
    EditorTabBar *m_tabBar = nullptr;
    QStackedWidget *m_pages = nullptr;
    bool m_tabBarStays = false;
};

} // namespace penwick
