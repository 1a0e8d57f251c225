#include "app/DocumentsTestBase.h"
#include "app/WordingTranslator.h"
#include "support/ModalAnswer.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QTest>
#include <QTreeView>

#include <fcntl.h>
#include <unistd.h>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of opening files into windows, and of the messages for failures.
class FileOpeningTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init() { begin(); }

    void cleanup() { end(); }

    void openFile_text_isShownTitledAndNamed();
    void openFile_pristineWindow_isReused();
    void openFile_editedUntitled_keepsItsWindow();
    void openFile_openAlready_bringsItsWindowForward();
    void openFile_invalidUtf8_showsMessageAndOpensNothing();
    void openFile_missing_showsMessage();
    void openFileOrNew_missing_isSavedToThatPath();
    void openFileOrNew_nameThatIsNoText_showsMessage();
    void openFileOrNew_missingThroughALink_isOneDocument();
    void openFile_parentBehindALink_isTheSystemsParent();
    void openFile_notAFile_showsReason_data();
    void openFile_notAFile_showsReason();
    void openFile_failureOfAFileNamedLikeMarkup_showsItsName();
    void openFile_openInAMinimisedWindow_bringsItBackAsItWas();
    void openFile_inANewWindow_leavesThePristineWindow();
    void openDocument_severalFiles_areAllOpened();
    void openDocument_columns_fitTheirContents();

private:
    WordingTranslator m_translator;
};

void FileOpeningTest::openFile_text_isShownTitledAndNamed()
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

void FileOpeningTest::openFile_pristineWindow_isReused()
{
    m_documents->newDocument();
    const QMainWindow *before = window(0);
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 1);
    QCOMPARE(window(0), before);
    QCOMPARE(text(0), u"abc"_s);
    QCOMPARE(window(0)->windowTitle(), u"a.txt[*] — penwick"_s);
    // The window is fully functional: typing and saving change the file.
    type(u"x"_s);
    QVERIFY(window(0)->isWindowModified());
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray("xabc"));
}

void FileOpeningTest::openFile_editedUntitled_keepsItsWindow()
{
    m_documents->newDocument();
    type(u"x"_s);
    view(0)->undo(); // Unedited again, but with a step to redo.
    QVERIFY(m_documents->openFile(m_home->write(u"a.txt"_s, "abc")));
    QCOMPARE(m_documents->windowControllers().size(), 2);
}

void FileOpeningTest::openFile_openAlready_bringsItsWindowForward()
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

void FileOpeningTest::openFile_invalidUtf8_showsMessageAndOpensNothing()
{
    const QString path = m_home->write(u"sjis.txt"_s, "\x93\xFA\x96\x7B");
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFile(path));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
    QVERIFY(!m_documents->hasDocuments());
}

void FileOpeningTest::openFile_missing_showsMessage()
{
    QString message;
    test::clickInModal(u"OK"_s, &message);
    QVERIFY(!m_documents->openFile(m_home->file(u"gone.txt"_s)));
    QCOMPARE(message, u"ファイルを開けませんでした"_s);
}

void FileOpeningTest::openFileOrNew_missing_isSavedToThatPath()
{
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"new.txt"_s)));
    QCOMPARE(window(0)->windowTitle(), u"new.txt[*] — penwick"_s);
    QVERIFY(!QFile::exists(m_home->file(u"new.txt"_s)));
    const MacroContext context = controller(0)->buildMacroContext({}, {});
    QCOMPARE(context.file.name, u"new.txt"_s);
    QVERIFY(context.file.existsOnDisk); // The document has a file name; the disk is not consulted.
    type(u"hi"_s);
    QVERIFY(m_documents->saveDocument(controller(0)));
    QCOMPARE(m_home->read(u"new.txt"_s), QByteArray("hi"));
}

// A name that is not valid UTF-8 arrives with replacement characters and matches no file.
void FileOpeningTest::openFileOrNew_nameThatIsNoText_showsMessage()
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
    QCOMPARE(::unlink(name.constData()), 0); // QTemporaryDir cannot remove a file of this name.
}

void FileOpeningTest::openFileOrNew_missingThroughALink_isOneDocument()
{
    QVERIFY(QDir(m_home->path()).mkdir(u"folder"_s));
    QVERIFY(QFile::link(m_home->file(u"folder"_s), m_home->file(u"link"_s)));
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"folder/new.txt"_s)));
    QVERIFY(m_documents->openFileOrNew(m_home->file(u"link/new.txt"_s)));
    QCOMPARE(m_documents->windowControllers().size(), 1);
}

void FileOpeningTest::openFile_parentBehindALink_isTheSystemsParent()
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

void FileOpeningTest::openFile_notAFile_showsReason_data()
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

void FileOpeningTest::openFile_notAFile_showsReason()
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
    QVERIFY2(information.contains(u'\n' + reason), qPrintable(information));
    QVERIFY(!m_documents->hasDocuments());
}

void FileOpeningTest::openFile_failureOfAFileNamedLikeMarkup_showsItsName()
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

void FileOpeningTest::openFile_openInAMinimisedWindow_bringsItBackAsItWas()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    QVERIFY(m_documents->openFile(path));
    window(0)->setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    QVERIFY(window(0)->isMinimized());
    QVERIFY(m_documents->openFile(path));
    QVERIFY(!window(0)->isMinimized());
    QVERIFY(window(0)->isMaximized());
}

void FileOpeningTest::openFile_inANewWindow_leavesThePristineWindow()
{
    const QString path = m_home->write(u"a.txt"_s, "abc");
    m_documents->newDocument();
    QVERIFY(m_documents->openFile(path, DocumentController::Placement::NewWindow));
    QCOMPARE(m_documents->windowControllers().size(), 2);
    QVERIFY(window(0) != window(1));
    QCOMPARE(m_documents->documentOfFile(path), document(1));
    QVERIFY(m_documents->documentOfFile(m_home->file(u"b.txt"_s)) == nullptr);
}

void FileOpeningTest::openDocument_severalFiles_areAllOpened()
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

void FileOpeningTest::openDocument_columns_fitTheirContents()
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

QTEST_MAIN(FileOpeningTest)
#include "FileOpeningTest.moc"
