#include "app/DocumentsTestBase.h"
#include "support/FileSizeLimit.h"
#include "support/HugeText.h"
#include "support/ModalAnswer.h"
#include "support/Waits.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QTest>
#include <QToolButton>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of saving in the background. Every file counts as large here. The event loop delivers the
/// end of a transfer, so a transfer is active until a test runs the event loop.
class LargeFileSavingTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void cleanup() { end(); }

    void save_typingGoesOn_leavesThatUnsaved();
    void save_askedForTwice_writesTwice();
    void save_cancelled_keepsTheOldFile();
    void save_noSpace_showsMessageAndKeepsEverything();
    void saveAs_whileItIsWritten_holdsItsName();
    void saveAs_nameTakenMeanwhile_asks();
    void saveAs_duringASave_waitsForIt();
    void close_whileSaving_waitsForTheFile();
    void close_whileSavingThenCancelled_staysOpen();
    void close_saveFails_showsOneMessageAndStaysOpen();
    void close_editedAndSaved_closesOnceItIsWritten();
    void closeAll_whileSaving_waitsForTheFile();

private:
    /// Opens a file and waits until its text is loaded.
    void openAndWait(const QString &path) const;
    /// Opens "a.txt", edits it, and starts a save that takes longer than any test. The test must
    /// cancel it.
    void startLongSave() const;
    /// As `startLongSave`, with a text of that many million characters. The test need not cancel.
    void startSave(int megabytes = 30) const;

    /// All files in the folder. A partly written file would be among them.
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_home->path()).entryList(QDir::Files | QDir::Hidden);
    }
};

void LargeFileSavingTest::init()
{
    using namespace std::chrono_literals;
    begin();
    m_documents->setTransferLimits({.directBytes = 1, .reading = 0ms, .saving = 0ms});
}

void LargeFileSavingTest::openAndWait(const QString &path) const
{
    QVERIFY(m_documents->openFile(path));
    const auto last = static_cast<int>(m_documents->windowControllers().size()) - 1;
    QTRY_VERIFY_WITH_TIMEOUT(!document(last)->isReading(), test::kLongWait);
}

void LargeFileSavingTest::startLongSave() const
{
    startSave(3000);
}

void LargeFileSavingTest::startSave(int megabytes) const
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(megabytes));
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY(document()->isWriting());
}

void LargeFileSavingTest::save_typingGoesOn_leavesThatUnsaved()
{
    startSave();
    type(u"y"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!document()->isWriting(), test::kLongWait);
    QVERIFY(m_home->read(u"a.txt"_s) == QByteArray(30'000'000, 'x'));
    QVERIFY(window()->isWindowModified());
    view()->undo();
    QVERIFY(!window()->isWindowModified());
}

void LargeFileSavingTest::save_askedForTwice_writesTwice()
{
    startSave();
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    QTRY_VERIFY_WITH_TIMEOUT(!document()->isEdited(), test::kLongWait);
    QVERIFY(!document()->isWriting());
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'001);
    // There was no edit between the two saves, so the second one does nothing.
    type(u"z"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    QVERIFY(m_documents->saveDocument(controller()));
    QTRY_VERIFY_WITH_TIMEOUT(!document()->isEdited(), test::kLongWait);
    QVERIFY(!document()->isWriting());
}

void LargeFileSavingTest::save_cancelled_keepsTheOldFile()
{
    startLongSave();
    auto *button = window()->findChild<QToolButton *>(u"transferCancel"_s);
    QVERIFY(button != nullptr);
    QTRY_VERIFY(button->isVisible());
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller())); // Cancelled together with the first save.
    QTest::mouseClick(button, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!document()->isWriting(), test::kLongWait);
    QVERIFY(!button->isVisible());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(window()->isWindowModified());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(files(), QStringList{u"a.txt"_s});
    QTRY_VERIFY(view()->hasFocus());
}

void LargeFileSavingTest::save_noSpace_showsMessageAndKeepsEverything()
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(3));
    QString message;
    QString information;
    {
        const test::FileSizeLimit limit(1'000'000);
        QVERIFY(m_documents->saveDocument(controller()));
        const test::ModalAnswerer answer([&](QWidget *modal) {
            message = qobject_cast<QMessageBox *>(modal)->text();
            information = qobject_cast<QMessageBox *>(modal)->informativeText();
            return modal->close();
        });
        QTRY_VERIFY_WITH_TIMEOUT(!message.isEmpty(), test::kLongWait);
    }
    QCOMPARE(message, u"ファイルを保存できませんでした"_s);
    QVERIFY2(information.endsWith(u"ディスクの空き容量が足りません。"_s), qPrintable(information));
    QVERIFY(window()->isWindowModified());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("old"));
    QCOMPARE(files(), QStringList{u"a.txt"_s});
}

void LargeFileSavingTest::saveAs_whileItIsWritten_holdsItsName()
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
    QTRY_COMPARE_WITH_TIMEOUT(window()->windowTitle(), u"new.txt[*] — penwick"_s, test::kLongWait);
    QCOMPARE(QFileInfo(path).size(), 10'000'000);
}

void LargeFileSavingTest::saveAs_nameTakenMeanwhile_asks()
{
    m_documents->newDocument();
    replaceText(test::hugeText(300));
    const QString path = m_home->file(u"new.txt"_s);
    test::answerModal([path](QWidget *modal) { test::acceptFileName(modal, path); });
    QVERIFY(m_documents->saveDocumentAs(controller()));
    QVERIFY(document()->isWriting());
    QVERIFY(!QFile::exists(path)); // It takes long to write the text.
    m_home->write(u"new.txt"_s, "theirs");
    const test::ModalAnswerer answer(test::clicking(u"キャンセル"_s));
    QTRY_VERIFY_WITH_TIMEOUT(answer.hasAnswered(), test::kLongWait);
    QCOMPARE(m_home->read(u"new.txt"_s), QByteArray("theirs"));
    QCOMPARE(document()->filePath(), QString());
    QVERIFY(document()->isEdited());
}

void LargeFileSavingTest::saveAs_duringASave_waitsForIt()
{
    startSave();
    const QString path = m_home->file(u"copy.txt"_s);
    const test::ModalAnswerer answer([&](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (dialog == nullptr)
            return false; // The message shown until the first save ends.
        [&] { QVERIFY(!document()->isWriting()); }();
        dialog->selectFile(path); // Text in the name field does not override the selected file.
        return QMetaObject::invokeMethod(dialog, "accept");
    });
    QVERIFY(m_documents->saveDocumentAs(controller()));
    QVERIFY(answer.hasAnswered());
    QTRY_VERIFY_WITH_TIMEOUT(!document()->isWriting(), test::kLongWait);
    QCOMPARE(document()->filePath(), path);
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'000);
    QCOMPARE(QFileInfo(path).size(), 30'000'000);
}

void LargeFileSavingTest::close_whileSaving_waitsForTheFile()
{
    startSave(300); // The dialog is open before the text is written.
    QString message;
    const test::ModalAnswerer answer([&](QWidget *modal) {
        message = modal->findChild<QLabel *>()->text();
        return true;
    });
    QVERIFY(window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(message, u"「a.txt」を保存しています。"_s);
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 300'000'000);
}

void LargeFileSavingTest::close_whileSavingThenCancelled_staysOpen()
{
    startLongSave();
    const test::ModalAnswerer answer([](QWidget *modal) {
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

void LargeFileSavingTest::close_saveFails_showsOneMessageAndStaysOpen()
{
    startSave();
    type(u"y"_s);
    QVERIFY(m_documents->saveDocument(controller()));
    // A folder in place of its file makes the second save fail.
    connect(document(), &TextDocument::transferEnded, this, [this] {
        QFile::remove(m_home->file(u"a.txt"_s));
        QDir().mkdir(m_home->file(u"a.txt"_s));
    });
    QStringList messages;
    const test::ModalAnswerer answer([&](QWidget *modal) {
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

void LargeFileSavingTest::close_editedAndSaved_closesOnceItIsWritten()
{
    openAndWait(m_home->write(u"a.txt"_s, "old"));
    replaceText(test::hugeText(30));
    const test::ModalAnswerer answer(test::clicking(u"保存"_s));
    QVERIFY(window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QVERIFY(m_home->read(u"a.txt"_s) == QByteArray(30'000'000, 'x'));
}

void LargeFileSavingTest::closeAll_whileSaving_waitsForTheFile()
{
    startSave();
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(QFileInfo(m_home->file(u"a.txt"_s)).size(), 30'000'000);
}

QTEST_MAIN(LargeFileSavingTest)
#include "LargeFileSavingTest.moc"
