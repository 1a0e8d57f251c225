#include "app/DocumentsTestBase.h"
#include "editor/ParallelUtf8Reader.h"
#include "support/HeldReading.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"
#include "window/LoadingView.h"

#include <QMessageBox>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// 3 MB, which are read in some milliseconds.
QByteArray largeText()
{
    return QByteArray("行\n").repeated(750'000);
}

} // namespace

/// Tests of a file whose reading pauses until its first page is painted. Every file counts as large
/// here, and the limit in time of a pause is longer than a test: a test ends only if something else
/// ends the pause. Nothing is painted before a test runs the event loop.
class PausedReadingTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void cleanup() { end(); }

    void file_untilItsPageIsPainted_isNotRead();
    void file_tabNoLongerInFront_isRead();
    void files_openedAtOnce_areReadWithoutBeingPainted();
    void file_neverPainted_isReadAfterTheLimit();
    void file_slowToStart_isNotPaused();
    void file_small_isNotPaused();
    void invalidByte_behindTheFirstPage_leavesNothingOnTheScreen();
    void invalidByte_neverPainted_showsTheMessage();
    void escape_whileItPauses_cancels();
    void tabClosed_whileItPauses_isCancelled();
    void closeAll_whileFilesPause_closesThem();
    void documentsDestroyed_whileAFilePauses_isCancelled();

private:
    void limitPause(std::chrono::milliseconds pause);
    void open(const QByteArray &content, const QString &name = u"a.txt"_s);
    QString messageOfFailure();
};

void PausedReadingTest::init()
{
    begin();
    limitPause(1h);
}

void PausedReadingTest::limitPause(std::chrono::milliseconds pause)
{
    m_documents->setTransferLimits({.directBytes = 1,
                                    .firstText = std::chrono::milliseconds(test::kLongWait),
                                    .pausedBytes = 1'000'000,
                                    .pause = pause});
}

void PausedReadingTest::open(const QByteArray &content, const QString &name)
{
    QVERIFY(m_documents->openFile(m_home->write(name, content)));
}

/// Runs the event loop until the only file could not be read. Returns the message.
QString PausedReadingTest::messageOfFailure()
{
    QString message;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        const bool isEmpty = window()->findChild<TextView *>() == nullptr;
        message = isEmpty ? qobject_cast<QMessageBox *>(modal)->text() : u"over a text"_s;
        return modal->close();
    });
    [&] {
        QTRY_COMPARE_WITH_TIMEOUT(
            window()->windowTitle(), u"名称未設定[*] — penwick"_s, test::kLongWait);
    }();
    return message;
}

void PausedReadingTest::file_untilItsPageIsPainted_isNotRead()
{
    open(largeText());
    QVERIFY(!document()->waitForTransfer(300ms).has_value());
    const TextView *page = window()->findChild<LoadingView *>()->textView();
    QCOMPARE(page->string().toUtf8(), largeText().first(ParallelUtf8Reader::kFirstPiece));
    QVERIFY(document()->readSoFar() == page->string());
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr, test::kLongWait);
    QVERIFY(view()->string().toUtf8() == largeText());
}

void PausedReadingTest::file_tabNoLongerInFront_isRead()
{
    open(largeText());
    QVERIFY(!document()->waitForTransfer(0ms).has_value());
    m_documents->newDocument();
    QVERIFY(document()->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
    QVERIFY(view()->string().toUtf8() == largeText());
}

void PausedReadingTest::files_openedAtOnce_areReadWithoutBeingPainted()
{
    for (int i = 0; i < 5; ++i)
        open(largeText(), QString::number(i));
    for (int i = 0; i < 4; ++i) {
        QVERIFY(
            document(i)->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
        QVERIFY(view(i)->string().toUtf8() == largeText());
    }
    QTRY_VERIFY_WITH_TIMEOUT(view(4) != nullptr, test::kLongWait);
}

void PausedReadingTest::file_neverPainted_isReadAfterTheLimit()
{
    limitPause(1ms);
    open(largeText());
    QVERIFY(document()->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
    QVERIFY(view()->string().toUtf8() == largeText());
}

void PausedReadingTest::file_slowToStart_isNotPaused()
{
    m_documents->setTransferLimits({.directBytes = 1, .firstText = 1ms, .pause = 1h});
    const test::HeldReading held(0);
    open(largeText() + largeText());
    QVERIFY(window()->findChild<LoadingView *>()->textView() == nullptr);
    test::HeldReading::release();
    QVERIFY(document()->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
    QVERIFY(view()->string().toUtf8() == largeText() + largeText());
}

void PausedReadingTest::file_small_isNotPaused()
{
    const QByteArray content = largeText().first(900'000);
    open(content);
    if (document()->isReading())
        QVERIFY(
            document()->waitForTransfer(std::chrono::milliseconds(test::kLongWait)).has_value());
    QVERIFY(view()->string().toUtf8() == content);
}

void PausedReadingTest::invalidByte_behindTheFirstPage_leavesNothingOnTheScreen()
{
    open(largeText() + '\xFF');
    QVERIFY(window()->findChild<LoadingView *>()->textView() != nullptr);
    QCOMPARE(messageOfFailure(), u"ファイルを開けませんでした"_s);
    QCOMPARE(text(), QString());
    QTRY_COMPARE(controller()->documentState()->characterCount(), 0);
}

void PausedReadingTest::invalidByte_neverPainted_showsTheMessage()
{
    limitPause(1ms);
    open(largeText() + '\xFF');
    QCOMPARE(messageOfFailure(), u"ファイルを開けませんでした"_s);
    QCOMPARE(text(), QString());
}

void PausedReadingTest::escape_whileItPauses_cancels()
{
    open(largeText());
    QTest::keyClick(window()->findChild<LoadingView *>(), Qt::Key_Escape);
    const auto outcome = document()->waitForTransfer(std::chrono::milliseconds(test::kLongWait));
    QVERIFY(outcome.has_value() && !outcome->has_value() && outcome->error().isCancellation());
    QCOMPARE(window()->windowTitle(), u"名称未設定[*] — penwick"_s);
    QCOMPARE(text(), QString());
}

void PausedReadingTest::tabClosed_whileItPauses_isCancelled()
{
    m_documents->newDocument();
    type(u"x"_s);
    open(largeText());
    QVERIFY(m_documents->closeDocument(controller(1)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(text(), u"x"_s);
}

void PausedReadingTest::closeAll_whileFilesPause_closesThem()
{
    open(largeText());
    open(largeText(), u"b.txt"_s);
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QCoreApplication::processEvents();
}

void PausedReadingTest::documentsDestroyed_whileAFilePauses_isCancelled()
{
    open(largeText());
    m_documents.reset(); // Waits for the thread that reads.
    QCoreApplication::processEvents();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

QTEST_MAIN(PausedReadingTest)
#include "PausedReadingTest.moc"
