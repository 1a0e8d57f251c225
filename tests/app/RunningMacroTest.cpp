#include "app/DocumentController.h"
#include "app/MacroLauncher.h"
#include "editor/TextView.h"
#include "macro/engine/EditorTabBar.h"
#include "macro/engine/MacroRunNotice.h"
#include "macro/script/ScriptHostPool.h"
#include "support/Macros.h"
#include "support/TemporaryHome.h"

#include <QFile>
#include <QMainWindow>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// What the program does while a macro runs on one of its windows.
class RunningMacroTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void close_showsTheNoticeAndStaysOpen();
    void close_afterStopping_closes();
    void quit_showsTheNoticeAndClosesNothing();
    void open_file_leavesTheWindowOfTheMacroAlone();
    void macroWithAPrompt_onTheSameWindow_asksNothing();
    void open_another_goesToAWindowThatIsFree();
    void move_ofItsTab_isRefused();
    void close_ofTheWindowFromAnotherTab_showsTheMacrosTab();
    void edits_ofAMacroBehind_reachItsText();
    void documents_goneMeanwhile_endTheMacro();

private:
    [[nodiscard]] std::shared_ptr<EditorWindowController> controller(int index) const
    {
        return m_documents->windowControllers().at(index);
    }

    [[nodiscard]] MacroRunNotice *notice(int index) const
    {
        return controller(index)->window()->findChild<MacroRunNotice *>();
    }

    /// Starts a macro that never ends, and returns once its notice is there.
    void runEndless(int index) const
    {
        controller(index)->runMacro(u"while (true) ;"_s, u"id"_s, u"name"_s, std::nullopt);
        QVERIFY(controller(index)->isRunningMacro());
        QVERIFY(notice(index) != nullptr);
    }

    std::unique_ptr<test::TemporaryHome> m_home;
    std::unique_ptr<DocumentController> m_documents;
};

void RunningMacroTest::init()
{
    m_home = std::make_unique<test::TemporaryHome>();
    m_documents = std::make_unique<DocumentController>();
    m_documents->newDocument();
}

void RunningMacroTest::cleanup()
{
    m_documents.reset();
    m_home.reset();
}

void RunningMacroTest::close_showsTheNoticeAndStaysOpen()
{
    runEndless(0);
    QVERIFY(!controller(0)->window()->close());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(controller(0)->isRunningMacro());
    QVERIFY(controller(0)->window()->isVisible());
}

void RunningMacroTest::close_afterStopping_closes()
{
    runEndless(0);
    notice(0)->reject();
    QVERIFY(controller(0)->window()->close());
    QVERIFY(m_documents->windowControllers().isEmpty());
}

void RunningMacroTest::quit_showsTheNoticeAndClosesNothing()
{
    m_documents->newDocument();
    QTest::keyClicks(controller(1)->textView(), u"unsaved"_s);
    runEndless(0);
    controller(1)->window()->activateWindow();
    QVERIFY(!m_documents->closeAll());
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
    QVERIFY(controller(0)->window()->isVisible() && controller(1)->window()->isVisible());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(controller(0)->isRunningMacro());
}

void RunningMacroTest::open_file_leavesTheWindowOfTheMacroAlone()
{
    runEndless(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
    QVERIFY(controller(0)->isRunningMacro());
    QCOMPARE(controller(1)->textView()->string().toString(), u"abc"_s);
}

void RunningMacroTest::macroWithAPrompt_onTheSameWindow_asksNothing()
{
    runEndless(0);
    const MacroLauncher launcher([this] { return controller(0); }, systemClock());
    Macro macro = test::sampleMacro();
    macro.id = u"default_addLinePrefix"_s;
    launcher.promptOrRun(macro); // A prompt would not return.
    QVERIFY(controller(0)->isRunningMacro());
    QVERIFY(notice(0)->isVisible());
}

// The notice holds the whole window, and whoever opens a file wants to read it.
void RunningMacroTest::open_another_goesToAWindowThatIsFree()
{
    m_documents->newDocument();
    runEndless(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QVERIFY(controller(2)->window() != controller(0)->window());
    QCOMPARE(controller(1)->window(), controller(0)->window());
}

void RunningMacroTest::move_ofItsTab_isRefused()
{
    m_documents->newDocument();
    m_documents->newDocument(DocumentController::Placement::NewWindow);
    runEndless(0);
    EditorWindow *window = controller(0)->window();
    m_documents->moveToNewWindow(controller(0).get(), {0, 0});
    controller(0)->moveTo(controller(2)->window()->shared_from_this());
    QCOMPARE(controller(0)->window(), window);
    QCOMPARE(notice(0)->parentWidget(), window);
}

void RunningMacroTest::close_ofTheWindowFromAnotherTab_showsTheMacrosTab()
{
    m_documents->newDocument();
    QTest::keyClicks(controller(1)->textView(), u"unsaved"_s);
    runEndless(0);
    controller(0)->window()->setCurrentController(controller(1).get());
    QVERIFY(!controller(0)->window()->close()); // A question about the text would not return.
    QVERIFY(controller(0)->isInFront());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(!m_documents->closeOtherDocuments(controller(1).get()));
    QVERIFY(!m_documents->closeDocument(controller(0).get()));
    QVERIFY(controller(0)->isRunningMacro());
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
}

void RunningMacroTest::edits_ofAMacroBehind_reachItsText()
{
    m_documents->newDocument();
    controller(0)->runMacro(u"const end = Date.now() + 1500; while (Date.now() < end) ;"
                            u"return {textEdits: [{type: 'replaceAll', text: 'new'}]};"_s,
                            u"id"_s,
                            u"name"_s,
                            std::nullopt);
    QVERIFY(controller(0)->isRunningMacro());
    controller(0)->window()->setCurrentController(controller(1).get());
    QTRY_VERIFY_WITH_TIMEOUT(!controller(0)->isRunningMacro(), 60000);
    QCOMPARE(controller(0)->textView()->string().toString(), u"new"_s);
    QVERIFY(controller(1)->textView()->string().isEmpty());
    QVERIFY(controller(1)->isInFront());
    const EditorTabBar *bar = controller(0)->window()->tabBar();
    QTRY_COMPARE(bar->accessibleTabName(0), u"名称未設定（未保存の変更あり）"_s);
}

void RunningMacroTest::documents_goneMeanwhile_endTheMacro()
{
    QVERIFY(ScriptHostPool::shared().prepare());
    const qint64 process = ScriptHostPool::shared().spareProcessId();
    runEndless(0);
    QVERIFY(QFile::exists(u"/proc/%1"_s.arg(process)));
    m_documents.reset();
    QTRY_VERIFY(reapHostProcesses() && !QFile::exists(u"/proc/%1"_s.arg(process)));
}

QTEST_MAIN(RunningMacroTest)
#include "RunningMacroTest.moc"
