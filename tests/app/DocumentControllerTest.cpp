#include "app/DocumentController.h"

#include "app/WordingTranslator.h"
#include "editor/TextView.h"
#include "support/ModalAnswer.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QTest>

#include <unistd.h>

using namespace penwick;
using namespace Qt::StringLiterals;

class DocumentControllerTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init();
    void cleanup();
    void newDocument_titles_areNumbered();
    void openFile_text_isShownTitledAndNamed();
    void openFile_pristineWindow_isReused();
    void openFile_editedUntitled_keepsItsWindow();
    void openFile_openAlready_bringsItsWindowForward();
    void openFile_invalidUtf8_saysSoAndOpensNothing();
    void openFile_missing_saysSo();
    void openFileOrNew_missing_isSavedToThatPath();
    void openDocument_severalFiles_areAllOpened();
    void title_edited_isMarked();
    void title_nameWithPlaceholder_isVerbatim();
    void save_file_writesWhatWasTypedLast();
    void save_untitled_asksForName();
    void save_untitledCancelled_writesNothing();
    void saveAs_existingFile_asksBeforeReplacing();
    void saveAs_fileOfAnotherWindow_isRefused();
    void save_failure_saysSoAndKeepsEverything();
    void save_fileChangedOnDisk_asksFirst();
    void close_unedited_closesAtOnce();
    void close_edited_cancel_staysOpen();
    void close_edited_discard_leavesTheFile();
    void close_edited_save_writesTheFile();
    void close_saveFails_staysOpen();
    void closeAll_cancelAtSecond_closesNothing();
    void closeAll_agreed_closesEveryWindow();

private:
    [[nodiscard]] QMainWindow *window(int index) const
    {
        return m_documents->windowControllers().at(index)->window();
    }

    [[nodiscard]] EditorWindowController *controller(int index) const
    {
        return m_documents->windowControllers().at(index).get();
    }

    void type(int index, const QString &text) const
    {
        QTest::keyClicks(controller(index)->textView(), text);
    }

    /// Types a path into the next file dialog and accepts it.
    static void answerFileDialog(const QString &path);

    std::unique_ptr<test::TemporaryHome> m_home;
    std::unique_ptr<DocumentController> m_documents;
    WordingTranslator m_translator;
};

void DocumentControllerTest::init()
{
    m_home = std::make_unique<test::TemporaryHome>();
    m_documents = std::make_unique<DocumentController>();
}

void DocumentControllerTest::cleanup()
{
    QCoreApplication::processEvents();
    m_documents.reset();
    m_home.reset();
}

void DocumentControllerTest::answerFileDialog(const QString &path)
{
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        QVERIFY(dialog != nullptr);
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

void DocumentControllerTest::newDocument_titles_areNumbered()
{
    m_documents->newDocument();
    m_documents->newDocument();
    QCOMPARE(window(0)->windowTitle(), u"名称未設定[*] — penwick"_s);
    QCOMPARE(window(1)->windowTitle(), u"名称未設定 2[*] — penwick"_s);
    QVERIFY(window(1)->isVisible());
    QCOMPARE(controller(1)->textView()->accessibleName(), u"名称未設定 2"_s);
    window(0)->close();
    m_documents->newDocument();
    QCOMPARE(window(1)->windowTitle(), u"名称未設定[*] — penwick"_s);
}

void DocumentControllerTest::openFile_text_isShownTitledAndNamed()
{
    const QString path = m_home->write(u"メモ.txt"_s, "一\r\n二");
    QVERIFY(m_documents->openFile(path));
    QCOMPARE(controller(0)->textView()->string().toString(), u"一\r\n二"_s);
    QCOMPARE(controller(0)->documentState()->text().toString(), u"一\r\n二"_s);
    QCOMPARE(window(0)->windowTitle(), u"メモ.txt[*] — penwick"_s);
    QCOMPARE(controller(0)->textView()->accessibleName(), u"メモ.txt"_s);
    QVERIFY(!window(0)->isWindowModified());
    QCOMPARE(m_documents->documentOf(controller(0))->filePath(), path);
}

void DocumentControllerTest::openFile_pristineWindow_isReused()
{
    m_documents->newDocument();
    const QMainWindow *before = window(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(0), before);
    QCOMPARE(controller(0)->textView()->string().toString(), u"abc"_s);
    QCOMPARE(window(0)->windowTitle(), u"a.txt[*] — penwick"_s);
    // The window is a full one: what is typed and saved goes to the file.
    type(0, u"x"_s);
    QVERIFY(window(0)->isWindowModified());
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::openFile_editedUntitled_keepsItsWindow()
{
    m_documents->newDocument();
    type(0, u"x"_s);
    controller(0)->textView()->undo(); // Unedited again, yet there is something to redo.
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 2);
}

void DocumentControllerTest::openFile_openAlready_bringsItsWindowForward()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(QFile::link(path, m_home->file(u"link.txt"_s)));
    QVERIFY(m_documents->openFile(path));
    m_documents->newDocument();
    QVERIFY(m_documents->openFile(m_home->file(u"link.txt"_s)));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QTRY_COMPARE(QApplication::activeWindow(), window(0));
}

void DocumentControllerTest::openFile_invalidUtf8_saysSoAndOpensNothing()
{
    const QString path = m_home->write(u"sjis.txt"_s, "\x93\xFA\x96\x7B");
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFile(path));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY(!m_documents->hasDocuments());
}

void DocumentControllerTest::openFile_missing_saysSo()
{
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFile(m_home->file(u"gone.txt"_s)));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
}

void DocumentControllerTest::openFileOrNew_missing_isSavedToThatPath()
{
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"new.txt"_s)));
    QCOMPARE(window(0)->windowTitle(), u"new.txt[*] — penwick"_s);
    QVERIFY(!QFile::exists(m_home->file(u"new.txt"_s)));
    type(0, u"hi"_s);
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"new.txt"_s), QByteArray("hi"));
}

void DocumentControllerTest::openDocument_severalFiles_areAllOpened()
{
    m_home->write(u"a.txt"_s, "A");
    m_home->write(u"b.txt"_s, "B");
    test::answerModal([this](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        dialog->setDirectory(m_home->path());
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(u"\"a.txt\" \"b.txt\""_s);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    m_documents->openDocument();
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QCOMPARE(controller(1)->textView()->string().toString(), u"B"_s);
}

void DocumentControllerTest::title_edited_isMarked()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(0, u"x"_s);
    QVERIFY(window(0)->isWindowModified());
    controller(0)->textView()->undo();
    QVERIFY(!window(0)->isWindowModified());
}

void DocumentControllerTest::title_nameWithPlaceholder_isVerbatim()
{
    m_documents->openFile(m_home->write(u"a[*]b.txt"_s, "abc"));
    QCOMPARE(window(0)->windowTitle(), u"a[*][*]b.txt[*] — penwick"_s);
}

void DocumentControllerTest::save_file_writesWhatWasTypedLast()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc\r\n"));
    type(0, u"x"_s);
    QVERIFY(m_documents->saveDocument(controller(0))); // In the same turn as the key.
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc\r\n"));
    QVERIFY(!window(0)->isWindowModified());
}

void DocumentControllerTest::save_untitled_asksForName()
{
    m_documents->newDocument();
    type(0, u"hello"_s);
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

void DocumentControllerTest::save_untitledCancelled_writesNothing()
{
    m_documents->newDocument();
    type(0, u"hello"_s);
    test::answerModal([](QWidget *modal) { modal->close(); });
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QVERIFY(window(0)->isWindowModified());
}

void DocumentControllerTest::saveAs_existingFile_asksBeforeReplacing()
{
    const QString path = m_home->write(u"old.txt"_s, "old");
    m_documents->newDocument();
    type(0, u"new"_s);
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

void DocumentControllerTest::saveAs_fileOfAnotherWindow_isRefused()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    m_documents->newDocument();
    type(1, u"x"_s);
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        test::clickInModal(u"はい"_s);
        QMetaObject::invokeMethod(dialog, "accept");
        test::clickInModal(u"OK"_s); // The refusal.
    });
    QVERIFY(!m_documents->saveDocumentAs(controller(1)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
}

void DocumentControllerTest::save_failure_saysSoAndKeepsEverything()
{
    const QString path = m_home->write(u"folder/a.txt"_s, "abc");
    m_documents->openFile(path);
    type(0, u"x"_s);
    QVERIFY(QDir(m_home->file(u"folder"_s)).removeRecursively());
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QCOMPARE(message, u"ファイルを保存できませんでした"_s);
    QVERIFY(window(0)->isWindowModified());
    QCOMPARE(controller(0)->textView()->string().toString(), u"xabc"_s);
    QCOMPARE(m_documents->documentOf(controller(0))->filePath(), path);
}

void DocumentControllerTest::save_fileChangedOnDisk_asksFirst()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(0, u"x"_s);
    m_home->write(u"a.txt"_s, "by somebody else");
    test::clickInModal(u"キャンセル"_s);
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("by somebody else"));
    test::clickInModal(u"上書き保存"_s);
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::close_unedited_closesAtOnce()
{
    m_documents->newDocument();
    const auto kept = m_documents->windowControllers().first();
    QVERIFY(kept->window()->close());
    QVERIFY(!m_documents->hasDocuments());
    QVERIFY(!kept->window()->isVisible());
    QVERIFY(m_documents->controllerOf(kept->window()) == nullptr);
}

void DocumentControllerTest::close_edited_cancel_staysOpen()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(0, u"x"_s);
    QString message;
    test::clickInModal(u"キャンセル"_s, &message);
    QVERIFY(!window(0)->close());
    QCOMPARE(message, u"「a.txt」への変更を保存しますか？"_s);
    QVERIFY(window(0)->isVisible());
    test::answerModal([](QWidget *modal) { QTest::keyClick(modal, Qt::Key_Escape); });
    QVERIFY(!window(0)->close());
}

void DocumentControllerTest::close_edited_discard_leavesTheFile()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(0, u"x"_s);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(window(0)->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
}

void DocumentControllerTest::close_edited_save_writesTheFile()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(0, u"x"_s);
    test::clickInModal(u"保存"_s);
    QVERIFY(window(0)->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::close_saveFails_staysOpen()
{
    m_documents->openFile(m_home->write(u"folder/a.txt"_s, "abc"));
    type(0, u"x"_s);
    QVERIFY(QDir(m_home->file(u"folder"_s)).removeRecursively());
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"OK"_s); // The failure's message comes next.
        test::buttonNamed(modal, u"保存"_s)->click();
    });
    QVERIFY(!window(0)->close());
    QCOMPARE(controller(0)->textView()->string().toString(), u"xabc"_s);
}

void DocumentControllerTest::closeAll_cancelAtSecond_closesNothing()
{
    m_documents->newDocument();
    type(0, u"one"_s);
    m_documents->newDocument();
    type(1, u"two"_s);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(!m_documents->closeAll());
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QCOMPARE(controller(0)->textView()->string().toString(), u"one"_s);
}

void DocumentControllerTest::closeAll_agreed_closesEveryWindow()
{
    m_documents->newDocument();
    type(0, u"one"_s);
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    QWidget other;
    other.show();
    test::clickInModal(u"保存しない"_s);
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QVERIFY(!other.isVisible());
}

QTEST_MAIN(DocumentControllerTest)
#include "DocumentControllerTest.moc"
