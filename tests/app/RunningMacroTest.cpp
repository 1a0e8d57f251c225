#include "app/DocumentController.h"
#include "app/MacroLauncher.h"
#include "editor/TextView.h"
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
