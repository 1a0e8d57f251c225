#include "app/AppDelegate.h"

#include "app/AboutPanel.h"
#include "app/MacroMenu.h"
#include "app/ScriptHostReport.h"
#include "app/TestMacros.h"
#include "macro/library/MacroManager.h"
#include "macro/script/ScriptHostPool.h"
#include "platform/NotificationCenter.h"
#include "platform/StandardOutput.h"
#include "wording/UIWordingProfileManager.h"

#include <QApplication>
#include <QSessionManager>
#include <QTimer>
#include <QWindow>

#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kAfterStartUp = 1000; // Milliseconds.
constexpr int kAwaitedRequest = 30'000;

} // namespace

AppDelegate::AppDelegate(Clock clock, FilePanels panels, QObject *parent)
    : QObject(parent)
    , m_clock(std::move(clock))
    , m_panels(std::move(panels))
    , m_requests(&m_documents,
                 [this]() -> QWidget * {
                     const auto editor = targetEditor();
                     return editor != nullptr ? editor->window() : nullptr;
                 })
    , m_fileDrop(
          [this](const QWidget *window) { return m_documents.controllerOf(window) != nullptr; },
          [this](const QStringList &paths) { openFiles(paths); })
    , m_launcher([this] { return targetEditor(); }, m_clock)
{
    // A window opened at any later time comes with a bar of its own.
    connect(&m_documents, &DocumentController::windowMade, this, &AppDelegate::prepareWindow);
    connect(&m_documents,
            &DocumentController::controllerMade,
            this,
            [this](EditorWindowController *controller) {
                connect(controller,
                        &EditorWindowController::macroFailedInLine,
                        this,
                        [this](const QString &code, int line) {
                            if (m_macroManager != nullptr)
                                m_macroManager->view()->markErrorLine(code, line);
                        });
            });
}

AppDelegate::~AppDelegate()
{
    ScriptHostPool::shared().setKeepsSpare(false);
    ScriptHostPool::shared().discard();
}

void AppDelegate::applicationDidFinishLaunching(const std::optional<OpenRequest> &request)
{
    QApplication::setQuitOnLastWindowClosed(true);
    // Before the first text is looked up, so that it comes from the remembered profile.
    static_cast<void>(UIWordingProfileManager::shared());
    QCoreApplication::installTranslator(&m_translator);
    if (m_updaterController == nullptr) {
        m_updaterController = makeStandardUpdaterController();
    }
    MacroManager::shared().installBuiltInMacros();
    buildMenuBars();
    m_cancellables << connect(&MacroManager::shared(),
                              &MacroManager::macrosChanged,
                              this,
                              &AppDelegate::rebuildMacroMenus,
                              Qt::QueuedConnection);
    // A subscriber gets the present list too, in a later turn.
    QMetaObject::invokeMethod(this, &AppDelegate::rebuildMacroMenus, Qt::QueuedConnection);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { handleProfileDidChange(); });
    connect(&m_signals, &TerminationSignals::received, this, &AppDelegate::quitOnSignal);
    m_rescue.emplace(&m_documents);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &AppDelegate::commitSession);
    // Whoever comes back to penwick may have edited its files elsewhere.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            MacroManager::shared().takeInChangesFromElsewhere();
            UIWordingProfileManager::shared().takeInChangesFromElsewhere();
        }
    });
    if (request) {
        openFirst(*request);
    } else {
        QTimer::singleShot(kAwaitedRequest, this, &AppDelegate::endWithoutDocuments);
    }
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this] {
        windowDidBecomeMain(QApplication::activeWindow());
    });
    windowDidBecomeMain(QApplication::activeWindow());
    // Later, so that it takes nothing from the start-up.
    QTimer::singleShot(kAfterStartUp, this, &AppDelegate::prepareScriptHost);
}

void AppDelegate::openFirst(const OpenRequest &request)
{
    if (!request.items.isEmpty()) {
        m_requests.open(request);
    }
    if (!m_documents.hasDocuments()) {
        m_documents.newDocument();
    }
}

void AppDelegate::endWithoutDocuments()
{
    if (!m_documents.hasDocuments()) {
        terminate();
    }
}

void AppDelegate::prepareScriptHost()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    if (const auto memory = scriptMemory(UserDefaults::standard()))
        pool.setMemory(*memory);
    pool.setKeepsSpare(true);
    QTimer::singleShot(kAfterStartUp, this, &AppDelegate::tryEngine);
}

// An update of the engine or of the kernel can make every macro fail; better told now than when a
// macro is needed.
void AppDelegate::tryEngine()
{
    m_engineCheck = std::make_unique<EngineCheck>(ScriptHostPool::shared());
    connect(m_engineCheck.get(), &EngineCheck::ended, this, [this] {
        reportTrial(m_engineCheck->trial());
        m_engineCheck.release()->deleteLater(); // It is what called.
    });
}

void AppDelegate::reportTrial(const EngineTrial &trial)
{
    const QString missing = missingWalls(trial.protection);
    if (!missing.isEmpty()) {
        printLine(u"Macros run without: "_s + missing);
    }
    const QString failure = engineLogLine(trial);
    if (!failure.isEmpty()) {
        writeErrorLine(u"penwick: "_s + failure);
    }
#ifndef __SANITIZE_ADDRESS__ // Such a build has no walls on purpose.
    const QString warning = engineWarning(trial);
    const auto editor = targetEditor();
    if (!warning.isEmpty() && editor != nullptr) {
        editor->showMacroMessage(NotificationType::Warning, warning);
    }
#endif
}

void AppDelegate::openFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        m_documents.openFile(path);
    }
}

std::shared_ptr<EditorWindowController> AppDelegate::targetEditor() const
{
    auto controller = m_documents.controllerOf(QApplication::activeWindow());
    return controller != nullptr ? controller : m_lastActiveEditorWindowController;
}

void AppDelegate::windowDidBecomeMain(QWidget *window)
{
    if (auto controller = m_documents.controllerOf(window)) {
        m_lastActiveEditorWindowController = std::move(controller);
    }
}

void AppDelegate::prepareWindow(EditorWindow *window)
{
    buildMenuBar(window, menuHandlers());
    rebuildMacroMenu(*window);
    connect(window, &EditorWindow::currentTabChanged, this, [this, window] {
        currentTabDidChange(window);
    });
}

// Who comes to the front of the main window takes its place. A manager in front of both changes
// nothing about whose window the person comes from.
void AppDelegate::currentTabDidChange(EditorWindow *window)
{
    const bool wasMain = m_lastActiveEditorWindowController != nullptr &&
                         m_lastActiveEditorWindowController->window() == window;
    if (wasMain || QApplication::activeWindow() == window) {
        windowDidBecomeMain(window);
    }
}

void AppDelegate::handleProfileDidChange()
{
    buildMenuBars();
}

void AppDelegate::buildMenuBars()
{
    for (const auto &window : m_documents.windows()) {
        buildMenuBar(window.get(), menuHandlers());
    }
    rebuildMacroMenus();
}

void AppDelegate::rebuildMacroMenus()
{
    for (const auto &window : m_documents.windows()) {
        rebuildMacroMenu(*window);
    }
}

void AppDelegate::rebuildMacroMenu(const EditorWindow &window)
{
    if (QMenu *menu = macroMenu(&window)) {
        penwick::rebuildMacroMenu(menu,
                                  MacroManager::shared().macros(),
                                  menuHandlers(),
                                  [this](const QString &id) { runDynamicMacro(id); });
    }
}

MenuHandlers AppDelegate::menuHandlers()
{
    return {[this](MenuCommand command) { perform(command); },
            [this](MenuCommand command) { return isEnabled(command); }};
}

bool AppDelegate::isEnabled(MenuCommand command) const
{
    switch (command) {
    case MenuCommand::CheckForUpdates:
        return m_updaterController != nullptr;
    default:
        return true;
    }
}

void AppDelegate::perform(MenuCommand command)
{
    switch (command) {
    case MenuCommand::About:
        showAboutPanel(QApplication::activeWindow());
        break;
    case MenuCommand::Quit:
        terminate();
        break;
    case MenuCommand::NewDocument:
        m_documents.newDocument();
        break;
    case MenuCommand::OpenDocument:
        m_documents.openDocument();
        break;
    case MenuCommand::RunTestMacro:
        runTestMacro();
        break;
    case MenuCommand::RunTestMacroSelection:
        runTestMacroSelection();
        break;
    case MenuCommand::ShowMacroManager:
        showMacroManager();
        break;
    case MenuCommand::ShowProfileManager:
        showProfileManager();
        break;
    case MenuCommand::CheckForUpdates:
        if (m_updaterController != nullptr) {
            m_updaterController->checkForUpdates();
        }
        break;
    default:
        performOnDocument(command);
    }
}

void AppDelegate::performOnDocument(MenuCommand command)
{
    const auto controller = targetEditor();
    if (controller == nullptr) {
        return;
    }
    switch (command) {
    case MenuCommand::PerformClose:
        m_documents.closeDocument(controller.get());
        break;
    case MenuCommand::SaveDocument:
        m_documents.saveDocument(controller.get());
        break;
    case MenuCommand::SaveDocumentAs:
        m_documents.saveDocumentAs(controller.get());
        break;
    default:
        break;
    }
}

void AppDelegate::runDynamicMacro(const QString &id)
{
    if (const auto macro = MacroManager::shared().macroWithId(id)) {
        m_launcher.promptOrRun(*macro);
    }
}

void AppDelegate::runTestMacro()
{
    const TestMacro macro = replaceAllTestMacro();
    m_launcher.run(macro.code, macro.id, macro.name, std::nullopt);
}

void AppDelegate::runTestMacroSelection()
{
    const TestMacro macro = replaceSelectionTestMacro();
    m_launcher.run(macro.code, macro.id, macro.name, std::nullopt);
}

void AppDelegate::runMacroInActiveEditor(const Macro &macro)
{
    m_launcher.runInActiveEditor(macro);
}

void AppDelegate::showMacroManager()
{
    if (m_macroManager == nullptr) {
        m_macroManager = std::make_unique<MacroManagerWindowController>(
            MacroManagerView::Services{
                MacroManager::shared(),
                NotificationCenter::defaultCenter(),
                m_panels,

                randomIds(),
                [this](const Macro &draft) { runMacroInActiveEditor(draft); }},
            UserDefaults::standard());
    }
    m_macroManager->showWindow();
}

void AppDelegate::showProfileManager()
{
    if (m_profileManager == nullptr) {
        m_profileManager = std::make_unique<ProfileManagerWindowController>(
            ProfileManagerView::Services{UIWordingProfileManager::shared(),
                                         NotificationCenter::defaultCenter(),
                                         m_panels,
                                         m_clock,
                                         randomIds()},
            UserDefaults::standard());
    }
    m_profileManager->showWindow();
}

void AppDelegate::terminate()
{
    if (m_documents.closeAll() && m_requests.finish()) {
        QCoreApplication::exit(0);
    }
}

/// As when the person quits. Whoever insists, while the question about it or another one is open,
/// is not kept waiting for its answer.
void AppDelegate::quitOnSignal(int signalNumber)
{
    QWidget *dialog = QApplication::activeModalWidget();
    const bool insists = m_isQuittingOnSignal || (dialog != nullptr && dialog == m_signalledDialog);
    if (insists) {
        constexpr int kEndedBySignal = 128; // As shells have it.
        QCoreApplication::exit(kEndedBySignal + signalNumber);
        return;
    }
    m_isQuittingOnSignal = true;
    terminate();
    m_isQuittingOnSignal = false;
    m_signalledDialog = QApplication::activeModalWidget();
}

void AppDelegate::commitSession(QSessionManager &manager)
{
    if (!manager.allowsInteraction()) {
        return;
    }
    if (!m_documents.closeAll()) {
        manager.cancel();
    }
    manager.release();
}

} // namespace penwick
