#include "app/DocumentsTestBase.h"
#include "editor/LoadingView.h"
#include "support/FileSizeLimit.h"
#include "support/HugeText.h"
#include "support/ModalAnswer.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMainWindow>
#include <QTest>
#include <QToolButton>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Opening and saving on other threads. Every file counts as large here. The end of a transfer is
/// told by the event loop, so until a test lets that run the transfer is under way.
class DocumentTransfersTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void open_large_showsItsWindowFirstAndItsTextLater();
    void open_largeButQuick_isThereAtOnce();
    void open_againWhileItIsRead_bringsItsWindowForward();
    void open_severalAtOnce_areAllRead();
    void open_intoThePristineWindow_takesItsPlace();
    void open_invalidAtTheEnd_saysSoAndLeavesAnUntitledWindow();
    void open_invalidBesideAnotherWindow_closesItsWindow();
    void open_calledOff_leavesNoMessage();
    void open_windowClosedMeanwhile_isCalledOff();
    void open_whileItIsRead_refusesSavesAndMacros();
    void open_controllerDies_isCalledOff();
    void closeAll_whileFilesAreRead_closesThem();
    void closeAll_fileFailsDuringTheQuestion_goesOn();
    void save_typingGoesOn_leavesThatUnsaved();
    void save_askedForTwice_writesTwice();
    void save_calledOff_keepsTheOldFile();
    void save_noSpace_saysSoAndKeepsEverything();
    void saveAs_whileItIsWritten_holdsItsName();
    void saveAs_nameTakenMeanwhile_asks();
    void saveAs_duringASave_waitsForIt();
    void close_whileSaving_waitsForTheFile();
    void close_whileSavingThenCalledOff_staysOpen();
    void close_saveFails_saysSoOnceAndStaysOpen();
    void close_editedAndSaved_closesOnceItIsWritten();
    void closeAll_whileSaving_waitsForTheFile();

private:
    /// Opens a file and waits until its text is there.
    void openAndWait(const QString &path) const;
    /// Opens "a.txt", edits it, and starts a save that lasts longer than any test: to be called
    /// off.
    void startLongSave() const;
    /// The same with one that ends in good time.
    void startSave() const;

    /// What stands in the folder of the files; a half-written one would be among them.
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_home->path()).entryList(QDir::Files | QDir::Hidden);
    }
};

void DocumentTransfersTest::init()
{
    using namespace std::chrono_literals;
    begin();
    m_documents->setPatience({.directBytes = 1, .reading = 0ms, .saving = 0ms});
}

void DocumentTransfersTest::cleanup()
{
    end();
}

void DocumentTransfersTest::openAndWait(const QString &path) const
{
    QVERIFY(m_documents->openFile(path));
    QTRY_VERIFY(
        !document(static_cast<int>(m_documents->windowControllers().size()) - 1)->isReading());
}

void DocumentTransfersTest::startLongSave() const
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(3000));
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY(document()->isWriting());
}

void DocumentTransfersTest::startSave() const
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(30));
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY(document()->isWriting());
}

void DocumentTransfersTest::open_large_showsItsWindowFirstAndItsTextLater()
{
    const QString path = m_home->write(u"大きい.txt"_s, "一\r\n二");
    QVERIFY(m_documents->openFile(path));
    QVERIFY(window()->isVisible());
    QCOMPARE(window()->windowTitle(), u"大きい.txt[*] — penwick"_s);
    QVERIFY(view() == nullptr);
    QVERIFY(document()->isReading());
    QTRY_VERIFY(view() != nullptr);
    QCOMPARE(text(), u"一\r\n二"_s);
    QCOMPARE(window()->windowTitle(), u"大きい.txt[*] — penwick"_s);
    QCOMPARE(view()->accessibleName(), u"大きい.txt"_s);
    QVERIFY(!window()->isWindowModified());
    QTRY_COMPARE(controller()->documentState()->characterCount(), 3);
    QTRY_VERIFY(view()->hasFocus());
    type(u"x"_s);
    QVERIFY(window()->isWindowModified());
}

void DocumentTransfersTest::open_largeButQuick_isThereAtOnce()
{
    using namespace std::chrono_literals;
    m_documents->setPatience({.directBytes = 1, .reading = 10s, .saving = 0ms});
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(text(), u"abc"_s);
}

void DocumentTransfersTest::open_againWhileItIsRead_bringsItsWindowForward()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(m_documents->openFile(path));
    m_documents->newDocument(DocumentController::Placement::NewWindow);
    QVERIFY(m_documents->openFile(path));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QTRY_COMPARE(QApplication::activeWindow(), window());
}

void DocumentTransfersTest::open_severalAtOnce_areAllRead()
{
    for (int i = 0; i < 5; ++i) {
        const QString name = QString::number(i);
        QVERIFY(m_documents->openFileOrNew(m_home->write(name, name.toUtf8())));
    }
    QCOMPARE(m_documents->windowControllers().size(), 5);
    for (int i = 0; i < 5; ++i) {
        QTRY_VERIFY(view(i) != nullptr);
        QCOMPARE(text(i), QString::number(i));
    }
}

void DocumentTransfersTest::open_intoThePristineWindow_takesItsPlace()
{
    m_documents->newDocument();
    const QMainWindow *before = window();
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(), before);
    QTRY_VERIFY(view() != nullptr);
    QCOMPARE(text(), u"abc"_s);
    QCoreApplication::processEvents();
}

void DocumentTransfersTest::open_invalidAtTheEnd_saysSoAndLeavesAnUntitledWindow()
{
    QVERIFY(
        m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(1'000'000, 'x') + "\xE3\x81")));
    QString message;
    QString information;
    const test::LaterAnswer answer([&](QWidget *modal) {
        message = qobject_cast<QMessageBox *>(modal)->text();
        information = qobject_cast<QMessageBox *>(modal)->informativeText();
        return modal->close();
    });
    QTRY_COMPARE(window()->windowTitle(), u"名称未設定[*] — penwick"_s);
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY2(information.endsWith(u"UTF-8 のテキストではありません。"_s), qPrintable(information));
    QVERIFY(view() != nullptr);
    type(u"x"_s);
    QCOMPARE(text(), u"x"_s);
}

void DocumentTransfersTest::open_invalidBesideAnotherWindow_closesItsWindow()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc\xFF")));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    const auto failing = m_documents->windowControllers().at(1);
    const test::LaterAnswer answer([](QWidget *modal) { return modal->close(); });
    QTRY_COMPARE(m_documents->windowControllers().size(), 1);
    QVERIFY(answer.hasAnswered());
    QVERIFY(!failing->window()->isVisible());
    QCOMPARE(text(), u"x"_s);
}

void DocumentTransfersTest::open_calledOff_leavesNoMessage()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QTest::keyClick(window()->findChild<LoadingView *>(), Qt::Key_Escape);
    QTRY_COMPARE(window()->windowTitle(), u"名称未設定[*] — penwick"_s);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(document()->filePath().isEmpty());
    QCOMPARE(text(), QString());
}

void DocumentTransfersTest::open_windowClosedMeanwhile_isCalledOff()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    QVERIFY(m_documents->closeDocument(controller(1)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(text(), u"x"_s);
}

void DocumentTransfersTest::open_whileItIsRead_refusesSavesAndMacros()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QVERIFY(!m_documents->saveDocument(controller()));
    QVERIFY(!m_documents->saveDocumentAs(controller()));
    controller()->runMacro(u"return { textEdits: [] };"_s, u"id"_s, u"name"_s, std::nullopt);
    QTRY_VERIFY(view() != nullptr);
    QCoreApplication::processEvents();
    QVERIFY(!controller()->documentState()->macroNotificationMessage().has_value());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
    QCOMPARE(text(), u"abc"_s);
}

void DocumentTransfersTest::open_controllerDies_isCalledOff()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    m_documents.reset();
    QCoreApplication::processEvents();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void DocumentTransfersTest::closeAll_whileFilesAreRead_closesThem()
{
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, QByteArray(20'000'000, 'x'))));
    QVERIFY(m_documents->openFile(m_home->write(u"b.txt"_s, "bad\xFF")));
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QCoreApplication::processEvents();
}

void DocumentTransfersTest::closeAll_fileFailsDuringTheQuestion_goesOn()
{
    m_documents->newDocument();
    type(u"x"_s);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "bad\xFF")));
    // The failure is told on top of the question; with it goes its window.
    const test::LaterAnswer answer([this](QWidget *modal) {
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

void DocumentTransfersTest::save_typingGoesOn_leavesThatUnsaved()
{
    startSave();
    type(u"y"_s);
    QTRY_VERIFY(!document()->isWriting());
    QVERIFY(m_home->read(u"a.txt"_s) == QByteArray(30'000'000, 'x'));
    QVERIFY(window()->isWindowModified());
    view()->undo();
    QVERIFY(!window()->isWindowModified());
}

void DocumentTransfersTest::save_askedForTwice_writesTwice()
{
    startSave();
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    QTRY_VERIFY(!document()->isEdited());
    QVERIFY(!document()->isWriting());
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'001);
    // Nothing was typed between these two: the second finds nothing to do.
    type(u"z"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY(m_documents->saveDocument(controller()));
    QTRY_VERIFY(!document()->isEdited());
    QVERIFY(!document()->isWriting());
}

void DocumentTransfersTest::save_calledOff_keepsTheOldFile()
{
    startLongSave();
    auto *button = window()->findChild<QToolButton *>(u"transferCancel"_s);
    QVERIFY(button != nullptr);
    QTRY_VERIFY(button->isVisible());
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller())); // Called off with the one before it.
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_VERIFY(!document()->isWriting());
    QVERIFY(!button->isVisible());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(window()->isWindowModified());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(files(), QStringList{u"a.txt"_s});
    QTRY_VERIFY(view()->hasFocus());
}

void DocumentTransfersTest::save_noSpace_saysSoAndKeepsEverything()
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(3));
    QString message;
    QString information;
    {
        const test::FileSizeLimit limit(1'000'000);
        QVERIFY(m_documents->saveDocument(controller()));
        const test::LaterAnswer answer([&](QWidget *modal) {
            message = qobject_cast<QMessageBox *>(modal)->text();
            information = qobject_cast<QMessageBox *>(modal)->informativeText();
            return modal->close();
        });
        QTRY_VERIFY(!message.isEmpty());
    }
    QCOMPARE(message, u"ファイルを保存できませんでした"_s);
    QVERIFY2(information.endsWith(u"ディスクの空き容量が足りません。"_s), qPrintable(information));
    QVERIFY(window()->isWindowModified());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(files(), QStringList{u"a.txt"_s});
}

void DocumentTransfersTest::saveAs_whileItIsWritten_holdsItsName()
{
    m_documents->newDocument();
    replaceText(test::hugeText(10));
    const QString path = m_home->file(u"new.txt"_s);
    test::answerModal([path](QWidget *modal) { test::acceptFileName(modal, path); });
    QVERIFY(m_documents->saveDocumentAs(controller()));
    QVERIFY(document()->isWriting());
    QCOMPARE(window()->windowTitle(), u"名称未設定[*] — penwick"_s);
    QVERIFY(m_documents->openFileOrNew(path));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QTRY_COMPARE(window()->windowTitle(), u"new.txt[*] — penwick"_s);
    QCOMPARE(QFileInfo(path).size(), 10'000'000);
}

void DocumentTransfersTest::saveAs_nameTakenMeanwhile_asks()
{
    m_documents->newDocument();
    replaceText(test::hugeText(50));
    const QString path = m_home->file(u"new.txt"_s);
    test::answerModal([path](QWidget *modal) { test::acceptFileName(modal, path); });
    QVERIFY(m_documents->saveDocumentAs(controller()));
    QVERIFY(document()->isWriting());
    m_home->write(u"new.txt"_s, "theirs");
    const test::LaterAnswer answer(test::clicking(u"キャンセル"_s));
    QTRY_VERIFY(answer.hasAnswered());
    QCOMPARE(m_home->read(u"new.txt"_s), QByteArray("theirs"));
    QCOMPARE(document()->filePath(), QString());
    QVERIFY(document()->isEdited());
}

void DocumentTransfersTest::saveAs_duringASave_waitsForIt()
{
    startSave();
    const QString path = m_home->file(u"copy.txt"_s);
    const test::LaterAnswer answer([&](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (dialog == nullptr) {
            return false; // The wait for the first save.
        }
        [&] { QVERIFY(!document()->isWriting()); }();
        dialog->selectFile(path); // The field alone would not outdo the selected file.
        return QMetaObject::invokeMethod(dialog, "accept");
    });
    QVERIFY(m_documents->saveDocumentAs(controller()));
    QVERIFY(answer.hasAnswered());
    QTRY_VERIFY(!document()->isWriting());
    QCOMPARE(document()->filePath(), path);
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'000);
    QCOMPARE(QFileInfo(path).size(), 30'000'000);
}

void DocumentTransfersTest::close_whileSaving_waitsForTheFile()
{
    startSave();
    QString message;
    const test::LaterAnswer answer([&](QWidget *modal) {
        message = modal->findChild<QLabel *>()->text();
        return true;
    });
    QVERIFY(window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(message, u"「a.txt」を保存しています。"_s);
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'000);
}

void DocumentTransfersTest::close_whileSavingThenCalledOff_staysOpen()
{
    startLongSave();
    const test::LaterAnswer answer([](QWidget *modal) {
        QTest::keyClick(modal, Qt::Key_Escape);
        return true;
    });
    QVERIFY(!window()->close());
    QVERIFY(window()->isVisible());
    QVERIFY(!document()->isWriting());
    QVERIFY(window()->isWindowModified());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(files(), QStringList{u"a.txt"_s});
}

void DocumentTransfersTest::close_saveFails_saysSoOnceAndStaysOpen()
{
    startSave();
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    // The second of the two saves meets a folder in the place of its file.
    connect(document(), &TextDocument::transferEnded, this, [this] {
        QFile::remove(m_home->file(u"a.txt"_s));
        QDir().mkdir(m_home->file(u"a.txt"_s));
    });
    QStringList messages;
    const test::LaterAnswer answer([&](QWidget *modal) {
        if (const auto *box = qobject_cast<QMessageBox *>(modal)) {
            messages << box->text();
            modal->close();
        }
        return false;
    });
    QVERIFY(!window()->close());
    QCOMPARE(messages, QStringList{u"ファイルを保存できませんでした"_s});
    QVERIFY(window()->isVisible());
    QVERIFY(window()->isWindowModified());
}

void DocumentTransfersTest::close_editedAndSaved_closesOnceItIsWritten()
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(30));
    const test::LaterAnswer answer(test::clicking(u"保存"_s));
    QVERIFY(window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QVERIFY(m_home->read(u"a.txt"_s) == QByteArray(30'000'000, 'x'));
}

void DocumentTransfersTest::closeAll_whileSaving_waitsForTheFile()
{
    startSave();
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'000);
}

QTEST_MAIN(DocumentTransfersTest)
#include "DocumentTransfersTest.moc"
