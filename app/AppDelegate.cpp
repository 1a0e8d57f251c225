#include "app/AppDelegate.h"

#include "app/MacroMenu.h"
#include "app/MacroShortcuts.h"
#include "app/OpenDialogs.h"
#include "app/ScriptHostReport.h"
#include "app/StartHints.h"
#include "app/TestMacros.h"
#include "app/TextMenu.h"
#include "code/ResultLine.h"
#include "command/CommandShortcut.h"
#include "command/MacroKeys.h"
#include "controls/Alerts.h"
#include "macro/library/MacroManager.h"
#include "macro/script/ScriptHostPool.h"
#include "platform/files/ApplicationSupport.h"
#include "platform/process/StandardOutput.h"
#include "platform/settings/NotificationCenter.h"
#include "preferences/Preferences.h"
#include "view/TextView.h"
#include "wording/ProfileImport.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QSessionManager>
#include <QShortcut>
#include <QTimer>
#include <QWindow>

#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kScriptHostDelay = 1000; // Milliseconds.
constexpr qsizetype kSelectionMacros = 5;
constexpr int kRequestTimeout = 30'000;

/// The folder of the profiles that come with penwick. It need not exist.
QString suppliedProfileFolder()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    return QDir(programs.filePath(QStringLiteral(PENWICK_PROFILE_FOLDER))).canonicalPath();
}

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
          [this](const QStringList &paths) {
              for (const QString &path : paths)
                  m_documents.openFile(path);
          })
    , m_launcher([this] { return targetEditor(); }, m_clock)
    , m_commands(this)
{
    // A window that is opened later gets a menu bar of its own.
    connect(&m_documents, &DocumentController::windowMade, this, &AppDelegate::prepareWindow);
    connect(
        &m_documents, &DocumentController::controllerMade, this, &AppDelegate::prepareController);
    connect(&m_documents, &DocumentController::documentClosed, this, &AppDelegate::showRunState);
}

AppDelegate::~AppDelegate()
{
    ScriptHostPool::shared().setKeepsSpare(false);
    ScriptHostPool::shared().discard();
}

void AppDelegate::applicationDidFinishLaunching(const std::optional<OpenRequest> &request)
{
    QApplication::setQuitOnLastWindowClosed(true);
    openLists();
    // Read the profile before the first text is looked up, so that it comes from the active
    // profile.
    static_cast<void>(UIWordingProfileManager::shared());
    QCoreApplication::installTranslator(&m_translator);
    if (m_updaterController == nullptr)
        m_updaterController = makeStandardUpdaterController();
    MacroManager::shared().installBuiltInMacros();
    buildMenuBars();
    m_cancellables << connect(&MacroManager::shared(),
                              &MacroManager::macrosChanged,
                              this,
                              &AppDelegate::rebuildMacroMenus,
                              Qt::QueuedConnection);
    connect(&MacroManager::shared(),
            &MacroManager::macrosChanged,
            this,
            qOverload<>(&AppDelegate::rebuildMacroKeys),
            Qt::QueuedConnection);
    connect(&MacroKeys::shared(),
            &MacroKeys::changed,
            this,
            qOverload<>(&AppDelegate::rebuildMacroKeys));
    // Fill the menus from the present list as well, in a later turn of the event loop.
    QMetaObject::invokeMethod(this, &AppDelegate::rebuildMacroMenus, Qt::QueuedConnection);
    NotificationCenter::defaultCenter().addObserver(
        UIWordingProfileDidChange, this, [this] { handleProfileDidChange(); });
    connect(&m_signals, &TerminationSignals::received, this, &AppDelegate::quitOnSignal);
    m_rescue.emplace(&m_documents);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &AppDelegate::commitSession);
    // The user may have edited penwick's files elsewhere before returning to it.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            MacroManager::shared().reloadIfChanged();
            UIWordingProfileManager::shared().reloadIfChanged();
            Preferences::standard().reload();
        }
    });
    startRecovery();
    if (request)
        openFirst(*request);
    else
        QTimer::singleShot(kRequestTimeout, this, [this] {
            if (!m_documents.hasDocuments())
                terminate();
        });
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this] {
        windowDidBecomeMain(QApplication::activeWindow());
    });
    windowDidBecomeMain(QApplication::activeWindow());
    // Start the script host later, so that it does not slow the start-up down.
    QTimer::singleShot(kScriptHostDelay, this, &AppDelegate::prepareScriptHost);
}

void AppDelegate::openLists()
{
    UserDefaults &defaults = UserDefaults::usage();
    m_recentFiles.emplace(defaults, Preferences::standard());
    m_recentFiles->follow(&m_documents);
    m_palette.emplace(this, &m_commands);
    m_selectionMacros.emplace(defaults, u"recentCommands/onSelection"_s, kSelectionMacros);
}

void AppDelegate::startRecovery()
{
    const auto isWanted = [] {
        return Preferences::standard().isOn(PreferenceId::KeepsRecoveryCopies);
    };
    m_recovery.emplace(
        m_documents, ApplicationSupport::stateFolderPath() + u"/recovery"_s, isWanted());
    Preferences::observe(PreferenceId::KeepsRecoveryCopies, &*m_recovery, [this, isWanted] {
        m_recovery->setKeepsCopies(isWanted());
    });
    connect(&*m_recovery, &Recovery::failed, this, [this] {
        if (const auto editor = targetEditor())
            editor->showMacroMessage(NotificationType::Warning,
                                     wording::text(u"recovery.failed"_s));
    });
    // In a later turn of the event loop, when there is a window.
    QMetaObject::invokeMethod(&*m_recovery, &Recovery::offerAbandoned, Qt::QueuedConnection);
}

void AppDelegate::openFirst(const OpenRequest &request)
{
    if (!request.items.isEmpty())
        m_openedFirst = m_requests.open(request);
    if (!m_documents.hasDocuments() && !m_requestedEnd)
        m_documents.newDocument();
}

void AppDelegate::prepareScriptHost()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    const auto limitMemory = [&pool] {
        pool.setMemory(
            scriptMemory(Preferences::standard()).value_or(ScriptHostPool::defaultMemory()));
    };
    limitMemory();
    pool.setKeepsSpare(true);
    Preferences::observe(PreferenceId::MacroMemory, this, [&pool, limitMemory] {
        limitMemory();
        pool.discard(); // The spare host has the former limit.
        pool.prepare();
    });
    m_settingsWatch.emplace(ApplicationSupport::configurationFilePath());
    QTimer::singleShot(kScriptHostDelay, this, &AppDelegate::tryEngine);
}

// An update of the engine or of the kernel can make every macro fail. The trial reports that before
// a macro is needed.
void AppDelegate::tryEngine()
{
    m_engineCheck = std::make_unique<EngineCheck>(ScriptHostPool::shared());
    connect(m_engineCheck.get(), &EngineCheck::ended, this, [this] {
        reportTrial(m_engineCheck->trial());
        m_engineCheck.release()->deleteLater(); // The sender of this signal must outlive the call.
    });
}

void AppDelegate::reportTrial(const EngineTrial &trial)
{
    const QString missing = missingProtections(trial.protection);
    if (!missing.isEmpty())
        printLine(u"Macros run without: "_s + missing);
    const QString failure = engineLogLine(trial);
    if (!failure.isEmpty())
        writeErrorLine(u"penwick: "_s + failure);
#ifndef __SANITIZE_ADDRESS__ // A build with sanitizers has no sandbox.
    const QString warning = engineWarning(trial);
    const auto editor = targetEditor();
    if (!warning.isEmpty() && editor != nullptr)
        editor->showMacroMessage(NotificationType::Warning, warning);
#endif
}

std::shared_ptr<EditorWindowController> AppDelegate::targetEditor() const
{
    auto controller = m_documents.controllerOf(QApplication::activeWindow());
    return controller != nullptr ? controller : m_lastActiveEditorWindowController;
}

void AppDelegate::windowDidBecomeMain(QWidget *window)
{
    if (auto controller = m_documents.controllerOf(window))
        m_lastActiveEditorWindowController = std::move(controller);
}

void AppDelegate::prepareWindow(EditorWindow *window)
{
    buildMenuBar(window, menuHandlers());
    rebuildMacroMenu(*window);
    rebuildMacroKeys(window);
    // The menu bar has no items for these commands.
    for (const CommandId id : {CommandId::ShowPalette,
                               CommandId::GoToLine,
                               CommandId::RepeatMacro,
                               CommandId::ShowSettings})
        connect(makeShortcut(id, window), &QShortcut::activated, this, [this, id] {
            m_commands.performCommand(id);
        });
    connect(window, &EditorWindow::currentTabChanged, this, [this, window] {
        currentTabDidChange(window);
    });
}

void AppDelegate::prepareController(EditorWindowController *controller)
{
    connect(controller,
            &EditorWindowController::macroFailed,
            this,
            [this](const QString &code, const MacroFailure &failure) {
                const int line = failure.isAboutResult ? resultLine(code) : failure.line;
                if (m_macroManager != nullptr)
                    m_macroManager->view()->showRunError(code, failure.message, line);
            });
    connect(controller,
            &EditorWindowController::textViewMade,
            this,
            [this, controller](TextView *view) { prepareTextView(controller, view); });
    // The document is added to the open ones after this signal.
    QMetaObject::invokeMethod(this, &AppDelegate::showRunState, Qt::QueuedConnection);
}

void AppDelegate::prepareTextView(const EditorWindowController *controller, TextView *view)
{
    connect(view, &TextView::contextMenuWillOpen, this, [this, view](QMenu *menu) {
        extendTextMenu(menu,
                       view->selectedRange().isEmpty() ? QList<Macro>() : selectionMacros(),
                       menuHandlers(),
                       [this](const QString &id) { runDynamicMacro(id); });
    });
    const TextDocument *document = controller->document();
    if (!document->filePath().isEmpty() || !view->string().isEmpty())
        return;
    auto *hint = new HintLine(
        view, [this] { return startHints(&m_commands, &m_documents, *m_recentFiles); });
    connect(document, &TextDocument::filePathChanged, hint, &HintLine::finish);
    connect(&*m_recentFiles, &RecentFiles::changed, hint, &HintLine::refresh);
}

void AppDelegate::showRunState()
{
    if (m_macroManager != nullptr)
        m_macroManager->view()->setCanTestRun(m_documents.hasDocuments());
}

// A tab that comes to the front of the main window becomes the target of macros. A manager window
// in front of all does not change which editor window is the main one.
void AppDelegate::currentTabDidChange(EditorWindow *window)
{
    const bool wasMain = m_lastActiveEditorWindowController != nullptr &&
                         m_lastActiveEditorWindowController->window() == window;
    if (wasMain || QApplication::activeWindow() == window)
        windowDidBecomeMain(window);
}

void AppDelegate::handleProfileDidChange()
{
    buildMenuBars();
}

void AppDelegate::buildMenuBars()
{
    for (const auto &window : m_documents.windows())
        buildMenuBar(window.get(), menuHandlers());
    rebuildMacroMenus();
}

void AppDelegate::rebuildMacroMenus()
{
    for (const auto &window : m_documents.windows())
        rebuildMacroMenu(*window);
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

void AppDelegate::rebuildMacroKeys()
{
    for (const auto &window : m_documents.windows())
        rebuildMacroKeys(window.get());
}

void AppDelegate::rebuildMacroKeys(EditorWindow *window)
{
    rebuildMacroShortcuts(window,
                          MacroManager::shared().macros(),
                          MacroKeys::shared(),
                          [this](const QString &id) { runDynamicMacro(id); });
}

MenuHandlers AppDelegate::menuHandlers()
{
    // A disabled item would block its key, so only the one that is never possible is disabled.
    return {
        [this](CommandId id) { m_commands.performCommand(id); },
        [this](CommandId id) { return id != CommandId::CheckForUpdates || canCheckForUpdates(); }};
}

void AppDelegate::checkForUpdates()
{
    if (m_updaterController != nullptr)
        m_updaterController->checkForUpdates();
}

void AppDelegate::runDynamicMacro(const QString &id)
{
    const auto macro = MacroManager::shared().macroWithId(id);
    if (!macro)
        return;
    m_lastMacroId = id;
    noteUse(id);
    m_launcher.promptOrRun(*macro);
}

void AppDelegate::noteUse(const QString &macroId)
{
    if (!m_palette)
        return; // Not started up.
    m_palette->noteUse(macroRowId(macroId));
    const auto editor = targetEditor();
    const TextView *view = editor != nullptr ? editor->textView() : nullptr;
    if (view != nullptr && !view->selectedRange().isEmpty())
        m_selectionMacros->add(macroId);
}

/// The last used one first.
QList<Macro> AppDelegate::selectionMacros() const
{
    QList<Macro> macros;
    for (const QString &id : m_selectionMacros->items())
        if (const auto macro = MacroManager::shared().macroWithId(id))
            macros << *macro;
    return macros;
}

std::optional<Macro> AppDelegate::lastMacro() const
{
    auto macro = MacroManager::shared().macroWithId(m_lastMacroId);
    return macro && macro->isEnabled ? macro : std::nullopt;
}

void AppDelegate::repeatMacro()
{
    if (const auto macro = lastMacro()) {
        noteUse(macro->id);
        m_launcher.promptOrRun(*macro, MacroLauncher::Offer::LastInput);
    } else if (const auto editor = targetEditor()) {
        editor->showMacroMessage(NotificationType::Info, wording::text(u"status.noLastMacro"_s));
    }
}

void AppDelegate::runTestMacro()
{
    m_launcher.run(replaceAllTestMacro());
}

void AppDelegate::runTestMacroSelection()
{
    m_launcher.run(replaceSelectionTestMacro());
}

void AppDelegate::runMacroInActiveEditor(const Macro &macro)
{
    // The last active editor may have been closed behind the manager, where its text is not seen.
    const auto open = m_documents.windowControllers();
    if (!open.isEmpty() && !open.contains(targetEditor()))
        windowDidBecomeMain(open.last()->window());
    m_launcher.runInActiveEditor(macro);
}

void AppDelegate::showMacroManager()
{
    if (m_macroManager == nullptr) {
        m_macroManager = std::make_unique<MacroManagerWindowController>(
            MacroManagerView::Services{
                MacroManager::shared(),
                MacroKeys::shared(),
                NotificationCenter::defaultCenter(),
                m_panels,
                randomIds(),
                [this](const Macro &draft) { runMacroInActiveEditor(draft); }},
            UserDefaults::usage());
        addShortcuts(m_macroManager->window());
        showRunState();
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
                                         randomIds(),
                                         suppliedProfileFolder()},
            UserDefaults::usage());
        addShortcuts(m_profileManager->window());
    }
    m_profileManager->showWindow();
}

void AppDelegate::useEnglish()
{
    if (!useEnglishProfile(UIWordingProfileManager::shared(), m_clock, randomIds()))
        showAlert(QApplication::activeWindow(), wording::text(u"error.fileSaveFailed"_s));
}

void AppDelegate::showSettings()
{
    if (m_preferences == nullptr) {
        m_preferences = std::make_unique<PreferencesWindowController>(
            PreferencesView::Services{Preferences::standard(),
                                      NotificationCenter::defaultCenter(),
                                      ApplicationSupport::configurationFilePath(),
                                      [this] { openSettingsFile(); }},
            UserDefaults::usage());
        addShortcuts(m_preferences->window());
    }
    m_preferences->showWindow();
}

void AppDelegate::openSettingsFile()
{
    m_documents.openFileOrNew(ApplicationSupport::configurationFilePath());
}

/// Gives a window without a menu bar the keys of the commands that concern no document.
void AppDelegate::addShortcuts(QWidget *window)
{
    for (const CommandId id : {CommandId::Quit,
                               CommandId::NewDocument,
                               CommandId::OpenDocument,
                               CommandId::ShowSettings})
        connect(makeShortcut(id, window), &QShortcut::activated, this, [this, id] {
            m_commands.performCommand(id);
        });
}

void AppDelegate::end(int status)
{
    m_requestedEnd = status;
    QCoreApplication::exit(status);
}

void AppDelegate::terminate()
{
    if (m_documents.closeAll() && m_requests.finish())
        end(0);
}

/// Quits as the Quit command does. A second signal ends the process at once while the question of
/// the first one, or a dialog that the first one found open, is still waiting for an answer.
void AppDelegate::quitOnSignal(int signalNumber)
{
    QWidget *dialog = OpenDialogs::front();
    const bool isRepeated =
        m_isQuittingOnSignal || (dialog != nullptr && dialog == m_signalledDialog);
    if (isRepeated) {
        constexpr int kSignalStatusBase = 128; // As in shells: 128 + the signal number.
        end(kSignalStatusBase + signalNumber);
        return;
    }
    m_isQuittingOnSignal = true;
    terminate();
    m_isQuittingOnSignal = false;
    m_signalledDialog = OpenDialogs::front();
}

void AppDelegate::commitSession(QSessionManager &manager)
{
    if (!manager.allowsInteraction())
        return;
    if (!m_documents.closeAll())
        manager.cancel();
    manager.release();
}

} // namespace penwick
