#pragma once

#include "app/AppDelegate.h"
#include "app/MenuBar.h"
#include "support/TemporaryHome.h"
#include "support/WholeText.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <memory>

namespace penwick::test {

/// Base of the tests of the whole application: everything except its event loop, over a home folder
/// of the test's own. A test object derives from it, and calls begin() in init() and end() in
/// cleanup(). The stores are the process-wide ones, as in the program, so all test functions of an
/// object share one home. An `index` counts the tabs of all windows from 0, oldest first.
class AppDelegateTestBase
{
protected:
    void begin()
    {
        const QDateTime now(QDate(2025, 3, 5), QTime(9, 7)); // In local time.
        m_app = std::make_unique<AppDelegate>([now] { return now.toUTC(); });
    }

    void end()
    {
        QCoreApplication::processEvents();
        m_app.reset();
        // Copies of the texts that the test left unsaved: the next test's start would offer them.
        QDir(m_home.file(QStringLiteral("state"))).removeRecursively();
        auto &profiles = UIWordingProfileManager::shared();
        profiles.applyProfile(profiles.profiles().first());
    }

    /// Starts the application as with these files on the command line.
    void launch(const QStringList &files = {})
    {
        OpenRequest request;
        for (const QString &file : files)
            request.items.append({QFile::encodeName(file), std::nullopt, std::nullopt});
        m_app->applicationDidFinishLaunching(request);
        QCoreApplication::processEvents();
    }

    [[nodiscard]] EditorWindowController *controller(int index = 0) const
    {
        return m_app->documentController().windowControllers().at(index).get();
    }

    [[nodiscard]] QMenu *menu(int bar, int index = 0) const
    {
        return controller(index)->window()->menuBar()->actions().at(bar)->menu();
    }

    /// The item of a macro in the macro menu of a window; null when there is none.
    [[nodiscard]] QAction *macroItem(const QString &id, int index = 0) const
    {
        for (QAction *action : macroMenu(controller(index)->window())->actions())
            if (action->data().toString() == id)
                return action;
        return nullptr;
    }

    /// Replaces the whole text in one edit, and processes the resulting events.
    void setText(const QString &text, int index = 0) const
    {
        replaceWholeText(controller(index)->textView(), Text(text));
        QCoreApplication::processEvents();
    }

    [[nodiscard]] QString text(int index = 0) const
    {
        return controller(index)->textView()->string().toString();
    }

    /// The message in the status bar, after all queued events.
    [[nodiscard]] QString message(int index = 0) const
    {
        QCoreApplication::processEvents();
        return controller(index)->documentState()->macroNotificationMessage().value_or(QString());
    }

    void activate(int index) const
    {
        EditorWindow *window = controller(index)->window();
        window->setCurrentController(controller(index));
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }

    TemporaryHome m_home;
    std::unique_ptr<AppDelegate> m_app;
};

} // namespace penwick::test
