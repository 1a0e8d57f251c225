#include "app/DocumentsTestBase.h"
#include "app/WordingTranslator.h"
#include "support/ModalAnswer.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of saving documents to their own and to other files, and of the questions before.
class FileSavingTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init() { begin(); }

    void cleanup() { end(); }

    void save_file_writesWhatWasTypedLast();
    void save_untitled_asksForName();
    void save_untitledCancelled_writesNothing();
    void saveAs_existingFile_asksBeforeReplacing();
    void saveAs_fileOfAnotherWindow_isRefused();
    void save_failure_showsMessageAndKeepsEverything();
    void save_fileBecameAFolder_showsMessageAndKeepsEverything();
    void save_throughALink_keepsTheLink();
    void saveAs_ontoItself_savesInPlace();
    void saveAs_ontoALink_writesItsTarget();
    void saveAs_nameWithQuotes_isOneName();
    void save_fileChangedOnDisk_asksFirst();

private:
    /// Types a path into the next file dialog, accepts it and confirms the replacement of a file.
    static void answerFileDialogReplacing(const QString &path);

    WordingTranslator m_translator;
};

void FileSavingTest::answerFileDialogReplacing(const QString &path)
{
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        QVERIFY(dialog != nullptr);
        if (!path.isNull())
            dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        test::clickInModal(u"はい"_s);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

void FileSavingTest::save_file_writesWhatWasTypedLast()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc\r\n"));
    type(u"x"_s);
    QVERIFY(m_documents->saveDocument(controller(0))); // Before the edit is processed further.
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc\r\n"));
    QVERIFY(!window(0)->isWindowModified());
}

void FileSavingTest::save_untitled_asksForName()
{
    m_documents->newDocument();
    type(u"hello"_s);
    test::answerModal([this](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        QVERIFY(dialog != nullptr);
        auto *name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
        QCOMPARE(name->text(), u"名称未設定.txt"_s);
        QCOMPARE(dialog->labelText(QFileDialog::Accept), u"保存"_s);
        QCOMPARE(dialog->labelText(QFileDialog::Reject), u"キャンセル"_s);
        name->setText(m_home->file(u"saved.txt"_s));
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"saved.txt"_s), QByteArray("hello"));
    QCOMPARE(window(0)->windowTitle(), u"saved.txt[*] — penwick"_s);
}

void FileSavingTest::save_untitledCancelled_writesNothing()
{
    m_documents->newDocument();
    type(u"hello"_s);
    test::answerModal([](QWidget *modal) { modal->close(); });
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QVERIFY(window(0)->isWindowModified());
}

void FileSavingTest::saveAs_existingFile_asksBeforeReplacing()
{
    const QString path = m_home->write(u"old.txt"_s, "old");
    m_documents->newDocument();
    type(u"new"_s);
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        QString question;
        test::clickInModal(u"いいえ"_s, &question);
        QMetaObject::invokeMethod(dialog, "accept");
        QVERIFY2(question.contains(u"置き換えますか"_s), qPrintable(question));
        QVERIFY(dialog->isVisible());
        test::clickInModal(u"はい"_s);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QCOMPARE(m_home->read(u"old.txt"_s), QByteArray("new"));
}

void FileSavingTest::saveAs_fileOfAnotherWindow_isRefused()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    m_documents->newDocument();
    type(u"x"_s, 1);
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        test::clickInModal(u"はい"_s);
        test::acceptFileName(dialog, path);
        test::clickInModal(u"OK"_s); // The message that refuses the name.
    });
    QVERIFY(!m_documents->saveDocumentAs(controller(1)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
}

void FileSavingTest::save_failure_showsMessageAndKeepsEverything()
{
    const QString path = m_home->write(u"folder/a.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    QVERIFY(QDir(m_home->file(u"folder"_s)).removeRecursively());
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QCOMPARE(message, u"ファイルを保存できませんでした"_s);
    QVERIFY(window(0)->isWindowModified());
    QCOMPARE(text(0), u"xabc"_s);
    QCOMPARE(document(0)->filePath(), path);
}

void FileSavingTest::save_fileBecameAFolder_showsMessageAndKeepsEverything()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    QVERIFY(QFile::remove(path) && QDir().mkdir(path));
    test::clickInModal(u"OK"_s); // Saving onto a folder fails without a question.
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QVERIFY(QFileInfo(path).isDir());
    QVERIFY(window(0)->isWindowModified());
    QCOMPARE(text(0), u"xabc"_s);
    QCOMPARE(QDir(m_home->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void FileSavingTest::save_throughALink_keepsTheLink()
{
    m_home->write(u"folder/target.txt"_s, "abc");
    const QString link = m_home->file(u"link.txt"_s);
    QVERIFY(QFile::link(u"folder/target.txt"_s, link));
    m_documents->openFile(link);
    QCOMPARE(window(0)->windowTitle(), u"link.txt[*] — penwick"_s);
    type(u"x"_s);
    QVERIFY(QFile::remove(m_home->file(u"folder/target.txt"_s))); // Now the link is dangling.
    QVERIFY(m_documents->saveDocument(controller(0)));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(m_home->read(u"folder/target.txt"_s), QByteArray("xabc"));
}

void FileSavingTest::saveAs_ontoItself_savesInPlace()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    answerFileDialogReplacing({}); // The dialog suggests the document's own file.
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
    QVERIFY(!window(0)->isWindowModified());
    QCOMPARE(document(0)->filePath(), path);
}

void FileSavingTest::saveAs_ontoALink_writesItsTarget()
{
    m_home->write(u"folder/target.txt"_s, "old");
    const QString link = m_home->file(u"link.txt"_s);
    QVERIFY(QFile::link(m_home->file(u"folder/target.txt"_s), link));
    m_documents->newDocument();
    type(u"new"_s);
    answerFileDialogReplacing(link);
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(m_home->read(u"folder/target.txt"_s), QByteArray("new"));
    QCOMPARE(window(0)->windowTitle(), u"link.txt[*] — penwick"_s);
}

void FileSavingTest::saveAs_nameWithQuotes_isOneName()
{
    const QString path = m_home->write(u"say \"hi\" & %1.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    answerFileDialogReplacing({});
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QCOMPARE(document(0)->filePath(), path);
    QCOMPARE(m_home->read(u"say \"hi\" & %1.txt"_s), QByteArray("xabc"));
}

void FileSavingTest::save_fileChangedOnDisk_asksFirst()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
    m_home->write(u"a.txt"_s, "by another program");
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("by another program"));
    test::clickInModal(u"上書き保存"_s);
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

QTEST_MAIN(FileSavingTest)
#include "FileSavingTest.moc"
