#pragma once

#include "preferences/PreferencesWindowController.h"
#include "support/ManagerWorld.h"

#include <QTest>

#include <memory>

namespace penwick::test {

/// The window of the settings over a file of the test's own.
struct ShownSettings : ManagerDependencies
{
    /// \param stored the lines of the file's section `General`.
    explicit ShownSettings(const QByteArray &stored = {})
    {
        if (!stored.isEmpty())
            home.write(QStringLiteral("config.conf"), "[General]\n" + stored);
        defaults.reload();
        preferences = std::make_unique<Preferences>(defaults);
        controller = std::make_unique<PreferencesWindowController>(
            PreferencesView::Services{*preferences,
                                      center,
                                      QStringLiteral("/home/user/penwick.conf"),
                                      [this] { ++openings; }},
            defaults);
        controller->showWindow();
        window()->activateWindow();
        static_cast<void>(QTest::qWaitForWindowActive(window()));
    }

    [[nodiscard]] QMainWindow *window() const { return controller->window(); }

    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<PreferencesWindowController> controller;
    int openings = 0; ///< How often the file was to be shown.
};

} // namespace penwick::test
