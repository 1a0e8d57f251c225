#pragma once

#include "macro/library/MacroJson.h"
#include "macro/library/MacroManagerWindowController.h"
#include "support/ManagerPage.h"
#include "support/ManagerWorld.h"

#include <memory>

namespace penwick::test {

/// A macro manager with the given macros, in its window.
struct ShownMacroManager : ManagerDependencies
{
    explicit ShownMacroManager(const QList<Macro> &macros)
    {
        home.write(QStringLiteral("data/macros.json"), MacroJson::write(macros));
        manager = std::make_unique<MacroManager>(
            home.file(QStringLiteral("data")), defaults, time.clock(), ids.source());
        makeWindow();
        controller->showWindow();
    }

    /// Replaces the window by a new one that is not shown yet.
    void makeWindow()
    {
        controller.reset(); // Frees the name of the window's frame.
        controller = std::make_unique<MacroManagerWindowController>(
            MacroManagerView::Services{*manager,
                                       keys,
                                       center,
                                       panels.panels(),
                                       ids.source(),
                                       [this](const Macro &draft) { testRuns.append(draft); }},
            defaults);
    }

    [[nodiscard]] QMainWindow *window() const { return controller->window(); }

    [[nodiscard]] ManagerPage page() const { return ManagerPage(window()); }

    MacroKeys keys{defaults};
    QList<Macro> testRuns; ///< Drafts that the user asked to test.
    std::unique_ptr<MacroManager> manager;
    std::unique_ptr<MacroManagerWindowController> controller;
};

} // namespace penwick::test
