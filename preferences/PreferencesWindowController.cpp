#include "preferences/PreferencesWindowController.h"

#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QLineEdit>
#include <QShortcut>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kContentSize(640, 560);
constexpr QSize kMinimumSize(360, 280);

} // namespace

PreferencesWindowController::PreferencesWindowController(const PreferencesView::Services &services,
                                                         UserDefaults &defaults,
                                                         QObject *parent)
    : QObject(parent)
    , m_window(u"PreferencesWindow"_s,
               kContentSize,
               kMinimumSize,
               ManagerWindow::InitialPosition::Center,
               defaults)
    , m_view(new PreferencesView(services))
{
    m_window.setCentralWidget(m_view);
    m_window.setCloseGuard([this] {
        m_view->commit();
        return true;
    });
    auto *escape = new QShortcut(Qt::Key_Escape, &m_window);
    connect(escape, &QShortcut::activated, &m_window, &QWidget::close);
    setTitle();
    services.center.addObserver(UIWordingProfileDidChange, this, [this] { setTitle(); });
}

void PreferencesWindowController::setTitle()
{
    m_window.setWindowTitle(wording::text(u"menu.settings"_s));
}

void PreferencesWindowController::showWindow()
{
    if (!m_window.isVisible()) {
        m_view->searchField()->clear();
        m_view->searchField()->setFocus();
    }
    m_window.showInFront();
}

} // namespace penwick
