#include "macro/script/ScriptRunner.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

struct Ran
{
    ScriptOutcome outcome;
    QStringList log;
};

Ran run(const QString &source,
        const std::optional<QString> &userInput = std::nullopt,
        const ScriptLimits &limits = {})
{
    QStringList log;
    const auto sink = [&log](const QString &line) { log.append(line); };
    ScriptOutcome outcome = runScript({source, userInput}, sink, limits);
    return {std::move(outcome), log};
}

ScriptOutcome failure(ScriptError error)
{
    return tl::unexpected(std::move(error));
}

ScriptLimits limitsOf(std::size_t values, std::size_t bytes, std::size_t depth)
{
    ScriptLimits limits;
    limits.values = values;
    limits.bytes = bytes;
    limits.depth = depth;
    return limits;
}

} // namespace

class ScriptRunnerTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void value_plainKinds_arrive_data();
    void value_plainKinds_arrive();
    void value_loneSurrogates_becomeReplacementCharacters();
    void value_textWithNul_arrivesWhole();
    void value_getterThatThrows_losesItsKey();
    void value_elementGetterThatThrows_isNull();
    void value_toJson_isNotCalled();
    void value_cycle_ends();
    void value_objectReachedTwice_isCopiedTwice();
    void value_manyLines_arriveInOrder();
    void value_longLists_equalTheirElements();
    void value_listsOfSeveralRuns_arrive();
    void value_longStringsInALongList_arrive();
    void value_longList_isReadOnceAndInOrder();
    void value_listOfSeveralRuns_isReadOnceAndInOrder();
    void value_replacedBuiltIns_doNotReachLists();
    void value_collectedWhileConverting_survives();
    void value_proxyWithThrowingTraps_losesNothingElse();
    void value_longerThanLimits_fails_data();
    void value_longerThanLimits_fails();
    void value_longListBeyondLimits_fails_data();
    void value_longListBeyondLimits_fails();
    void value_listOfSeveralRunsBeyondLimits_fails();
    void value_asDeepAsAllowed_canBeCopiedAndDropped();
    void exception_text_isTheEnginesConversion_data();
    void exception_text_isTheEnginesConversion();
    void exception_line_isTheEnginesOne_data();
    void exception_line_isTheEnginesOne();
    void exception_column_isTheEnginesOne();
    void exception_withoutAnyText_countsAsNoValue();
    void source_tooLong_fails();
    void source_withNulAndSurrogates_reachesTheScript();
    void longTexts_areVariablesUntilTheyAreRead();
    void longTexts_countForTheLengthOfTheSource();
    void userInput_absent_isUndefined();
    void userInput_empty_isSet();
    void userInput_anyText_isKept();
    void log_twoArguments_takesTheFirst();
    void log_ordinaryConversion_isUsed_data();
    void log_ordinaryConversion_isUsed();
    void log_conversionThatThrows_isAnOrdinaryException();
    void log_asValue_behavesAsAFunction();
    void console_otherFunctions_areMissing();
    void jobs_ofPromises_neitherFailNorOutliveTheRun();
    void runs_inARow_shareNothing();
};

void ScriptRunnerTest::value_plainKinds_arrive_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<ScriptValue>("expected");

    using List = ScriptValue::List;
    using Map = ScriptValue::Map;
    const ScriptValue null;
    const ScriptValue one(1.0);
    QTest::newRow("null") << u"null"_s << null;
    QTest::newRow("undefined") << u"undefined"_s << null;
    QTest::newRow("no statement") << QString() << null;
    QTest::newRow("true") << u"true"_s << ScriptValue(true);
    QTest::newRow("number") << u"1.5"_s << ScriptValue(1.5);
    QTest::newRow("string") << u"'日本' + '語'"_s << ScriptValue(u"日本語"_s);
    QTest::newRow("empty list") << u"[]"_s << ScriptValue(List{});
    QTest::newRow("empty object") << u"({})"_s << ScriptValue(Map{});
    QTest::newRow("object keeps its order")
        << u"({b: 1, a: [1, {c: null}]})"_s
        << ScriptValue(Map{{u"b"_s, one},
                           {u"a"_s, ScriptValue(List{one, ScriptValue(Map{{u"c"_s, null}})})}});
    QTest::newRow("undefined in an object is dropped")
        << u"({a: undefined, b: 1})"_s << ScriptValue(Map{{u"b"_s, one}});
    QTest::newRow("undefined and holes in a list are null")
        << u"[undefined, , 1]"_s << ScriptValue(List{null, null, one});
    QTest::newRow("a string object is an object")
        << u"new String('x')"_s << ScriptValue(Map{{u"0"_s, ScriptValue(u"x"_s)}});
    QTest::newRow("function") << u"(function() {})"_s << ScriptValue(Map{});
    QTest::newRow("symbol") << u"Symbol('x')"_s << ScriptValue::other();
    QTest::newRow("big integer") << u"10n"_s << ScriptValue::other();
    QTest::newRow("array buffer") << u"new ArrayBuffer(8)"_s << ScriptValue(Map{});
    QTest::newRow("large typed array") << u"new Uint8Array(40000000)"_s << ScriptValue(Map{});
    QTest::newRow("proxy of a list is an object") << u"new Proxy([], {})"_s << ScriptValue(Map{});
    QTest::newRow("revoked proxy") << u"var r = Proxy.revocable([], {}); r.revoke(); [r.proxy, 1]"_s
                                   << ScriptValue(List{ScriptValue(Map{}), one});
    QTest::newRow("list that shrinks while it is read")
        << u"var a = [1, 2, 3];"
           "Object.defineProperty(a, 0, {get() { a.length = 1; return 1; }}); a"_s
        << ScriptValue(List{one, null, null});
    QTest::newRow("key named like the prototype")
        << uR"(JSON.parse('{"__proto__": {"a": 1}, "b": 1}'))"_s
        << ScriptValue(Map{{u"__proto__"_s, ScriptValue(Map{{u"a"_s, one}})}, {u"b"_s, one}});
    QTest::newRow("date") << u"[new Date(0)]"_s << ScriptValue(List{ScriptValue::other()});
}

void ScriptRunnerTest::value_plainKinds_arrive()
{
    QFETCH(QString, source);
    QFETCH(ScriptValue, expected);
    QVERIFY(run(source).outcome == expected);
}

void ScriptRunnerTest::value_loneSurrogates_becomeReplacementCharacters()
{
    const Ran ran = run(uR"(({'\uD800': 'a\uDC00b\uD83D\uDE00'}))"_s);
    const ScriptValue expected(ScriptValue::Map{{u"\uFFFD"_s, ScriptValue(u"a\uFFFDb😀"_s)}});
    QVERIFY(ran.outcome == expected);
}

void ScriptRunnerTest::value_textWithNul_arrivesWhole()
{
    const Ran ran = run(uR"('a\u0000b')"_s);
    QVERIFY(ran.outcome == ScriptValue(QStringView(u"a\0b", 3).toString()));
}

void ScriptRunnerTest::value_getterThatThrows_losesItsKey()
{
    const Ran ran = run(u"({get a() { throw new Error('x'); }, get b() { return 1; }})"_s);
    QVERIFY(ran.outcome == ScriptValue(ScriptValue::Map{{u"b"_s, ScriptValue(1.0)}}));
}

void ScriptRunnerTest::value_elementGetterThatThrows_isNull()
{
    const Ran ran = run(u"var a = [1, 2];"
                        "Object.defineProperty(a, 0, {get() { throw 1; }}); a"_s);
    QVERIFY(ran.outcome == ScriptValue(ScriptValue::List{ScriptValue(), ScriptValue(2.0)}));
}

void ScriptRunnerTest::value_toJson_isNotCalled()
{
    const Ran ran = run(u"var o = {a: 1};"
                        "Object.defineProperty(o, 'toJSON', {value() { return 2; }}); o"_s);
    QVERIFY(ran.outcome == ScriptValue(ScriptValue::Map{{u"a"_s, ScriptValue(1.0)}}));
}

void ScriptRunnerTest::value_cycle_ends()
{
    const Ran ran = run(u"var o = {a: [1]}; o.self = o; o.a.push(o); o"_s);
    using List = ScriptValue::List;
    const ScriptValue expected(
        ScriptValue::Map{{u"a"_s, ScriptValue(List{ScriptValue(1.0), ScriptValue::other()})},
                         {u"self"_s, ScriptValue::other()}});
    QVERIFY(ran.outcome == expected);
}

void ScriptRunnerTest::value_objectReachedTwice_isCopiedTwice()
{
    const Ran ran = run(u"var o = {}; [o, o]"_s);
    const ScriptValue object{ScriptValue::Map()};
    QVERIFY(ran.outcome == ScriptValue(ScriptValue::List{object, object}));
}

void ScriptRunnerTest::value_manyLines_arriveInOrder()
{
    const Ran ran = run(u"Array.from({length: 200000}, (_, i) => 'line ' + i)"_s);
    QVERIFY(ran.outcome.has_value());
    const ScriptValue::List *list = ran.outcome->list();
    QVERIFY(list != nullptr);
    QCOMPARE(list->size(), std::size_t{200000});
    for (std::size_t i = 0; i < list->size(); ++i)
        QCOMPARE(list->at(i), ScriptValue(u"line "_s + QString::number(i)));
}

// Lists of all lengths around those at which they are read in runs, with elements of all kinds.
void ScriptRunnerTest::value_longLists_equalTheirElements()
{
    const std::vector<std::pair<QString, ScriptValue>> kinds{
        {u"'x'"_s, ScriptValue(u"x"_s)},
        {u"''"_s, ScriptValue(u""_s)},
        {u"'a\\n\\nb'"_s, ScriptValue(u"a\n\nb"_s)},
        {u"'\\uD83D'"_s, ScriptValue(u"\uFFFD"_s)},
        {u"'\\uDE00日本😀'"_s, ScriptValue(u"\uFFFD日本😀"_s)},
        {u"7"_s, ScriptValue(7.0)},
        {u""_s, ScriptValue()},
        {u"Symbol()"_s, ScriptValue::other()},
        {u"new String('')"_s, ScriptValue(ScriptValue::Map{})},
        {u"['y']"_s, ScriptValue(ScriptValue::List{ScriptValue(u"y"_s)})},
    };
    QRandomGenerator random(7);
    for (int round = 0; round < 150; ++round) {
        // Some lists hold only short strings, some hardly anything else.
        const auto rare = random.bounded(4) * 20;
        QString source = u"["_s;
        ScriptValue::List expected;
        const int size = random.bounded(40, 300);
        for (int i = 0; i < size; ++i) {
            const bool isRare = rare > 0 && random.bounded(rare) == 0;
            const int last = isRare ? static_cast<int>(kinds.size()) : 5;
            const auto &kind = kinds[static_cast<std::size_t>(random.bounded(last))];
            source += kind.first + u',';
            expected.push_back(kind.second);
        }
        QVERIFY2(run(source + u']').outcome == ScriptValue(expected), qPrintable(source));
    }
}

// With these lengths and numbers, a run ends because it is full, because the next string does not
// fit, or with the list.
void ScriptRunnerTest::value_listsOfSeveralRuns_arrive()
{
    constexpr int kRun = 1 << 17;        // UTF-16 code units.
    constexpr int kMost = (1 << 15) + 1; // Strings.
    for (const int length : {0, 1, kRun / 3, kRun / 2, kRun / 2 + 1, kRun - 1, kRun, kRun + 1}) {
        for (const int count : {64, 65, 100}) {
            const QString source =
                u"Array.from({length: %2}, (_, i) => String.fromCharCode(i + 48).repeat(%1))"_s
                    .arg(length)
                    .arg(count);
            ScriptValue::List expected;
            for (int i = 0; i < count; ++i)
                expected.push_back(ScriptValue(QString(length, QChar(i + 48))));
            QVERIFY2(run(source).outcome == ScriptValue(expected), qPrintable(source));
        }
    }
    for (const int count : {kMost - 1, kMost, kMost + 1, 2 * kMost, 2 * kMost + 1}) {
        for (const QString &last : {u"'last'"_s, u"7"_s}) {
            const QString source =
                u"const list = new Array(%1).fill(''); list.push(%2); list"_s.arg(count).arg(last);
            ScriptValue::List expected(static_cast<std::size_t>(count), ScriptValue(QString()));
            expected.push_back(last == u"7"_s ? ScriptValue(7.0) : ScriptValue(u"last"_s));
            QVERIFY2(run(source).outcome == ScriptValue(expected), qPrintable(source));
        }
    }
}

// Some strings do not fit a run, alone or after others.
void ScriptRunnerTest::value_longStringsInALongList_arrive()
{
    const Ran ran = run(u"const list = Array.from({length: 200}, (_, i) => '' + i);"
                        "for (const i of [0, 50, 51, 52, 199]) list[i] = 'ab'.repeat(2500000);"
                        "for (const i of [100, 101]) list[i] = 'ab'.repeat(5000000);"
                        "list"_s);
    ScriptValue::List expected;
    for (int i = 0; i < 200; ++i) {
        const bool isLong = i == 0 || (i >= 50 && i <= 52) || i == 199;
        const bool isLonger = i == 100 || i == 101;
        expected.push_back(ScriptValue(isLong     ? u"ab"_s.repeated(2'500'000)
                                       : isLonger ? u"ab"_s.repeated(5'000'000)
                                                  : QString::number(i)));
    }
    QVERIFY(ran.outcome == ScriptValue(expected));
}

void ScriptRunnerTest::value_longList_isReadOnceAndInOrder()
{
    const Ran ran =
        run(u"const list = [];"
            "for (let i = 0; i < 300; ++i)"
            "  Object.defineProperty(list, i, {get() {"
            "    console.log(i);"
            "    if (i % 90 === 89) throw 1;"
            "    return i % 100 === 99 ? i : 'x' + i; }});"
            "delete list[200];" // Not configurable, so it stays.
            "list.length = 302;"
            "Object.setPrototypeOf(list, new Proxy(Array.prototype, {"
            "  get(_, key) { console.log('proxy ' + String(key)); return 'p' + key; }}));"
            "list"_s);
    QStringList log;
    ScriptValue::List expected;
    for (int i = 0; i < 300; ++i) {
        log << QString::number(i);
        expected.push_back(i % 90 == 89    ? ScriptValue()
                           : i % 100 == 99 ? ScriptValue(double(i))
                                           : ScriptValue(u"x"_s + QString::number(i)));
    }
    for (const QString &hole : {u"300"_s, u"301"_s}) {
        log << u"proxy "_s + hole;
        expected.push_back(ScriptValue(u"p"_s + hole));
    }
    QCOMPARE(ran.log, log);
    QVERIFY(ran.outcome == ScriptValue(expected));
}

// Each of the strings fills a run, so that the element after it is read but left for the next one.
void ScriptRunnerTest::value_listOfSeveralRuns_isReadOnceAndInOrder()
{
    const QString makeList = u"const list = [];"
                             "for (let i = 0; i < 70; ++i)"
                             "  Object.defineProperty(list, i, {configurable: true, get() {"
                             "    console.log(i);"
                             "    if (i === %1) %2;"
                             "    return 'x'.repeat(70000) + i; }});"
                             "list"_s;
    for (const auto &[what, isText] : {std::pair(u"throw 1"_s, false),
                                       std::pair(u"return 7"_s, false),
                                       std::pair(u"list.length = 0"_s, true)}) {
        for (const int place : {0, 3, 40, 69}) {
            const Ran ran = run(makeList.arg(place).arg(what));
            QStringList log;
            ScriptValue::List expected;
            for (int i = 0; i < 70; ++i) {
                const bool isGone = isText && i > place;
                if (!isGone)
                    log << QString::number(i);
                const bool isOther = isGone || (i == place && !isText);
                expected.push_back(!isOther
                                       ? ScriptValue(QString(70'000, u'x') + QString::number(i))
                                   : what == u"return 7"_s ? ScriptValue(7.0)
                                                           : ScriptValue());
            }
            QCOMPARE(ran.log, log);
            QVERIFY2(ran.outcome == ScriptValue(expected), qPrintable(what));
        }
    }
}

void ScriptRunnerTest::value_replacedBuiltIns_doNotReachLists()
{
    const Ran ran = run(
        u"let isRead = false;"
        "const log = console.log, define = Object.defineProperty;"
        "const tell = text => { if (isRead) log(text); };"
        "const list = Array.from({length: 300}, (_, i) => '' + i);"
        "const typed = Object.getPrototypeOf(Uint32Array.prototype);"
        "const spies = [];"
        "for (const [name, object] of [['string', String.prototype],"
        "    ['number', Number.prototype], ['typed', typed], ['lengths', Uint32Array.prototype],"
        "    ['list', Array.prototype], ['function', Function.prototype],"
        "    ['object', Object.prototype], ['global', globalThis]])"
        "  for (const key of [...Reflect.ownKeys(object), 0, 1, 2, 300, 'length', 'caller']) {"
        "    const spied = name + ' ' + String(key);"
        "    spies.push([object, key, {configurable: true, enumerable: false,"
        "      get() { tell('get ' + spied); }, set() { tell('set ' + spied); }}]); }"
        "for (let i = 0, end = spies.length; i < end; ++i)"
        "  try { define(spies[i][0], spies[i][1], spies[i][2]); } catch {}"
        "isRead = true;"
        "list"_s);
    QVERIFY2(ran.outcome.has_value(),
             qPrintable(ran.outcome ? QString() : ran.outcome.error().text));
    ScriptValue::List expected;
    for (int i = 0; i < 300; ++i)
        expected.push_back(ScriptValue(QString::number(i)));
    QVERIFY(ran.outcome == ScriptValue(expected));
    QCOMPARE(ran.log, QStringList());
}

// Each getter returns objects without other references, and leaves so much garbage that the engine
// collects during the conversion.
void ScriptRunnerTest::value_collectedWhileConverting_survives()
{
    const Ran ran =
        run(u"function deep(n) { return {"
            "  get a() { let g = []; for (let i = 0; i < 2000; i++) g.push({i: 'x' + i});"
            "            return n > 0 ? deep(n - 1) : [g.length]; },"
            "  b: 'level ' + n }; }"
            "deep(300)"_s);
    QVERIFY(ran.outcome.has_value());
    const ScriptValue *value = &*ran.outcome;
    for (int level = 300; level >= 0; --level) {
        QVERIFY(value->member(u"b") != nullptr);
        QCOMPARE(*value->member(u"b"), ScriptValue(u"level "_s + QString::number(level)));
        value = value->member(u"a");
        QVERIFY(value != nullptr);
    }
    QVERIFY(*value == ScriptValue(ScriptValue::List{ScriptValue(2000.0)}));
}

void ScriptRunnerTest::value_proxyWithThrowingTraps_losesNothingElse()
{
    const Ran ran = run(u"({p: new Proxy({a: 1}, {"
                        "  ownKeys() { throw new Error('keys'); },"
                        "  get() { throw new Error('get'); }}), b: 1})"_s);
    QVERIFY(ran.outcome.has_value());
    QVERIFY(ran.outcome->member(u"b") != nullptr);
    QCOMPARE(*ran.outcome->member(u"b"), ScriptValue(1.0));
    QVERIFY(run(u"2"_s).outcome == ScriptValue(2.0));
}

void ScriptRunnerTest::value_longerThanLimits_fails_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("code");

    const int tooMany = static_cast<int>(ScriptError::Code::ResultTooManyValues);
    const int tooLarge = static_cast<int>(ScriptError::Code::ResultTooLarge);
    const int tooDeep = static_cast<int>(ScriptError::Code::ResultTooDeep);
    const int fits = -1;
    QTest::newRow("ten values") << u"[1, 2, 3, 4, 5, 6, 7, 8, 9]"_s << fits;
    QTest::newRow("eleven values") << u"[1, 2, 3, 4, 5, 6, 7, 8, 9, 10]"_s << tooMany;
    QTest::newRow("long empty list") << u"new Array(4000000000)"_s << tooMany;
    QTest::newRow("one list three times") << u"var o = [1, 2, 3]; [o, o, o]"_s << tooMany;
    QTest::newRow("a hundred bytes") << u"({k: 'x'.repeat(49)})"_s << fits;
    QTest::newRow("text too long") << u"({k: 'x'.repeat(50)})"_s << tooLarge;
    QTest::newRow("key too long") << u"var o = {}; o['k'.repeat(51)] = 1; o"_s << tooLarge;
    QTest::newRow("three levels") << u"[[[1]]]"_s << fits;
    QTest::newRow("four levels") << u"[[[[1]]]]"_s << tooDeep;
}

void ScriptRunnerTest::value_longListBeyondLimits_fails_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("code");

    const int fits = -1;
    const int tooMany = static_cast<int>(ScriptError::Code::ResultTooManyValues);
    const int tooLarge = static_cast<int>(ScriptError::Code::ResultTooLarge);
    QTest::newRow("full") << u"new Array(100).fill('xxxxx')"_s << fits;
    QTest::newRow("a unit too long")
        << u"a = new Array(100).fill('xxxxx'); a[99] += 'x'; a"_s << tooLarge;
    QTest::newRow("long in the middle")
        << u"a = new Array(100).fill(''); a[50] = 'x'.repeat(501); a"_s << tooLarge;
    QTest::newRow("a list inside takes the rest")
        << u"a = new Array(100).fill('x'); a[99] = []; a"_s << fits;
    QTest::newRow("a list inside takes more")
        << u"a = new Array(100).fill('x'); a[1] = [1]; a"_s << tooMany;
    QTest::newRow("no value left")
        << u"a = new Array(99).fill('x'); a[0] = ['x']; a[1] = {get a() { return 'x'; }}; a"_s
        << tooMany;
}

void ScriptRunnerTest::value_longListBeyondLimits_fails()
{
    QFETCH(QString, source);
    QFETCH(int, code);
    const Ran ran = run(source, std::nullopt, limitsOf(101, 1000, 3));
    QCOMPARE(ran.outcome.has_value(), code < 0);
    if (!ran.outcome)
        QCOMPARE(static_cast<int>(ran.outcome.error().code), code);
}

// The limits are reached after several runs of the reader.
void ScriptRunnerTest::value_listOfSeveralRunsBeyondLimits_fails()
{
    constexpr std::size_t kTexts = 70'000;
    constexpr std::size_t kUnits = 400'000;
    const auto code = [](const QString &source, std::size_t values, std::size_t units) {
        const Ran ran = run(source, std::nullopt, limitsOf(values, units * 2, 3));
        return ran.outcome ? std::nullopt : std::optional(ran.outcome.error().code);
    };
    const QString many = u"new Array(70000).fill('')"_s;
    QCOMPARE(code(many, kTexts + 1, 0), std::nullopt);
    QCOMPARE(code(many, kTexts, 0), ScriptError::Code::ResultTooManyValues);
    const QString last = u"a = new Array(69999).fill(''); a.push(['x']); a"_s;
    QCOMPARE(code(last, kTexts + 2, 1), std::nullopt);
    QCOMPARE(code(last, kTexts + 1, 1), ScriptError::Code::ResultTooManyValues);
    const QString large = u"new Array(100).fill('x'.repeat(4000))"_s;
    QCOMPARE(code(large, 101, kUnits), std::nullopt);
    QCOMPARE(code(large, 101, kUnits - 1), ScriptError::Code::ResultTooLarge);
}

void ScriptRunnerTest::value_longerThanLimits_fails()
{
    QFETCH(QString, source);
    QFETCH(int, code);
    const Ran ran = run(source, std::nullopt, limitsOf(10, 100, 3));
    QCOMPARE(ran.outcome.has_value(), code < 0);
    if (!ran.outcome)
        QCOMPARE(static_cast<int>(ran.outcome.error().code), code);
}

void ScriptRunnerTest::value_asDeepAsAllowed_canBeCopiedAndDropped()
{
    const QString nest = u"var o = []; for (var i = 1; i < %1; i++) o = {o: [o]}; o"_s;
    const std::size_t levels = ScriptLimits().depth / 2;
    const Ran ran = run(nest.arg(levels));
    QVERIFY(ran.outcome.has_value());
    const ScriptValue copy = *ran.outcome;
    QVERIFY(copy == *ran.outcome);
    QVERIFY(run(nest.arg(levels + 1)).outcome == failure({ScriptError::Code::ResultTooDeep, {}}));
}

void ScriptRunnerTest::exception_text_isTheEnginesConversion_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("text");

    QTest::newRow("error") << u"throw new Error('x')"_s << u"Error: x"_s;
    QTest::newRow("type error") << u"throw new TypeError('x')"_s << u"TypeError: x"_s;
    QTest::newRow("string") << u"throw '日本語'"_s << u"日本語"_s;
    QTest::newRow("undefined") << u"throw undefined"_s << u"undefined"_s;
    QTest::newRow("unknown name") << u"userInput"_s
                                  << u"ReferenceError: Can't find variable: userInput"_s;
    QTest::newRow("syntax") << u"var a = ;"_s << u"SyntaxError: Unexpected token ';'"_s;
    QTest::newRow("lone surrogate") << u"throw 'a\\uD800'"_s << u"a\uFFFD"_s;
    QTest::newRow("endless recursion")
        << u"function f() { f(); } f()"_s << u"RangeError: Maximum call stack size exceeded."_s;
    QTest::newRow("a conversion that throws")
        << u"throw {toString() { throw new Error('second'); }}"_s << u"Error: second"_s;
}

void ScriptRunnerTest::exception_text_isTheEnginesConversion()
{
    QFETCH(QString, source);
    QFETCH(QString, text);
    const Ran ran = run(source);
    QVERIFY(!ran.outcome.has_value());
    QCOMPARE(ran.outcome.error().text, text);
    QCOMPARE(ran.outcome.error().code, ScriptError::Code::Exception);
}

void ScriptRunnerTest::exception_withoutAnyText_countsAsNoValue()
{
    QVERIFY(run(u"throw {toString() { throw Symbol(); }}"_s).outcome == ScriptValue());

    const Ran symbol = run(u"throw Symbol('x')"_s);
    QVERIFY(!symbol.outcome.has_value());
    QVERIFY(symbol.outcome.error().text.startsWith(u"TypeError: "_s));
}

void ScriptRunnerTest::source_tooLong_fails()
{
    ScriptLimits limits;
    limits.sourceLength = 3;
    QVERIFY(run(u"123"_s, std::nullopt, limits).outcome == ScriptValue(123.0));
    QVERIFY(run(u"1234"_s, std::nullopt, limits).outcome ==
            failure({ScriptError::Code::SourceTooLong, {}}));
}

void ScriptRunnerTest::source_withNulAndSurrogates_reachesTheScript()
{
    QString source = u"'a_b😀'"_s;
    source[2] = QChar::Null;
    const Ran ran = run(source);
    QVERIFY(ran.outcome.has_value() && ran.outcome->string() != nullptr);
    QCOMPARE(*ran.outcome->string(), source.sliced(1, source.size() - 2));
}

void ScriptRunnerTest::longTexts_areVariablesUntilTheyAreRead()
{
    const QString text = u"'\"\\\n\u2028😀</script>"_s + QChar::Null + u"日"_s.repeated(100'000);
    const auto named = [](const QString &source) {
        return QString(source).replace(u"A"_s, longTextName(0)).replace(u"B"_s, longTextName(1));
    };
    const QString source = named(u"const before = [A, B];"
                                 "[...before, typeof A, typeof B, 'B' in globalThis]"_s);
    const ScriptOutcome outcome = runScript({source, std::nullopt, {text, QString()}}, {});
    const ScriptValue none(u"undefined"_s);
    QVERIFY(outcome == ScriptValue(ScriptValue::List{
                           ScriptValue(text), ScriptValue(u""_s), none, none, ScriptValue(false)}));

    const QString globals = u"; Object.getOwnPropertyNames(globalThis).join()"_s;
    const ScriptOutcome after = runScript({named(u"A"_s) + globals, std::nullopt, {text}}, {});
    QVERIFY(after == run(globals).outcome);
    QVERIFY(after.has_value());
}

void ScriptRunnerTest::longTexts_countForTheLengthOfTheSource()
{
    ScriptLimits limits;
    limits.sourceLength = 3;
    QVERIFY(runScript({u"1"_s, std::nullopt, {u"12"_s}}, {}, limits) == ScriptValue(1.0));
    QVERIFY(runScript({u"1"_s, std::nullopt, {u"1"_s, u"12"_s}}, {}, limits) ==
            failure({ScriptError::Code::SourceTooLong, {}}));
}

void ScriptRunnerTest::userInput_absent_isUndefined()
{
    QVERIFY(run(u"typeof userInput"_s).outcome == ScriptValue(u"undefined"_s));
    QVERIFY(run(u"'userInput' in globalThis"_s).outcome == ScriptValue(false));
}

void ScriptRunnerTest::userInput_empty_isSet()
{
    QVERIFY(run(u"userInput"_s, QString()).outcome == ScriptValue(u""_s));
    QVERIFY(run(u"typeof userInput"_s, QString()).outcome == ScriptValue(u"string"_s));
}

void ScriptRunnerTest::userInput_anyText_isKept()
{
    const QString text = u"'\"\\\n\u2028😀</script>"_s + QChar::Null + u"z"_s;
    QVERIFY(run(u"userInput"_s, text).outcome == ScriptValue(text));
}

void ScriptRunnerTest::log_twoArguments_takesTheFirst()
{
    QCOMPARE(run(u"console.log('a', 'b')"_s).log, QStringList{u"a"_s});
}

void ScriptRunnerTest::log_ordinaryConversion_isUsed_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("line");

    QTest::newRow("nothing") << QString() << u"undefined"_s;
    QTest::newRow("null") << u"null"_s << u"null"_s;
    QTest::newRow("number") << u"1.5"_s << u"1.5"_s;
    QTest::newRow("list") << u"[1, 2]"_s << u"1,2"_s;
    QTest::newRow("object") << u"{}"_s << u"[object Object]"_s;
    QTest::newRow("own conversion") << u"{toString() { return 'x'; }}"_s << u"x"_s;
    QTest::newRow("lone surrogate") << u"'\\uD800'"_s << u"\uFFFD"_s;
}

void ScriptRunnerTest::log_ordinaryConversion_isUsed()
{
    QFETCH(QString, argument);
    QFETCH(QString, line);
    const Ran ran = run(u"console.log("_s + argument + u")"_s);
    QVERIFY(ran.outcome == ScriptValue());
    QCOMPARE(ran.log, QStringList{line});
}

void ScriptRunnerTest::log_conversionThatThrows_isAnOrdinaryException()
{
    const QString bad = u"console.log({toString() { throw new Error('x'); }})"_s;
    const Ran caught = run(u"var r; try { "_s + bad + u"; } catch (e) { r = e.message; } r"_s);
    QVERIFY(caught.outcome == ScriptValue(u"x"_s));
    QVERIFY(caught.log.isEmpty());
    QCOMPARE(run(bad).outcome.error().text, u"Error: x"_s);
}

void ScriptRunnerTest::exception_line_isTheEnginesOne_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("line");
    QTest::newRow("first line") << u"missing()"_s << 1;
    QTest::newRow("third line") << u"\n\nthrow new Error('x')"_s << 3;
    QTest::newRow("no program") << u"1;\nlet = = 2;"_s << 2;
    QTest::newRow("text thrown") << u"\nthrow 'x'"_s << 0;
    QTest::newRow("nothing thrown") << u"\nthrow null"_s << 0;
    QTest::newRow("object with a line of its own") << u"throw {line: 7}"_s << 0;
    QTest::newRow("in an evaluated text") << u"\neval('\\n\\n\\nmissing()')"_s << 0;
    QTest::newRow("in a function made of text") << u"\nnew Function('\\nmissing()')()"_s << 0;
    QTest::newRow("line that is no number")
        << u"throw {sourceURL: 'penwick:macro', line: '7'}"_s << 0;
    QTest::newRow("line out of range") << u"throw {sourceURL: 'penwick:macro', line: 1e10}"_s << 0;
    QTest::newRow("line below the first") << u"throw {sourceURL: 'penwick:macro', line: -1}"_s << 0;
    QTest::newRow("line that throws")
        << u"throw {sourceURL: 'penwick:macro', get line() { throw 1; }}"_s << 0;
}

void ScriptRunnerTest::exception_line_isTheEnginesOne()
{
    QFETCH(QString, source);
    QFETCH(int, line);
    const Ran ran = run(source);
    QVERIFY(!ran.outcome.has_value());
    QCOMPARE(ran.outcome.error().line, line);
}

void ScriptRunnerTest::exception_column_isTheEnginesOne()
{
    const auto columnOf = [](const QString &source) { return run(source).outcome.error().column; };
    QVERIFY(columnOf(u"missing()"_s) > 0);
    QCOMPARE(columnOf(u"/* some */ missing()"_s) - columnOf(u"missing()"_s), 11);
    QCOMPARE(columnOf(u"\n\nmissing()"_s), columnOf(u"missing()"_s));
    QCOMPARE(columnOf(u"throw {column: 7}"_s), 0);
}

void ScriptRunnerTest::log_asValue_behavesAsAFunction()
{
    const Ran ran = run(u"['a', 'b'].forEach(console.log);"
                        "console.log.call(null, 'c'); console.log.bind(console)('d');"
                        "typeof console.log"_s);
    QVERIFY(ran.outcome == ScriptValue(u"function"_s));
    QCOMPARE(ran.log, (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
}

void ScriptRunnerTest::console_otherFunctions_areMissing()
{
    QVERIFY(run(u"typeof console.error + typeof console.warn"_s).outcome ==
            ScriptValue(u"undefinedundefined"_s));
    QVERIFY(run(u"Object.keys(console).join()"_s).outcome == ScriptValue(u"log"_s));
}

void ScriptRunnerTest::jobs_ofPromises_neitherFailNorOutliveTheRun()
{
    const Ran ran =
        run(u"Promise.reject(new Error('unhandled'));"
            "Promise.resolve().then(() => { console.log('a'); throw new Error('b'); });"
            "import('somewhere').catch(() => console.log('no module'));"
            "({get c() { Promise.resolve().then(() => console.log('d')); return 1; }})"_s);
    QVERIFY(ran.outcome == ScriptValue(ScriptValue::Map{{u"c"_s, ScriptValue(1.0)}}));
    QCOMPARE(ran.log, (QStringList{u"a"_s, u"no module"_s, u"d"_s}));
}

void ScriptRunnerTest::runs_inARow_shareNothing()
{
    QVERIFY(run(u"leak = 1; Array.prototype.leak = 2; leak"_s).outcome == ScriptValue(1.0));
    QVERIFY(run(u"typeof leak + typeof [].leak"_s).outcome == ScriptValue(u"undefinedundefined"_s));
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ScriptRunnerTest)
#include "ScriptRunnerTest.moc"
