#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"
#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/engine/MacroRuntimeService.h"
#include "platform/settings/Timestamp.h"
#include "platform/settings/UserDefaults.h"
#include "window/EditorWindow.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>

namespace penwick {

class MacroRun;
class LoadingView;
class MainEditorView;
class TextView;

/// Why a run of a macro failed.
struct MacroFailure
{
    QString message;
    int line = 0;               ///< Of the code, 1-based; 0 when it is not known.
    bool isAboutResult = false; ///< The code ran; what it returned is wrong.
};

/// One document's tab: its content, its state, and the macros that run on it. Use it from the main
/// thread.
///
/// The tab shows a page, which stands in an `EditorWindow` and can move to another window with its
/// whole state: undo history, scroll position, selection, find bar.
class EditorWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Makes a window with this as its only tab; does not show it. The tab is empty until a
    /// document is set.
    /// \param defaults stores the window's frame; not owned, must outlive this.
    explicit EditorWindowController(UserDefaults &defaults = UserDefaults::usage(),
                                    Clock clock = systemClock(),
                                    MacroRuntimeService macroRuntime = {},
                                    QObject *parent = nullptr);
    /// Adds a tab to a window, after the current tab. The current tab stays current.
    explicit EditorWindowController(std::shared_ptr<EditorWindow> window,
                                    Clock clock = systemClock(),
                                    MacroRuntimeService macroRuntime = {},
                                    QObject *parent = nullptr);
    ~EditorWindowController() override;

    /// Differs for every controller of the process; never 0.
    [[nodiscard]] quint64 number() const { return m_number; }

    /// Shows the document's text in the tab and removes the former content. Selection and scroll
    /// position are those in which the start of the text was shown during the load.
    /// \param document not owned; held weakly. Null leaves the tab empty.
    void setDocument(TextDocument *document);
    /// Shows that the document is being loaded and removes the former content. `document()`,
    /// `content()` and `textView()` are null meanwhile.
    /// \param document not owned; held weakly.
    void showLoading(TextDocument *document);

    /// True from `showLoading` to the next content. No macro runs meanwhile.
    [[nodiscard]] bool isLoading() const { return !m_loadingView.isNull(); }

    /// Null without a document, while it is being loaded, and after it was destroyed.
    [[nodiscard]] TextDocument *document() const { return m_document.data(); }

    /// The window of the tab; never null. A closed controller has one too, which is not visible.
    /// The controllers of its tabs keep it alive. It changes when the tab moves.
    [[nodiscard]] EditorWindow *window() const { return m_window.get(); }

    /// Brings the tab to the front of its window, and the window to the front with the keyboard
    /// focus.
    void bringForward();

    [[nodiscard]] bool isInFront() const { return m_window->currentController() == this; }

    /// Moves the tab to another window, or within its own. Does nothing while a macro runs on the
    /// tab, because the notice is modal for the window.
    /// \param index the tab's new index; -1 for the last.
    void moveTo(const std::shared_ptr<EditorWindow> &window, int index = -1);

    /// Sets what the tab shows, and the title of the window while the tab is current.
    void setTabLabel(const TabLabel &label);

    /// The view of the document in the tab; null without one.
    [[nodiscard]] MainEditorView *content() const;

    /// Returns the text view in the tab's content; null when there is none.
    [[nodiscard]] TextView *textView() const;

    [[nodiscard]] DocumentState *documentState() const { return m_documentState.get(); }

    /// Returns the snapshot that a macro started now receives.
    [[nodiscard]] MacroContext buildMacroContext(const QString &macroId,
                                                 const QString &macroName) const;

    /// Runs a macro on this tab and applies its result as one undo step. Reports the outcome by a
    /// message in the status bar, in a later turn of the event loop. Runs nothing while an input
    /// method is composing.
    ///
    /// Returns when the script has ended, or after one second. In the second case a notice over the
    /// window lets the user stop the script. Until the script ends, the user cannot edit in any tab
    /// of this window, and another run on this tab only shows the notice; other windows are not
    /// affected. Events other than keys and clicks may be processed before this returns: the caller
    /// keeps this object alive.
    /// \param code the body of a JavaScript function.
    /// \param macroId, macroName the values of `context.macro`.
    /// \param userInput the global variable `userInput`; without a value there is no such variable.
    void runMacro(const QString &code,
                  const QString &macroId,
                  const QString &macroName,
                  const std::optional<QString> &userInput);

    [[nodiscard]] bool isRunningMacro() const;

    /// Makes the tab current and shows the notice that lets the user stop its macro. Does nothing
    /// when no macro runs. Call this instead of closing the tab while a macro runs.
    void offerToStopMacro();

    /// Shows the message in the status bar, in a later turn of the event loop. Drops it when the
    /// controller is destroyed before. All types look alike.
    void showMacroMessage(NotificationType type, const QString &message);

Q_SIGNALS:
    /// The tab shows this text view now, which was made for a document.
    void textViewMade(penwick::TextView *view);
    /// Emitted when a run of this code failed, with what the status bar shows.
    void macroFailed(const QString &code, const penwick::MacroFailure &failure);

private:
    void removeContent();
    void showContent(QWidget *content);
    void execute(TextView *view,
                 const QString &code,
                 const MacroContext &context,
                 const std::optional<QString> &userInput);
    void finishRun(TextView *view,
                   const QString &code,
                   const MacroContext &context,
                   const ScriptOutcome &outcome);
    [[nodiscard]] QString
    prepareToApply(TextView *view, const MacroContext &context, const MacroResult &result);
    void fail(const QString &code, const MacroFailure &failure);
    void fail(const QString &code, const MacroResultError &error);
    void showOutcome(const MacroResult &result);

    const quint64 m_number;
    Clock m_clock;
    MacroRuntimeService m_macroRuntime;
    QPointer<TextDocument> m_document;
    std::unique_ptr<DocumentState> m_documentState; // Outlives the page, which shows it.
    std::shared_ptr<EditorWindow> m_window;
    std::unique_ptr<QWidget> m_page; // Destroyed before the window, its parent.
    QPointer<LoadingView> m_loadingView;
    QPointer<MainEditorView> m_content;
    TabLabel m_label;
    QPointer<MacroRun> m_run; // While a macro runs.
};

/// Returns the first text view in the tree of `view`: `view` itself, otherwise the first one among
/// its children, depth first and in their order. Null when there is none, or when `view` is null.
[[nodiscard]] TextView *findTextView(QWidget *view);

} // namespace penwick
