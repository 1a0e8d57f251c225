#include "app/DocumentsTestBase.h"
#include "app/MacroLauncher.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"
#include "window/LoadingView.h"
#include "window/StatusMessageLabel.h"

#include <QMainWindow>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// Its start is text.
const QByteArray kLaterInvalid = QByteArray(300'000, 'x') + '\xFF';

} // namespace

/// Tests of opening in the background. Every file counts as large here. The event loop delivers the
/// end of a transfer, so a transfer is active until a test runs the event loop.
class LargeFileOpeningTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void cleanup() { end(); }

    void open_large_showsItsWindowFirstAndItsTextLater();
    void open_largeButQuick_isShownAtOnce();
    void open_againWhileItIsRead_bringsItsWindowForward();
    void open_severalAtOnce_areAllRead();
    void open_intoThePristineWindow_takesItsPlace();
    void open_invalidAtTheEnd_showsMessageAndLeavesAnUntitledWindow();
    void open_invalidAtTheStart_opensNothing();
    void open_sequenceCutByTheCheck_isRead();
    void open_invalidBesideAnotherWindow_closesItsWindow();
    void open_cancelled_leavesNoMessage();
    void open_windowClosedMeanwhile_isCancelled();
    void open_whileItIsRead_refusesSavesAndMacros();
    void open_whileItIsRead_macroWithAPromptSaysWhyItCannotRun();
    void open_controllerDestroyed_isCancelled();
    void closeAll_whileFilesAreRead_closesThem();
    void closeAll_fileFailsDuringTheQuestion_continues();
};

void LargeFileOpeningTest::init()
{
    using namespace std::chrono_literals;
    begin();
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
}

void LargeFileOpeningTest::open_large_showsItsWindowFirstAndItsTextLater()
{
    const QString path = m_home->write(u"大きい.txt"_s, "一\r\n二");
    QVERIFY(m_documents->openFile(path));
    QVERIFY(window()->isVisible());
    QCOMPARE(window()->windowTitle(), u"大きい.txt[*] — penwick"_s);
    QVERIFY(view() == nullptr);
    QVERIFY(document()->isReading());
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr, test::kLongWait);
    QCOMPARE(text(), u"一\r\n二"_s);
    QCOMPARE(window()->windowTitle(), u"大きい.txt[*] — penwick"_s);
    QCOMPARE(view()->accessibleName(), u"大きい.txt"_s);
    QVERIFY(!window()->isWindowModified());
    QTRY_COMPARE(controller()->documentState()->characterCount(), 3);
    QTRY_VERIFY(view()->hasFocus());
    type(u"x"_s);
    QVERIFY(window()->isWindowModified());
}

void LargeFileOpeningTest::open_largeButQuick_isShownAtOnce()
{
    m_documents->setTransferLimits(
        {.directBytes = 1, .reading = std::chrono::milliseconds(test::kLongWait), .saving = {}});
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(text(), u"abc"_s);
}

void LargeFileOpeningTest::open_againWhileItIsRead_bringsItsWindowForward()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(m_documents->openFile(path));
    m_documents->newDocument(DocumentController::Placement::NewWindow);
    QVERIFY(m_documents->openFile(path));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QTRY_COMPARE(QApplication::activeWindow(), window());
}

void LargeFileOpeningTest::open_severalAtOnce_areAllRead()
{
    for (int i = 0; i < 5; ++i) {
        const QString name = QString::number(i);
        QVERIFY(m_documents->openFileOrNew(m_home->write(name, name.toUtf8())));
    }
    QCOMPARE(m_documents->windowControllers().size(), 5);
    for (int i = 0; i < 5; ++i) {
        QTRY_VERIFY_WITH_TIMEOUT(view(i) != nullptr, test::kLongWait);
        QCOMPARE(text(i), QString::number(i));
    }
}

void LargeFileOpeningTest::open_intoThePristineWindow_takesItsPlace()
{
    m_documents->newDocument();
    const QMainWindow *before = window();
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(), before);
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr, test::kLongWait);
    QCOMPARE(text(), u"abc"_s);
    QCoreApplication::processEvents();
}

void LargeFileOpeningTest::open_invalidAtTheEnd_showsMessageAndLeavesAnUntitledWindow()
{
    QVERIFY(
        m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(1'000'000, 'x') + "\xE3\x81")));
    QString message;
    QString information;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        message = qobject_cast<QMessageBox *>(modal)->text();
        information = qobject_cast<QMessageBox *>(modal)->informativeText();
        return modal->close();
    });
    QTRY_COMPARE_WITH_TIMEOUT(
        window()->windowTitle(), u"名称未設定[*] — penwick"_s, test::kLongWait);
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY2(information.contains(u"UTF-8 のテキストではありません。"_s), qPrintable(information));
    QVERIFY(view() != nullptr);
    type(u"x"_s);
    QCOMPARE(text(), u"x"_s);
}

void LargeFileOpeningTest::open_invalidAtTheStart_opensNothing()
{
    m_documents->newDocument();
    const TextDocument *before = document();
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFile(m_home->write(u"a.bin"_s,
                                                 "\x7F"
                                                 "ELF\xFF" +
                                                     QByteArray(2'000'000, '\0'))));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(document(), before);
}

void LargeFileOpeningTest::open_sequenceCutByTheCheck_isRead()
{
    for (int i = 0; i < 3; ++i) {
        const QByteArray content = QByteArray(i, 'x') + QByteArray("あ").repeated(60'000);
        QVERIFY(m_documents->openFile(m_home->write(QString::number(i), content)));
        QTRY_VERIFY(view(i) != nullptr);
        QCOMPARE(text(i), QString::fromUtf8(content));
    }
}

void LargeFileOpeningTest::open_invalidBesideAnotherWindow_closesItsWindow()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, kLaterInvalid)));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    const auto failing = m_documents->windowControllers().at(1);
    const test::ModalAnswerer answer([](QWidget *modal) { return modal->close(); });
    QTRY_COMPARE_WITH_TIMEOUT(m_documents->windowControllers().size(), 1, test::kLongWait);
    QVERIFY(answer.hasAnswered());
    QVERIFY(!failing->window()->isVisible());
    QCOMPARE(text(), u"x"_s);
}

void LargeFileOpeningTest::open_cancelled_leavesNoMessage()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QTest::keyClick(window()->findChild<LoadingView *>(), Qt::Key_Escape);
    QTRY_COMPARE_WITH_TIMEOUT(
        window()->windowTitle(), u"名称未設定[*] — penwick"_s, test::kLongWait);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(document()->filePath().isEmpty());
    QCOMPARE(text(), QString());
}

void LargeFileOpeningTest::open_windowClosedMeanwhile_isCancelled()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    QVERIFY(m_documents->closeDocument(controller(1)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(text(), u"x"_s);
}

void LargeFileOpeningTest::open_whileItIsRead_refusesSavesAndMacros()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QVERIFY(!m_documents->saveDocument(controller()));
    QVERIFY(!m_documents->saveDocumentAs(controller()));
    controller()->runMacro(u"return { textEdits: [] };"_s, u"id"_s, u"name"_s, std::nullopt);
    QTRY_VERIFY_WITH_TIMEOUT(view() != nullptr, test::kLongWait);
    QCoreApplication::processEvents();
    QVERIFY(!controller()->documentState()->macroNotificationMessage().has_value());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
    QCOMPARE(text(), u"abc"_s);
}

void LargeFileOpeningTest::open_whileItIsRead_macroWithAPromptSaysWhyItCannotRun()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    MacroLauncher launcher([this] { return m_documents->windowControllers().at(0); },
                           systemClock());
    Macro macro;
    macro.id = u"default_addLinePrefix"_s;
    const test::ModalAnswerer answer([](QWidget *modal) { return modal->close(); });
    launcher.promptOrRun(macro);
    QVERIFY(!answer.hasAnswered());
    // Delivers the message only: the event loop would deliver the end of the reading, too.
    QCoreApplication::sendPostedEvents(controller(), QEvent::MetaCall);
    const auto *label = window()->findChild<StatusMessageLabel *>(u"statusMessage"_s);
    QVERIFY(label != nullptr && label->isVisible());
    QCOMPARE(label->text(), u"ファイルを読み込んでいる間は、マクロを実行できません"_s);
}

void LargeFileOpeningTest::open_controllerDestroyed_isCancelled()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    m_documents.reset();
    QCoreApplication::processEvents();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void LargeFileOpeningTest::closeAll_whileFilesAreRead_closesThem()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    QVERIFY(m_documents->openFile(m_home->write(u"b.txt"_s, kLaterInvalid)));
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QCoreApplication::processEvents();
}

void LargeFileOpeningTest::closeAll_fileFailsDuringTheQuestion_continues()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, kLaterInvalid)));
    // The message about the failure covers the question. Closing the message closes its window too.
    const test::ModalAnswerer answer([this](QWidget *modal) {
        if (qobject_cast<QMessageBox *>(modal)->text() == u"ファイルを開けませんでした"_s) {
            modal->close();
            return false;
        }
        if (m_documents->windowControllers().size() == 1) {
            test::buttonNamed(modal, u"保存しない"_s)->click();
            return true;
        }
        return false;
    });
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
}

QTEST_MAIN(LargeFileOpeningTest)
#include "LargeFileOpeningTest.moc"
