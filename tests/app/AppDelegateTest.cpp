#include "app/AppDelegate.h"

#include "editor/TextView.h"
#include "macro/library/CodeEditor.h"
#include "macro/library/MacroManager.h"
#include "support/Macros.h"
#include "support/ManagerPage.h"
#include "support/TemporaryHome.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// The whole application but its event loop, over a home folder of its own. The stores are the
/// process's shared ones, as in the program, so the test functions build on each other's home.
class AppDelegateTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void launch_brokenStores_startsWithBuiltInMacros();
    void launch_withoutFiles_opensOneUntitledWindow();
    void launch_withFile_opensNoUntitledWindow();
    void launch_withMissingFile_opensEmptyDocumentForIt();
    void launch_withInvalidFile_saysSoAndOpensUntitled();
    void launch_oneGoodOneBadFile_opensNoUntitledWindow();
    void profileChange_relabelsEveryBarAndKeepsMacros();
    void macroListChange_refillsTheMacroMenu();
    void updateItem_withoutUpdater_isDisabled();
    void profileManagerItem_showsOneWindow();
    void macroManagerItem_showsOneWindow();
    void macroManagersTestRun_editsTheLastActiveEditor();
    void macroManagersTestRun_failing_marksTheLine_data();
    void macroManagersTestRun_failing_marksTheLine();
    void lastActiveEditor_followsEditorWindowsOnly();
    void lastActiveEditor_followsTheTabInFront();
    void lastActiveEditor_tabChangedBehindAManager_followsIt();
    void lastActiveEditor_survivesItsTab();
    void lastActiveEditor_survivesItsWindow();
    void menus_actOnTheTabInFront();
    void menus_ofAWindowPulledOut_areThere();
    void dynamicMacro_fromTheMenu_editsTheDocument();
    void dynamicMacro_vanished_doesNothing();
    void prefixMacro_prompted_usesTheAnswer_data();
    void prefixMacro_prompted_usesTheAnswer();
    void datePrompt_cancelled_isNoticed();
    void datePrompt_answered_insertsTheDate();
    void prompt_windowActivatedMeanwhile_receivesTheRun();
    void testMacro_withoutEditor_doesNothing();
    void testMacros_run_reportTheirSuccess();
    void managersRun_withoutEditor_warns();
    void about_chosen_showsNameVersionAndDescription();
    // Last, for no event loop runs in a process that was told to quit.
    void quit_withUnsavedMacroAndWindow_asksForBoth();

private:
    [[nodiscard]] EditorWindowController *controller(int index = 0) const
    {
        return m_app->documentController().windowControllers().at(index).get();
    }

    [[nodiscard]] QMenu *menu(int bar, int index = 0) const
    {
        return controller(index)->window()->menuBar()->actions().at(bar)->menu();
    }

    [[nodiscard]] QAction *macroItem(const QString &id, int index = 0) const;
    void launch(const QStringList &files = {});
    void setText(const QString &text, int index = 0) const;
    [[nodiscard]] QString text(int index = 0) const;
    [[nodiscard]] QString message(int index = 0) const;
    void activate(int index) const;

    std::unique_ptr<test::TemporaryHome> m_home;
    std::unique_ptr<AppDelegate> m_app;
};

void AppDelegateTest::initTestCase()
{
    m_home = std::make_unique<test::TemporaryHome>();
    // Read once, when the shared stores are made by the first launch.
    m_home->write(u"data/penwick/macros.json"_s, "[ this is not JSON");
    m_home->write(u"data/penwick/ui-wording-profiles/broken.json"_s, "{");
    m_home->write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=gone\n");
}

void AppDelegateTest::cleanupTestCase()
{
    m_home.reset();
}

void AppDelegateTest::init()
{
    const QDateTime now(QDate(2025, 3, 5), QTime(9, 7), Qt::LocalTime);
    m_app = std::make_unique<AppDelegate>([now] { return now.toUTC(); });
}

void AppDelegateTest::cleanup()
{
    QCoreApplication::processEvents();
    m_app.reset();
    auto &profiles = UIWordingProfileManager::shared();
    profiles.applyProfile(profiles.profiles().first());
}

void AppDelegateTest::launch(const QStringList &files)
{
    OpenRequest request;
    for (const QString &file : files)
        request.items.append({QFile::encodeName(file), std::nullopt, std::nullopt});
    m_app->applicationDidFinishLaunching(request);
    QCoreApplication::processEvents();
}

QAction *AppDelegateTest::macroItem(const QString &id, int index) const
{
    for (QAction *action : macroMenu(controller(index)->window())->actions()) {
        if (action->data().toString() == id) {
            return action;
        }
    }
    return nullptr;
}

void AppDelegateTest::setText(const QString &text, int index) const
{
    TextView *view = controller(index)->textView();
    const Text value(text);
    const TextRange all{0, view->string().size()};
    view->shouldChangeText(all, value);
    view->replaceCharacters(all, value);
    view->didChangeText();
    QCoreApplication::processEvents();
}

QString AppDelegateTest::text(int index) const
{
    return controller(index)->textView()->string().toString();
}

QString AppDelegateTest::message(int index) const
{
    QCoreApplication::processEvents();
    return controller(index)->documentState()->macroNotificationMessage().value_or(QString());
}

void AppDelegateTest::activate(int index) const
{
    EditorWindow *window = controller(index)->window();
    window->setCurrentController(controller(index));
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
}

void AppDelegateTest::launch_brokenStores_startsWithBuiltInMacros()
{
    launch();
    QCOMPARE(MacroManager::shared().macros().size(), 7);
    QCOMPARE(UIWordingProfileManager::shared().activeProfileId(), u"default-ja"_s);
    QVERIFY(m_home->read(u"data/penwick/macros.json"_s).contains("default_trimTrailingSpaces"));
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
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
    QCOMPARE(m_app->documentController().windowControllers().size(), 2);
    QCOMPARE(text(0), u"A"_s);
    QCOMPARE(text(1), u"B"_s);
}

void AppDelegateTest::launch_withMissingFile_opensEmptyDocumentForIt()
{
    launch({m_home->file(u"missing.txt"_s)});
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(m_app->documentController().documentOf(controller())->filePath(),
             m_home->file(u"missing.txt"_s));
}

void AppDelegateTest::launch_withInvalidFile_saysSoAndOpensUntitled()
{
    QString message;
    test::clickInModal(u"OK"_s, &message);
    launch({m_home->write(u"bad.txt"_s, "\xFF")});
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QVERIFY(m_app->documentController().documentOf(controller())->filePath().isEmpty());
}

void AppDelegateTest::launch_oneGoodOneBadFile_opensNoUntitledWindow()
{
    test::clickInModal(u"OK"_s);
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"bad.txt"_s, "\xFF")});
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(text(), u"A"_s);
}

void AppDelegateTest::profileChange_relabelsEveryBarAndKeepsMacros()
{
    launch({m_home->write(u"a.txt"_s, "A")});
    m_app->documentController().openFile(m_home->write(u"b.txt"_s, "B"),
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
    QVERIFY(macroItem(u"added"_s) == nullptr); // In a later turn.
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
        for (QAction *action : macroMenu(controller()->window())->actions()) {
            if (action->text() == u"マクロ管理…"_s) {
                return action;
            }
        }
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

void AppDelegateTest::macroManagersTestRun_editsTheLastActiveEditor()
{
    launch();
    setText(u"old"_s);
    m_app->showMacroManager();
    const test::ManagerPage page(m_app->macroManagerWindowController()->window());
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    auto *code = m_app->macroManagerWindowController()->window()->findChild<CodeEditor *>();
    code->textView()->selectAll();
    QTest::keyClicks(code->textView(),
                     u"return { textEdits: [{ type: 'replaceAll', text: 'new' }] };"_s);
    page.click(u"テスト実行"_s);
    QTRY_COMPARE(text(), u"new"_s);
    test::clickInModal(u"保存しない"_s); // The draft, at the end.
    QVERIFY(m_app->macroManagerWindowController()->window()->close());
}

void AppDelegateTest::lastActiveEditor_followsEditorWindowsOnly()
{
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
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
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
    activate(1);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(1));
    controller()->window()->stepTab(1);
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller(0));
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    // Of another window, which nobody is in.
    m_app->documentController().newDocument(DocumentController::Placement::NewWindow);
    QTRY_COMPARE(m_app->lastActiveEditorWindowController().get(), controller(2));
    controller()->window()->stepTab(1);
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller(2));
}

// As from an assistive program.
void AppDelegateTest::lastActiveEditor_tabChangedBehindAManager_followsIt()
{
    launch({m_home->write(u"a.txt"_s, "A  "), m_home->write(u"b.txt"_s, "B  ")});
    activate(1);
    m_app->showProfileManager();
    QVERIFY(QTest::qWaitForWindowActive(m_app->profileManagerWindowController()->window()));
    controller()->window()->setCurrentController(controller(0));
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    m_app->runDynamicMacro(u"default_trimTrailingSpaces"_s);
    QTRY_COMPARE(text(0), u"A"_s);
    QCOMPARE(text(1), u"B  "_s);
    m_app->profileManagerWindowController()->window()->close();
}

void AppDelegateTest::lastActiveEditor_survivesItsTab()
{
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
    activate(1);
    m_app->showProfileManager();
    QVERIFY(QTest::qWaitForWindowActive(m_app->profileManagerWindowController()->window()));
    const auto closed = m_app->documentController().windowControllers().at(1);
    // The tab that takes its place in front takes it as the target too.
    m_app->documentController().closeDocument(closed.get());
    QCOMPARE(m_app->targetEditor().get(), controller(0));
    m_app->profileManagerWindowController()->window()->close();
    QVERIFY(closed->textView() != nullptr);
}

void AppDelegateTest::menus_actOnTheTabInFront()
{
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
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
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("A2"));
    QCOMPARE(m_home->read(u"b.txt"_s), QByteArray("B"));
    item(3)->trigger(); // Close: the tab alone.
    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QCOMPARE(text(0), u"B2"_s);
    QVERIFY(controller()->window()->isVisible());
    test::clickInModal(u"保存しない"_s);
    item(3)->trigger();
    QVERIFY(!m_app->documentController().hasDocuments());
}

void AppDelegateTest::menus_ofAWindowPulledOut_areThere()
{
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
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

void AppDelegateTest::dynamicMacro_fromTheMenu_editsTheDocument()
{
    launch();
    setText(u"one  \ntwo\t"_s);
    macroItem(u"default_trimTrailingSpaces"_s)->trigger();
    QCOMPARE(text(), u"one\ntwo"_s);
    controller()->textView()->undo();
    QCOMPARE(text(), u"one  \ntwo\t"_s);
}

void AppDelegateTest::dynamicMacro_vanished_doesNothing()
{
    launch();
    setText(u"x"_s);
    m_app->runDynamicMacro(u"no such macro"_s);
    QCOMPARE(text(), u"x"_s);
    QCOMPARE(message(), QString());
}

void AppDelegateTest::prefixMacro_prompted_usesTheAnswer_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    QTest::newRow("two spaces") << u"  "_s << u"  a\n  b"_s << u""_s;
    QTest::newRow("ordinary") << u"> "_s << u"> a\n> b"_s << u""_s;
    QTest::newRow("empty") << u""_s << u"a\nb"_s
                           << u"文字列が指定されなかったため、実行を中止しました"_s;
}

void AppDelegateTest::prefixMacro_prompted_usesTheAnswer()
{
    QFETCH(QString, answer);
    QFETCH(QString, text);
    QFETCH(QString, message);
    launch();
    setText(u"a\nb"_s);
    test::answerModal([answer](QWidget *window) {
        auto *field = window->findChild<QLineEdit *>();
        QCOMPARE(field->text(), u"- "_s);
        field->setText(answer);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_addLinePrefix"_s)->trigger();
    QCOMPARE(this->text(), text);
    if (!message.isEmpty()) {
        QCOMPARE(this->message(), message);
    }
}

void AppDelegateTest::datePrompt_cancelled_isNoticed()
{
    launch();
    test::clickInModal(u"キャンセル"_s);
    macroItem(u"default_insertDateTime"_s)->trigger();
    QCOMPARE(message(), u"キャンセルしました"_s);
    QCOMPARE(text(), QString());
}

void AppDelegateTest::datePrompt_answered_insertsTheDate()
{
    launch();
    test::answerModal([](QWidget *window) {
        window->findChild<QComboBox *>()->setCurrentIndex(4);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_insertDateTime"_s)->trigger();
    QCOMPARE(text(), u"2025年3月5日"_s);
}

void AppDelegateTest::prompt_windowActivatedMeanwhile_receivesTheRun()
{
    launch({m_home->write(u"a.txt"_s, "A"), m_home->write(u"b.txt"_s, "B")});
    activate(0);
    test::answerModal([this](QWidget *window) {
        activate(1);
        test::buttonNamed(window, u"OK"_s)->click();
    });
    macroItem(u"default_addLinePrefix"_s)->trigger();
    QCOMPARE(text(0), u"A"_s);
    QCOMPARE(text(1), u"- B"_s);
}

void AppDelegateTest::testMacro_withoutEditor_doesNothing()
{
    m_app->runTestMacro();
    m_app->runTestMacroSelection();
    m_app->runDynamicMacro(u"default_trimTrailingSpaces"_s);
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(m_app->lastActiveEditorWindowController() == nullptr);
}

void AppDelegateTest::testMacros_run_reportTheirSuccess()
{
    launch();
    QList<QAction *> items = macroMenu(controller()->window())->actions();
    items.last()->trigger();
    QCOMPARE(message(), u"選択範囲がありません。テキストを選択してから実行してください。"_s);
    setText(u"abc"_s);
    controller()->textView()->setSelectedRange({1, 1});
    items.last()->trigger();
    QCOMPARE(text(), u"a[選択テスト: b]c"_s);
    QCOMPARE(message(), u"replaceSelection テスト成功"_s);
    items.at(items.size() - 2)->trigger();
    QVERIFY(text().startsWith(u"テストマクロが実行されました！\n現在時刻: "_s));
    QCOMPARE(message(), u"replaceAll テスト成功"_s);
}

void AppDelegateTest::managersRun_withoutEditor_warns()
{
    QString warning;
    test::clickInModal(u"OK"_s, &warning);
    m_app->runMacroInActiveEditor(test::sampleMacro());
    QCOMPARE(warning, u"実行対象のエディタが見つかりません"_s);
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

void AppDelegateTest::macroManagersTestRun_failing_marksTheLine_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("line");
    QTest::newRow("first line") << u"missing();"_s << 1;
    QTest::newRow("third line") << u"let a;\n\nthrow new Error('x');\n"_s << 3;
    QTest::newRow("in a function") << u"function f() {\n  null.x;\n}\nf();"_s << 2;
    QTest::newRow("no program") << u"let a = 1;\nlet = = 2;"_s << 2;
    QTest::newRow("no error thrown") << u"\n\nthrow 'text';"_s << 0;
}

void AppDelegateTest::macroManagersTestRun_failing_marksTheLine()
{
    QFETCH(QString, code);
    QFETCH(int, line);
    launch();
    setText(u"a\u2028b\nc"_s);
    m_app->showMacroManager();
    const test::ManagerPage page(m_app->macroManagerWindowController()->window());
    QTest::mouseClick(page.tool(u"macroAdd"_s), Qt::LeftButton);
    auto *editor = m_app->macroManagerWindowController()->window()->findChild<CodeEditor *>();
    editor->setText(code);
    page.click(u"テスト実行"_s);
    QTRY_VERIFY(!message().isEmpty());
    QTRY_COMPARE(editor->errorLine(), line);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(m_app->macroManagerWindowController()->window()->close());
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
    test::answerModal([](QWidget *question) {
        test::clickInModal(u"保存しない"_s);
        test::buttonNamed(question, u"保存しない"_s)->click();
    });
    menu(0)->actions()[2]->trigger();
    QVERIFY(!m_app->documentController().hasDocuments());
}

QTEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
