#include "wording/ProfileManagerWindowController.h"

#include "wording/WordingLookup.h"

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kContentSize(900, 650);
constexpr QSize kMinimumSize(650, 420);

} // namespace

ProfileManagerWindowController::ProfileManagerWindowController(
    const ProfileManagerView::Services &services, UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_window(u"ProfileManagerWindow"_s,
               kContentSize,
               kMinimumSize,
               ManagerWindow::InitialPosition::Center,
               defaults)
    , m_view(new ProfileManagerView(services))
{
    m_window.setCentralWidget(m_view);
    setTitle();
    services.center.addObserver(UIWordingProfileDidChange, this, [this] { setTitle(); });
}

void ProfileManagerWindowController::setTitle()
{
    m_window.setWindowTitle(wording::text(u"profile.manageWindowTitle"_s));
}

void ProfileManagerWindowController::showWindow()
{
    m_window.showInFront();
}

} // namespace penwick
