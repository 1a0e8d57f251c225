#include "app/DocumentController.h"

#include "app/DocumentsTestBase.h"
#include "app/WordingTranslator.h"
#include "support/ModalAnswer.h"
#include "window/EditorTabBar.h"

#include <QAccessible>
#include <QDir>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of documents and their windows, from the first title to the last question.
class DocumentControllerTest final : public QObject, private test::DocumentsTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { QCoreApplication::installTranslator(&m_translator); }

    void init() { begin(); }

    void cleanup() { end(); }

    void newDocument_titles_areNumbered();
    void documentId_ofAClosedDocument_isNoOthers();
    void newDocument_inPlaceOfAnUntouchedOne_hasItsName();
    void documentClosed_replacedOrClosed_isEmitted();
    void title_edited_isMarked();
    void title_nameWithPlaceholder_isVerbatim();
    void close_unedited_closesAtOnce();
    void close_edited_cancel_staysOpen();
    void close_edited_namesTheFileVerbatim();
    void close_edited_discard_leavesTheFile();
    void close_edited_save_writesTheFile();
    void close_saveFails_staysOpen();
    void closeAll_cancelAtSecond_closesNothing();
    void closeAll_agreed_closesEveryWindow();
    void closeAll_questions_followTheTabs();
    void closeAll_saveAll_savesTheRestWithoutAsking();
    void closeAll_discardAll_asksOnce();
    void closeAll_oneUnsaved_offersNoAnswerForAll();
    void closeAll_whileAQuestionIsOpen_closesNothing();
    void end_ofTheController_removesItsWindowsFromAccessibility();

private:
    WordingTranslator m_translator;
};

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

void DocumentControllerTest::documentId_ofAClosedDocument_isNoOthers()
{
    m_documents->newDocument();
    m_documents->newDocument();
    const DocumentId first = controller(0);
    QCOMPARE(m_documents->documentOf(first), document(0));
    QVERIFY(m_documents->closeDocument(first));
    QVERIFY(m_documents->documentOf(first) == nullptr);
    // New controllers may lie where the closed one lay.
    for (int i = 0; i < 20; ++i) {
        QCoreApplication::processEvents();
        m_documents->newDocument();
    }
    QVERIFY(m_documents->documentOf(first) == nullptr);
    QVERIFY(!m_documents->saveDocument(first));
    QVERIFY(m_documents->documentOf(nullptr) == nullptr);
}

void DocumentControllerTest::newDocument_inPlaceOfAnUntouchedOne_hasItsName()
{
    m_documents->newDocument();
    m_documents->newDocument(Text(u"text"), DocumentController::Placement::Tab);
    QCOMPARE(window(0)->windowTitle(), u"名称未設定[*] — penwick"_s);
}

void DocumentControllerTest::documentClosed_replacedOrClosed_isEmitted()
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
        test::clickInModal(u"OK"_s); // For the message about the failure.
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

void DocumentControllerTest::closeAll_questions_followTheTabs()
{
    for (const auto *name : {"a.txt", "b.txt", "c.txt"}) {
        m_documents->openFile(m_home->write(QLatin1String(name), ""));
        type(u"x"_s, static_cast<int>(m_documents->windowControllers().size()) - 1);
    }
    window()->tabBar()->moveTab(2, 0);
    QStringList asked;
    const test::ModalAnswerer answer([&asked](QWidget *modal) {
        asked << qobject_cast<QMessageBox *>(modal)->text().section(u'」', 0, 0).mid(1);
        test::buttonNamed(modal, u"保存しない"_s)->click();
        return asked.size() == 3;
    });
    QVERIFY(m_documents->closeAll());
    QCOMPARE(asked, (QStringList{u"c.txt"_s, u"a.txt"_s, u"b.txt"_s}));
}

void DocumentControllerTest::closeAll_saveAll_savesTheRestWithoutAsking()
{
    for (const auto *name : {"a.txt", "b.txt", "c.txt"}) {
        m_documents->openFile(m_home->write(QLatin1String(name), ""));
        type(u"x"_s, static_cast<int>(m_documents->windowControllers().size()) - 1);
    }
    test::answerModal([](QWidget *modal) {
        test::clickInModal(u"すべて保存"_s);
        test::buttonNamed(modal, u"保存しない"_s)->click();
    });
    QVERIFY(m_documents->closeAll());
    QCOMPARE(m_home->read(u"a.txt"_s), QByteArray());
    QCOMPARE(m_home->read(u"b.txt"_s), QByteArray("x"));
    QCOMPARE(m_home->read(u"c.txt"_s), QByteArray("x"));
}

void DocumentControllerTest::closeAll_discardAll_asksOnce()
{
    for (int i = 0; i < 3; ++i) {
        m_documents->newDocument();
        type(u"x"_s, i);
    }
    test::clickInModal(u"すべて破棄"_s);
    QVERIFY(m_documents->closeAll());
    QVERIFY(!m_documents->hasDocuments());
}

void DocumentControllerTest::closeAll_oneUnsaved_offersNoAnswerForAll()
{
    m_documents->newDocument();
    type(u"x"_s);
    m_documents->newDocument();
    test::answerModal([](QWidget *modal) {
        const int count = static_cast<int>(modal->findChildren<QPushButton *>().size());
        test::buttonNamed(modal, u"キャンセル"_s)->click();
        QCOMPARE(count, 3);
    });
    QVERIFY(!m_documents->closeAll());
}

// Closing all documents at the end of the session must not wait for a question that is already
// open.
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

void DocumentControllerTest::end_ofTheController_removesItsWindowsFromAccessibility()
{
    m_documents->newDocument();
    const QPointer<QWidget> shown = window(0);
    const auto id = QAccessible::uniqueId(QAccessible::queryAccessibleInterface(shown));
    m_documents.reset();
    QVERIFY(!shown);
    QVERIFY(QAccessible::accessibleInterface(id) == nullptr);
}

QTEST_MAIN(DocumentControllerTest)
#include "DocumentControllerTest.moc"
