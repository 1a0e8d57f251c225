#include "app/AppDelegate.h"

#include "app/AppDelegateTestBase.h"
#include "code/CodeEditor.h"
#include "macro/library/MacroManager.h"
#include "support/Macros.h"
#include "support/ManagerPage.h"
#include "support/Waits.h"

#include <QMainWindow>
#include <QTest>
#include <QTimer>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the application from launch to quit, its windows and its menus.
class AppDelegateTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void init() { begin(); }

    void cleanup() { end(); }

    void launch_brokenStores_startsWithBuiltInMacros();
    void launch_withoutFiles_opensOneUntitledWindow();
    void launch_withFile_opensNoUntitledWindow();
    void launch_withMissingFile_opensEmptyDocumentForIt();
    void launch_withInvalidFile_showsMessageAndOpensUntitled();
    void launch_oneGoodOneBadFile_opensNoUntitledWindow();
    void profileChange_relabelsEveryBarAndKeepsMacros();
    void macroListChange_refillsTheMacroMenu();
    void updateItem_withoutUpdater_isDisabled();
    void profileManagerItem_showsOneWindow();
    void macroManagerItem_showsOneWindow();
    void lastActiveEditor_followsEditorWindowsOnly();
    void lastActiveEditor_followsTheTabInFront();
    void lastActiveEditor_tabChangedBehindAManager_followsIt();
    void lastActiveEditor_survivesItsTab();
    void lastActiveEditor_survivesItsWindow();
    void menus_actOnTheTabInFront();
    void menus_ofAWindowPulledOut_areComplete();
    void about_chosen_showsNameVersionAndDescription();
    void quit_withUnsavedMacroAndWindow_asksForBoth();
};

void AppDelegateTest::initTestCase()
{
    // The first launch creates the shared stores, which read these files once.
    m_home.write(u"data/penwick/macros.json"_s, "[ this is not JSON");
    m_home.write(u"data/penwick/ui-wording-profiles/broken.json"_s, "{");
    m_home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=gone\n");
}

void AppDelegateTest::launch_brokenStores_startsWithBuiltInMacros()
{
    launch();
    QCOMPARE(MacroManager::shared().macros().size(), 7);
    QCOMPARE(UIWordingProfileManager::shared().activeProfileId(), u"default-ja"_s);
    QVERIFY(m_home.read(u"data/penwick/macros.json"_s).contains("default_trimTrailingSpaces"));
}

void AppDelegateTest::launch_withoutFiles_opensOneUntitledWindow()
{
    launch();
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QVERIFY(controller()->window()->isVisible());
    QCOMPARE(menu(0)->actions().size(), 3);
    QCOMPARE(macroMenu(controller()->window())->actions().first()->text(), u"行末スペースを削除"_s);
    QTRY_VERIFY(controller()->textView()->hasFocus());
}

void AppDelegateTest::launch_withFile_opensNoUntitledWindow()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    QCOMPARE(m_app->documentController().windowControllers().size(), 2);
    QCOMPARE(text(0), u"A"_s);
    QCOMPARE(text(1), u"B"_s);
    QCOMPARE(m_app->exitStatus(), 0);
}

void AppDelegateTest::launch_withMissingFile_opensEmptyDocumentForIt()
{
    launch({m_home.file(u"missing.txt"_s)});
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(m_app->documentController().documentOf(controller())->filePath(),
             m_home.file(u"missing.txt"_s));
}

void AppDelegateTest::launch_withInvalidFile_showsMessageAndOpensUntitled()
{
    QString message;
    test::clickInModal(u"OK"_s, &message);
    launch({m_home.write(u"bad.txt"_s, "\xFF")});
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QVERIFY(m_app->documentController().documentOf(controller())->filePath().isEmpty());
    QCOMPARE(m_app->exitStatus(), 1);
}

void AppDelegateTest::launch_oneGoodOneBadFile_opensNoUntitledWindow()
{
    test::clickInModal(u"OK"_s);
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"bad.txt"_s, "\xFF")});
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(text(), u"A"_s);
    QCOMPARE(m_app->exitStatus(), 1);
}

void AppDelegateTest::profileChange_relabelsEveryBarAndKeepsMacros()
{
    launch({m_home.write(u"a.txt"_s, "A")});
    m_app->documentController().openFile(m_home.write(u"b.txt"_s, "B"),
                                         DocumentController::Placement::NewWindow);
    UIWordingProfile profile;
    profile.id = u"own"_s;
    profile.values = {{u"app.name"_s, u"Stift"_s},
                      {u"menu.file"_s, u"Datei"_s},
                      {u"macro.manage"_s, u"Makros…"_s}};
    const qsizetype macroItems = macroMenu(controller()->window())->actions().size();
    UIWordingProfileManager::shared().applyProfile(profile);
    for (const int index : {0, 1}) {
        QCOMPARE(menu(0, index)->actions()[0]->text(), u"Stift について"_s);
        QCOMPARE(menu(0, index)->actions()[2]->text(), u"Stift を終了"_s);
        QCOMPARE(menu(1, index)->menuAction()->text(), u"Datei"_s);
        const QMenu *macros = macroMenu(controller(index)->window());
        QCOMPARE(macros->actions().size(), macroItems);
        QCOMPARE(macros->actions().first()->text(), u"行末スペースを削除"_s);
        QCOMPARE(macros->actions().at(macroItems - 4)->text(), u"Makros…"_s);
    }
    QCOMPARE(controller()->window()->windowTitle(), u"a.txt[*] — Stift"_s);
}

void AppDelegateTest::macroListChange_refillsTheMacroMenu()
{
    launch();
    Macro added = test::sampleMacro(u"added"_s);
    added.isEnabled = true;
    added.name = u"R&D"_s;
    MacroManager::shared().addMacro(added);
    QVERIFY(macroItem(u"added"_s) == nullptr); // The menu is updated in a later turn of the event
                                               // loop.
    QCoreApplication::processEvents();
    QVERIFY(macroItem(u"added"_s) != nullptr);
    QCOMPARE(macroItem(u"added"_s)->text(), u"R&&D"_s);
    MacroManager::shared().deleteMacro(u"added"_s);
    QCoreApplication::processEvents();
    QVERIFY(macroItem(u"added"_s) == nullptr);
}

void AppDelegateTest::updateItem_withoutUpdater_isDisabled()
{
    launch();
    QVERIFY(!menu(5)->actions()[0]->isEnabled());
}

void AppDelegateTest::profileManagerItem_showsOneWindow()
{
    launch();
    QVERIFY(m_app->profileManagerWindowController() == nullptr);
    menu(4)->actions()[0]->trigger();
    QMainWindow *window = m_app->profileManagerWindowController()->window();
    QVERIFY(window->isVisible());
    window->close();
    menu(4)->actions()[0]->trigger();
    QCOMPARE(m_app->profileManagerWindowController()->window(), window);
    QVERIFY(QTest::qWaitForWindowActive(window));
}

void AppDelegateTest::macroManagerItem_showsOneWindow()
{
    launch();
    QVERIFY(m_app->macroManagerWindowController() == nullptr);
    const auto item = [this] {
        for (QAction *action : macroMenu(controller()->window())->actions())
            if (action->text() == u"マクロ管理…"_s)
                return action;
        return static_cast<QAction *>(nullptr);
    };
    QVERIFY(item() != nullptr && item()->isEnabled());
    item()->trigger();
    QMainWindow *window = m_app->macroManagerWindowController()->window();
    QVERIFY(QTest::qWaitForWindowActive(window));
    window->close();
    item()->trigger();
    QCOMPARE(m_app->macroManagerWindowController()->window(), window);
    QVERIFY(window->isVisible());
    QCOMPARE(m_app->targetEditor().get(), controller());
}

void AppDelegateTest::lastActiveEditor_followsEditorWindowsOnly()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    activate(0);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(0));
    activate(1);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(1));
    m_app->showProfileManager();
    QVERIFY(QTest::qWaitForWindowActive(m_app->profileManagerWindowController()->window()));
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller(1));
    QCOMPARE(m_app->targetEditor().get(), controller(1));
}

void AppDelegateTest::lastActiveEditor_followsTheTabInFront()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    activate(1);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(1));
    controller()->window()->stepTab(1);
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller(0));
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    // A tab change in an inactive window does not count.
    m_app->documentController().newDocument(DocumentController::Placement::NewWindow);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(2));
    controller()->window()->stepTab(1);
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller(2));
}

// An assistive program can do this.
void AppDelegateTest::lastActiveEditor_tabChangedBehindAManager_followsIt()
{
    launch({m_home.write(u"a.txt"_s, "A  "), m_home.write(u"b.txt"_s, "B  ")});
    activate(1);
    m_app->showProfileManager();
    QVERIFY(QTest::qWaitForWindowActive(m_app->profileManagerWindowController()->window()));
    controller()->window()->setCurrentController(controller(0));
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    m_app->runDynamicMacro(u"default_trimTrailingSpaces"_s);
    QTRY_COMPARE_WITH_TIMEOUT(text(0), u"A"_s, test::kLongWait);
    QCOMPARE(text(1), u"B  "_s);
    m_app->profileManagerWindowController()->window()->close();
}

void AppDelegateTest::lastActiveEditor_survivesItsTab()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    activate(1);
    m_app->showProfileManager();
    QVERIFY(QTest::qWaitForWindowActive(m_app->profileManagerWindowController()->window()));
    const auto closed = m_app->documentController().windowControllers().at(1);
    // The tab that comes to the front becomes the target too.
    m_app->documentController().closeDocument(closed.get());
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    m_app->profileManagerWindowController()->window()->close();
    QVERIFY(closed->textView() != nullptr);
}

void AppDelegateTest::menus_actOnTheTabInFront()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    activate(1);
    setText(u"B2"_s, 1);
    setText(u"A2"_s, 0);
    activate(0);
    const auto item = [this](int index) { return menu(1)->actions().at(index); };
    QTRY_VERIFY(controller(0)->textView()->hasFocus());
    menu(2)->actions().at(0)->trigger(); // Undo.
    QCOMPARE(text(0), u"A"_s);
    QCOMPARE(text(1), u"B2"_s);
    menu(2)->actions().at(1)->trigger(); // Redo.
    item(4)->trigger();                  // Save.
    QCOMPARE(m_home.read(u"a.txt"_s), QByteArray("A2"));
    QCOMPARE(m_home.read(u"b.txt"_s), QByteArray("B"));
    item(3)->trigger(); // Close closes only the tab.
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(text(0), u"B2"_s);
    QVERIFY(controller()->window()->isVisible());
    test::clickInModal(u"保存しない"_s);
    item(3)->trigger();
    QVERIFY(!m_app->documentController().hasDocuments());
}

void AppDelegateTest::menus_ofAWindowPulledOut_areComplete()
{
    launch({m_home.write(u"a.txt"_s, "A"), m_home.write(u"b.txt"_s, "B")});
    m_app->documentController().moveToNewWindow(controller(1), {0, 0});
    QCOMPARE(menu(1, 1)->actions().size(), menu(1, 0)->actions().size());
    QVERIFY(macroItem(u"default_trimTrailingSpaces"_s, 1) != nullptr);
    UIWordingProfile profile;
    profile.id = u"own"_s;
    profile.values = {{u"app.name"_s, u"Stift"_s}, {u"menu.file"_s, u"Datei"_s}};
    UIWordingProfileManager::shared().applyProfile(profile);
    for (const int index : {0, 1}) {
        QCOMPARE(menu(1, index)->menuAction()->text(), u"Datei"_s);
        QVERIFY(controller(index)->window()->windowTitle().endsWith(u"Stift"_s));
    }
}

void AppDelegateTest::lastActiveEditor_survivesItsWindow()
{
    launch();
    activate(0);
    const EditorWindowController *closed = controller();
    controller()->window()->close();
    QCoreApplication::processEvents();
    QVERIFY(!m_app->documentController().hasDocuments());
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), closed);
    QVERIFY(!m_app->lastActiveEditorWindowController()->window()->isVisible());
}

void AppDelegateTest::about_chosen_showsNameVersionAndDescription()
{
    launch();
    test::answerModal([](QWidget *window) {
        const auto *box = qobject_cast<QMessageBox *>(window);
        QCOMPARE(box->windowTitle(), u"penwick について"_s);
        QCOMPARE(box->text(), u"penwick"_s);
        QVERIFY(box->informativeText().contains(QStringLiteral(PENWICK_VERSION)));
        QVERIFY(box->informativeText().contains(u"シンプルに書けて"_s));
        window->close();
    });
    menu(0)->actions()[0]->trigger();
}

void AppDelegateTest::quit_withUnsavedMacroAndWindow_asksForBoth()
{
    launch();
    setText(u"unsaved"_s);
    m_app->showMacroManager();
    QMainWindow *manager = m_app->macroManagerWindowController()->window();
    test::ManagerPage(manager).clickRow(0);
    QTest::keyClicks(manager->findChild<CodeEditor *>()->textView(), u"x"_s);
    test::clickInModal(u"キャンセル"_s);
    menu(0)->actions()[2]->trigger();
    QVERIFY(m_app->documentController().hasDocuments());
    // Outside of an event loop the command would end all later ones. The last window does not end
    // this one, so only the command can.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QTimer::singleShot(0, this, [this] {
        test::answerModal([](QWidget *question) {
            test::clickInModal(u"保存しない"_s);
            test::buttonNamed(question, u"保存しない"_s)->click();
        });
        menu(0)->actions()[2]->trigger();
    });
    QTimer timeout;
    connect(&timeout, &QTimer::timeout, this, [] { QCoreApplication::exit(1); });
    timeout.start(test::kLongWait);
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(!m_app->documentController().hasDocuments());
    QCOMPARE(MacroManager::shared().macros().first().name, u"行末スペースを削除"_s);
}

QTEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
