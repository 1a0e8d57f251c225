#include "macro/engine/EditorTestBase.h"
#include "support/Waits.h"
#include "wording/WordingLookup.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QScopeGuard>
#include <QTest>

#include <ctime>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// Counts the queued calls that are delivered to any object of the main thread while this lives.
class QueuedCalls final : public QObject
{
public:
    QueuedCalls() { qApp->installEventFilter(this); }

    [[nodiscard]] int count() const { return m_count; }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        m_count += event->type() == QEvent::MetaCall ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace

/// Tests of what a macro that runs on a window does to its text, and of the window's messages.
class EditorWindowMacrosTest final : public QObject, private test::EditorTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void run_editsAndNoNotification_showsCompleted();
    void run_neitherEditsNorNotifications_leavesTheMessage();
    void run_twoNotifications_showsTheSecond();
    void run_onlyNotification_showsIt();
    void run_messages_comeInALaterTurn();
    void run_completionMessage_followsTheWording();
    void run_whileComposing_warnsAndTouchesNothing();
    void run_withoutTextView_showsMessage();
    void run_scriptError_showsItAndTouchesNothing_data();
    void run_scriptError_showsItAndTouchesNothing();
    void run_oddScript_touchesNothing_data();
    void run_oddScript_touchesNothing();
    void run_editThatFails_showsTheErrorAndKeepsTheOthers();
    void run_afterTyping_seesWhatWasTyped();
    void run_withInput_handsItOver();
    void run_anyTimeZone_contextAndScriptAgree_data();
    void run_anyTimeZone_contextAndScriptAgree();
    void run_twice_sharesNothing();
    void run_edits_reachDocumentStateAndCounters();
    void run_edits_areOneUndoStep();
    void message_windowGoneMeanwhile_isDropped();
    void run_documentGone_stillEdits();

private:
    void run(const QString &code, const std::optional<QString> &userInput = std::nullopt);
    void compose(const QString &preedit);
    [[nodiscard]] std::optional<QString> message() const;
};

void EditorWindowMacrosTest::run(const QString &code, const std::optional<QString> &userInput)
{
    m_controller->runMacro(code, u"the id"_s, u"the name"_s, userInput);
    // On a busy machine even a short macro may take long.
    QVERIFY(QTest::qWaitFor([this] { return !m_controller->isRunningMacro(); }, test::kLongWait));
}

void EditorWindowMacrosTest::compose(const QString &preedit)
{
    QInputMethodEvent event(preedit, {});
    QCoreApplication::sendEvent(view(), &event);
}

// The message in the status bar, after all queued events.
std::optional<QString> EditorWindowMacrosTest::message() const
{
    QCoreApplication::processEvents();
    return m_controller->documentState()->macroNotificationMessage();
}

void EditorWindowMacrosTest::run_editsAndNoNotification_showsCompleted()
{
    open(u"abcd"_s, {1, 2});
    run(u"return {textEdits: [{type: 'insertAtCursor', text: 'X'}]};"_s);
    QCOMPARE(text(), u"abcXd"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
}

void EditorWindowMacrosTest::run_neitherEditsNorNotifications_leavesTheMessage()
{
    open(u"abcd"_s, {1, 2});
    m_controller->documentState()->setMacroNotificationMessage(u"before"_s);
    run(u"return {cursor: {offset: 0}, selection: null};"_s);
    QCOMPARE(message(), std::optional(u"before"_s));
    QCOMPARE(view()->selectedRange(), (TextRange{1, 2}));
}

void EditorWindowMacrosTest::run_twoNotifications_showsTheSecond()
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

void EditorWindowMacrosTest::run_onlyNotification_showsIt()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: context.macro.id + ' ' + context.macro.name}]};"_s);
    QCOMPARE(message(), std::optional(u"the id the name"_s));
    QVERIFY(!m_document->isEdited());
}

void EditorWindowMacrosTest::run_messages_comeInALaterTurn()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: 'later'}]};"_s);
    QVERIFY(!m_controller->documentState()->macroNotificationMessage().has_value());
    QCOMPARE(message(), std::optional(u"later"_s));
}

void EditorWindowMacrosTest::run_completionMessage_followsTheWording()
{
    wording::setActiveValues(QHash<QString, QString>{{u"status.macroCompleted"_s, u"Done"_s}});
    open(u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    QCOMPARE(message(), std::optional(u"Done"_s));
}

void EditorWindowMacrosTest::run_whileComposing_warnsAndTouchesNothing()
{
    open(u"abc"_s, {1, 0});
    compose(u"にほん"_s);
    QVERIFY(view()->hasMarkedText());
    // A script that ran would report its own message, because it has no edits to refuse.
    run(u"return {notifications: [{message: 'ran'}]};"_s);
    QCOMPARE(message(), std::optional(u"日本語入力の変換を確定してからマクロを実行してください"_s));
    m_controller->documentState()->setMacroNotificationMessage(std::nullopt);
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

void EditorWindowMacrosTest::run_withoutTextView_showsMessage()
{
    run(u"return {notifications: [{message: 'ran'}]};"_s);
    QCOMPARE(message(), std::optional(u"テキストエリアが見つかりません"_s));
}

void EditorWindowMacrosTest::run_scriptError_showsItAndTouchesNothing_data()
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

void EditorWindowMacrosTest::run_scriptError_showsItAndTouchesNothing()
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

// Whatever a script returns or throws, the text changes only by a valid edit.
void EditorWindowMacrosTest::run_oddScript_touchesNothing_data()
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

void EditorWindowMacrosTest::run_oddScript_touchesNothing()
{
    QFETCH(QString, code);
    open(u"abc"_s, {1, 1});
    run(code);
    QCOMPARE(text(), u"abc"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{1, 1}));
    QVERIFY(!m_document->isEdited());
    QVERIFY(!m_document->textStorage()->canUndo());
    run(u"return {textEdits: [{type: 'replaceSelection', text: 'X'}]};"_s); // The controller still
                                                                            // works.
    QCOMPARE(text(), u"aXc"_s);
}

void EditorWindowMacrosTest::run_editThatFails_showsTheErrorAndKeepsTheOthers()
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

// The window's state is updated one turn after typing. A macro must not get the older text.
void EditorWindowMacrosTest::run_afterTyping_seesWhatWasTyped()
{
    open(u"b"_s);
    QTest::keyClicks(view(), u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: context.document.text + '!'}]};"_s);
    QCOMPARE(text(), u"ab!"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
    QCOMPARE(text(), u"ab!"_s);
    QCOMPARE(m_document->contentString().toString(), u"ab!"_s);
}

void EditorWindowMacrosTest::run_withInput_handsItOver()
{
    open(u"a"_s);
    run(u"return {notifications: [{message: typeof userInput}]};"_s);
    QCOMPARE(message(), std::optional(u"undefined"_s));
    run(u"return {notifications: [{message: '<' + userInput + '>'}]};"_s, QString());
    QCOMPARE(message(), std::optional(u"<>"_s));
}

void EditorWindowMacrosTest::run_anyTimeZone_contextAndScriptAgree_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("expected");

    const QString kolkata = u"2024-02-29T08:34:05+05:30, Asia/Kolkata, -330"_s;
    const QString tokyo = u"2024-02-29T12:04:05+09:00, Asia/Tokyo, -540"_s;
    QTest::newRow("name") << QByteArray("Asia/Kolkata") << kolkata;
    QTest::newRow(":name") << QByteArray(":Asia/Kolkata") << kolkata;
    QTest::newRow("path") << QByteArray("/usr/share/zoneinfo/Asia/Kolkata") << kolkata;
    QTest::newRow(":path") << QByteArray(":/usr/share/zoneinfo/Asia/Kolkata") << kolkata;
    const QByteArray posix("/usr/share/zoneinfo/posix/Asia/Kolkata");
    if (QFile::exists(QFile::decodeName(posix))) // Not every system has this folder.
        QTest::newRow("path in posix") << posix << kolkata;
    QTest::newRow("copied file") << QByteArray("COPY") << kolkata;
    QTest::newRow(":copied file") << QByteArray(":COPY") << kolkata;
    QTest::newRow("rule") << QByteArray("JST-9") << tokyo;
    QTest::newRow(":rule") << QByteArray(":JST-9") << tokyo;
    QTest::newRow("rule with minutes") << QByteArray("IST-5:30") << kolkata;
    QTest::newRow("rule with a name of its own")
        << QByteArray("HERE-9") << u"2024-02-29T12:04:05+09:00, Etc/GMT-9, -540"_s;
    QTest::newRow("rule west of Greenwich")
        << QByteArray("HERE3") << u"2024-02-29T00:04:05-03:00, Etc/GMT+3, 180"_s;
    QTest::newRow("empty") << QByteArray("") << u"2024-02-29T03:04:05Z, UTC, 0"_s;
    QTest::newRow("unknown") << QByteArray("Nowhere") << u"2024-02-29T03:04:05Z, UTC, 0"_s;
}

void EditorWindowMacrosTest::run_anyTimeZone_contextAndScriptAgree()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, expected);
    const QString copy = m_home.file(u"localtime"_s);
    if (!QFile::exists(copy))
        QVERIFY(QFile::copy(u"/usr/share/zoneinfo/Asia/Kolkata"_s, copy));
    const QByteArray former = qgetenv("TZ");
    const auto restore = qScopeGuard([&] {
        if (former.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", former);
        tzset();
    });
    qputenv("TZ", zone.replace("COPY", copy.toUtf8()));
    tzset();
    open(QString());
    run(u"const { nowIso, timezone } = context.dateTime;"
        "const offset = new Date(nowIso).getTimezoneOffset();"
        "return {textEdits: [{type: 'replaceAll', text: [nowIso, timezone, offset].join(', ')}]};"_s);
    QCOMPARE(text(), expected);
}

void EditorWindowMacrosTest::run_twice_sharesNothing()
{
    open(u"a"_s);
    run(u"leak = 1; return {notifications: [{message: typeof leak}]};"_s);
    QCOMPARE(message(), std::optional(u"number"_s));
    run(u"return {notifications: [{message: typeof leak}]};"_s);
    QCOMPARE(message(), std::optional(u"undefined"_s));
}

void EditorWindowMacrosTest::run_edits_reachDocumentStateAndCounters()
{
    open(u"ab"_s);
    view()->setSelectedRange({2, 0});
    run(u"return {textEdits: [{type: 'replaceAll', text: 'xyz\\r\\n😀'}]};"_s);
    QCOMPARE(m_document->contentString().toString(), u"xyz\r\n😀"_s);
    QVERIFY(m_document->isEdited());
    const DocumentState *state = m_controller->documentState();
    QTRY_COMPARE(state->text().toString(), u"xyz\r\n😀"_s);
    QTRY_COMPARE(state->characterCount(), 5);
    QTRY_COMPARE(state->cursorColumn(), 2);
    QCOMPARE(view()->selectedRange(), (TextRange{2, 0})); // Queued updates do not reset it.
}

void EditorWindowMacrosTest::run_edits_areOneUndoStep()
{
    open(u"one\ntwo"_s, {0, 3});
    run(u"return {textEdits: [{type: 'replaceSelection', text: '1'},"
        "                     {type: 'insertAtCursor', text: '!'},"
        "                     {type: 'replaceLines', startLine: 1, endLine: 2, lines: ['2']}],"
        "        cursor: {offset: 0}};"_s);
    QCOMPARE(text(), u"1!\n2"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{0, 0}));
    view()->undo();
    QCOMPARE(text(), u"one\ntwo"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{0, 3}));
    QVERIFY(!m_document->textStorage()->canUndo());
    QTRY_COMPARE(m_document->contentString().toString(), u"one\ntwo"_s);
    QVERIFY(!m_document->isEdited());
    view()->redo();
    QCOMPARE(text(), u"1!\n2"_s);
    QVERIFY(!m_document->textStorage()->canRedo());
}

void EditorWindowMacrosTest::message_windowGoneMeanwhile_isDropped()
{
    open(u"a"_s);
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    QueuedCalls calls;
    m_controller.reset();
    QCoreApplication::processEvents();
    QCOMPARE(calls.count(), 0);
    QCOMPARE(m_document->contentString().toString(), u"b"_s);
}

void EditorWindowMacrosTest::run_documentGone_stillEdits()
{
    open(u"a"_s);
    m_document.reset();
    run(u"return {textEdits: [{type: 'replaceAll', text: 'b'}]};"_s);
    QCOMPARE(text(), u"b"_s);
    QCOMPARE(message(), std::optional(u"マクロを実行しました"_s));
}

} // namespace penwick

QTEST_MAIN(penwick::EditorWindowMacrosTest)
#include "EditorWindowMacrosTest.moc"
