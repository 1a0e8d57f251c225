#include "macro/engine/MacroResult.h"

#include "wording/WordingLookup.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Code = MacroResultError::Code;
using Parsed = tl::expected<MacroResult, MacroResultError>;

/// How the strings of a value arrived: long ones come as texts.
enum class Strings { Short, Long };

ScriptValue fromJson(const QJsonValue &value, Strings strings)
{
    if (value.isBool())
        return ScriptValue(value.toBool());
    if (value.isDouble())
        return ScriptValue(value.toDouble());
    if (value.isString())
        return strings == Strings::Short ? ScriptValue(value.toString())
                                         : ScriptValue(Text(value.toString()));
    if (value.isArray()) {
        ScriptValue::List list;
        for (const QJsonValue entry : value.toArray())
            list.push_back(fromJson(entry, strings));
        return ScriptValue(std::move(list));
    }
    if (value.isObject()) {
        ScriptValue::Map map;
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            map.push_back({it.key(), fromJson(it.value(), strings)});
        return ScriptValue(std::move(map));
    }
    return ScriptValue();
}

// The values of scripts are written as JSON here.
Parsed parse(const char *json, bool hasSelection = false)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        qFatal("The test holds no JSON object: %s", json);
    MacroContext context;
    context.selection.hasSelection = hasSelection;
    Parsed parsed = parseMacroResult(fromJson(document.object(), Strings::Short), context);
    if (parseMacroResult(fromJson(document.object(), Strings::Long), context) != parsed)
        qFatal("Long strings give another result: %s", json);
    return parsed;
}

MacroResult ofEdits(QList<TextEditInstruction> edits)
{
    MacroResult result;
    result.schemaVersion = u"1.0"_s;
    result.textEdits = std::move(edits);
    return result;
}

Parsed failure(Code code, const QString &detail = {})
{
    return tl::unexpected(MacroResultError{code, detail});
}

} // namespace

class MacroResultTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void result_emptyObject_holdsNothing();
    void schemaVersion_string_isKept();
    void schemaVersion_other_isReplaced();
    void textEdits_allFour_areTakenInOrder();
    void textEdits_notAListOfObjects_areNone_data();
    void textEdits_notAListOfObjects_areNone();
    void textEdits_oneUnknownType_failsAll();
    void textEdits_typeInOtherCase_isUnknown();
    void textEdits_missingOrWrongField_fails_data();
    void textEdits_missingOrWrongField_fails();
    void textEdits_emptyText_isValid();
    void textEdits_firstError_wins();
    void replaceSelection_withoutSelection_fails();
    void replaceSelection_withoutTextAndSelection_missesTheText();
    void replaceLines_badFields_fail_data();
    void replaceLines_badFields_fail();
    void replaceLines_goodFields_pass_data();
    void replaceLines_goodFields_pass();
    void notifications_eachType_isTaken();
    void notifications_unknownType_isInfo_data();
    void notifications_unknownType_isInfo();
    void notifications_withoutMessage_areDropped();
    void notifications_notAListOfObjects_areNone_data();
    void notifications_notAListOfObjects_areNone();
    void cursor_object_isTakenByItsIntegers_data();
    void cursor_object_isTakenByItsIntegers();
    void cursor_other_isNone_data();
    void cursor_other_isNone();
    void selection_object_selects();
    void selection_null_deselects();
    void selection_other_isNone_data();
    void selection_other_isNone();
    void errorDescription_ofEachCode_isItsText_data();
    void errorDescription_ofEachCode_isItsText();
    void errorDescription_followsTheWording();
};

void MacroResultTest::cleanup()
{
    wording::setActiveValues(std::nullopt);
}

void MacroResultTest::result_emptyObject_holdsNothing()
{
    const Parsed parsed = parse("{}");
    QVERIFY(parsed.has_value());
    QCOMPARE(parsed->schemaVersion, u"1.0"_s);
    QVERIFY(parsed->textEdits.isEmpty());
    QVERIFY(parsed->notifications.isEmpty());
    QVERIFY(!parsed->cursor.has_value());
    QVERIFY(!parsed->selection.has_value());
}

void MacroResultTest::schemaVersion_string_isKept()
{
    QCOMPARE(parse(R"({"schemaVersion": "7 beta"})")->schemaVersion, u"7 beta"_s);
    QCOMPARE(parse(R"({"schemaVersion": ""})")->schemaVersion, QString());
}

void MacroResultTest::schemaVersion_other_isReplaced()
{
    QCOMPARE(parse(R"({"schemaVersion": 2})")->schemaVersion, u"1.0"_s);
    QCOMPARE(parse(R"({"schemaVersion": null})")->schemaVersion, u"1.0"_s);
}

void MacroResultTest::textEdits_allFour_areTakenInOrder()
{
    const Parsed parsed = parse(R"({"textEdits": [
        {"type": "insertAtCursor", "text": "a"},
        {"type": "replaceLines", "startLine": 1, "endLine": 3.0, "lines": ["x", ""]},
        {"type": "replaceSelection", "text": "b"},
        {"type": "replaceAll", "text": "c", "more": [1]}]})",
                                true);
    QVERIFY(parsed == ofEdits({InsertAtCursor{Text(u"a"_s)},
                               ReplaceLines{1, 3, {Text(u"x"), Text()}},
                               ReplaceSelection{Text(u"b"_s)},
                               ReplaceAll{Text(u"c"_s)}}));
}

void MacroResultTest::textEdits_notAListOfObjects_areNone_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("string") << QByteArray(R"({"textEdits": "replaceAll"})");
    QTest::newRow("object") << QByteArray(R"({"textEdits": {"type": "bogus"}})");
    QTest::newRow("null") << QByteArray(R"({"textEdits": null})");
    QTest::newRow("a number in the list") << QByteArray(R"({"textEdits": [1]})");
    QTest::newRow("a number after a bad edit")
        << QByteArray(R"({"textEdits": [{"type": "bogus"}, 1]})");
    QTest::newRow("a list in the list") << QByteArray(R"({"textEdits": [[]]})");
}

void MacroResultTest::textEdits_notAListOfObjects_areNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(parse(json.constData()) == ofEdits({}));
}

void MacroResultTest::textEdits_oneUnknownType_failsAll()
{
    const Parsed parsed = parse(R"({"textEdits": [
        {"type": "replaceAll", "text": "a"}, {"type": "bogus"}]})");
    QVERIFY(parsed == failure(Code::UnknownTextEditType, u"bogus"_s));
}

void MacroResultTest::textEdits_typeInOtherCase_isUnknown()
{
    QVERIFY(parse(R"({"textEdits": [{"type": "ReplaceAll", "text": "a"}]})") ==
            failure(Code::UnknownTextEditType, u"ReplaceAll"_s));
    QVERIFY(parse(R"({"textEdits": [{"type": "", "text": "a"}]})") ==
            failure(Code::UnknownTextEditType));
}

void MacroResultTest::textEdits_missingOrWrongField_fails_data()
{
    QTest::addColumn<QByteArray>("edit");

    QTest::newRow("no type") << QByteArray(R"({"text": "a"})");
    QTest::newRow("type is a number") << QByteArray(R"({"type": 1, "text": "a"})");
    QTest::newRow("no text") << QByteArray(R"({"type": "replaceAll"})");
    QTest::newRow("text is a number") << QByteArray(R"({"type": "replaceAll", "text": 1})");
    QTest::newRow("text is null") << QByteArray(R"({"type": "insertAtCursor", "text": null})");
    QTest::newRow("no text to replace the selection")
        << QByteArray(R"({"type": "replaceSelection"})");
}

void MacroResultTest::textEdits_missingOrWrongField_fails()
{
    QFETCH(QByteArray, edit);
    const QByteArray json = R"({"textEdits": [)" + edit + "]}";
    QVERIFY(parse(json.constData(), true) == failure(Code::MissingTextField));
}

void MacroResultTest::textEdits_emptyText_isValid()
{
    QVERIFY(parse(R"({"textEdits": [{"type": "replaceAll", "text": ""}]})") ==
            ofEdits({ReplaceAll{Text(QString())}}));
}

void MacroResultTest::textEdits_firstError_wins()
{
    QVERIFY(parse(R"({"textEdits": [{"type": "replaceAll"}, {"type": "bogus"}]})") ==
            failure(Code::MissingTextField));
}

void MacroResultTest::replaceSelection_withoutSelection_fails()
{
    QVERIFY(parse(R"({"textEdits": [{"type": "replaceSelection", "text": "a"}]})") ==
            failure(Code::NoSelectionForReplaceSelection));
}

void MacroResultTest::replaceSelection_withoutTextAndSelection_missesTheText()
{
    QVERIFY(parse(R"({"textEdits": [{"type": "replaceSelection"}]})") ==
            failure(Code::MissingTextField));
}

void MacroResultTest::replaceLines_badFields_fail_data()
{
    QTest::addColumn<QByteArray>("fields");

    QTest::newRow("negative start") << QByteArray(R"("startLine":-1,"endLine":1,"lines":[])");
    QTest::newRow("end before start") << QByteArray(R"("startLine":2,"endLine":1,"lines":[])");
    QTest::newRow("no lines") << QByteArray(R"("startLine":0,"endLine":1)");
    QTest::newRow("a number in lines")
        << QByteArray(R"("startLine":0,"endLine":1,"lines":["a",1])");
    QTest::newRow("lines is a string") << QByteArray(R"("startLine":0,"endLine":1,"lines":"a")");
    QTest::newRow("fraction") << QByteArray(R"("startLine":1.5,"endLine":2,"lines":[])");
    QTest::newRow("start is a string") << QByteArray(R"("startLine":"0","endLine":1,"lines":[])");
    QTest::newRow("start is true") << QByteArray(R"("startLine":true,"endLine":1,"lines":[])");
    QTest::newRow("no start") << QByteArray(R"("endLine":1,"lines":[])");
    QTest::newRow("no end") << QByteArray(R"("startLine":0,"lines":[])");
    QTest::newRow("end too large") << QByteArray(R"("startLine":0,"endLine":1e300,"lines":[])");
}

void MacroResultTest::replaceLines_badFields_fail()
{
    QFETCH(QByteArray, fields);
    const QByteArray json = R"({"textEdits": [{"type": "replaceLines",)" + fields + "}]}";
    QVERIFY(parse(json.constData()) == failure(Code::InvalidReplaceLines));
}

void MacroResultTest::replaceLines_goodFields_pass_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("empty range") << QByteArray(R"("startLine":2,"endLine":2,"lines":["x"])")
                                 << qint64{2} << qint64{2} << QStringList{u"x"_s};
    QTest::newRow("no lines at all") << QByteArray(R"("startLine":0,"endLine":4,"lines":[])")
                                     << qint64{0} << qint64{4} << QStringList();
}

void MacroResultTest::replaceLines_goodFields_pass()
{
    QFETCH(QByteArray, fields);
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    QFETCH(QStringList, lines);
    const QByteArray json = R"({"textEdits": [{"type": "replaceLines",)" + fields + "}]}";
    const QList<Text> texts(lines.begin(), lines.end());
    QVERIFY(parse(json.constData()) == ofEdits({ReplaceLines{start, end, texts}}));
}

void MacroResultTest::notifications_eachType_isTaken()
{
    const Parsed parsed = parse(R"({"notifications": [
        {"type": "success", "message": "a"}, {"type": "info", "message": "b"},
        {"type": "warning", "message": "c"}, {"type": "error", "message": ""}]})");
    QVERIFY(parsed.has_value());
    const QList<MacroNotification> expected{{NotificationType::Success, u"a"_s},
                                            {NotificationType::Info, u"b"_s},
                                            {NotificationType::Warning, u"c"_s},
                                            {NotificationType::Error, QString()}};
    QVERIFY(parsed->notifications == expected);
}

void MacroResultTest::notifications_unknownType_isInfo_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("unknown word") << QByteArray(
        R"({"notifications": [{"type": "fatal", "message": "a"}]})");
    QTest::newRow("other case") << QByteArray(
        R"({"notifications": [{"type": "Error", "message": "a"}]})");
    QTest::newRow("number") << QByteArray(R"({"notifications": [{"type": 1, "message": "a"}]})");
    QTest::newRow("missing") << QByteArray(R"({"notifications": [{"message": "a"}]})");
}

void MacroResultTest::notifications_unknownType_isInfo()
{
    QFETCH(QByteArray, json);
    const Parsed parsed = parse(json.constData());
    const QList<MacroNotification> expected{{NotificationType::Info, u"a"_s}};
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->notifications == expected);
}

void MacroResultTest::notifications_withoutMessage_areDropped()
{
    const Parsed parsed = parse(R"({"notifications": [
        {"type": "error"}, {"message": 1}, {"message": "a"}, {"message": null}]})");
    const QList<MacroNotification> expected{{NotificationType::Info, u"a"_s}};
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->notifications == expected);
}

void MacroResultTest::notifications_notAListOfObjects_areNone_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("string") << QByteArray(R"({"notifications": "a"})");
    QTest::newRow("object") << QByteArray(R"({"notifications": {"message": "a"}})");
    QTest::newRow("a string in the list")
        << QByteArray(R"({"notifications": [{"message": "a"}, "b"]})");
}

void MacroResultTest::notifications_notAListOfObjects_areNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(parse(json.constData()) == ofEdits({}));
}

void MacroResultTest::cursor_object_isTakenByItsIntegers_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<qint64>("offset"); // -9 means none.
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");

    const qint64 none = -9;
    QTest::newRow("empty") << QByteArray(R"({"cursor": {}})") << none << none << none;
    QTest::newRow("all") << QByteArray(R"({"cursor": {"offset": 1, "line": 2, "column": 3.0}})")
                         << qint64{1} << qint64{2} << qint64{3};
    QTest::newRow("no integers")
        << QByteArray(R"({"cursor": {"offset": 1.5, "line": "2", "column": null}})") << none << none
        << none;
    QTest::newRow("negative") << QByteArray(R"({"cursor": {"offset": -1}})") << qint64{-1} << none
                              << none;
}

void MacroResultTest::cursor_object_isTakenByItsIntegers()
{
    QFETCH(QByteArray, json);
    QFETCH(qint64, offset);
    QFETCH(qint64, line);
    QFETCH(qint64, column);
    const Parsed parsed = parse(json.constData());
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->cursor.has_value());
    QCOMPARE(parsed->cursor->offset.value_or(-9), offset);
    QCOMPARE(parsed->cursor->line.value_or(-9), line);
    QCOMPARE(parsed->cursor->column.value_or(-9), column);
}

void MacroResultTest::cursor_other_isNone_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("number") << QByteArray(R"({"cursor": 3})");
    QTest::newRow("null") << QByteArray(R"({"cursor": null})");
    QTest::newRow("list") << QByteArray(R"({"cursor": [3]})");
}

void MacroResultTest::cursor_other_isNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(parse(json.constData()) == ofEdits({}));
}

void MacroResultTest::selection_object_selects()
{
    const Parsed parsed = parse(R"({"selection": {"startOffset": 5, "endOffset": 2}})");
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->selection == std::optional<MacroSelectionResult>(MacroSelect{5, 2}));
}

void MacroResultTest::selection_null_deselects()
{
    const Parsed parsed = parse(R"({"selection": null})");
    QVERIFY(parsed.has_value());
    QVERIFY(parsed->selection == std::optional<MacroSelectionResult>(MacroDeselect()));
}

void MacroResultTest::selection_other_isNone_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("start only") << QByteArray(R"({"selection": {"startOffset": 1}})");
    QTest::newRow("end only") << QByteArray(R"({"selection": {"endOffset": 1}})");
    QTest::newRow("fraction") << QByteArray(
        R"({"selection": {"startOffset": 1.5, "endOffset": 2}})");
    QTest::newRow("empty object") << QByteArray(R"({"selection": {}})");
    QTest::newRow("string") << QByteArray(R"({"selection": "all"})");
    QTest::newRow("number") << QByteArray(R"({"selection": 1})");
    QTest::newRow("false") << QByteArray(R"({"selection": false})");
}

void MacroResultTest::selection_other_isNone()
{
    QFETCH(QByteArray, json);
    QVERIFY(parse(json.constData()) == ofEdits({}));
}

void MacroResultTest::errorDescription_ofEachCode_isItsText_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, Code code, const QString &text) {
        QTest::newRow(name) << static_cast<int>(code) << text;
    };
    row("type", Code::UnknownTextEditType, u"未知の textEdits.type です: D"_s);
    row("exception", Code::ExecutionException, u"マクロの実行中にエラーが発生しました: D"_s);
    row("object", Code::NotAnObject, u"マクロの戻り値がオブジェクトではありません"_s);
    row("text", Code::MissingTextField, u"textEdits に text フィールドがありません"_s);
    row("lines",
        Code::InvalidReplaceLines,
        u"replaceLines の startLine / endLine / lines が不正です"_s);
    row("offset", Code::OutOfRangeOffset, u"cursor または selection の offset が範囲外です"_s);
    row("selection",
        Code::NoSelectionForReplaceSelection,
        u"選択範囲がないため replaceSelection を実行できません"_s);
    row("stopped", Code::Stopped, u"マクロの実行を停止しました"_s);
    row("timeout", Code::Timeout, u"マクロの実行がタイムアウトしました"_s);
}

void MacroResultTest::errorDescription_ofEachCode_isItsText()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    const MacroResultError error{static_cast<Code>(code), u"D"_s};
    QCOMPARE(error.errorDescription(), text);
}

void MacroResultTest::errorDescription_followsTheWording()
{
    wording::setActiveValues(QHash<QString, QString>{{u"error.macroExecutionFailed"_s, u"failed"_s},
                                                     {u"macro.error.timeout"_s, u"late"_s}});
    QCOMPARE((MacroResultError{Code::ExecutionException, u"Error: x"_s}.errorDescription()),
             u"failed: Error: x"_s);
    QCOMPARE((MacroResultError{Code::Timeout, {}}.errorDescription()), u"late"_s);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::MacroResultTest)
#include "MacroResultTest.moc"
