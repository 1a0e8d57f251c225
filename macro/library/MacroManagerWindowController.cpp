#include "macro/library/MacroManagerWindowController.h"

#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr QSize kContentSize(800, 600);
constexpr QSize kMinimumSize(600, 400);

} // namespace

MacroManagerWindowController::MacroManagerWindowController(
    const MacroManagerView::Services &services, UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_window(u"penwickMacroManagerWindow"_s,
               kContentSize,
               kMinimumSize,
               ManagerWindow::InitialPosition::Origin,
               defaults)
    , m_view(new MacroManagerView(services))
{
    m_window.setCentralWidget(m_view);
    m_window.setCloseGuard([this] { return mayClose(); });
    handleProfileDidChange();
    services.center.addObserver(
        UIWordingProfileDidChange, this, [this] { handleProfileDidChange(); });
}

void MacroManagerWindowController::handleProfileDidChange()
{
    m_window.setWindowTitle(wording::text(u"macro.manageWindowTitle"_s));
}

void MacroManagerWindowController::showWindow()
{
    m_window.showInFront();
}

bool MacroManagerWindowController::mayClose()
{
    return m_view->resolveUnsavedEdits();
}

} // namespace penwick
