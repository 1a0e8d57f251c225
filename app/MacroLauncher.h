#pragma once

#include "macro/library/Macro.h"
#include "platform/settings/Timestamp.h"
#include "window/EditorWindowController.h"

#include <functional>
#include <memory>

class QWidget;

namespace penwick {

/// Runs a macro in an editor window, after asking for the input that some built-in macros need. The
/// window is chosen after the question is answered.
class MacroLauncher final
{
public:
    using WindowController = std::shared_ptr<EditorWindowController>;
    /// Returns the controller to run in; null when there is none.
    using TargetEditor = std::function<WindowController()>;

    /// \param clock gives the time that the date prompt inserts.
    MacroLauncher(TargetEditor targetEditor, Clock clock);

    /// Runs the macro, after its prompt if its id has one. Does nothing without a target editor,
    /// but for the prompt.
    void promptOrRun(const Macro &macro) const;
    /// As above, but shows a message when there is no editor to run in.
    void runInActiveEditor(const Macro &macro) const;
    /// Runs a macro without a prompt. Does nothing without a target editor.
    void run(const QString &code,
             const QString &id,
             const QString &name,
             const std::optional<QString> &userInput) const;

private:
    void promptForText(const Macro &macro, const QString &message, const QString &initial) const;
    void promptForDate(const Macro &macro) const;
    void showInfo(const QString &message) const;
    [[nodiscard]] QWidget *promptParent() const;

    TargetEditor m_targetEditor;
    Clock m_clock;
};

} // namespace penwick
