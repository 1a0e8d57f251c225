#pragma once

#include "app/DocumentController.h"
#include "app/EngineCheck.h"
#include "app/FileDrop.h"
#include "app/MacroLauncher.h"
#include "app/MenuBar.h"
#include "app/OpenRequests.h"
#include "app/UnsavedTextRescue.h"
#include "app/UpdaterController.h"
#include "app/WordingTranslator.h"
#include "controls/FilePanels.h"
#include "controls/FocusRing.h"
#include "macro/library/MacroManagerWindowController.h"
#include "platform/TerminationSignals.h"
#include "platform/Timestamp.h"
#include "wording/ProfileManagerWindowController.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QSessionManager;

namespace penwick {

/// What is global to the running application: the start-up, the menu bars, the record of the last
/// active editor and the way macros reach it. One per process, made after the application object.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    /// \param clock gives the time that the date prompt inserts and that changed profiles get.
    /// \param panels ask for the files of macros and profiles.
    explicit AppDelegate(Clock clock = systemClock(),
                         FilePanels panels = FilePanels::onScreen(),
                         QObject *parent = nullptr);
    ~AppDelegate() override;

    /// Before the start-up: other processes may hand over what they were started for.
    void listenAt(InstancePlace place) { m_requests.listenAt(std::move(place)); }

    /// The start-up. Opens what the process was started for (a missing file becomes an empty
    /// document to be saved there), and an untitled document where no document came of it.
    /// \param request nothing when another process is about to hand it over; should none do so, the
    ///        application ends.
    void applicationDidFinishLaunching(const std::optional<OpenRequest> &request = OpenRequest());

    [[nodiscard]] static constexpr bool applicationShouldOpenUntitledFile() { return true; }

    [[nodiscard]] DocumentController &documentController() { return m_documents; }

    /// The editor that was in front of the active window last; it stays when it is closed. Null
    /// until the first one.
    [[nodiscard]] const std::shared_ptr<EditorWindowController> &
    lastActiveEditorWindowController() const
    {
        return m_lastActiveEditorWindowController;
    }

    /// Where a macro runs: the editor in front of the active window, else the last active one.
    [[nodiscard]] std::shared_ptr<EditorWindowController> targetEditor() const;

    /// Runs the stored macro with this id; does nothing when there is none.
    void runDynamicMacro(const QString &id);
    void runTestMacro();
    void runTestMacroSelection();
    /// For the macro manager's test run. Says so when there is no editor.
    void runMacroInActiveEditor(const Macro &macro);

    /// Each shows its window, which is made on first use, in front of all others.
    void showMacroManager();
    void showProfileManager();

    /// Null before it was shown.
    [[nodiscard]] MacroManagerWindowController *macroManagerWindowController() const
    {
        return m_macroManager.get();
    }

    /// Null before it was shown.
    [[nodiscard]] ProfileManagerWindowController *profileManagerWindowController() const
    {
        return m_profileManager.get();
    }

    /// Ends the application unless the person says no.
    void terminate();

private:
    void openFirst(const OpenRequest &request);
    void endWithoutDocuments();
    void openFiles(const QStringList &paths);
    void handleProfileDidChange();
    void windowDidBecomeMain(QWidget *window);
    void prepareWindow(EditorWindow *window);
    void currentTabDidChange(EditorWindow *window);
    void quitOnSignal(int signalNumber);
    void commitSession(QSessionManager &manager);
    void prepareScriptHost();
    void tryEngine();
    void reportTrial(const EngineTrial &trial);
    void buildMenuBars();
    void rebuildMacroMenus();
    void rebuildMacroMenu(const EditorWindow &window);
    [[nodiscard]] MenuHandlers menuHandlers();
    void perform(MenuCommand command);
    void performOnDocument(MenuCommand command);
    [[nodiscard]] bool isEnabled(MenuCommand command) const;

    Clock m_clock;
    FilePanels m_panels;
    WordingTranslator m_translator;
    DocumentController m_documents;
    OpenRequests m_requests;
    FileDrop m_fileDrop;
    DefaultButtonFocus m_defaultButtonFocus;
    MacroLauncher m_launcher;
    TerminationSignals m_signals;
    std::optional<UnsavedTextRescue> m_rescue;
    std::unique_ptr<EngineCheck> m_engineCheck; // While it goes on.
    bool m_isQuittingOnSignal = false;
    QPointer<QWidget> m_signalledDialog; // What a signal to quit found open.
    std::unique_ptr<UpdaterController> m_updaterController;
    std::unique_ptr<MacroManagerWindowController> m_macroManager;
    std::unique_ptr<ProfileManagerWindowController> m_profileManager;
    std::shared_ptr<EditorWindowController> m_lastActiveEditorWindowController;
    QList<QMetaObject::Connection> m_cancellables;
};

} // namespace penwick
