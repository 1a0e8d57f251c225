#include "macro/engine/MacroRuntimeService.h"

#include "support/CapturedOutput.h"
#include "wording/WordingLookup.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Code = MacroResultError::Code;
using Outcome = tl::expected<MacroResult, MacroResultError>;

MacroContext contextOf(const QString &text, qint64 location = 0, qint64 length = 0)
{
    EditorSnapshot snapshot;
    snapshot.text = Text(text);
    snapshot.selectionLocation = location;
    snapshot.selectionLength = length;
    snapshot.now = QDateTime::fromString(u"2024-02-29T03:04:05Z"_s, Qt::ISODate);
    snapshot.timeZone = QTimeZone::utc();
    return buildMacroContext(snapshot, u"id"_s, u"name"_s);
}

Outcome run(const QString &code,
            const QString &text = {},
            const std::optional<QString> &userInput = std::nullopt)
{
    return MacroRuntimeService().run(code, contextOf(text), userInput);
}

/// A host that answers each script with the result of `evaluate`.
ScriptHost
hostOf(std::function<ScriptOutcome(const ScriptRequest &, const ScriptLogSink &)> evaluate)
{
    return [evaluate = std::move(evaluate)] {
        return [evaluate](const ScriptRequest &request, const ScriptLogSink &log, ScriptWaiter *) {
            return evaluate(request, log);
        };
    };
}

Outcome failure(Code code, const QString &detail = {})
{
    return tl::unexpected(MacroResultError{code, detail});
}

// The texts of the script's notifications; on failure the error's description.
QStringList messages(const Outcome &outcome)
{
    QStringList texts;
    if (!outcome)
        return {u"error: "_s + outcome.error().errorDescription()};
    for (const MacroNotification &notification : outcome->notifications)
        texts.append(notification.message);
    return texts;
}

QString report(const QString &expression)
{
    return u"return {notifications: [{message: String("_s + expression + u")}]};"_s;
}

} // namespace

class MacroRuntimeServiceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void result_emptyObject_holdsNothing();
    void result_noObject_fails_data();
    void result_noObject_fails();
    void result_badEdit_failsWithItsError();
    void result_edits_areParsed();
    void code_thatThrows_failsWithTheEnginesText_data();
    void code_thatThrows_failsWithTheEnginesText();
    void code_throwingAValueWithoutText_failsWithWhatIsKnown();
    void code_thatThrows_namesItsPlaceInTheCode();
    void code_endingInALineComment_isClosed();
    void code_closingTheWrapper_givesWhatTheEngineGives();
    void userInput_absent_isNotDefined();
    void userInput_empty_isDefined();
    void console_twoArguments_logsTheFirst();
    void console_lines_goToStandardErrorAtOnce();
    void console_lineFeeds_prefixEachLine();
    void runs_inARow_shareNothing();
    void context_document_reachesTheScriptUnchanged_data();
    void context_document_reachesTheScriptUnchanged();
    void context_isAPlainObject();
    void context_ofALongDocument_isTheSameObject();
    void context_changesInTheScript_leaveTheDecisionAlone();
    void source_isTheWrapperAroundContextAndCode();
    void host_receivesInputAndLog();
    void host_errors_becomeExecutionErrors_data();
    void host_errors_becomeExecutionErrors();
    void document_tooLongForTheEngine_failsBeforeTheHost();
};

void MacroRuntimeServiceTest::result_emptyObject_holdsNothing()
{
    const Outcome outcome = run(u"return {};"_s);
    MacroResult empty;
    empty.schemaVersion = u"1.0"_s;
    QVERIFY(outcome == empty);
}

void MacroRuntimeServiceTest::result_noObject_fails_data()
{
    QTest::addColumn<QString>("code");

    QTest::newRow("no return") << u"var a = {};"_s;
    QTest::newRow("no code") << QString();
    QTest::newRow("null") << u"return null;"_s;
    QTest::newRow("undefined") << u"return undefined;"_s;
    QTest::newRow("list") << u"return [];"_s;
    QTest::newRow("list of edits") << u"return [{type: 'replaceAll', text: ''}];"_s;
    QTest::newRow("string") << u"return '{}';"_s;
    QTest::newRow("number") << u"return 1;"_s;
    QTest::newRow("boolean") << u"return true;"_s;
    QTest::newRow("date") << u"return new Date();"_s;
    QTest::newRow("symbol") << u"return Symbol();"_s;
    QTest::newRow("return on a line of its own") << u"return\n{};"_s;
}

void MacroRuntimeServiceTest::result_noObject_fails()
{
    QFETCH(QString, code);
    QVERIFY(run(code) == failure(Code::NotAnObject));
}

void MacroRuntimeServiceTest::result_badEdit_failsWithItsError()
{
    QVERIFY(run(u"return {textEdits: [{type: 'bogus'}]};"_s) ==
            failure(Code::UnknownTextEditType, u"bogus"_s));
    QVERIFY(run(u"return {textEdits: [{type: 'replaceSelection', text: 'a'}]};"_s) ==
            failure(Code::NoSelectionForReplaceSelection));
}

void MacroRuntimeServiceTest::result_edits_areParsed()
{
    const Outcome outcome =
        run(u"return {textEdits: [{type: 'replaceLines', startLine: 0, endLine: 1, lines: ['x']},"
            "                     {type: 'insertAtCursor', text: context.document.text}],"
            "         cursor: {offset: 1}, selection: null};"_s,
            u"日本"_s);
    MacroResult expected;
    expected.schemaVersion = u"1.0"_s;
    expected.textEdits = {ReplaceLines{0, 1, {Text(u"x")}}, InsertAtCursor{Text(u"日本"_s)}};
    expected.cursor = MacroCursorResult{1, std::nullopt, std::nullopt};
    expected.selection = MacroDeselect();
    QVERIFY(outcome == expected);
}

void MacroRuntimeServiceTest::code_thatThrows_failsWithTheEnginesText_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("detail");

    QTest::newRow("error") << u"throw new Error('x');"_s << u"Error: x"_s;
    QTest::newRow("string") << u"throw 'x';"_s << u"x"_s;
    QTest::newRow("error after an answer")
        << u"try { return {}; } finally { throw new RangeError('late'); }"_s
        << u"RangeError: late"_s;
    QTest::newRow("syntax") << u"return {;"_s
                            << u"SyntaxError: Unexpected token ';'. Expected a property name."_s;
    QTest::newRow("userInput without one")
        << u"return {a: userInput};"_s << u"ReferenceError: Can't find variable: userInput"_s;
}

void MacroRuntimeServiceTest::code_thatThrows_failsWithTheEnginesText()
{
    QFETCH(QString, code);
    QFETCH(QString, detail);
    const Outcome outcome = run(code);
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().detail, detail);
    QCOMPARE(outcome.error().code, Code::ExecutionException);
}

void MacroRuntimeServiceTest::code_throwingAValueWithoutText_failsWithWhatIsKnown()
{
    const Outcome symbol = run(u"throw Symbol();"_s);
    QVERIFY(!symbol.has_value());
    QCOMPARE(symbol.error().code, Code::ExecutionException);
    QVERIFY(symbol.error().detail.startsWith(u"TypeError: "_s));
    QVERIFY(run(u"throw {toString() { throw Symbol(); }};"_s) == failure(Code::NotAnObject));
}

void MacroRuntimeServiceTest::code_thatThrows_namesItsPlaceInTheCode()
{
    const MacroResultError first = run(u"missing();"_s).error();
    const MacroResultError third = run(u"\n\nmissing();"_s, u"日\n本"_s).error();
    QCOMPARE(first.line, 1);
    QCOMPARE(third.line, 3);
    QVERIFY(third.column > 0);
    QCOMPARE(first.column, third.column);
}

void MacroRuntimeServiceTest::code_endingInALineComment_isClosed()
{
    QVERIFY(run(u"return {}; // done"_s).has_value());
}

void MacroRuntimeServiceTest::code_closingTheWrapper_givesWhatTheEngineGives()
{
    const Outcome outcome = run(u"})(); (function() { return {schemaVersion: 'out'};"_s);
    QVERIFY(outcome.has_value());
    QCOMPARE(outcome->schemaVersion, u"out"_s);
}

void MacroRuntimeServiceTest::userInput_absent_isNotDefined()
{
    QCOMPARE(messages(run(report(u"typeof userInput"_s))), QStringList{u"undefined"_s});
}

void MacroRuntimeServiceTest::userInput_empty_isDefined()
{
    const QString code = report(u"typeof userInput + userInput.length"_s);
    QCOMPARE(messages(run(code, {}, QString())), QStringList{u"string0"_s});
}

void MacroRuntimeServiceTest::console_twoArguments_logsTheFirst()
{
    test::CapturedOutput captured(stderr);
    const Outcome outcome = run(u"console.log('a', 'b'); console.log('日本'); return {};"_s);
    const QByteArrayList lines = captured.takeLines();
    QVERIFY(outcome.has_value());
    QCOMPARE(lines, (QByteArrayList{"[MacroLog] a", "[MacroLog] 日本"}));
}

// `take` sees only flushed output. The larger buffer shows that each line is flushed.
void MacroRuntimeServiceTest::console_lines_goToStandardErrorAtOnce()
{
    static char buffer[4096];
    std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
    test::CapturedOutput captured(stderr);
    const Outcome outcome = run(u"console.log('before'); throw 'x';"_s);
    const QByteArray written = captured.take();
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    QVERIFY(!outcome.has_value());
    QCOMPARE(written, QByteArray("[MacroLog] before\n"));
}

void MacroRuntimeServiceTest::console_lineFeeds_prefixEachLine()
{
    test::CapturedOutput captured(stderr);
    const Outcome outcome = run(u"console.log('a\\nb\\r\\npenwick: c\\n'); return {};"_s);
    const QByteArray written = captured.take();
    QVERIFY(outcome.has_value());
    QCOMPARE(written,
             QByteArray("[MacroLog] a\n[MacroLog] b\r\n[MacroLog] penwick: c\n[MacroLog] \n"));
}

void MacroRuntimeServiceTest::runs_inARow_shareNothing()
{
    const MacroRuntimeService service;
    const MacroContext context = contextOf({});
    const Outcome first = service.run(u"leak = 1; return {};"_s, context, std::nullopt);
    QVERIFY(first.has_value());
    const Outcome second = service.run(report(u"typeof leak"_s), context, std::nullopt);
    QCOMPARE(messages(second), QStringList{u"undefined"_s});
}

void MacroRuntimeServiceTest::context_document_reachesTheScriptUnchanged_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("quotes") << u"\"a\" 'b' `c` ${d}"_s;
    QTest::newRow("backslashes") << u"\\ \\\\ \\n \\u0041"_s;
    QTest::newRow("line separators") << u"a\nb\r\nc\rd\u2028e\u2029f\u0085g\vh\fi"_s;
    QTest::newRow("closing script tag") << u"</script><!-- --> ]]>"_s;
    QTest::newRow("end of the wrapper") << u"\"; } })(); /* */ //"_s;
    QTest::newRow("controls") << u"a"_s + QChar::Null + u"\x01\x1f\x7f\u0080"_s;
    QTest::newRow("byte order marks and noncharacters") << u"\uFEFFa\uFEFF\uFDD0\uFFFF"_s;
    QTest::newRow("many planes") << u"日本😀👨‍👩‍👧𠮷"_s;
    QTest::newRow("larger than a chunk") << u"行 \"\\\n"_s.repeated(50000);
}

void MacroRuntimeServiceTest::context_document_reachesTheScriptUnchanged()
{
    QFETCH(QString, text);
    const Outcome outcome =
        run(u"return {notifications: [{message: context.document.text},"
            "                         {message: String(context.document.text.length)}]};"_s,
            text);
    QCOMPARE(messages(outcome), (QStringList{text, QString::number(text.size())}));
}

void MacroRuntimeServiceTest::context_isAPlainObject()
{
    const QString code = report(u"[Object.getPrototypeOf(context) === Object.prototype,"
                                " Object.keys(context).sort().join(), typeof this.context,"
                                " context.macro.id, context.capabilities.network].join(' ')"_s);
    QCOMPARE(messages(run(code)),
             QStringList{u"true app,capabilities,cursor,dateTime,document,editor,file,macro,"
                         "schemaVersion,selection undefined id false"_s});
}

// A long text reaches the script by another way, which must leave no trace.
void MacroRuntimeServiceTest::context_ofALongDocument_isTheSameObject()
{
    const QString code =
        report(u"JSON.stringify([Object.getOwnPropertyNames(globalThis),"
               " Object.entries(Object.getOwnPropertyDescriptors(context.document))"
               "     .map(([name, {value, ...rest}]) => [name, typeof value, rest]),"
               " Object.keys(context.selection), context.selection.text.length,"
               " arguments.length, this === globalThis])"_s);
    EditorSnapshot snapshot;
    snapshot.now = QDateTime::fromString(u"2024-02-29T03:04:05Z"_s, Qt::ISODate);
    snapshot.timeZone = QTimeZone::utc();
    QStringList reports;
    for (const qsizetype length : {100, 100'000}) {
        const QString text(length, u'日');
        snapshot.text = Text(text);
        snapshot.selectionLength = length;
        const MacroContext context = buildMacroContext(snapshot, u"id"_s, u"name"_s);
        reports += messages(MacroRuntimeService().run(code, context, std::nullopt));
    }
    QCOMPARE(reports.size(), 2);
    QCOMPARE(reports.at(1).size(), reports.at(0).size() + 3);
    QCOMPARE(QString(reports.at(1)).replace(u"100000"_s, u"100"_s), reports.at(0));
}

void MacroRuntimeServiceTest::context_changesInTheScript_leaveTheDecisionAlone()
{
    QVERIFY(run(u"context.selection.hasSelection = true;"
                "return {textEdits: [{type: 'replaceSelection', text: ''}]};"_s) ==
            failure(Code::NoSelectionForReplaceSelection));
}

void MacroRuntimeServiceTest::source_isTheWrapperAroundContextAndCode()
{
    QString source;
    const MacroRuntimeService service(
        hostOf([&source](const ScriptRequest &request, const ScriptLogSink &) -> ScriptOutcome {
            source = request.source.text();
            return ScriptValue(ScriptValue::Map());
        }),
        {});
    QVERIFY(service.run(u"CODE\n\"日本\""_s, contextOf(u"T\n"_s), std::nullopt).has_value());
    const QString start = u"(function() {\n    var context = {\"schemaVersion\":\"1.0\","_s;
    const QString end = u"};\n    CODE\n\"日本\"\n})();"_s;
    QVERIFY(source.startsWith(start));
    QVERIFY(source.endsWith(end));
    QVERIFY(source.contains(u"\"text\":\"T\\n\","_s));
}

void MacroRuntimeServiceTest::host_receivesInputAndLog()
{
    std::optional<QString> input;
    QStringList logged;
    const MacroRuntimeService service(
        hostOf([&input](const ScriptRequest &request, const ScriptLogSink &log) -> ScriptOutcome {
            input = request.userInput;
            log(u"line"_s);
            return ScriptValue(ScriptValue::Map());
        }),
        [&logged](const QString &line) { logged.append(line); });
    QVERIFY(service.run({}, contextOf({}), u"in"_s).has_value());
    QCOMPARE(input, std::optional(u"in"_s));
    QCOMPARE(logged, QStringList{u"line"_s});
    QVERIFY(service.run({}, contextOf({}), std::nullopt).has_value());
    QVERIFY(!input.has_value());
}

void MacroRuntimeServiceTest::host_errors_becomeExecutionErrors_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("detail");

    const auto row = [](const char *name, ScriptError::Code code, const QString &detail) {
        QTest::newRow(name) << static_cast<int>(code) << detail;
    };
    row("exception", ScriptError::Code::Exception, u"T"_s);
    row("engine", ScriptError::Code::EngineUnavailable, u"JSContext の生成に失敗しました"_s);
    row("source", ScriptError::Code::SourceTooLong, u"context の JSON 変換に失敗しました"_s);
    row("large", ScriptError::Code::ResultTooLarge, u"マクロの戻り値が大きすぎます"_s);
    row("values", ScriptError::Code::ResultTooManyValues, u"マクロの戻り値の要素が多すぎます"_s);
    row("no host", ScriptError::Code::HostUnavailable, u"マクロの実行プログラムを起動できません"_s);
    row("host died",
        ScriptError::Code::HostEnded,
        u"実行が異常終了しました（応答を解釈できません）。"
        "開発元に報告してください"_s);
    row("memory", ScriptError::Code::OutOfMemory, u"メモリが不足しました"_s);
    row("deep", ScriptError::Code::ResultTooDeep, u"マクロの戻り値の入れ子が深すぎます"_s);
}

// The two messages about the engine belong to the script interface; no wording replaces them.
void MacroRuntimeServiceTest::host_errors_becomeExecutionErrors()
{
    QFETCH(int, code);
    QFETCH(QString, detail);
    wording::setActiveValues(
        QHash<QString, QString>{{u"macro.error.jsContextCreation"_s, u"no"_s},
                                {u"macro.error.contextConversion"_s, u"no"_s}});
    const MacroRuntimeService service(
        hostOf([code](const ScriptRequest &, const ScriptLogSink &) -> ScriptOutcome {
            return tl::unexpected(ScriptError{static_cast<ScriptError::Code>(code), u"T"_s});
        }),
        {});
    const Outcome outcome = service.run({}, contextOf({}), std::nullopt);
    wording::setActiveValues(std::nullopt);
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().detail, detail);
    QVERIFY(outcome == failure(Code::ExecutionException, detail));
}

void MacroRuntimeServiceTest::document_tooLongForTheEngine_failsBeforeTheHost()
{
    Text text(u"0123456789abcdef"_s.repeated(4096));
    while (text.size() < (qint64{1} << 31))
        text = text.appended(text);
    MacroContext context;
    context.document.text = text;
    bool asked = false;
    const MacroRuntimeService service(
        hostOf([&asked](const ScriptRequest &, const ScriptLogSink &) -> ScriptOutcome {
            asked = true;
            return ScriptValue();
        }),
        {});
    QVERIFY(service.run(u"return context;"_s, context, std::nullopt) ==
            failure(Code::ExecutionException, u"context の JSON 変換に失敗しました"_s));
    QVERIFY(!asked);
    static_cast<void>(service.run(u"return {};"_s, context, std::nullopt));
    QVERIFY(asked); // The text is not needed.
}

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::MacroRuntimeServiceTest)
#include "MacroRuntimeServiceTest.moc"
