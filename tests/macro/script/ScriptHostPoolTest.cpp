#include "macro/script/ScriptHostPool.h"

#include "macro/script/ScriptRunner.h"
#include "support/Waits.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStringList>
#include <QTest>

#include <clocale>
#include <csignal>
#include <poll.h>
#include <random>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

struct Ran
{
    ScriptOutcome outcome;
    QStringList log;
};

Ran run(const QString &source, const std::optional<QString> &userInput = std::nullopt)
{
    QStringList log;
    ScriptOutcome outcome = ScriptHostPool::shared().run(
        {source, userInput}, [&log](const QString &line) { log.append(line); }, nullptr);
    return {std::move(outcome), log};
}

Ran runHere(const QString &source, const std::optional<QString> &userInput = std::nullopt)
{
    QStringList log;
    ScriptOutcome outcome =
        runScript({source, userInput}, [&log](const QString &line) { log.append(line); });
    return {std::move(outcome), log};
}

/// The value with each string of a list as an element of its own: a host returns several in one
/// piece.
ScriptValue inElements(const ScriptValue &value)
{
    if (const ScriptValue::Map *map = value.map()) {
        ScriptValue::Map members;
        for (const ScriptMember &member : *map)
            members.push_back({member.key, inElements(member.value)});
        return ScriptValue(std::move(members));
    }
    if (value.list() == nullptr)
        return value;
    ScriptValue::List elements;
    for (const ScriptValue &element : *value.list())
        if (const ScriptTexts *texts = element.texts())
            for (const QString &text : texts->joined.toString().split(u'\n'))
                elements.emplace_back(text);
        else
            elements.push_back(inElements(element));
    return ScriptValue(std::move(elements));
}

ScriptOutcome failure(ScriptError::Code code)
{
    return tl::unexpected(ScriptError{code, {}});
}

/// The error may also name calls that the sandbox has denied to threads of the engine meanwhile.
bool isStopped(const ScriptOutcome &outcome)
{
    return !outcome && outcome.error().code == ScriptError::Code::Stopped;
}

/// Waits for the descriptor, and stops the script once `m_isEnough` is true.
class StoppingWaiter final : public ScriptWaiter
{
public:
    bool wait(int descriptor, bool forWriting) override
    {
        constexpr int kCheckInterval = 5; // Milliseconds; a silent script must be stopped too.
        pollfd ready{descriptor, static_cast<short>(forWriting ? POLLOUT : POLLIN), 0};
        ::poll(&ready, 1, kCheckInterval);
        return !m_isEnough || !m_isEnough();
    }

    std::function<bool()> m_isEnough;
};

/// The ids of this process's children that have not been reaped.
QByteArray childProcesses()
{
    QByteArray ids;
    const QDir tasks(u"/proc/self/task"_s);
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile children(tasks.filePath(task + u"/children"_s));
        if (children.open(QIODevice::ReadOnly))
            ids += children.readAll();
    }
    return ids;
}

#ifdef __SANITIZE_ADDRESS__ // A process starts much more slowly.
constexpr int kRuns = 100;
#else
constexpr int kRuns = 1000;
#endif

/// The resident size of this process in bytes.
qint64 residentMemory()
{
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

qsizetype openDescriptors()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
}

} // namespace

class ScriptHostPoolTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void script_anywhere_givesTheSame_data();
    void script_anywhere_givesTheSame();
    void script_largeBothWays_arrives();
    void log_lines_arriveWhileTheScriptRuns();
    void log_manyLines_arriveInOrder();
    void log_whileTheResultIsRead_arrives_data();
    void log_whileTheResultIsRead_arrives();
    void spare_isUsedOnceAndReplaced();
    void spare_killedMeanwhile_isReplaced();
    void host_missing_isUnavailable();
    void host_foreignProgram_countsAsDead();
    void host_killed_isReported();
    void waiter_stops_endsTheScript();
    void memory_exhausted_isReported();
    void program_runByHand_doesNothing();
    void trial_ended_leavesNoProcess();
    void runs_many_leaveNothing();
    void host_afterItsScript_waitsForTheEditor();
};

void ScriptHostPoolTest::initTestCase()
{
    std::setlocale(LC_ALL, "");
}

void ScriptHostPoolTest::script_anywhere_givesTheSame_data()
{
    QTest::addColumn<QString>("source");

    QTest::newRow("nothing") << QString();
    QTest::newRow("plain values")
        << u"({b: 1, a: [1, {c: null}], d: 'x', e: -0.5, f: [true, , 1n]})"_s;
    QTest::newRow("numbers")
        << u"[-0, Infinity, -Infinity, 5e-324, 1.7976931348623157e308, 2 ** 53]"_s;
    QTest::newRow("text") << uR"(({'\uD800': 'a\uDC00b\uD83D\uDE00', é: '日本', n: 'a\u0000b'}))"_s;
    QTest::newRow("exception") << u"throw new TypeError('日本')"_s;
    QTest::newRow("syntax") << u"var a = ;"_s;
    QTest::newRow("symbol thrown") << u"throw Symbol('x')"_s;
    QTest::newRow("log") << u"console.log('a', 'b'); console.log('日本'); console.log({}); 1"_s;
    QTest::newRow("jobs") << u"Promise.resolve().then(() => console.log('later')); 1"_s;
    QTest::newRow("import") << u"import('x').catch((e) => console.log(String(e))); 1"_s;
    QTest::newRow("dates")
        << u"[new Date(0).toString(), new Date(2024, 6, 1).toString(),"
           " new Date(0).toLocaleString(), new Date(86400000).getTimezoneOffset(),"
           " Intl.DateTimeFormat().resolvedOptions().timeZone,"
           " new Date(0).toLocaleString('ja-JP', {timeZone: 'Asia/Tokyo'})]"_s;
    QTest::newRow("locale") << u"[Intl.NumberFormat().resolvedOptions().locale,"
                               " (1234567.5).toLocaleString(), 'I'.toLocaleLowerCase(),"
                               " 'ä'.localeCompare('z'), ['い', 'ア', 'あ'].sort((a, b) =>"
                               " a.localeCompare(b, 'ja')).join(),"
                               " new Intl.PluralRules('ar').select(3)]"_s;
    // Each expression runs first in its process, so nothing was initialized before the sandbox.
    for (const char *const first :
         {"new Intl.NumberFormat('de').format(1234.5)",
          "['い', 'ア', 'あ'].sort(new Intl.Collator('ja').compare)",
          "new Intl.DateTimeFormat('ja', {dateStyle: 'full', timeZone: 'America/Lima'}).format(0)",
          "new Intl.ListFormat('ja').format(['a', 'b', 'c'])",
          "new Intl.RelativeTimeFormat('ja').format(-3, 'day')",
          "new Intl.DisplayNames('ja', {type: 'region'}).of('FR')",
          "[...new Intl.Segmenter('ja', {granularity: 'word'}).segment('今日は晴れ')].length",
          "'か\\u3099'.normalize('NFC').length",
          "new Date(2024, 0, 1).toLocaleDateString('ja-JP-u-ca-japanese', {era: 'long'})",
          "'İ'.toLocaleLowerCase('tr') + 'ǆ'.toUpperCase()",
          "'a'.localeCompare('b')"})
        QTest::newRow(first) << QString::fromUtf8(first);
    QTest::newRow("regular expressions")
        << u"['日本語 text'.replace(/\\p{Script=Han}+/gu, '*'), 'aXbX'.replace(/x/gi, '-'),"
           " /(?<=a)b/.test('ab')]"_s;
    QTest::newRow("compiled code") << u"function f(n) { return n < 2 ? n : f(n - 1) + f(n - 2); }"
                                      "let a = []; for (let i = 0; i < 200; i++) a.push(f(15) + i);"
                                      "[f(24), a.length, a[199]]"_s;
    QTest::newRow("collected") << u"let k; for (let i = 0; i < 3e5; i++) k = {i, s: 'x' + i}; k"_s;
    QTest::newRow("endless recursion") << u"function f() { f(); } f()"_s;
    QTest::newRow("web assembly")
        << u"var m = new WebAssembly.Module(new Uint8Array([0,97,115,109,1,0,0,0])); typeof m"_s;
    QTest::newRow("shared memory")
        << u"Atomics.add(new Int32Array(new SharedArrayBuffer(8)), 0, 5)"_s;
    QTest::newRow("many strings")
        << u"[{a: Array.from({length: 200}, (_, i) => '日' + i)}, 1, 'b']"_s;
    QTest::newRow("globals") << u"Object.getOwnPropertyNames(globalThis).sort()"_s;
    QTest::newRow("too deep") << u"var o = []; for (var i = 0; i < 3000; i++) o = [o]; o"_s;
    QTest::newRow("too wide") << u"new Array(4000000000)"_s;
    QTest::newRow("typed array too large") << u"new Uint8Array(1e15)"_s;
}

// Compares the result with that of the editor's own thread. Neither the transfer nor the sandbox
// may change it.
void ScriptHostPoolTest::script_anywhere_givesTheSame()
{
    QFETCH(QString, source);
    for (const std::optional<QString> &input :
         {std::optional<QString>(), {QString()}, {u"日本"_s}}) {
        const QString code = source + u"\n//"_s + input.value_or(u"none"_s);
        const Ran there = run(code, input);
        const Ran here = runHere(code, input);
        if (!there.outcome && !here.outcome)
            QCOMPARE(there.outcome.error().text, here.outcome.error().text);
        QVERIFY(there.outcome.map(inElements) == here.outcome.map(inElements));
        QCOMPARE(there.log, here.log);
    }
    const Ran typeOfInput = run(u"typeof userInput + ('userInput' in globalThis)"_s, QString());
    QVERIFY(typeOfInput.outcome == ScriptValue(u"stringtrue"_s));
}

// If both sides only wrote, both would block.
void ScriptHostPoolTest::script_largeBothWays_arrives()
{
    for (const QString &part : {u"narrow "_s, u"広い😀 "_s}) {
        const QString text = part.repeated(2000000);
        const Ran ran = run(u"var t = '"_s + text + u"'; console.log(t); [t, t.length]"_s);
        QVERIFY(ran.outcome.has_value());
        QVERIFY(ran.log == QStringList{text});
        const ScriptValue::List expected{ScriptValue(text),
                                         ScriptValue(static_cast<double>(text.size()))};
        QVERIFY(*ran.outcome == ScriptValue(expected));
    }
}

void ScriptHostPoolTest::log_lines_arriveWhileTheScriptRuns()
{
    QStringList lines;
    StoppingWaiter waiter;
    waiter.m_isEnough = [&lines] { return lines.size() == 2; };
    const ScriptOutcome outcome = ScriptHostPool::shared().run(
        {u"console.log('a'); console.log('b'); while (true) ;"_s, std::nullopt},
        [&lines](const QString &line) { lines.append(line); },
        &waiter);
    QVERIFY(isStopped(outcome));
    QCOMPARE(lines, (QStringList{u"a"_s, u"b"_s}));
}

void ScriptHostPoolTest::log_manyLines_arriveInOrder()
{
    const Ran ran = run(u"for (let i = 0; i < 50000; i++) console.log(i); 1"_s);
    QVERIFY(ran.outcome == ScriptValue(1.0));
    QCOMPARE(ran.log.size(), qsizetype{50000});
    for (qsizetype i = 0; i < ran.log.size(); ++i)
        QCOMPARE(ran.log.at(i), QString::number(i));
}

void ScriptHostPoolTest::log_whileTheResultIsRead_arrives_data()
{
    QTest::addColumn<QString>("before");

    // Parts of the result that are on their way when a getter logs.
    QTest::newRow("nothing") << u"1"_s;
    QTest::newRow("long text") << u"'x'.repeat(40000)"_s;
    QTest::newRow("long list") << u"Array(3000).fill('y'.repeat(40))"_s;
    QTest::newRow("many numbers") << u"Array(200000).fill(1.5)"_s;
}

void ScriptHostPoolTest::log_whileTheResultIsRead_arrives()
{
    QFETCH(QString, before);
    const Ran ran =
        run(u"({before: %1, get last() { console.log('a'); console.log('b'); return 7; }})"_s.arg(
            before));
    QVERIFY(ran.outcome.has_value());
    QVERIFY(ran.outcome->member(u"last")->integer() == 7);
    QCOMPARE(ran.log, (QStringList{u"a"_s, u"b"_s}));
}

void ScriptHostPoolTest::spare_isUsedOnceAndReplaced()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    QVERIFY(pool.prepare());
    const qint64 first = pool.spareProcessId();
    QVERIFY(pool.prepare());
    QCOMPARE(pool.spareProcessId(), first);
    QVERIFY(run(u"leak = 1"_s).outcome == ScriptValue(1.0));
    QCOMPARE(pool.spareProcessId(), qint64{-1});
    QVERIFY(pool.prepare());
    QVERIFY(pool.spareProcessId() != first);
    QVERIFY(run(u"typeof leak"_s).outcome == ScriptValue(u"undefined"_s));
}

void ScriptHostPoolTest::spare_killedMeanwhile_isReplaced()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    QVERIFY(pool.prepare());
    const qint64 spare = pool.spareProcessId();
    ::kill(static_cast<pid_t>(spare), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(pool.prepare() && pool.spareProcessId() != spare, test::kLongWait);
    QVERIFY(run(u"1"_s).outcome == ScriptValue(1.0));
}

void ScriptHostPoolTest::host_missing_isUnavailable()
{
    ScriptHostPool pool([] { return HostProcess::Settings{u"/nowhere/host"_s, 0, {}}; });
    QVERIFY(!pool.prepare());
    QVERIFY(pool.run({u"1"_s, std::nullopt}, {}, nullptr) ==
            failure(ScriptError::Code::HostUnavailable));
}

void ScriptHostPoolTest::host_foreignProgram_countsAsDead()
{
    ScriptHostPool pool([] { return HostProcess::Settings{u"/bin/true"_s, 0, {}}; });
    const ScriptOutcome outcome = pool.run({u"1"_s, std::nullopt}, {}, nullptr);
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().code, ScriptError::Code::HostEnded);
    QVERIFY((outcome.error().ending == HostEnding{HostEnding::Cause::Ended, 0, {}, {}}));
}

void ScriptHostPoolTest::host_killed_isReported()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    for (const int signal : {SIGKILL, SIGABRT, SIGILL, SIGSYS, SIGTERM, SIGSEGV}) {
        QVERIFY(pool.prepare());
        const qint64 process = pool.spareProcessId();
        const ScriptOutcome outcome = pool.run(
            {u"console.log('running'); while (true) ;"_s, std::nullopt},
            [=](const QString &) { ::kill(static_cast<pid_t>(process), signal); },
            nullptr);
        QVERIFY(!outcome.has_value());
        QCOMPARE(outcome.error().code, ScriptError::Code::HostEnded);
        const HostEnding &ending = outcome.error().ending;
        QVERIFY(!ending.engine.isEmpty());
#ifdef __SANITIZE_ADDRESS__ // The sanitizer reports this signal and exits.
        if (signal == SIGSEGV)
            continue;
#endif
        QCOMPARE(ending.cause, HostEnding::Cause::Signal);
        QCOMPARE(ending.number, signal);
    }
}

void ScriptHostPoolTest::waiter_stops_endsTheScript()
{
    for (const QString &code :
         {u"while (true) ;"_s,
          u"for (;;) try { for (;;) ; } catch (e) {} finally { continue; }"_s,
          u"/^(a+)+$/.test('a'.repeat(60) + 'b')"_s,
          u"(function f() { Promise.resolve().then(f); })()"_s,
          u"let b = new WebAssembly.Memory({initial: 1, maximum: 1, shared: true}).buffer;"
          "Atomics.wait(new Int32Array(b), 0, 0)"_s}) {
        StoppingWaiter waiter;
        QElapsedTimer sinceStart;
        waiter.m_isEnough = [&] { return sinceStart.isValid() && sinceStart.hasExpired(150); };
        const ScriptOutcome outcome = ScriptHostPool::shared().run(
            {u"console.log('runs');"_s + code, std::nullopt},
            [&](const QString &) { sinceStart.start(); },
            &waiter);
        if (!isStopped(outcome))
            qDebug() << code << (outcome ? u"ended"_s : outcome.error().text);
        QVERIFY(isStopped(outcome));
    }
}

void ScriptHostPoolTest::memory_exhausted_isReported()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    const auto protection = pool.protection(test::kLongWait);
    QVERIFY(protection.has_value());
    if (!protection->memoryLimit)
        QSKIP("This build leaves out the limit on memory.");
    pool.setMemory(std::uint64_t{512} << 20);
    for (const QString &code :
         {u"let a = []; for (;;) a.push({});"_s,
          u"let a = []; for (;;) a.push(new Array(1000).fill(1.5));"_s,
          u"let a = []; for (let i = 0; ; i++) a.push('x'.repeat(1000) + i + [i].join());"_s}) {
        const Ran ran = run(code);
        QVERIFY(!ran.outcome.has_value());
        // Some engine releases throw, others end the process.
        const ScriptError &error = ran.outcome.error();
        if (error.text != u"RangeError: Out of memory"_s)
            QCOMPARE(error.code, ScriptError::Code::OutOfMemory);
    }
    pool.setMemory(ScriptHostPool::defaultMemory());
    QVERIFY(run(u"1"_s).outcome == ScriptValue(1.0));
}

void ScriptHostPoolTest::program_runByHand_doesNothing()
{
    const QString program =
        QDir(QCoreApplication::applicationDirPath()).filePath(u"../bin/penwick-script-host"_s);
    for (const QStringList &arguments : {QStringList(), QStringList{u"1000000"_s}}) {
        QProcess host;
        host.start(program, arguments);
        QVERIFY(host.waitForFinished(test::kLongWait));
        QCOMPARE(host.exitCode(), 2);
        QVERIFY(host.readAllStandardOutput().isEmpty() && host.readAllStandardError().isEmpty());
    }
    QProcess help;
    help.start(program, {u"--help"_s});
    QVERIFY(help.waitForFinished(test::kLongWait));
    QCOMPARE(help.exitCode(), 0);
    QVERIFY(help.readAllStandardOutput().contains("penwick"));
}

void ScriptHostPoolTest::trial_ended_leavesNoProcess()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    pool.discard();
    QTRY_VERIFY_WITH_TIMEOUT(reapHostProcesses(), test::kLongWait);
    QVERIFY(pool.startTrial()(nullptr).isPassed());
    QCOMPARE(childProcesses(), QByteArray());
}

void ScriptHostPoolTest::runs_many_leaveNothing()
{
    ScriptHostPool &pool = ScriptHostPool::shared();
    const auto runSome = [&pool](int count) {
        for (int i = 0; i < count; ++i)
            QVERIFY(run(u"%1"_s.arg(i)).outcome == ScriptValue(static_cast<double>(i)));
        pool.discard();
        QTRY_VERIFY_WITH_TIMEOUT(reapHostProcesses(), test::kLongWait);
    };
    runSome(20); // Until all one-time allocations are made.
    const qsizetype descriptors = openDescriptors();
    [[maybe_unused]] const qint64 memory = residentMemory();
    runSome(kRuns);
    QCOMPARE(openDescriptors(), descriptors);
    QCOMPARE(childProcesses(), QByteArray());
#ifndef __SANITIZE_ADDRESS__ // The sanitizer holds freed memory back for a while.
    const qint64 growth = residentMemory() - memory;
    QVERIFY2(growth < kRuns * 1000, qPrintable(QString::number(growth)));
#endif
}

// A host that released its memory at once would take a processor from the editor, which reads the
// value meanwhile: reading this one takes long enough for a host to end.
void ScriptHostPoolTest::host_afterItsScript_waitsForTheEditor()
{
    auto process = HostProcess::start(ScriptHostPool::shared().nextSettings());
    QVERIFY(process.has_value());
    HostConnection host(std::move(*process));
    QVERIFY(host.protection(test::kLongWait).has_value());
    const auto outcome = host.run(
        {u"Array.from({length: 1000000}, (_, i) => '日本 ' + i)"_s, std::nullopt}, {}, nullptr);
    QVERIFY(outcome.has_value());
    QVERIFY(host.process().isAlive());
    const HostEnding ending = host.end();
    QCOMPARE(ending.cause, HostEnding::Cause::Signal);
    QCOMPARE(ending.number, SIGKILL);
}

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::ScriptHostPoolTest)
#include "ScriptHostPoolTest.moc"
