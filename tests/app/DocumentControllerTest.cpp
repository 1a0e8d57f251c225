#include "app/DocumentController.h"

#include "app/DocumentsTestBase.h"
#include "app/WordingTranslator.h"
#include "support/ModalAnswer.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

#include <fcntl.h>
#include <unistd.h>

using namespace penwick;
using namespace Qt::StringLiterals;

class DocumentControllerTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init() { begin(); }

    void cleanup() { end(); }

    void newDocument_titles_areNumbered();
    void openFile_text_isShownTitledAndNamed();
    void openFile_pristineWindow_isReused();
    void openFile_editedUntitled_keepsItsWindow();
    void openFile_openAlready_bringsItsWindowForward();
    void openFile_invalidUtf8_saysSoAndOpensNothing();
    void openFile_missing_saysSo();
    void openFileOrNew_missing_isSavedToThatPath();
    void openFileOrNew_nameThatIsNoText_saysSo();
    void openFileOrNew_missingThroughALink_isOneDocument();
    void openFile_parentBehindALink_isTheSystemsParent();
    void openFile_notAFile_saysWhy_data();
    void openFile_notAFile_saysWhy();
    void openFile_failureOfAFileNamedLikeMarkup_showsItsName();
    void openFile_openInAMinimisedWindow_bringsItBackAsItWas();
    void openFile_inANewWindow_leavesThePristineWindow();
    void documentClosed_madeRoomOrClosed_isTold();
    void openDocument_severalFiles_areAllOpened();
    void openDocument_columns_fitTheirContents();
    void title_edited_isMarked();
    void title_nameWithPlaceholder_isVerbatim();
    void save_file_writesWhatWasTypedLast();
    void save_untitled_asksForName();
    void save_untitledCancelled_writesNothing();
    void saveAs_existingFile_asksBeforeReplacing();
    void saveAs_fileOfAnotherWindow_isRefused();
    void save_failure_saysSoAndKeepsEverything();
    void save_fileBecameAFolder_saysSoAndKeepsEverything();
    void save_throughALink_keepsTheLink();
    void saveAs_ontoItself_savesInPlace();
    void saveAs_ontoALink_writesItsTarget();
    void saveAs_nameWithQuotes_isOneName();
    void save_fileChangedOnDisk_asksFirst();
    void close_unedited_closesAtOnce();
    void close_edited_cancel_staysOpen();
    void close_edited_namesTheFileVerbatim();
    void close_edited_discard_leavesTheFile();
    void close_edited_save_writesTheFile();
    void close_saveFails_staysOpen();
    void closeAll_cancelAtSecond_closesNothing();
    void closeAll_agreed_closesEveryWindow();
    void closeAll_whileAQuestionIsOpen_closesNothing();

private:
    /// Types a path into the next file dialog and accepts it, replacing what is there.
    static void answerFileDialogReplacing(const QString &path);

    WordingTranslator m_translator;
};

void DocumentControllerTest::answerFileDialogReplacing(const QString &path)
{
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        QVERIFY(dialog != nullptr);
        if (!path.isNull()) {
            dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        }
        test::clickInModal(u"はい"_s);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

void DocumentControllerTest::newDocument_titles_areNumbered()
{
    m_documents->newDocument();
    m_documents->newDocument();
    QCOMPARE(window(1)->windowTitle(), u"名称未設定 2[*] — penwick"_s);
    QVERIFY(window(1)->isVisible());
    QCOMPARE(view(1)->accessibleName(), u"名称未設定 2"_s);
    QVERIFY(m_documents->closeDocument(controller(0)));
    m_documents->newDocument();
    QCOMPARE(window(1)->windowTitle(), u"名称未設定[*] — penwick"_s);
}

void DocumentControllerTest::openFile_text_isShownTitledAndNamed()
{
    const QString path = m_home->write(u"メモ.txt"_s, "一\r\n二");
    QVERIFY(m_documents->openFile(path));
    QCOMPARE(text(0), u"一\r\n二"_s);
    QCOMPARE(controller(0)->documentState()->text().toString(), u"一\r\n二"_s);
    QCOMPARE(window(0)->windowTitle(), u"メモ.txt[*] — penwick"_s);
    QCOMPARE(view(0)->accessibleName(), u"メモ.txt"_s);
    QVERIFY(!window(0)->isWindowModified());
    QCOMPARE(document(0)->filePath(), path);
}

void DocumentControllerTest::openFile_pristineWindow_isReused()
{
    m_documents->newDocument();
    const QMainWindow *before = window(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(0), before);
    QCOMPARE(text(0), u"abc"_s);
    QCOMPARE(window(0)->windowTitle(), u"a.txt[*] — penwick"_s);
    // The window is a full one: what is typed and saved goes to the file.
    type(u"x"_s);
    QVERIFY(window(0)->isWindowModified());
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::openFile_editedUntitled_keepsItsWindow()
{
    m_documents->newDocument();
    type(u"x"_s);
    view(0)->undo(); // Unedited again, yet there is something to redo.
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 2);
}

void DocumentControllerTest::openFile_openAlready_bringsItsWindowForward()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(QFile::link(path, m_home->file(u"link.txt"_s)));
    QVERIFY(m_documents->openFile(path));
    m_documents->newDocument();
    m_documents->newDocument(DocumentController::Placement::NewWindow);
    QVERIFY(m_documents->openFile(m_home->file(u"link.txt"_s)));
    QCOMPARE(m_documents->windowControllers().size(), 3);
    QTRY_COMPARE(QApplication::activeWindow(), window(0));
    QVERIFY(controller(0)->isInFront());
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
    type(u"hi"_s);
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"new.txt"_s), QByteArray("hi"));
}

// A name of other bytes than UTF-8 arrives with replacement characters, which lead nowhere.
void DocumentControllerTest::openFileOrNew_nameThatIsNoText_saysSo()
{
    const QByteArray name = QFile::encodeName(m_home->path()) + "/\x93\xFA.txt";
    const int file = ::open(name.constData(), O_CREAT | O_WRONLY, 0600);
    QVERIFY(file >= 0);
    ::close(file);
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFileOrNew(QFile::decodeName(name)));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(::unlink(name.constData()), 0); // The temporary folder could not remove it.
}

void DocumentControllerTest::openFileOrNew_missingThroughALink_isOneDocument()
{
    QVERIFY(QDir(m_home->path()).mkdir(u"folder"_s));
    QVERIFY(QFile::link(m_home->file(u"folder"_s), m_home->file(u"link"_s)));
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"folder/new.txt"_s)));
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"link/new.txt"_s)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
}

void DocumentControllerTest::openFile_parentBehindALink_isTheSystemsParent()
{
    m_home->write(u"a.txt"_s, "of the link");
    m_home->write(u"other/a.txt"_s, "of the folder");
    QVERIFY(QDir(m_home->path()).mkpath(u"other/folder"_s));
    QVERIFY(QFile::link(m_home->file(u"other/folder"_s), m_home->file(u"link"_s)));
    QVERIFY(m_documents->openFile(m_home->file(u"link/../a.txt"_s)));
    QCOMPARE(text(0), u"of the folder"_s);
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"no such folder/../a.txt"_s)));
    QCOMPARE(text(1), u"of the link"_s);
}

void DocumentControllerTest::openFile_notAFile_saysWhy_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    QTest::newRow("folder") << u"%1/folder"_s << u"フォルダです。"_s;
    QTest::newRow("device") << u"/dev/null"_s << u"通常のファイルではありません。"_s;
    QTest::newRow("link to nothing")
        << u"%1/link"_s << u"ファイルまたはフォルダが見つかりません。"_s;
    QTest::newRow("no path") << QString() << u"この名前は使えません。"_s;
    QTest::newRow("bytes that are no text")
        << u"%1/bytes"_s << u"UTF-8 のテキストではありません。"_s;
}

void DocumentControllerTest::openFile_notAFile_saysWhy()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    QVERIFY(QDir(m_home->path()).mkdir(u"folder"_s));
    QVERIFY(QFile::link(m_home->file(u"nothing"_s), m_home->file(u"link"_s)));
    m_home->write(u"bytes"_s, "abc\xFF");
    QString information;
    test::answerModal([&information](QWidget *modal) {
        information = qobject_cast<QMessageBox *>(modal)->informativeText();
        modal->close();
    });
    QVERIFY(!m_documents->openFile(path.replace(u"%1"_s, m_home->path())));
    QVERIFY2(information.endsWith(reason), qPrintable(information));
    QVERIFY(!m_documents->hasDocuments());
}

void DocumentControllerTest::openFile_failureOfAFileNamedLikeMarkup_showsItsName()
{
    const QString path = m_home->write(u"a <b>%1 &amp;<i>.txt"_s, "\xFF");
    test::answerModal([path](QWidget *modal) {
        const auto *label = modal->findChild<QLabel *>(u"qt_msgbox_informativelabel"_s);
        QVERIFY(label != nullptr);
        QVERIFY2(label->text().startsWith(path), qPrintable(label->text()));
        QCOMPARE(label->textFormat(), Qt::PlainText);
        modal->close();
    });
    QVERIFY(!m_documents->openFile(path));
}

void DocumentControllerTest::openFile_openInAMinimisedWindow_bringsItBackAsItWas()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(m_documents->openFile(path));
    window(0)->setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    QVERIFY(window(0)->isMinimized());
    QVERIFY(m_documents->openFile(path));
    QVERIFY(!window(0)->isMinimized());
    QVERIFY(window(0)->isMaximized());
}

void DocumentControllerTest::openFile_inANewWindow_leavesThePristineWindow()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->newDocument();
    QVERIFY(m_documents->openFile(path, DocumentController::Placement::NewWindow));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QVERIFY(window(0) != window(1));
    QCOMPARE(m_documents->documentOfFile(path), document(1));
    QVERIFY(m_documents->documentOfFile(m_home->file(u"b.txt"_s)) == nullptr);
}

void DocumentControllerTest::documentClosed_madeRoomOrClosed_isTold()
{
    QList<const TextDocument *> closed;
    connect(m_documents.get(),
            &DocumentController::documentClosed,
            this,
            [&closed](const TextDocument *document) { closed << document; });
    m_documents->newDocument();
    const TextDocument *untitled = document(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(closed, QList<const TextDocument *>{untitled});
    const TextDocument *file = document(0);
    QVERIFY(window(0)->close());
    QCOMPARE(closed, (QList<const TextDocument *>{untitled, file}));
}

void DocumentControllerTest::openDocument_severalFiles_areAllOpened()
{
    m_home->write(u"a.txt"_s, "A");
    m_home->write(u"b.txt"_s, "B");
    test::answerModal([this](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        dialog->setDirectory(m_home->path());
        test::acceptFileName(dialog, u"\"a.txt\" \"b.txt\""_s);
    });
    m_documents->openDocument();
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QCOMPARE(text(1), u"B"_s);
}

void DocumentControllerTest::openDocument_columns_fitTheirContents()
{
    m_home->write(u"large.bin"_s, QByteArray(87190, 'x'));
    test::answerModal([this](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        dialog->setViewMode(QFileDialog::Detail);
        dialog->setDirectory(m_home->path());
        const auto *files = dialog->findChild<QTreeView *>(u"treeView"_s);
        QVERIFY(files != nullptr);
        const QModelIndex folder = files->rootIndex();
        QTRY_VERIFY(files->model()->rowCount(folder) > 0);
        QTRY_VERIFY(!files->model()->index(0, 1, folder).data().toString().isEmpty());
        for (const int column : {1, 3}) {
            const QModelIndex cell = files->model()->index(0, column, folder);
            const int needed = files->fontMetrics().horizontalAdvance(cell.data().toString());
            QTRY_VERIFY2(files->columnWidth(column) > needed, qPrintable(cell.data().toString()));
        }
        QVERIFY(files->isColumnHidden(2));
        modal->close();
    });
    m_documents->openDocument();
}

void DocumentControllerTest::title_edited_isMarked()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
    QVERIFY(window(0)->isWindowModified());
    view(0)->undo();
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
    type(u"x"_s);
    QVERIFY(m_documents->saveDocument(controller(0))); // In the same turn as the key.
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc\r\n"));
    QVERIFY(!window(0)->isWindowModified());
}

void DocumentControllerTest::save_untitled_asksForName()
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

void DocumentControllerTest::save_untitledCancelled_writesNothing()
{
    m_documents->newDocument();
    type(u"hello"_s);
    test::answerModal([](QWidget *modal) { modal->close(); });
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QVERIFY(window(0)->isWindowModified());
}

void DocumentControllerTest::saveAs_existingFile_asksBeforeReplacing()
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

void DocumentControllerTest::saveAs_fileOfAnotherWindow_isRefused()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    m_documents->newDocument();
    type(u"x"_s, 1);
    test::answerModal([path](QWidget *modal) {
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        test::clickInModal(u"はい"_s);
        test::acceptFileName(dialog, path);
        test::clickInModal(u"OK"_s); // The refusal.
    });
    QVERIFY(!m_documents->saveDocumentAs(controller(1)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
}

void DocumentControllerTest::save_failure_saysSoAndKeepsEverything()
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

void DocumentControllerTest::save_fileBecameAFolder_saysSoAndKeepsEverything()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    QVERIFY(QFile::remove(path) && QDir().mkdir(path));
    test::clickInModal(u"OK"_s); // Nothing that could be overwritten is there.
    QVERIFY(!m_documents->saveDocument(controller(0)));
    QVERIFY(QFileInfo(path).isDir());
    QVERIFY(window(0)->isWindowModified());
    QCOMPARE(text(0), u"xabc"_s);
    QCOMPARE(QDir(m_home->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void DocumentControllerTest::save_throughALink_keepsTheLink()
{
    m_home->write(u"folder/target.txt"_s, "abc");
    const QString link = m_home->file(u"link.txt"_s);
    QVERIFY(QFile::link(u"folder/target.txt"_s, link));
    m_documents->openFile(link);
    QCOMPARE(window(0)->windowTitle(), u"link.txt[*] — penwick"_s);
    type(u"x"_s);
    QVERIFY(QFile::remove(m_home->file(u"folder/target.txt"_s))); // Now it leads nowhere.
    QVERIFY(m_documents->saveDocument(controller(0)));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(m_home->read(u"folder/target.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::saveAs_ontoItself_savesInPlace()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    answerFileDialogReplacing({}); // The suggestion is the file itself.
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
    QVERIFY(!window(0)->isWindowModified());
    QCOMPARE(document(0)->filePath(), path);
}

void DocumentControllerTest::saveAs_ontoALink_writesItsTarget()
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

void DocumentControllerTest::saveAs_nameWithQuotes_isOneName()
{
    const QString path = m_home->write(u"say \"hi\" & %1.txt"_s, "abc");
    m_documents->openFile(path);
    type(u"x"_s);
    answerFileDialogReplacing({});
    QVERIFY(m_documents->saveDocumentAs(controller(0)));
    QCOMPARE(document(0)->filePath(), path);
    QCOMPARE(m_home->read(u"say \"hi\" & %1.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::save_fileChangedOnDisk_asksFirst()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
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
    type(u"x"_s);
    QString message;
    test::clickInModal(u"キャンセル"_s, &message);
    QVERIFY(!window(0)->close());
    QCOMPARE(message, u"「a.txt」への変更を保存しますか？"_s);
    QVERIFY(window(0)->isVisible());
    test::answerModal([](QWidget *modal) { QTest::keyClick(modal, Qt::Key_Escape); });
    QVERIFY(!window(0)->close());
}

void DocumentControllerTest::close_edited_namesTheFileVerbatim()
{
    m_documents->openFile(m_home->write(u"<b>%1 & %2\n[*].txt"_s, "abc"));
    type(u"x"_s);
    test::answerModal([](QWidget *modal) {
        const auto *box = qobject_cast<QMessageBox *>(modal);
        QCOMPARE(box->text(), u"「<b>%1 & %2\uFFFD[*].txt」への変更を保存しますか？"_s);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        modal->close();
    });
    QVERIFY(!window(0)->close());
}

void DocumentControllerTest::close_edited_discard_leavesTheFile()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
    test::clickInModal(u"保存しない"_s);
    QVERIFY(window(0)->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("abc"));
}

void DocumentControllerTest::close_edited_save_writesTheFile()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
    test::clickInModal(u"保存"_s);
    QVERIFY(window(0)->close());
    QVERIFY(!m_documents->hasDocuments());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void DocumentControllerTest::close_saveFails_staysOpen()
{
    m_documents->openFile(m_home->write(u"folder/a.txt"_s, "abc"));
    type(u"x"_s);
    QVERIFY(QDir(m_home->file(u"folder"_s)).removeRecursively());
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"OK"_s); // The failure's message comes next.
        test::buttonNamed(modal, u"保存"_s)->click();
    });
    QVERIFY(!window(0)->close());
    QCOMPARE(text(0), u"xabc"_s);
}

void DocumentControllerTest::closeAll_cancelAtSecond_closesNothing()
{
    m_documents->newDocument();
    type(u"one"_s);
    m_documents->newDocument();
    type(u"two"_s, 1);
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"キャンセル"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(!m_documents->closeAll());
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QCOMPARE(text(0), u"one"_s);
}

void DocumentControllerTest::closeAll_agreed_closesEveryWindow()
{
    m_documents->newDocument();
    type(u"one"_s);
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    QWidget other;
    other.show();
    test::clickInModal(u"保存しない"_s);
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
    QVERIFY(!other.isVisible());
}

// The session's end does not wait for the answer to a question that is open already.
void DocumentControllerTest::closeAll_whileAQuestionIsOpen_closesNothing()
{
    m_documents->openFile(m_home->write(u"a.txt"_s, "abc"));
    type(u"x"_s);
    test::answerModal([this](QWidget *modal) {
        QVERIFY(!m_documents->closeAll());
        QCOMPARE(QApplication::activeModalWidget(), modal);
        test::buttonNamed(modal, u"保存"_s)->click();
    });
    QVERIFY(window(0)->close());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

QTEST_MAIN(DocumentControllerTest)
#include "DocumentControllerTest.moc"
