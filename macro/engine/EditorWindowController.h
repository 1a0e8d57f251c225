#pragma once

#include "editor/DocumentState.h"
#include "editor/TextDocument.h"
#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/engine/MacroRuntimeService.h"
#include "platform/Timestamp.h"
#include "platform/UserDefaults.h"

#include <QMainWindow>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

namespace penwick {

class MacroRun;
class MainEditorView;
class TextView;

/// One document's window: its content, its state, and the runs of macros on it. Use it from the
/// main thread.
///
/// The content does not know the window around it, so that it could stand in a tab as well.
class EditorWindowController final : public QObject
{
    Q_OBJECT

public:
    /// Makes the window; it is not shown, and empty until a document is set.
    /// \param defaults where the window's frame is remembered; not owned, must outlive this.
    explicit EditorWindowController(UserDefaults &defaults = UserDefaults::standard(),
                                    Clock clock = systemClock(),
                                    MacroRuntimeService macroRuntime = {},
                                    QObject *parent = nullptr);
    ~EditorWindowController() override;

    /// Shows the document's text in the window, in place of what was there.
    /// \param document not owned; held weakly. Null empties the window.
    void setDocument(TextDocument *document);

    /// Null without a document, and once it is gone.
    [[nodiscard]] TextDocument *document() const { return m_document.data(); }

    /// Owned by this controller, also when it was closed.
    [[nodiscard]] QMainWindow *window() const { return m_window.get(); }

    /// What the window shows of the document; null without one.
    [[nodiscard]] MainEditorView *content() const;

    /// The text view in the window's content; null when there is none.
    [[nodiscard]] TextView *textView() const;

    [[nodiscard]] DocumentState *documentState() const { return m_documentState.get(); }

    /// The snapshot of this window that a macro starting now receives.
    [[nodiscard]] MacroContext buildMacroContext(const QString &macroId,
                                                 const QString &macroName) const;

    /// Runs a macro on this window and applies what it asks for, as one undo step; how it went is
    /// told by a message in the status bar, a turn later. While an input method is composing,
    /// nothing is run.
    ///
    /// Returns when the script has ended; where that takes a second, before, and a notice over the
    /// window lets the person stop it. Until it ends, the window is not to be edited, and another
    /// run on it only shows that notice; other windows are free. Events that are not keys or clicks
    /// may come in the meantime: the caller keeps this object alive.
    /// \param code the body of a JavaScript function.
    /// \param macroId, macroName what the script finds in `context.macro`.
    /// \param userInput the script's global of that name; without a value there is none.
    void runMacro(const QString &code,
                  const QString &macroId,
                  const QString &macroName,
                  const std::optional<QString> &userInput);

    [[nodiscard]] bool isRunningMacro() const;

    /// Shows the notice that lets the person stop the macro that runs, if one does. Who wants to
    /// close the window meanwhile calls this instead.
    void offerToStopMacro();

    /// Shows the message in the status bar, in a later turn of the event loop; a window that is
    /// gone by then drops it. All types are shown alike.
    void showMacroMessage(NotificationType type, const QString &message);

Q_SIGNALS:
    /// A run of this code failed, and the engine named the place.
    /// \param line of the code, 1-based.
    void macroFailedInLine(const QString &code, int line);

private:
    void loadWindow(UserDefaults &defaults);
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
    std::unique_ptr<DocumentState> m_documentState; // Outlives the window, which shows it.
    std::unique_ptr<QMainWindow> m_window;
    QPointer<MainEditorView> m_content;
    QPointer<MacroRun> m_run; // While a macro runs.
};

/// The first text view in the tree of `view`: itself, else the first in its children, depth first
/// and in their order. Null when there is none, and for null.
[[nodiscard]] TextView *findTextView(QWidget *view);

} // namespace penwick
