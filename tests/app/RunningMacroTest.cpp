#include "app/DocumentsTestBase.h"
#include "app/MacroLauncher.h"
#include "support/HeldScript.h"
#include "support/Macros.h"
#include "support/Waits.h"
#include "window/EditorTabBar.h"
#include "window/MacroRunNotice.h"

#include <QFile>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of the program while a macro runs in one of its windows.
class RunningMacroTest final : public QObject, private test::DocumentsTestBase
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
    [[nodiscard]] MacroRunNotice *notice(int index) const
    {
        return window(index)->findChild<MacroRunNotice *>();
    }

    /// Starts a macro that never ends. Returns once its notice is visible.
    void runEndless(int index) const
    {
        controller(index)->runMacro(u"while (true) ;"_s, u"id"_s, u"name"_s, std::nullopt);
        QVERIFY(controller(index)->isRunningMacro());
        QVERIFY(notice(index) != nullptr);
    }
};

void RunningMacroTest::init()
{
    begin();
    m_documents->newDocument();
}

void RunningMacroTest::cleanup()
{
    end();
}

void RunningMacroTest::close_showsTheNoticeAndStaysOpen()
{
    runEndless(0);
    QVERIFY(!window(0)->close());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(controller(0)->isRunningMacro());
    QVERIFY(window(0)->isVisible());
}

void RunningMacroTest::close_afterStopping_closes()
{
    runEndless(0);
    notice(0)->reject();
    QVERIFY(window(0)->close());
    QVERIFY(m_documents->windowControllers().isEmpty());
}

void RunningMacroTest::quit_showsTheNoticeAndClosesNothing()
{
    m_documents->newDocument();
    type(u"unsaved"_s, 1);
    runEndless(0);
    window(1)->activateWindow();
    QVERIFY(!m_documents->closeAll());
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
    QVERIFY(window(0)->isVisible() && window(1)->isVisible());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(controller(0)->isRunningMacro());
}

void RunningMacroTest::open_file_leavesTheWindowOfTheMacroAlone()
{
    runEndless(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
    QVERIFY(controller(0)->isRunningMacro());
    QCOMPARE(text(1), u"abc"_s);
}

void RunningMacroTest::macroWithAPrompt_onTheSameWindow_asksNothing()
{
    runEndless(0);
    MacroLauncher launcher([this] { return m_documents->windowControllers().first(); },
                           systemClock());
    Macro macro = test::sampleMacro();
    macro.id = u"default_addLinePrefix"_s;
    launcher.promptOrRun(macro); // A prompt would block here.
    QVERIFY(controller(0)->isRunningMacro());
    QVERIFY(notice(0)->isVisible());
}

// The notice blocks the whole window, so a file that the user opens needs another one.
void RunningMacroTest::open_another_goesToAWindowThatIsFree()
{
    m_documents->newDocument();
    runEndless(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QVERIFY(window(2) != window(0));
    QCOMPARE(window(1), window(0));
}

void RunningMacroTest::move_ofItsTab_isRefused()
{
    m_documents->newDocument();
    m_documents->newDocument(DocumentController::Placement::NewWindow);
    runEndless(0);
    EditorWindow *before = window(0);
    m_documents->moveToNewWindow(controller(0), {0, 0});
    controller(0)->moveTo(window(2)->shared_from_this());
    QCOMPARE(window(0), before);
    QCOMPARE(notice(0)->parentWidget(), before);
}

void RunningMacroTest::close_ofTheWindowFromAnotherTab_showsTheMacrosTab()
{
    m_documents->newDocument();
    type(u"unsaved"_s, 1);
    runEndless(0);
    window(0)->setCurrentController(controller(1));
    QVERIFY(!window(0)->close()); // A question about the text would block here.
    QVERIFY(controller(0)->isInFront());
    QVERIFY(notice(0)->isVisible());
    QVERIFY(!m_documents->closeOtherDocuments(controller(1)));
    QVERIFY(!m_documents->closeDocument(controller(0)));
    QVERIFY(controller(0)->isRunningMacro());
    QCOMPARE(m_documents->windowControllers().size(), qsizetype{2});
}

void RunningMacroTest::edits_ofAMacroBehind_reachItsText()
{
    m_documents->newDocument();
    const test::HeldScript held;
    controller(0)->runMacro(u"return {textEdits: [{type: 'replaceAll', text: 'new'}]};"_s,
                            u"id"_s,
                            u"name"_s,
                            std::nullopt);
    QVERIFY(controller(0)->isRunningMacro());
    window(0)->setCurrentController(controller(1));
    held.release();
    QTRY_VERIFY_WITH_TIMEOUT(!controller(0)->isRunningMacro(), test::kLongWait);
    QCOMPARE(text(0), u"new"_s);
    QVERIFY(view(1)->string().isEmpty());
    QVERIFY(controller(1)->isInFront());
    const EditorTabBar *bar = window(0)->tabBar();
    QTRY_COMPARE(bar->accessibleTabName(0), u"名称未設定（未保存の変更あり）"_s);
}

void RunningMacroTest::documents_goneMeanwhile_endTheMacro()
{
    QVERIFY(ScriptHostPool::shared().prepare());
    const qint64 process = ScriptHostPool::shared().spareProcessId();
    runEndless(0);
    QVERIFY(QFile::exists(u"/proc/%1"_s.arg(process)));
    m_documents.reset();
    QTRY_VERIFY_WITH_TIMEOUT(reapHostProcesses() && !QFile::exists(u"/proc/%1"_s.arg(process)),
                             test::kLongWait);
}

QTEST_MAIN(RunningMacroTest)
#include "RunningMacroTest.moc"
