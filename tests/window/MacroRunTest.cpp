#include "window/MacroRun.h"

#include "support/CutStart.h"
#include "support/MacroEditor.h"
#include "support/TemporaryHome.h"
#include "text/CutText.h"
#include "window/MacroRunNotice.h"

#include <QAbstractButton>
#include <QDeadlineTimer>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMimeData>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kAlmostASecond = 950; // Milliseconds.
const QString kEndless = u"console.log('runs'); while (true) ;"_s;
const QString kEdit = u"return {textEdits: [{type: 'replaceAll', text: 'edited'}]};"_s;
const QString kStopped = u"マクロの実行を停止しました"_s;
const QString kChanged = u"実行中に文書が変更されたため、マクロの結果を適用しませんでした"_s;

} // namespace

class MacroRunTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void shortRun_hasEndedOnReturn();
    void secondLong_returnsBeforeItHasEnded();
    void notice_shown_namesMacroAndTime();
    void notice_hugeName_isCut();
    void notice_isModalForItsWindowAlone();
    void notice_closed_stopsTheRun();
    void notice_button_stopsTheRun();
    void notice_returnAndSpace_doNotStopTheRun();
    void notice_afterTheRun_isGone();
    void window_duringARun_isResizedAndPainted();
    void drop_duringARun_isRefused();
    void sameWindow_secondRun_showsTheNotice();
    void otherWindow_duringARun_isFree();
    void otherWindow_startedByAnEvent_runsWithinTheFirst();
    void text_changedMeanwhile_keepsTheChange();
    void text_changedAndBack_takesTheEdit();
    void selection_changedMeanwhile_isRestored();
    void composition_openAtTheEnd_keepsTheText();
    void content_replacedMeanwhile_isLeftAlone();
    void document_goneMeanwhile_stillEdits();
    void stop_afterTheScriptHasEnded_changesNothing();
    void controller_goneDuringARun_endsTheProcess();
    void host_killedAtAnyMoment_losesNothing();

private:
    test::TemporaryHome m_home;
    QString m_settings;
    int m_count = 0;
};

void MacroRunTest::init()
{
    m_settings = m_home.file(u"%1.ini"_s.arg(++m_count));
    QVERIFY(ScriptHostPool::shared()
                .protection(test::kLongWait)
                .has_value()); // The spare host is ready.
}

void MacroRunTest::shortRun_hasEndedOnReturn()
{
    test::MacroEditor editor(m_settings);
    QElapsedTimer elapsed;
    elapsed.start();
    editor.start(kEdit);
    const bool hasEnded = !editor.controller.isRunningMacro();
    QVERIFY(hasEnded || elapsed.elapsed() >= kAlmostASecond); // A busy machine may be that slow.
    QCOMPARE(editor.notice() == nullptr, hasEnded);
    QVERIFY(editor.waitForEnd());
    QCOMPARE(editor.bytes(), QByteArray("edited"));
}

void MacroRunTest::secondLong_returnsBeforeItHasEnded()
{
    test::MacroEditor editor(m_settings);
    const test::HeldScript held;
    QElapsedTimer elapsed;
    elapsed.start();
    editor.start(kEdit);
    QVERIFY(elapsed.elapsed() >= kAlmostASecond);
    QVERIFY(editor.controller.isRunningMacro());
    QVERIFY(editor.notice() != nullptr);
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
    held.release();
    QVERIFY(editor.waitForEnd());
    QCOMPARE(editor.bytes(), QByteArray("edited"));
    QCOMPARE(editor.message(), u"マクロを実行しました"_s);
    editor.view()->undo();
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
}

void MacroRunTest::notice_shown_namesMacroAndTime()
{
    test::MacroEditor editor(m_settings);
    QElapsedTimer elapsed;
    elapsed.start();
    editor.start(kEndless, u"<b>行末&空白</b>"_s);
    QCOMPARE(editor.notice()->accessibleName(), u"マクロ「<b>行末&空白</b>」を実行しています。"_s);
    QVERIFY(editor.notice()->isVisible());
    // The seconds that the notice shows; -1 when it shows none.
    const auto seconds = [&editor] {
        static const QRegularExpression pattern(u"^経過時間: (\\d+) 秒$"_s);
        for (const QLabel *label : editor.notice()->findChildren<QLabel *>())
            if (const auto match = pattern.match(label->text()); match.hasMatch())
                return label->isVisible() ? match.captured(1).toInt() : -1;
        return -1;
    };
    const int shown = seconds();
    QVERIFY2(shown >= 1 && shown * 1000 <= elapsed.elapsed(), QByteArray::number(shown));
    QTRY_VERIFY(seconds() > shown);
    QVERIFY(seconds() * 1000 <= elapsed.elapsed());
}

void MacroRunTest::notice_hugeName_isCut()
{
    QWidget window;
    QElapsedTimer elapsed;
    elapsed.start();
    const MacroRunNotice notice(test::hugeText(), elapsed, &window);
    const QString told = notice.accessibleName();
    QVERIFY(told.startsWith(u"マクロ「名名"_s) && told.endsWith(u"…」を実行しています。"_s));
    QVERIFY(told.size() < kLongestShown);
    for (const QLabel *label : notice.findChildren<QLabel *>())
        QVERIFY(label->text().size() <= told.size());
}

void MacroRunTest::notice_isModalForItsWindowAlone()
{
    test::MacroEditor editor(m_settings);
    editor.start(kEndless);
    QCOMPARE(editor.notice()->windowModality(), Qt::WindowModal);
    QCOMPARE(editor.notice()->parentWidget(), editor.controller.window());
}

void MacroRunTest::notice_closed_stopsTheRun()
{
    test::MacroEditor editor(m_settings);
    editor.start(kEndless);
    editor.notice()->close(); // As when the window manager closes it.
    QVERIFY(!editor.controller.isRunningMacro());
    QCOMPARE(editor.message(), kStopped);
}

void MacroRunTest::notice_button_stopsTheRun()
{
    test::MacroEditor editor(m_settings);
    editor.start(kEndless);
    const auto buttons = editor.notice()->findChildren<QAbstractButton *>();
    QCOMPARE(buttons.size(), qsizetype{1});
    QCOMPARE(buttons.first()->text(), u"停止"_s);
    QTest::mouseClick(buttons.first(), Qt::LeftButton);
    QVERIFY(!editor.controller.isRunningMacro());
    QCOMPARE(editor.message(), kStopped);
}

// These keys may still be meant for the text.
void MacroRunTest::notice_returnAndSpace_doNotStopTheRun()
{
    test::MacroEditor editor(m_settings);
    editor.start(kEndless);
    QVERIFY(QTest::qWaitForWindowActive(editor.notice(), test::kLongWait));
    QTest::keyClick(editor.notice()->windowHandle(), Qt::Key_Return);
    QTest::keyClick(editor.notice()->windowHandle(), Qt::Key_Space);
    QVERIFY(editor.controller.isRunningMacro());
    QTest::keyClick(editor.notice()->windowHandle(), Qt::Key_Escape);
    QVERIFY(!editor.controller.isRunningMacro());
}

void MacroRunTest::notice_afterTheRun_isGone()
{
    test::MacroEditor editor(m_settings);
    const QPointer<EditorWindowController> controller(&editor.controller);
    const test::HeldScript held;
    editor.start(kEdit);
    const QPointer<MacroRunNotice> notice(editor.notice());
    QVERIFY(!notice.isNull());
    held.release();
    QVERIFY(editor.waitForEnd());
    QTRY_VERIFY(notice.isNull());
    QTRY_VERIFY(controller->findChildren<MacroRun *>().isEmpty());
}

void MacroRunTest::window_duringARun_isResizedAndPainted()
{
    test::MacroEditor editor(m_settings);
    QVERIFY(QTest::qWaitForWindowExposed(editor.controller.window()));

    struct Painted : QObject
    {
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::Paint)
                size = static_cast<QWidget *>(watched)->window()->size();
            return false;
        }

        QSize size;
    } painted;

    editor.view()->viewport()->installEventFilter(&painted);
    // A busy machine may not paint within the second that `start` waits; then it is tried again.
    QSize size(700, 500);
    for (int i = 0; i < 10 && painted.size != size; ++i) {
        size += QSize(1, 1);
        const test::HeldScript held;
        QTimer::singleShot(0, this, [&] { editor.controller.window()->resize(size); });
        editor.start(kEndless);
        QVERIFY(editor.notice() != nullptr);
        editor.notice()->reject();
    }
    QCOMPARE(painted.size, size);
}

void MacroRunTest::drop_duringARun_isRefused()
{
    test::MacroEditor editor(m_settings);
    editor.start(kEndless);
    QMimeData data;
    data.setText(u"dropped"_s);
    QDragEnterEvent enter({20, 20}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(editor.view()->viewport(), &enter);
    QVERIFY(!enter.isAccepted());
    QDropEvent drop({20, 20}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(editor.view()->viewport(), &drop);
    QVERIFY(!drop.isAccepted());
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
    editor.notice()->reject();
    QDragEnterEvent later({20, 20}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(editor.view()->viewport(), &later);
    QVERIFY(later.isAccepted());
}

void MacroRunTest::sameWindow_secondRun_showsTheNotice()
{
    test::MacroEditor editor(m_settings);
    bool isShown = false;
    bool hasKeptWaiting = false;
    QTimer::singleShot(0, this, [&] {
        editor.start(kEdit, u"second"_s);
        isShown = editor.controller.isRunningMacro() && editor.notice() != nullptr;
        QTimer::singleShot(0, this, [&] { hasKeptWaiting = true; });
    });
    editor.start(kEndless, u"first"_s);
    QVERIFY(!hasKeptWaiting); // The second request ended the wait before the notice.
    QVERIFY(isShown);
    QVERIFY(editor.notice()->accessibleName().contains(u"first"_s));
    editor.notice()->reject();
    QCOMPARE(editor.message(), kStopped);
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
}

void MacroRunTest::otherWindow_duringARun_isFree()
{
    test::MacroEditor busy(m_settings);
    test::MacroEditor other(m_settings);
    busy.start(kEndless);
    QTest::keyClicks(other.view(), u"X"_s);
    QCOMPARE(other.bytes(), QByteArray("一行!\r\nXond 😀\n"));
    QVERIFY(other.run(kEdit));
    QCOMPARE(other.bytes(), QByteArray("edited"));
    other.start(kEndless, u"two"_s);
    QVERIFY(other.controller.isRunningMacro() && busy.controller.isRunningMacro());
    busy.notice()->reject();
    QVERIFY(other.controller.isRunningMacro() && !busy.controller.isRunningMacro());
    other.notice()->reject();
    QCOMPARE(other.message(), kStopped);
    QCOMPARE(busy.bytes(), QByteArray(test::MacroEditor::kAfter));
}

// Neither run's event loop waits for the end of the other: both end within a second.
void MacroRunTest::otherWindow_startedByAnEvent_runsWithinTheFirst()
{
    test::MacroEditor first(m_settings);
    test::MacroEditor second(m_settings);
    const test::HeldScript held;
    QTimer::singleShot(0, this, [&] {
        held.release();
        second.start(kEndless);
    });
    QVERIFY(first.run(kEdit));
    QCOMPARE(first.bytes(), QByteArray("edited"));
    QVERIFY(second.controller.isRunningMacro());
    QVERIFY(second.notice() != nullptr);
}

void MacroRunTest::text_changedMeanwhile_keepsTheChange()
{
    test::MacroEditor editor(m_settings);
    QVERIFY(editor.runDuring(kEdit, [&] {
        QInputMethodEvent commit;
        commit.setCommitString(u"確定"_s);
        QCoreApplication::sendEvent(editor.view(), &commit);
    }));
    QCOMPARE(editor.message(), kChanged);
    QCOMPARE(editor.bytes(), QByteArray("一行!\r\n確定ond 😀\n"));
    editor.view()->undo();
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
}

void MacroRunTest::text_changedAndBack_takesTheEdit()
{
    test::MacroEditor editor(m_settings);
    QVERIFY(editor.runDuring(kEdit, [&] {
        editor.view()->undo();
        editor.view()->redo();
    }));
    QCOMPARE(editor.bytes(), QByteArray("edited"));
    editor.view()->undo();
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
    editor.view()->undo();
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kBefore));
}

void MacroRunTest::selection_changedMeanwhile_isRestored()
{
    test::MacroEditor editor(m_settings);
    const auto select = [&editor] { editor.view()->setSelectedRange({0, 0}); };
    QVERIFY(editor.runDuring(u"return {textEdits: [{type: 'replaceSelection', text: 'X'}]};"_s,
                             select));
    QCOMPARE(editor.bytes(), QByteArray("一行!\r\nXond 😀\n"));
}

void MacroRunTest::composition_openAtTheEnd_keepsTheText()
{
    test::MacroEditor editor(m_settings);
    QVERIFY(editor.runDuring(kEdit, [&] {
        QInputMethodEvent composing(u"にほん"_s, {});
        QCoreApplication::sendEvent(editor.view(), &composing);
    }));
    QCOMPARE(editor.message(), u"日本語入力の変換を確定してからマクロを実行してください"_s);
    QVERIFY(editor.view()->hasMarkedText());
    QVERIFY(!editor.view()->string().toUtf8().contains("edited"));
}

void MacroRunTest::content_replacedMeanwhile_isLeftAlone()
{
    TextDocument other;
    other.setContentString(Text(QString::fromUtf8(test::MacroEditor::kAfter)));
    test::MacroEditor editor(m_settings);
    QVERIFY(editor.runDuring(kEdit, [&] { editor.controller.setDocument(&other); }));
    QCOMPARE(editor.message(), u"テキストエリアが見つかりません"_s);
    QCOMPARE(other.contentString().toUtf8(), QByteArray(test::MacroEditor::kAfter));
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
    editor.controller.setDocument(nullptr);
}

void MacroRunTest::document_goneMeanwhile_stillEdits()
{
    test::MacroEditor editor(m_settings);
    auto document = std::make_unique<TextDocument>();
    document->setContentString(Text(u"a"_s));
    editor.controller.setDocument(document.get());
    QVERIFY(editor.runDuring(kEdit, [&] { document.reset(); }));
    QVERIFY(document == nullptr);
    QCOMPARE(editor.view()->string().toString(), u"edited"_s);
}

// The notice was visible, so the user saw the macro running.
void MacroRunTest::stop_afterTheScriptHasEnded_changesNothing()
{
    test::MacroEditor editor(m_settings);
    const test::HeldScript held;
    editor.start(kEdit);
    QVERIFY(editor.notice() != nullptr);
    QVERIFY(editor.controller.isRunningMacro());
    held.release();
    // The run ends its process once it has the script's result. No event is processed, so that
    // the result is not used yet.
    const QDeadlineTimer deadline(test::kLongWait);
    const auto hasEnded = [&held] {
        return reapHostProcesses() && ::kill(held.process(), 0) == -1;
    };
    while (!hasEnded() && !deadline.hasExpired())
        std::this_thread::yield();
    QVERIFY(hasEnded());
    QVERIFY(editor.controller.isRunningMacro());
    editor.notice()->reject();
    QCOMPARE(editor.message(), kStopped);
    QTRY_VERIFY(editor.controller.findChildren<MacroRun *>().isEmpty());
    QCOMPARE(editor.bytes(), QByteArray(test::MacroEditor::kAfter));
}

void MacroRunTest::controller_goneDuringARun_endsTheProcess()
{
    auto editor = std::make_unique<test::MacroEditor>(m_settings);
    QVERIFY(ScriptHostPool::shared().prepare());
    const auto process = static_cast<pid_t>(ScriptHostPool::shared().spareProcessId());
    editor->start(kEndless);
    QVERIFY(editor->controller.isRunningMacro());
    QCOMPARE(::kill(process, 0), 0);
    editor.reset();
    QTRY_VERIFY_WITH_TIMEOUT(reapHostProcesses() && ::kill(process, 0) == -1, test::kLongWait);
}

// Some kills come before the script starts, some during it, some after it.
void MacroRunTest::host_killedAtAnyMoment_losesNothing()
{
#ifdef __SANITIZE_ADDRESS__
    constexpr int kRuns = 50;
#else
    constexpr int kRuns = 500;
#endif
    test::MacroEditor editor(m_settings);
    ScriptHostPool &pool = ScriptHostPool::shared();
    const QString code = u"const end = Date.now() + 2; while (Date.now() < end) ;"
                         "return {textEdits: [{type: 'insertAtCursor', text: 'x'}]};"_s;
    // The longest time until a kill, in microseconds. It follows the time that a run takes.
    unsigned span = 20'000;
    std::mt19937 random(20240229);
    int whole = 0;
    for (int i = 0; i < kRuns; ++i) {
        const QByteArray before = editor.bytes();
        const bool isUp = random() % 2 == 0;
        QVERIFY(pool.prepare());
        QVERIFY(!isUp || pool.protection(test::kLongWait).has_value());
        const auto process = static_cast<pid_t>(pool.spareProcessId());
        std::thread killer([process, moment = std::chrono::microseconds(random() % span)] {
            std::this_thread::sleep_for(moment);
            ::kill(process, SIGKILL); // The system does not reuse the process id that soon.
        });
        const bool hasEnded = editor.run(code);
        killer.join();
        QVERIFY(hasEnded);
        const QByteArray after = editor.bytes();
        QVERIFY(after == before || after.size() == before.size() + 1);
        const bool isWhole = after != before;
        whole += isWhole ? 1 : 0;
        span = isWhole ? std::max(1000U, span / 5 * 4) : span / 4 * 5;
    }
    qInfo("%d of %d runs ended before they were killed", whole, kRuns);
    QVERIFY(whole > 0 && whole < kRuns);
}

} // namespace penwick

QTEST_MAIN(penwick::MacroRunTest)
#include "MacroRunTest.moc"
