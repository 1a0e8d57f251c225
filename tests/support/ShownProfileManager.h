#pragma once

#include "support/ManagerPage.h"
#include "support/ManagerWorld.h"
#include "wording/ProfileManagerWindowController.h"

#include <memory>

namespace penwick::test {

/// A profile manager with the given user-made profiles, in its window.
struct ShownProfileManager : ManagerDependencies
{
    explicit ShownProfileManager(const QList<UIWordingProfile> &profiles = {})
    {
        for (const UIWordingProfile &profile : profiles)
            home.write(QStringLiteral("profiles/%1.json").arg(profile.id), profile.toJson());
        manager = std::make_unique<UIWordingProfileManager>(
            home.file(QStringLiteral("profiles")), defaults, center);
        makeWindow();
        controller->showWindow();
    }

    /// Replaces the window by a new one that is not shown yet.
    void makeWindow()
    {
        controller.reset(); // Frees the name of the window's frame.
        controller = std::make_unique<ProfileManagerWindowController>(
            ProfileManagerView::Services{
                *manager, center, panels.panels(), time.clock(), ids.source()},
            defaults);
    }

    [[nodiscard]] QMainWindow *window() const { return controller->window(); }

    [[nodiscard]] ManagerPage page() const { return ManagerPage(window()); }

    std::unique_ptr<UIWordingProfileManager> manager;
    std::unique_ptr<ProfileManagerWindowController> controller;
};

} // namespace penwick::test
