#include "window/EditorWindowController.h"

#include "macro/engine/EditorTestBase.h"
#include "support/CutToScreen.h"
#include "window/MainEditorView.h"

#include <QScreen>
#include <QTest>

#include <ctime>

using namespace Qt::StringLiterals;

namespace penwick {

/// Tests of a window and its document, and of the context that a macro gets from them.
class EditorWindowControllerTest final : public QObject, private test::EditorTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void initTestCase()
    {
        qputenv("TZ", "Asia/Tokyo");
        tzset();
    }

    void init() { begin(); }

    void cleanup() { end(); }

    void window_made_hasSizeAndMinimum();
    void window_made_hasATitleBarWithAllButtons();
    void window_first_takesTheSavedFrame();
    void window_second_hasStandardSizeInTheMiddle();
    void document_set_isShown();
    void document_setAgain_replacesTheContent();
    void document_none_leavesNoContent();
    void findTextView_inATree_isTheFirstInDepth();
    void context_ofTheWindow_isWhatItShows();
    void context_ofASavedDocument_namesItsFile();
    void context_withoutTextView_takesTheStatesText();
    void context_withoutDocument_isUnmodified();
};

void EditorWindowControllerTest::window_made_hasSizeAndMinimum()
{
    QMainWindow *window = m_controller->window();
    QVERIFY(!window->isVisible());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QCOMPARE(window->size(), test::cutToScreen(window, QSize(900, 650)));
    window->resize(1, 1);
    QTRY_COMPARE(window->size(), QSize(520, 360));
    window->resize(1000, 700);
    QTRY_COMPARE(window->size(), QSize(1000, 700));
}

void EditorWindowControllerTest::window_made_hasATitleBarWithAllButtons()
{
    const Qt::WindowFlags flags = m_controller->window()->windowFlags();
    QCOMPARE(flags & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Window));
    QVERIFY(flags.testFlag(Qt::WindowTitleHint));
    QVERIFY(flags.testFlag(Qt::WindowSystemMenuHint));
    QVERIFY(flags.testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(flags.testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(!flags.testFlag(Qt::FramelessWindowHint));
}

void EditorWindowControllerTest::window_first_takesTheSavedFrame()
{
    const QRect place(20, 30, 600, 400);
    m_controller->window()->show();
    m_controller->window()->setGeometry(place);
    m_controller->window()->close();
    m_controller = makeController();
    QCOMPARE(m_controller->window()->geometry(), place);
    m_controller->window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_controller->window()));
    QCOMPARE(m_controller->window()->geometry(), place);
    QVERIFY(!m_defaults->bytes(u"windowFrame.penwickEditorWindow"_s).isEmpty());
}

void EditorWindowControllerTest::window_second_hasStandardSizeInTheMiddle()
{
    m_controller->window()->show();
    m_controller->window()->setGeometry(20, 30, 600, 400);
    const auto second = makeController();
    // When the window is shown, the window system adds a frame around it, which moves its middle.
    const QPoint distance = second->window()->frameGeometry().center() -
                            second->window()->screen()->availableGeometry().center();
    QVERIFY(distance.manhattanLength() <= 2);
    second->window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(second->window()));
    QCOMPARE(second->window()->size(), test::cutToScreen(second->window(), QSize(900, 650)));
}

void EditorWindowControllerTest::document_set_isShown()
{
    open(u"日本\n"_s);
    QCOMPARE(m_controller->document(), m_document.get());
    QCOMPARE(m_controller->documentState()->text().toString(), u"日本\n"_s);
    QVERIFY(m_controller->window()->centralWidget()->isAncestorOf(m_controller->content()));
    QCOMPARE(text(), u"日本\n"_s);
    QVERIFY(!m_document->isEdited());
    m_controller->window()->show();
    QTRY_VERIFY(view()->isVisible());
}

void EditorWindowControllerTest::document_setAgain_replacesTheContent()
{
    open(u"one"_s);
    TextDocument other;
    other.setContentString(Text(u"two"));
    m_controller->setDocument(&other);
    QCOMPARE(text(), u"two"_s);
    QTest::keyClicks(view(), u"x"_s);
    QTRY_COMPARE(other.contentString().toString(), u"xtwo"_s);
    QCOMPARE(m_document->contentString().toString(), u"one"_s);
    m_controller.reset(); // Must be destroyed before its document.
}

void EditorWindowControllerTest::document_none_leavesNoContent()
{
    QVERIFY(m_controller->content() == nullptr);
    QVERIFY(m_controller->textView() == nullptr);
    open(u"a"_s);
    m_controller->setDocument(nullptr);
    QVERIFY(m_controller->content() == nullptr);
    QVERIFY(m_controller->textView() == nullptr);
    QVERIFY(m_controller->document() == nullptr);
}

void EditorWindowControllerTest::findTextView_inATree_isTheFirstInDepth()
{
    QVERIFY(findTextView(nullptr) == nullptr);
    TextStorage storage;
    QWidget root;
    auto *leftBranch = new QWidget(&root);
    auto *rightBranch = new QWidget(&root);
    QVERIFY(findTextView(&root) == nullptr);
    auto *right = new TextView(&storage, rightBranch);
    QCOMPARE(findTextView(&root), right);
    auto *deepLeft = new TextView(&storage, new QWidget(leftBranch));
    QCOMPARE(findTextView(&root), deepLeft);
    auto *lateLeft = new TextView(&storage, leftBranch);
    QCOMPARE(findTextView(&root), deepLeft);
    QCOMPARE(findTextView(lateLeft), lateLeft);
}

void EditorWindowControllerTest::context_ofTheWindow_isWhatItShows()
{
    open(u"a\nbcd"_s, {3, 2});
    const MacroContext context = m_controller->buildMacroContext(u"i"_s, u"n"_s);
    QCOMPARE(context.document.text.toString(), u"a\nbcd"_s);
    QVERIFY(!context.document.isModified);
    QCOMPARE(context.selection.text.toString(), u"cd"_s);
    QVERIFY(context.cursor == (MacroContext::Cursor{5, 1, 3}));
    QVERIFY(context.macro == (MacroContext::Macro{u"i"_s, u"n"_s}));
    QCOMPARE(context.editor.tabTitle, u"名称未設定"_s);
    QCOMPARE(context.dateTime.nowIso, u"2024-02-29T12:04:05+09:00"_s);
    QCOMPARE(context.dateTime.timezone, u"Asia/Tokyo"_s);
    QTest::keyClicks(view(), u"x"_s);
    QVERIFY(m_controller->buildMacroContext(u"i"_s, u"n"_s).document.isModified);
}

void EditorWindowControllerTest::context_ofASavedDocument_namesItsFile()
{
    open(u"a"_s);
    QVERIFY(m_document->writeToFile(m_home.file(u"notes.txt"_s)).has_value());
    QVERIFY(QFile::remove(m_home.file(u"notes.txt"_s)));
    const MacroContext context = m_controller->buildMacroContext(u"i"_s, u"n"_s);
    QCOMPARE(context.file.name, u"notes.txt"_s);
    QCOMPARE(context.file.path, QString());
    QCOMPARE(context.editor.tabTitle, u"notes.txt"_s);
    QVERIFY(context.file.existsOnDisk);
}

void EditorWindowControllerTest::context_withoutTextView_takesTheStatesText()
{
    open(u"a\nb"_s, {1, 1});
    view()->setParent(nullptr); // Its creator still owns it.
    const MacroContext context = m_controller->buildMacroContext(u"i"_s, u"n"_s);
    QCOMPARE(context.document.text.toString(), u"a\nb"_s);
    QCOMPARE(context.document.lineCount, 2);
    QVERIFY(context.selection == MacroContext::Selection());
    QVERIFY(context.cursor == MacroContext::Cursor());
}

void EditorWindowControllerTest::context_withoutDocument_isUnmodified()
{
    open(u"a"_s);
    QTest::keyClicks(view(), u"x"_s);
    m_document.reset();
    const MacroContext context = m_controller->buildMacroContext(u"i"_s, u"n"_s);
    QCOMPARE(context.document.text.toString(), u"xa"_s);
    QVERIFY(!context.document.isModified);
    QVERIFY(context.file == MacroContext::File());
}

} // namespace penwick

QTEST_MAIN(penwick::EditorWindowControllerTest)
#include "EditorWindowControllerTest.moc"
