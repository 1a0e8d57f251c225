#pragma once

#include "macro/library/Macro.h"
#include "platform/settings/Timestamp.h"
#include "window/EditorWindowController.h"

#include <QHash>

#include <functional>
#include <memory>
#include <optional>

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

    /// What a prompt contains at first.
    enum class Offer { Default, LastInput };

    /// Runs the macro, after its prompt if its id has one. Does nothing without a target editor,
    /// but for the prompt.
    void promptOrRun(const Macro &macro, Offer offer = Offer::Default);
    /// As above, but shows a message when there is no editor to run in.
    void runInActiveEditor(const Macro &macro);
    /// Runs a macro without a prompt. Does nothing without a target editor.
    void run(const Macro &macro, const std::optional<QString> &userInput = std::nullopt) const;

private:
    [[nodiscard]] std::optional<QString> ask(const Macro &macro, QString *input) const;
    void runWith(const Macro &macro, const std::optional<QString> &answer) const;

    TargetEditor m_targetEditor;
    Clock m_clock;
    QHash<QString, QString> m_inputs; // The last input of each macro, by its id.
};

} // namespace penwick
