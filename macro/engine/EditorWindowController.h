#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"
#include "macro/engine/EditorWindow.h"
#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/engine/MacroRuntimeService.h"
#include "platform/Timestamp.h"
#include "platform/UserDefaults.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>

namespace penwick {

class MacroRun;
class MainEditorView;
class TextView;

/// One document's place on the screen: its content, its state, and the runs of macros on it. Use it
/// from the main thread.
///
/// What it shows is a page of its own, which stands in a tab of an `EditorWindow` and can move to
/// another with everything in it: undo, scroll position, selection, find bar.
class EditorWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Makes a window with this as its only tab; it is not shown, and empty until a document is
    /// set. \param defaults where the window's frame is remembered; not owned, must outlive this.
    explicit EditorWindowController(UserDefaults &defaults = UserDefaults::standard(),
                                    Clock clock = systemClock(),
                                    MacroRuntimeService macroRuntime = {},
                                    QObject *parent = nullptr);
    /// Makes a tab in a window, behind the one in front, where it stays for now.
    explicit EditorWindowController(std::shared_ptr<EditorWindow> window,
                                    Clock clock = systemClock(),
                                    MacroRuntimeService macroRuntime = {},
                                    QObject *parent = nullptr);
    ~EditorWindowController() override;

    /// Shows the document's text in the tab, in place of what was there.
    /// \param document not owned; held weakly. Null empties the tab.
    void setDocument(TextDocument *document);
    /// Shows that the document is being read, in place of what was there. Whatever works on a text
    /// finds none.
    /// \param document not owned; held weakly.
    void showLoading(TextDocument *document);

    /// Null without a document, and once it is gone.
    [[nodiscard]] TextDocument *document() const { return m_document.data(); }

    /// The window that the tab stands in, never null; a closed controller has one too, which is not
    /// on the screen. Kept alive by the controllers of its tabs. It changes when the tab moves.
    [[nodiscard]] EditorWindow *window() const { return m_window.get(); }

    [[nodiscard]] bool isInFront() const { return m_window->currentController() == this; }

    /// Puts the tab into another window, or to another place in its own. A tab whose macro runs
    /// stays: the notice stands over its window.
    /// \param index of the tab that it then stands before; -1 for behind all.
    void moveTo(const std::shared_ptr<EditorWindow> &window, int index = -1);

    /// What the tab, and in front the title of its window, say.
    void setTabLabel(const TabLabel &label);

    /// What the tab shows of the document; null without one.
    [[nodiscard]] MainEditorView *content() const;

    /// The text view in the tab's content; null when there is none.
    [[nodiscard]] TextView *textView() const;

    [[nodiscard]] DocumentState *documentState() const { return m_documentState.get(); }

    /// The snapshot of this window that a macro starting now receives.
    [[nodiscard]] MacroContext buildMacroContext(const QString &macroId,
                                                 const QString &macroName) const;

    /// Runs a macro on this tab and applies what it asks for, as one undo step; how it went is
    /// told by a message in the status bar, a turn later. While an input method is composing,
    /// nothing is run.
    ///
    /// Returns when the script has ended; where that takes a second, before, and a notice over the
    /// window lets the person stop it. Until it ends, the window with all of its tabs is not to be
    /// edited, and another run on the tab only shows that notice; other windows are free. Events
    /// that are not keys or clicks may come in the meantime: the caller keeps this object alive.
    /// \param code the body of a JavaScript function.
    /// \param macroId, macroName what the script finds in `context.macro`.
    /// \param userInput the script's global of that name; without a value there is none.
    void runMacro(const QString &code,
                  const QString &macroId,
                  const QString &macroName,
                  const std::optional<QString> &userInput);

    [[nodiscard]] bool isRunningMacro() const;

    /// Shows the notice that lets the person stop the macro that runs, if one does, and its tab.
    /// Who wants to close the tab meanwhile calls this instead.
    void offerToStopMacro();

    /// Shows the message in the status bar, in a later turn of the event loop; a window that is
    /// gone by then drops it. All types are shown alike.
    void showMacroMessage(NotificationType type, const QString &message);

Q_SIGNALS:
    /// A run of this code failed, and the engine named the place.
    /// \param line of the code, 1-based.
    void macroFailedInLine(const QString &code, int line);

private:
    void takeContentAway();
    void showContent(QWidget *content);
    void execute(TextView *view,
                 const QString &code,
                 const MacroContext &context,
                 const std::optional<QString> &userInput);
    void finishRun(TextView *view,
                   const QString &code,
                   const MacroContext &context,
                   const ScriptOutcome &outcome);
    [[nodiscard]] bool
    isAsBefore(TextView *view, const MacroContext &context, const MacroResult &result);
    [[nodiscard]] bool isReady(const TextView *view);
    void showOutcome(const MacroResult &result);

    Clock m_clock;
    MacroRuntimeService m_macroRuntime;
    QPointer<TextDocument> m_document;
    std::unique_ptr<DocumentState> m_documentState; // Outlives the page, which shows it.
    std::shared_ptr<EditorWindow> m_window;
    std::unique_ptr<QWidget> m_page; // Goes before the window, which it is a child of.
    QPointer<MainEditorView> m_content;
    TabLabel m_label;
    QPointer<MacroRun> m_run; // While a macro runs.
};

/// The first text view in the tree of `view`: itself, else the first in its children, depth first
/// and in their order. Null when there is none, and for null.
[[nodiscard]] TextView *findTextView(QWidget *view);

} // namespace penwick
