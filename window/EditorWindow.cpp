#include "window/EditorWindow.h"

#include "command/CommandShortcut.h"
#include "controls/VerbatimText.h"
#include "platform/desktop/ContextMenu.h"
#include "platform/desktop/WindowFrame.h"
#include "platform/settings/NotificationCenter.h"
#include "window/EditorTabBar.h"
#include "window/EditorWindowController.h"
#include "window/TabListButton.h"
#include "window/TabMimeData.h"
#include "window/TabNames.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QInputMethod>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr QSize kContentSize(900, 650);
constexpr QSize kMinimumSize(520, 360);
constexpr QPoint kNewWindowOffset(40, 40);

constexpr char kFormerFocus[] = "formerFocus"; // Property of a page: its focus before it moved.

using Focus = QPointer<QWidget>;

// Shared by all windows: only one drag can run at a time.
bool &tabIsDragged()
{
    static bool isDragged = false;
    return isDragged;
}

/// Records whether Escape was pressed during a drag. `QDrag` does not report how a drag ended.
class EscapeWatch final : public QObject
{
public:
    EscapeWatch()
    {
        // Installed once the drag runs: the filter installed last is called first, and the drag's
        // own filter consumes key events.
        QTimer::singleShot(0, this, [this] { qApp->installEventFilter(this); });
    }

    [[nodiscard]] bool wasPressed() const { return m_wasPressed; }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride)
            m_wasPressed |= static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
        return false;
    }

private:
    bool m_wasPressed = false;
};

} // namespace

EditorWindow::EditorWindow(UserDefaults *frames)
{
    setMinimumSize(kMinimumSize);
    resize(kContentSize);
    setAttribute(Qt::WA_DeleteOnClose, false); // The controllers own the window.
    setAcceptDrops(true);
    makeContent();
    connectTabBar();
    addShortcuts();
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { updateTitle(); });
    fitToScreen(this);
    if (frames != nullptr && !setFrameAutosaveName(this, u"penwickEditorWindow"_s, *frames))
        centerWindow(this);
}

EditorWindow::~EditorWindow() = default;

void EditorWindow::makeContent()
{
    auto *content = new QWidget(this);
    m_tabBar = new EditorTabBar(content);
    m_tabList = new TabListButton(m_tabBar, content);
    m_pages = new QStackedWidget(content);
    auto *tabs = new QHBoxLayout;
    tabs->addWidget(m_tabBar, 1);
    tabs->addWidget(m_tabList);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(tabs);
    layout->addWidget(m_pages, 1);
    setCentralWidget(content);
    updateTabBar();
}

void EditorWindow::connectTabBar()
{
    connect(m_tabBar, &EditorTabBar::laidOut, this, &EditorWindow::updateTabList);
    connect(m_tabBar, &QTabBar::currentChanged, this, &EditorWindow::currentIndexDidChange);
    connect(
        m_tabBar, &QTabBar::tabMoved, this, [this](int from, int to) { m_tabs.move(from, to); });
    connect(m_tabBar, &EditorTabBar::closeRequested, this, [this](int index) {
        Q_EMIT closeRequested(m_tabs.at(index).controller);
    });
    connect(m_tabBar, &EditorTabBar::tabDraggedOut, this, &EditorWindow::dragTab);
    connect(m_tabBar, &EditorTabBar::menuRequested, this, &EditorWindow::showTabMenu);
    connect(m_tabBar, &EditorTabBar::tabDropped, this, [this](const TabMimeData *mime, int index) {
        mime->dropOn(this, index);
    });
}

void EditorWindow::addShortcuts()
{
    for (const CommandId id : {CommandId::NextTab, CommandId::PreviousTab, CommandId::FullScreen}) {
        connect(makeShortcut(id, this), &QShortcut::activated, this, [this, id] {
            performCommand(id);
        });
    }
}

QList<EditorWindowController *> EditorWindow::controllers() const
{
    QList<EditorWindowController *> controllers;
    for (const Tab &tab : m_tabs)
        controllers << tab.controller;
    return controllers;
}

int EditorWindow::indexOf(const EditorWindowController *controller) const
{
    const auto tab = std::find_if(m_tabs.begin(), m_tabs.end(), [controller](const Tab &t) {
        return t.controller == controller;
    });
    return tab != m_tabs.end() ? static_cast<int>(tab - m_tabs.begin()) : -1;
}

void EditorWindow::setCurrentController(const EditorWindowController *controller)
{
    if (const int index = indexOf(controller); index >= 0)
        m_tabBar->setCurrentIndex(index);
}

void EditorWindow::stepTab(int step)
{
    if (count() > 1)
        m_tabBar->setCurrentIndex((m_tabBar->currentIndex() + step + count()) % count());
}

CommandState EditorWindow::commandState(CommandId id) const
{
    switch (id) {
    case CommandId::NextTab:
    case CommandId::PreviousTab:
    case CommandId::ShowTabList:
        return {count() > 1};
    case CommandId::FullScreen:
        return {true, isFullScreen()};
    default:
        return {id == CommandId::OpenMenuBar};
    }
}

void EditorWindow::performCommand(CommandId id)
{
    switch (id) {
    case CommandId::NextTab:
        return stepTab(1);
    case CommandId::PreviousTab:
        return stepTab(-1);
    case CommandId::ShowTabList:
        return m_tabList->popUp();
    case CommandId::FullScreen:
        return setWindowState(windowState() ^ Qt::WindowFullScreen);
    case CommandId::OpenMenuBar:
        return menuBar()->setActiveAction(menuBar()->actions().value(0));
    default:
        break;
    }
}

void EditorWindow::setTabBarAlwaysVisible(bool stays)
{
    m_tabBarAlwaysVisible = stays;
    updateTabBar();
}

void EditorWindow::insertTab(int index,
                             EditorWindowController *controller,
                             QWidget *page,
                             const TabLabel &label)
{
    const int place = index < 0 ? count() : std::min(index, count());
    m_tabs.insert(place, {controller, page, label, label});
    m_pages->addWidget(page);
    {
        const QSignalBlocker noHalfDoneChange(m_tabBar);
        m_tabBar->insert(place, label);
    }
    nameTabs();
    updateTabBar();
    currentIndexDidChange();
}

void EditorWindow::removeTab(const EditorWindowController *controller)
{
    const int index = indexOf(controller);
    if (index < 0)
        return;
    QWidget *page = m_tabs.takeAt(index).page;
    // A page loses its focus widget when it leaves the window.
    page->setProperty(kFormerFocus, QVariant::fromValue(Focus(page->focusWidget())));
    {
        const QSignalBlocker noHalfDoneChange(m_tabBar);
        m_tabBar->removeTab(index);
    }
    nameTabs();
    // Show the next page first, so that the focus moves to it.
    currentIndexDidChange();
    m_pages->removeWidget(page);
    page->setParent(nullptr);
    updateTabBar();
}

void EditorWindow::moveTab(const EditorWindowController *controller, int index)
{
    const int from = indexOf(controller);
    if (from >= 0)
        m_tabBar->moveTab(from, index < 0 ? count() - 1 : std::min(index, count() - 1));
}

void EditorWindow::setTabLabel(const EditorWindowController *controller, const TabLabel &label)
{
    const int index = indexOf(controller);
    if (index < 0)
        return;
    m_tabs[index].label = label;
    nameTabs();
    updateTitle();
}

/// Updates the names of all tabs: each one depends on the others.
void EditorWindow::nameTabs()
{
    QList<TabLabel> labels;
    for (const Tab &tab : m_tabs)
        labels << tab.label;
    const QStringList names = tabNames(labels);
    for (int i = 0; i < count(); ++i) {
        labels[i].name = names.at(i);
        if (std::exchange(m_tabs[i].shown, labels.at(i)) != labels.at(i))
            m_tabBar->setLabel(i, labels.at(i));
    }
}

void EditorWindow::contentDidChange(const EditorWindowController *controller)
{
    const int index = indexOf(controller);
    if (index >= 0 && controller == m_current && (!focusWidget() || focusWidget() == this))
        focusPage(m_tabs.at(index).page);
}

void EditorWindow::currentIndexDidChange()
{
    const int index = m_tabBar->currentIndex();
    EditorWindowController *current = index >= 0 ? m_tabs.at(index).controller : nullptr;
    if (std::exchange(m_current, current) == current)
        return;
    // A composition belongs to the tab that is left: commit it there.
    QGuiApplication::inputMethod()->commit();
    if (current != nullptr) {
        QWidget *page = m_tabs.at(index).page;
        const bool tabBarHasFocus = m_tabBar->isAncestorOf(focusWidget()) ||
                                    (m_tabBar->isVisible() && m_tabBar == focusWidget());
        m_pages->setCurrentWidget(page);
        if (!tabBarHasFocus)
            focusPage(page);
    }
    updateTitle();
    Q_EMIT currentTabChanged(current);
}

/// Gives the focus to the widget of the page that had it last, otherwise to the page's content.
void EditorWindow::focusPage(QWidget *page)
{
    const auto former = page->property(kFormerFocus).value<Focus>();
    page->setProperty(kFormerFocus, {});
    QWidget *last = former.isNull() ? page->focusWidget() : former.data();
    if (last != nullptr && last != page && last->isVisibleTo(page))
        last->setFocus();
    else
        page->setFocus();
}

void EditorWindow::updateTabBar()
{
    m_tabBar->setVisible(count() > 1 || m_tabBarAlwaysVisible || tabIsDragged());
    updateTabList();
}

void EditorWindow::updateTabList()
{
    // Not compared with the bar's own width, which depends on the button.
    m_tabList->setVisible(!m_tabBar->isHidden() && !m_tabBar->fitsInto(centralWidget()->width()));
}

void EditorWindow::updateTitle()
{
    const int index = indexOf(m_current);
    if (index < 0 || m_tabs.at(index).label.name.isEmpty())
        return;
    const TabLabel &label = m_tabs.at(index).label;
    QString escaped = visibleLine(label.name);
    escaped.replace(u"[*]"_s, u"[*][*]"_s); // Otherwise Qt replaces it by the edited mark.
    setWindowTitle(escaped + u"[*] — "_s + wording::text(u"app.name"_s));
    setWindowModified(label.isEdited);
    setWindowFilePath(label.filePath);
}

void EditorWindow::setTabIsDragged(bool isDragged)
{
    tabIsDragged() = isDragged;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (auto *editorWindow = qobject_cast<EditorWindow *>(window))
            editorWindow->updateTabBar();
}

void EditorWindow::dragTab(int index, const QPoint &hotSpot)
{
    EditorWindowController *tab = m_tabs.at(index).controller;
    if (tab->isRunningMacro())
        return tab->offerToStopMacro();
    auto *mime = new TabMimeData(tab);
    auto *drag = new QDrag(m_tabBar);
    drag->setMimeData(mime);
    drag->setPixmap(m_tabBar->picture(index));
    drag->setHotSpot(hotSpot);
    const QPointer<EditorWindow> self(this);
    const QPointer<TabMimeData> dropped(mime);
    EscapeWatch escape;
    setTabIsDragged(true);
    drag->exec(Qt::MoveAction);
    setTabIsDragged(false);
    if (!self.isNull() && !dropped.isNull())
        endDrag(*dropped, hotSpot, escape.wasPressed());
}

void EditorWindow::endDrag(const TabMimeData &mime, const QPoint &hotSpot, bool isCancelled)
{
    EditorWindowController *tab = mime.tab();
    if (tab == nullptr || tab->window() != this || QApplication::activeModalWidget() != nullptr)
        return;
    EditorWindow *target = mime.target();
    if (target == this) {
        const int from = indexOf(tab);
        const int before = mime.targetIndex();
        moveTab(tab, before > from ? before - 1 : before);
    } else if (target != nullptr) {
        tab->moveTo(target->shared_from_this(), mime.targetIndex());
        target->setCurrentController(tab);
        target->activateWindow();
    } else if (!isCancelled) {
        const QPoint inWindow = m_tabBar->mapTo(this, hotSpot) + (geometry().topLeft() - pos());
        Q_EMIT moveToNewWindowRequested(tab, QCursor::pos() - inWindow);
    }
}

const TabMimeData *EditorWindow::tabFromElsewhere(const QMimeData *mime) const
{
    const TabMimeData *tab = TabMimeData::of(mime);
    return tab != nullptr && indexOf(tab->tab()) < 0 ? tab : nullptr;
}

void EditorWindow::dragEnterEvent(QDragEnterEvent *event)
{
    dragMoveEvent(event);
}

// Accepts a tab of another window anywhere in this window. A tab of this window is accepted by the
// bar only: dropped on the text it moves to a new window, because a maximised window leaves no
// other place to drop it.
void EditorWindow::dragMoveEvent(QDragMoveEvent *event)
{
    if (tabFromElsewhere(event->mimeData()) == nullptr)
        return event->ignore();
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void EditorWindow::dropEvent(QDropEvent *event)
{
    const TabMimeData *tab = tabFromElsewhere(event->mimeData());
    if (tab == nullptr)
        return event->ignore();
    tab->dropOn(this, -1);
    event->setDropAction(Qt::MoveAction);
    event->accept();
}

void EditorWindow::showTabMenu(int index, const QPoint &globalPosition)
{
    const QPointer<EditorWindowController> tab(m_tabs.at(index).controller);
    auto *menu = new QMenu(this);
    const auto add = [menu](const QString &title, const auto &action) {
        return menu->addAction(verbatimText(title), menu, action);
    };
    add(wording::text(u"editor.tab.close"_s), [this, tab] {
        if (indexOf(tab) >= 0)
            Q_EMIT closeRequested(tab);
    });
    add(wording::text(u"editor.tab.closeOthers"_s), [this, tab] {
        if (indexOf(tab) >= 0)
            Q_EMIT closeOthersRequested(tab);
    })->setEnabled(count() > 1);
    menu->addSeparator();
    add(wording::text(u"editor.tab.moveToNewWindow"_s), [this, tab] {
        if (indexOf(tab) >= 0)
            Q_EMIT moveToNewWindowRequested(tab, newWindowPosition());
    })->setEnabled(count() > 1);
    popUpContextMenu(menu, globalPosition);
}

QPoint EditorWindow::newWindowPosition() const
{
    return pos() + kNewWindowOffset;
}

} // namespace penwick
