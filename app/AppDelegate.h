#pragma once

#include "app/AppCommands.h"
#include "app/CommandPalette.h"
#include "app/DocumentController.h"
#include "app/EngineCheck.h"
#include "app/FileDrop.h"
#include "app/MacroLauncher.h"
#include "app/MenuBar.h"
#include "app/OpenRequests.h"
#include "app/RecentFiles.h"
#include "app/Recovery.h"
#include "app/SettingsWatch.h"
#include "app/UnsavedTextRescue.h"
#include "app/UpdaterController.h"
#include "app/WordingTranslator.h"
#include "controls/FilePanels.h"
#include "controls/FocusRing.h"
#include "macro/library/MacroManagerWindowController.h"
#include "platform/process/TerminationSignals.h"
#include "platform/settings/Timestamp.h"
#include "preferences/PreferencesWindowController.h"
#include "wording/ProfileManagerWindowController.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QSessionManager;

namespace penwick {

/// The state that is global to the running application: the start-up, the menu bars, the last
/// active editor and the launch of macros. One per process, made after the application object.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// \param clock gives the time that the date prompt inserts and the time stamps of changed
    ///        profiles.
    /// \param panels ask for the files of macros and profiles.
    explicit AppDelegate(Clock clock = systemClock(),
                         FilePanels panels = FilePanels::onScreen(),
                         QObject *parent = nullptr);
    ~AppDelegate() override;

    /// Lets other processes hand their requests over to this one. Call it before
    /// `applicationDidFinishLaunching`.
    void listenAt(InstancePlace place) { m_requests.listenAt(std::move(place)); }

    /// Starts the application up. Opens what the process was started for (a missing file becomes an
    /// empty document that is saved there), and an untitled document if no document is open then.
    /// \param request no value when another process is about to hand one over; if none arrives in
    ///        time, the application ends.
    void applicationDidFinishLaunching(const std::optional<OpenRequest> &request = OpenRequest());

    [[nodiscard]] static constexpr bool applicationShouldOpenUntitledFile() { return true; }

    [[nodiscard]] DocumentController &documentController() { return m_documents; }

    /// Call it after `applicationDidFinishLaunching`.
    [[nodiscard]] RecentFiles &recentFiles() { return *m_recentFiles; }

    /// The editor that was last in front of the active window, also after it has been closed. Null
    /// until there was one.
    [[nodiscard]] const std::shared_ptr<EditorWindowController> &
    lastActiveEditorWindowController() const
    {
        return m_lastActiveEditorWindowController;
    }

    /// The editor that a macro runs on: the one in front of the active window, else the last active
    /// one.
    [[nodiscard]] std::shared_ptr<EditorWindowController> targetEditor() const;

    /// Runs the stored macro with this id; does nothing when there is none.
    void runDynamicMacro(const QString &id);
    /// Runs the macro that `runDynamicMacro` ran last, and offers the last input in its prompt.
    /// Says so in the status bar when there is none.
    void repeatMacro();

    [[nodiscard]] bool canRepeatMacro() const { return lastMacro().has_value(); }

    void runTestMacro();
    void runTestMacroSelection();
    /// Runs a macro for the macro manager, in another open editor if the last active one was
    /// closed. Shows a message when there is no editor.
    void runMacroInActiveEditor(const Macro &macro);

    /// Shows the window in front of all others. It is made on first use.
    void showMacroManager();
    void showProfileManager();
    /// Applies the English profile that comes with penwick. Shows a message if it cannot be added
    /// to the user's.
    void useEnglish();

    void showSettings();
    /// Opens the file of the settings in a tab.
    void openSettingsFile();

    /// Null until it is first shown.
    [[nodiscard]] MacroManagerWindowController *macroManagerWindowController() const
    {
        return m_macroManager.get();
    }

    /// Null until it is first shown.
    [[nodiscard]] ProfileManagerWindowController *profileManagerWindowController() const
    {
        return m_profileManager.get();
    }

    /// Null until it is first shown.
    [[nodiscard]] PreferencesWindowController *preferencesWindowController() const
    {
        return m_preferences.get();
    }

    [[nodiscard]] bool canCheckForUpdates() const { return m_updaterController != nullptr; }

    void checkForUpdates();

    /// Opens the palette over the target editor's window, or closes it.
    /// \param mode what is typed in it already; see `CommandPalette`.
    void openPalette(const QString &mode = {}) { m_palette->open(mode); }

    /// Ends the application unless the user cancels.
    void terminate();

    /// The exit status of a process that ends normally: 1 when a file that it was started for could
    /// not be opened at once, else 0.
    [[nodiscard]] int exitStatus() const { return m_openedFirst ? 0 : 1; }

    /// The status with which the application was asked to end, if it was. The event loop must then
    /// not be started: a dialog of the start-up may have received the request.
    [[nodiscard]] const std::optional<int> &requestedEnd() const { return m_requestedEnd; }

private:
    void end(int status);
    void openLists();
    void startRecovery();
    void openFirst(const OpenRequest &request);
    void handleProfileDidChange();
    void windowDidBecomeMain(QWidget *window);
    void prepareWindow(EditorWindow *window);
    void prepareController(EditorWindowController *controller);
    void prepareTextView(const EditorWindowController *controller, TextView *view);
    void showRunState();
    void addShortcuts(QWidget *window);
    void currentTabDidChange(EditorWindow *window);
    void quitOnSignal(int signalNumber);
    void commitSession(QSessionManager &manager);
    void prepareScriptHost();
    void tryEngine();
    void reportTrial(const EngineTrial &trial);
    void buildMenuBars();
    void rebuildMacroMenus();
    void rebuildMacroMenu(const EditorWindow &window);
    void rebuildMacroKeys();
    void rebuildMacroKeys(EditorWindow *window);
    void noteUse(const QString &macroId);
    [[nodiscard]] std::optional<Macro> lastMacro() const;
    [[nodiscard]] QList<Macro> selectionMacros() const;
    [[nodiscard]] MenuHandlers menuHandlers();

    Clock m_clock;
    FilePanels m_panels;
    WordingTranslator m_translator;
    DocumentController m_documents;
    std::optional<Recovery> m_recovery; // Destroyed while the documents are open.
    OpenRequests m_requests;
    FileDrop m_fileDrop;
    DefaultButtonFocus m_defaultButtonFocus;
    MacroLauncher m_launcher;
    AppCommands m_commands;
    QString m_lastMacroId;
    // They read the settings, so they are made at the start-up.
    std::optional<RecentFiles> m_recentFiles;
    std::optional<CommandPalette> m_palette;
    std::optional<RecentList> m_selectionMacros; // The ids of those that ran on a selection.
    TerminationSignals m_signals;
    std::optional<UnsavedTextRescue> m_rescue;
    std::unique_ptr<EngineCheck> m_engineCheck; // Set while the trial runs.
    bool m_openedFirst = true;
    std::optional<int> m_requestedEnd;
    bool m_isQuittingOnSignal = false;
    QPointer<QWidget> m_signalledDialog; // The dialog that was open after a signal to quit.
    std::unique_ptr<UpdaterController> m_updaterController;
    std::unique_ptr<MacroManagerWindowController> m_macroManager;
    std::unique_ptr<ProfileManagerWindowController> m_profileManager;
    std::unique_ptr<PreferencesWindowController> m_preferences;
    std::optional<SettingsWatch> m_settingsWatch;
    std::shared_ptr<EditorWindowController> m_lastActiveEditorWindowController;
    QList<QMetaObject::Connection> m_cancellables;
};

} // namespace penwick
