#include "macro/script/HostSequence.h"

#include "macro/script/ScriptHostPool.h"
#include "macro/script/SharedTexts.h"
#include "macro/script/StoppableWaiter.h"

#include <QFile>
#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// A sequence of the real host.
class Scripts final
{
public:
    ScriptOutcome run(const QString &source)
    {
        log.clear();
        const auto take = [this](const QString &line) { log.append(line); };
        return hosts.run({source, std::nullopt}, take, nullptr, [this] {
            ++restarts;
            log.clear();
        });
    }

    HostSequence hosts{ScriptHostPool::shared().nextSettings()};
    QStringList log;
    int restarts = 0;
};

/// The address space and the resident size of a process in bytes; 0 where that cannot be read.
qint64 memoryOf(qint64 process, int field)
{
    QFile statm(u"/proc/%1/statm"_s.arg(process));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(field).toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

class HostSequenceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void scripts_inARow_shareAProcessAndNothingElse()
    {
        Scripts scripts;
        QVERIFY(scripts.run(u"globalThis.left = 7; Array.prototype.push = null; 1"_s) ==
                ScriptValue(1.0));
        const qint64 process = scripts.hosts.processId();
        QVERIFY(process > 0);
        QVERIFY(scripts.run(u"console.log('a'); typeof left + typeof [].push"_s) ==
                ScriptValue(u"undefinedfunction"_s));
        QCOMPARE(scripts.log, QStringList{u"a"_s});
        const ScriptOutcome thrown = scripts.run(u"throw new Error('no')"_s);
        QVERIFY(!thrown && thrown.error().code == ScriptError::Code::Exception);
        QVERIFY(scripts.run(u"2"_s) == ScriptValue(2.0));
        QCOMPARE(scripts.hosts.processId(), process);
        QCOMPARE(scripts.restarts, 0);
    }

    void texts_longOnes_arriveBothWaysEachTime()
    {
        Scripts scripts;
        for (const QChar unit : {u'日', u'x', u'本'}) {
            const QString text(3 * SharedTexts::kLeastLength, unit);
            const ScriptOutcome outcome = scripts.run(u"'"_s + text + u"' + 'e'"_s);
            QVERIFY(outcome == ScriptValue(text + u'e'));
        }
    }

    void script_stopped_leavesTheNextOneAProcess()
    {
        Scripts scripts;
        scripts.hosts.prepare();
        const qint64 process = scripts.hosts.processId();
        StoppableWaiter waiter{QDeadlineTimer(50)};
        const ScriptOutcome outcome =
            scripts.hosts.run({u"for (;;);"_s, std::nullopt}, {}, &waiter);
        QVERIFY(!outcome && outcome.error().code == ScriptError::Code::Stopped);
        QVERIFY(scripts.run(u"3"_s) == ScriptValue(3.0));
        QVERIFY(scripts.hosts.processId() != process);
    }

    void process_endedMeanwhile_isReplaced()
    {
        Scripts scripts;
        QVERIFY(scripts.run(u"1"_s) == ScriptValue(1.0));
        ::kill(static_cast<pid_t>(scripts.hosts.processId()), SIGKILL);
        QVERIFY(scripts.run(u"console.log('once'); 2"_s) == ScriptValue(2.0));
        QCOMPARE(scripts.log, QStringList{u"once"_s});
        QCOMPARE(scripts.restarts, 1);
    }

    void process_thatFailsFromTheStart_isReported()
    {
        HostSequence missing({u"/nowhere/host"_s, 0, {}});
        ScriptOutcome outcome = missing.run({u"1"_s, std::nullopt}, {}, nullptr);
        QVERIFY(!outcome && outcome.error().code == ScriptError::Code::HostUnavailable);
        HostSequence foreign({u"/bin/true"_s, 0, {}});
        outcome = foreign.run({u"1"_s, std::nullopt}, {}, nullptr);
        QVERIFY(!outcome && outcome.error().code == ScriptError::Code::HostEnded);
    }

    // Long texts need the memory of each script before to be released.
    void memory_afterManyScripts_doesNotGrow()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("The sanitizer keeps memory that was freed.");
#endif
        Scripts scripts;
        const QString source =
            u"let lines = []; for (let i = 0; i < 2000; ++i) lines.push('line ' + i);"
            u"({text: lines.join('\\n'), lines, source: '%1'})"_s.arg(QString(40'000, u'日'));
        constexpr int kWarmUp = 30;
        constexpr int kRuns = 150;
        qint64 process = 0;
        qint64 taken = 0;
        qint64 resident = 0;
        for (int i = 0; i < kWarmUp + kRuns; ++i) {
            QVERIFY(scripts.run(source).has_value());
            if (i == kWarmUp) {
                process = scripts.hosts.processId();
                taken = memoryOf(process, 0);
                resident = memoryOf(process, 1);
            }
        }
        QVERIFY(taken > 0 && resident > 0);
        QCOMPARE(scripts.hosts.processId(), process);
        constexpr qint64 kMost = qint64{32} << 20; // Of 150 times 80 KB of text and 2,000 strings.
        QVERIFY2(memoryOf(process, 1) - resident < kMost,
                 qPrintable(QString::number(memoryOf(process, 1) - resident)));
        QVERIFY2(memoryOf(process, 0) - taken < 8 * kMost,
                 qPrintable(QString::number(memoryOf(process, 0) - taken)));
    }
};

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::HostSequenceTest)
#include "HostSequenceTest.moc"
