#include "macro/engine/EditorWindowController.h"

#include "editor/MainEditorView.h"
#include "editor/TextView.h"
#include "support/TemporaryHome.h"
#include "wording/WordingLookup.h"

#include <QInputMethodEvent>
#include <QScreen>
#include <QTest>
#include <QTimeZone>

#include <functional>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

const QDateTime kNow({2024, 2, 29}, {3, 4, 5}, Qt::UTC);

} // namespace

class EditorWindowControllerTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void window_made_hasSizeAndMinimum();
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
    void run_editsAndNoNotification_saysCompleted();
    void run_neitherEditsNorNotifications_leavesTheMessage();
    void run_twoNotifications_showsTheSecond();
    void run_onlyNotification_showsIt();
    void run_messages_comeInALaterTurn();
    void run_completionMessage_followsTheWording();
    void run_whileComposing_warnsAndTouchesNothing();
    void run_withoutTextView_saysSo();
    void run_scriptError_showsItAndTouchesNothing_data();
    void run_scriptError_showsItAndTouchesNothing();
    void run_oddScript_touchesNothing_data();
    void run_oddScript_touchesNothing();
    void run_editThatFails_showsTheErrorAndKeepsTheOthers();
    void run_afterTyping_seesWhatWasTyped();
    void run_withInput_handsItOver();
    void run_twice_sharesNothing();
    void run_edits_reachDocumentStateAndCounters();
    void run_edits_areOneUndoStep();
    void message_windowGoneMeanwhile_isDropped();
    void run_documentGone_stillEdits();

private:
    void open(const QString &text, TextRange selection = {});
    void run(const QString &code, const std::optional<QString> &userInput = std::nullopt);
    void compose(const QString &preedit);
    [[nodiscard]] std::unique_ptr<EditorWindowController> makeController();
    [[nodiscard]] std::optional<QString> message() const;

    [[nodiscard]] TextView *view() const { return m_controller->textView(); }

    [[nodiscard]] QString text() const { return view()->string().toString(); }

    test::TemporaryHome m_home;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<EditorWindowController> m_controller;
    int m_count = 0;
};

void EditorWindowControllerTest::init()
{
    m_defaults = std::make_unique<UserDefaults>(m_home.file(u"%1.ini"_s.arg(++m_count)));
    m_document = std::make_unique<TextDocument>();
    m_controller = makeController();
}

void EditorWindowControllerTest::cleanup()
{
    m_controller.reset();
    m_document.reset();
    wording::setActiveValues(std::nullopt);
}

std::unique_ptr<EditorWindowController> EditorWindowControllerTest::makeController()
{
    return std::make_unique<EditorWindowController>(*m_defaults, [] { return kNow; });
}

void EditorWindowControllerTest::open(const QString &text, TextRange selection)
{
    m_document->setContentString(Text(text));
    m_controller->setDocument(m_document.get());
    view()->setSelectedRange(selection);
}

void EditorWindowControllerTest::run(const QString &code, const std::optional<QString> &userInput)
{
    m_controller->runMacro(code, u"the id"_s, u"the name"_s, userInput);
    // Where other tests keep the machine busy, even a short one may take its time.
    QVERIFY(QTest::qWaitFor([this] { return !m_controller->isRunningMacro(); }, 60000));
}

void EditorWindowControllerTest::compose(const QString &preedit)
{
    QInputMethodEvent event(preedit, {});
    QCoreApplication::sendEvent(view(), &event);
}

// The message after everything that is queued.
std::optional<QString> EditorWindowControllerTest::message() const
{
    QCoreApplication::processEvents();
    return m_controller->documentState()->macroNotificationMessage();
}

void EditorWindowControllerTest::window_made_hasSizeAndMinimum()
{
    const QMainWindow *window = m_controller->window();
    QCOMPARE(window->size(), QSize(900, 650));
    QCOMPARE(window->minimumSize(), QSize(520, 360));
    QVERIFY(!window->isVisible());
    const Qt::WindowFlags flags = window->windowFlags();
    QVERIFY(flags.testFlag(Qt::WindowCloseButtonHint) || !flags.testFlag(Qt::CustomizeWindowHint));
}

void EditorWindowControllerTest::window_first_takesTheSavedFrame()
{
    const QRect place(20, 30, 600, 400);
    m_controller->window()->show();
    m_controller->window()->setGeometry(place);
    m_controller->window()->close();
    m_controller = makeController();
    QCOMPARE(m_controller->window()->geometry(), place);
}

void EditorWindowControllerTest::window_second_hasStandardSizeInTheMiddle()
{
    m_controller->window()->show();
    m_controller->window()->setGeometry(20, 30, 600, 400);
    const auto second = makeController();
    QCOMPARE(second->window()->size(), QSize(900, 650));
    const QPoint distance = second->window()->frameGeometry().center() -
                            second->window()->screen()->availableGeometry().center();
    QVERIFY(distance.manhattanLength() <= 2);
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
    m_controller.reset(); // Before the document that it shows.
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
    QCOMPARE(QDateTime::fromString(context.dateTime.nowIso, Qt::ISODate), kNow);
    QCOMPARE(context.dateTime.timezone, QString::fromLatin1(QTimeZone::systemTimeZoneId()));
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
    view()->setParent(nullptr); // Its maker still owns it.
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

void EditorWindowControllerTest::run_editsAndNoNotification_saysCompleted()
{
    open(u"abcd"_s, {1, 2});
    run(u"return {textEdits: [{type: 'insertAtCursor', text: 'X'}]};"_s);
    QCOMPARE(text(), u"abcXd"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
}

void EditorWindowControllerTest::run_neitherEditsNorNotifications_leavesTheMessage()
{
    open(u"abcd"_s, {1, 2});
    m_controller->documentState()->setMacroNotificationMessage(u"before"_s);
    run(u"return {cursor: {offset: 0}, selection: null};"_s);
    QCOMPARE(message(), std::optional(u"before"_s));
    QCOMPARE(view()->selectedRange(), (TextRange{1, 2}));
}

void EditorWindowControllerTest::run_twoNotifications_showsTheSecond()
{
    open(u"a"_s);
    QStringList shown;
    connect(m_controller->documentState(), &DocumentState::didChange, this, [&](auto field) {
        if (field == DocumentState::Field::MacroNotificationMessage)
            shown.append(*m_controller->documentState()->macroNotificationMessage());
    });
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}],"
        " notifications: [{type: 'error', message: 'one'}, {message: 'two'}]};"_s);
    QCOMPARE(message(), std::optional(u"two"_s));
    QCOMPARE(shown, (QStringList{u"one"_s, u"two"_s}));
    QCOMPARE(text(), u"b"_s);
}

void EditorWindowControllerTest::run_onlyNotification_showsIt()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: context.macro.id + ' ' + context.macro.name}]};"_s);
    QCOMPARE(message(), std::optional(u"the id the name"_s));
    QVERIFY(!m_document->isEdited());
}

void EditorWindowControllerTest::run_messages_comeInALaterTurn()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: 'later'}]};"_s);
    QVERIFY(!m_controller->documentState()->macroNotificationMessage().has_value());
    QCOMPARE(message(), std::optional(u"later"_s));
}

void EditorWindowControllerTest::run_completionMessage_followsTheWording()
{
    wording::setActiveValues(QHash<QString, QString>{{u"status.macroCompleted"_s, u"Done"_s}});
    open(u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    QCOMPARE(message(), std::optional(u"Done"_s));
}

void EditorWindowControllerTest::run_whileComposing_warnsAndTouchesNothing()
{
    open(u"abc"_s, {1, 0});
    compose(u"にほん"_s);
    QVERIFY(view()->hasMarkedText());
    run(u"return {textEdits: [{type: 'replaceAll', text: 'X'}]};"_s);
    QCOMPARE(message(), std::optional(u"日本語入力の変換を確定してからマクロを実行してください"_s));
    QVERIFY(view()->hasMarkedText());
    QCOMPARE(text(), u"abc"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{1, 0}));
    QVERIFY(!m_document->textStorage()->canUndo());
    compose(QString());
    run(u"return {textEdits: [{type: 'replaceAll', text: 'X'}]};"_s);
    QCOMPARE(text(), u"X"_s);
}

void EditorWindowControllerTest::run_withoutTextView_saysSo()
{
    run(u"return {notifications: [{message: 'ran'}]};"_s);
    QCOMPARE(message(), std::optional(u"テキストエリアが見つかりません"_s));
}

void EditorWindowControllerTest::run_scriptError_showsItAndTouchesNothing_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("shown");

    QTest::newRow("exception") << u"throw new Error('x');"_s
                               << u"マクロの実行中にエラーが発生しました: Error: x"_s;
    QTest::newRow("no object") << u"return 1;"_s << u"マクロの戻り値がオブジェクトではありません"_s;
    QTest::newRow("second edit of an unknown type")
        << u"return {textEdits: [{type: 'replaceAll', text: 'X'}, {type: 'bogus'}],"
           "        notifications: [{message: 'not shown'}]};"_s
        << u"未知の textEdits.type です: bogus"_s;
    QTest::newRow("no selection")
        << u"return {textEdits: [{type: 'replaceSelection', text: 'X'}]};"_s
        << u"選択範囲がないため replaceSelection を実行できません"_s;
}

void EditorWindowControllerTest::run_scriptError_showsItAndTouchesNothing()
{
    QFETCH(QString, code);
    QFETCH(QString, shown);
    open(u"abc"_s, {1, 0});
    run(code);
    QCOMPARE(message(), std::optional(shown));
    QCOMPARE(text(), u"abc"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{1, 0}));
    QVERIFY(!m_document->isEdited());
}

// Whatever a script returns or throws: unless it asks for a valid edit, the text stays as it is.
void EditorWindowControllerTest::run_oddScript_touchesNothing_data()
{
    QTest::addColumn<QString>("code");

    QTest::newRow("proxy that throws") << u"return new Proxy({}, {get() { throw 1; },"
                                          "ownKeys() { throw 2; }});"_s;
    QTest::newRow("proxy of a list of edits")
        << u"return {textEdits: new Proxy([{type: 'replaceAll', text: 'X'}], {})};"_s;
    QTest::newRow("list with a hole")
        << u"return {textEdits: [{type: 'replaceAll', text: 'X'}, , ]};"_s;
    QTest::newRow("endless list") << u"return {textEdits: new Array(4294967295)};"_s;
    QTest::newRow("date in the edits")
        << u"return {textEdits: [{type: 'replaceAll', text: 'X'}, new Date()]};"_s;
    QTest::newRow("cyclic edits") << u"var a = []; a[0] = a; return {textEdits: a};"_s;
    QTest::newRow("string objects")
        << u"return {textEdits: [{type: new String('replaceAll'), text: 'X'}]};"_s;
    QTest::newRow("own key named like the prototype")
        << uR"(return JSON.parse('{"__proto__":{"textEdits":[{"type":"replaceAll","text":"X"}]}}');)"_s;
    QTest::newRow("getter that throws")
        << u"return {get textEdits() { throw new Error('x'); }, toJSON() { return 1; }};"_s;
    QTest::newRow("promise of a result")
        << u"return Promise.resolve({textEdits: [{type: 'replaceAll', text: 'X'}]});"_s;
    QTest::newRow("function") << u"return function() {};"_s;
    QTest::newRow("symbol thrown") << u"throw Symbol('x');"_s;
    QTest::newRow("object without prototype thrown") << u"throw Object.create(null);"_s;
    QTest::newRow("wrapper closed early") << u"})(); throw new Error('x'); (function() {"_s;
    QTest::newRow("open comment") << u"return {}; /*"_s;
    QTest::newRow("fraction and infinity")
        << u"return {textEdits: [{type: 'replaceLines', startLine: 0.5, endLine: Infinity,"
           "lines: []}]};"_s;
    QTest::newRow("cursor of any kind without edits")
        << u"return {cursor: {offset: NaN}, selection: {startOffset: -0, endOffset: 2 ** 53}};"_s;
    QTest::newRow("nested without end") << u"var o = {}; for (var i = 0; i < 1e5; i++)"
                                           "o = {a: o}; return o;"_s;
}

void EditorWindowControllerTest::run_oddScript_touchesNothing()
{
    QFETCH(QString, code);
    open(u"abc"_s, {1, 1});
    run(code);
    QCOMPARE(text(), u"abc"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{1, 1}));
    QVERIFY(!m_document->isEdited());
    QVERIFY(!m_document->textStorage()->canUndo());
    run(u"return {textEdits: [{type: 'replaceSelection', text: 'X'}]};"_s); // It can still run.
    QCOMPARE(text(), u"aXc"_s);
}

void EditorWindowControllerTest::run_editThatFails_showsTheErrorAndKeepsTheOthers()
{
    open(u"abc"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'a\\nb'},"
        "                     {type: 'replaceLines', startLine: 1, endLine: 1, lines: []},"
        "                     {type: 'replaceAll', text: 'never'}],"
        "        notifications: [{message: 'never'}]};"_s);
    QCOMPARE(message(), std::optional(u"replaceLines の startLine / endLine / lines が不正です"_s));
    QCOMPARE(text(), u"a\nb"_s);
    QCOMPARE(m_document->contentString().toString(), u"a\nb"_s);
    view()->undo();
    QCOMPARE(text(), u"abc"_s);
}

// The window's state learns of typing a turn later; a macro must not work on older text.
void EditorWindowControllerTest::run_afterTyping_seesWhatWasTyped()
{
    open(u"b"_s);
    QTest::keyClicks(view(), u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: context.document.text + '!'}]};"_s);
    QCOMPARE(text(), u"ab!"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
    QCOMPARE(text(), u"ab!"_s);
    QCOMPARE(m_document->contentString().toString(), u"ab!"_s);
}

void EditorWindowControllerTest::run_withInput_handsItOver()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: typeof userInput}]};"_s);
    QCOMPARE(message(), std::optional(u"undefined"_s));
    run(u"return {notifications: [{message: '<' + userInput + '>'}]};"_s, QString());
    QCOMPARE(message(), std::optional(u"<>"_s));
}

void EditorWindowControllerTest::run_twice_sharesNothing()
{
    open(u"a"_s);
    run(u"leak = 1; return {notifications: [{message: typeof leak}]};"_s);
    QCOMPARE(message(), std::optional(u"number"_s));
    run(u"return {notifications: [{message: typeof leak}]};"_s);
    QCOMPARE(message(), std::optional(u"undefined"_s));
}

void EditorWindowControllerTest::run_edits_reachDocumentStateAndCounters()
{
    open(u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'x\\r\\ny😀'}]};"_s);
    QCOMPARE(m_document->contentString().toString(), u"x\r\ny😀"_s);
    QVERIFY(m_document->isEdited());
    const DocumentState *state = m_controller->documentState();
    QTRY_COMPARE(state->text().toString(), u"x\r\ny😀"_s);
    QTRY_COMPARE(state->characterCount(), 4);
    QTRY_COMPARE(state->cursorColumn(), 2);
    QCOMPARE(view()->selectedRange(), (TextRange{6, 0})); // Not reset by what was queued.
}

void EditorWindowControllerTest::run_edits_areOneUndoStep()
{
    open(u"one\ntwo"_s, {0, 3});
    run(u"return {textEdits: [{type: 'replaceSelection', text: '1'},"
        "                     {type: 'insertAtCursor', text: '!'},"
        "                     {type: 'replaceLines', startLine: 1, endLine: 2, lines: ['2']}],"
        "        cursor: {offset: 0}};"_s);
    QCOMPARE(text(), u"1!\n2"_s);
    view()->undo();
    QCOMPARE(text(), u"one\ntwo"_s);
    QVERIFY(!m_document->textStorage()->canUndo());
    QTRY_COMPARE(m_document->contentString().toString(), u"one\ntwo"_s);
    QVERIFY(!m_document->isEdited());
}

void EditorWindowControllerTest::message_windowGoneMeanwhile_isDropped()
{
    open(u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    m_controller.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_document->contentString().toString(), u"b"_s);
}

void EditorWindowControllerTest::run_documentGone_stillEdits()
{
    open(u"a"_s);
    m_document.reset();
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    QCOMPARE(text(), u"b"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
}

} // namespace penwick

QTEST_MAIN(penwick::EditorWindowControllerTest)
#include "EditorWindowControllerTest.moc"
