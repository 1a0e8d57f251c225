#include "macro/script/EngineTrial.h"

#include "macro/script/ScriptHostPool.h"
#include "macro/script/ScriptRunner.h"
#include "macro/script/StoppableWaiter.h"
#include "support/Waits.h"

#include <QFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// Calls `kill` as soon as the trial has begun a step.
class Killer final : public ScriptWaiter
{
public:
    explicit Killer(std::function<void()> kill)
        : m_kill(std::move(kill))
    {
    }

    bool wait(int descriptor, bool forWriting) override
    {
        waitForHost(descriptor, forWriting, -1);
        if (++m_count == 2)
            m_kill();
        return true;
    }

private:
    std::function<void()> m_kill;
    int m_count = 0;
};

QString trialScript()
{
    QFile file(u":/penwick/trial.js"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class EngineTrialTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void trial_onThisSystem_passes();
    void trial_inOtherZones_passes_data();
    void trial_inOtherZones_passes();
    void trial_withTheLeastMemory_passes();
    void script_wrongZone_fails();
    void step_anyOne_worksFirstInItsProcess_data();
    void step_anyOne_worksFirstInItsProcess();
    void host_thatEnds_isReported();
    void host_thatIsKilled_namesTheStep();
    void host_missing_isUnavailable();
    void deadline_passed_stopsTheTrial();
};

void EngineTrialTest::trial_onThisSystem_passes()
{
    const EngineTrial trial = ScriptHostPool::shared().startTrial()(nullptr);
    QCOMPARE(trial.failures, QStringList());
    QVERIFY(!trial.error.has_value());
    QVERIFY(trial.isPassed());
    QCOMPARE(trial.engine, engineName());
    QVERIFY(trial.protection.has_value());
    for (const DeniedCall &call : trial.deniedCalls)
        QCOMPARE(int{call.isKilled}, 0);
}

void EngineTrialTest::trial_inOtherZones_passes_data()
{
    QTest::addColumn<QByteArray>("zone");

    for (const char *zone : {"Asia/Tokyo",
                             "America/New_York",
                             "Asia/Kolkata",
                             "UTC",
                             // Zones whose rules have changed since the engine's time zone data.
                             "Africa/Cairo",
                             "Asia/Almaty",
                             "America/Nuuk",
                             // Values that the engine does not accept.
                             "JST-9",
                             ":Asia/Tokyo",
                             "/usr/share/zoneinfo/Asia/Tokyo"})
        QTest::newRow(zone) << QByteArray(zone);
}

void EngineTrialTest::trial_inOtherZones_passes()
{
    QFETCH(QByteArray, zone);
    auto settings = ScriptHostPool::shared().nextSettings();
    settings.timeZone = zone;
    ScriptHostPool pool([settings] { return settings; });
    const EngineTrial trial = pool.startTrial()(nullptr);
    QCOMPARE(trial.failures, QStringList());
    QVERIFY(trial.isPassed());
}

void EngineTrialTest::trial_withTheLeastMemory_passes()
{
    auto settings = ScriptHostPool::shared().nextSettings();
    settings.memory = std::uint64_t{64} << 20;
    ScriptHostPool pool([settings] { return settings; });
    QVERIFY(pool.startTrial()(nullptr).isPassed());
}

void EngineTrialTest::script_wrongZone_fails()
{
    const ScriptOutcome outcome = runScript({trialScript(), u"1,2"_s}, {});
    QVERIFY(outcome.has_value());
    const ScriptValue::List &failures = *outcome->member(u"failures")->list();
    QCOMPARE(failures.size(), std::size_t{1});
    QVERIFY(failures.front().string()->startsWith(u"dates: time zone: "));
}

void EngineTrialTest::step_anyOne_worksFirstInItsProcess_data()
{
    QTest::addColumn<QString>("step");

    for (const char *step : {"regular expressions",
                             "regular expressions, interpreted",
                             "collection of garbage",
                             "dates",
                             "Intl.Collator",
                             "Intl.DateTimeFormat",
                             "Intl.DisplayNames",
                             "Intl.ListFormat",
                             "Intl.Locale",
                             "Intl.NumberFormat",
                             "Intl.PluralRules",
                             "Intl.RelativeTimeFormat",
                             "Intl.Segmenter",
                             "text",
                             "promises",
                             "typed arrays",
                             "WebAssembly",
                             "compiled code",
                             "timers"})
        QTest::newRow(step) << QString::fromLatin1(step);
}

// A step must not depend on initialization inside the sandbox by an earlier step.
void EngineTrialTest::step_anyOne_worksFirstInItsProcess()
{
    QFETCH(QString, step);
    QStringList steps;
    const ScriptOutcome outcome = ScriptHostPool::shared().run(
        {u"globalThis.onlyStep = '"_s + step + u"';\n"_s + trialScript(), std::nullopt},
        [&steps](const QString &begun) { steps << begun; },
        nullptr);
    QVERIFY2(outcome.has_value(), qPrintable(outcome ? QString() : outcome.error().text));
    QCOMPARE(steps, QStringList{step});
    QVERIFY(outcome->member(u"failures")->list()->empty());
}

void EngineTrialTest::host_thatEnds_isReported()
{
    ScriptHostPool pool([] { return HostProcess::Settings{u"/bin/false"_s, 0, {}}; });
    const EngineTrial trial = pool.startTrial()(nullptr);
    QVERIFY(!trial.isPassed());
    QVERIFY(trial.error.has_value());
    QCOMPARE(trial.error->code, ScriptError::Code::HostEnded);
    QCOMPARE(trial.error->ending.cause, HostEnding::Cause::Ended);
    QCOMPARE(trial.error->ending.number, 1);
    QVERIFY(trial.engine.isEmpty() && !trial.protection);
}

void EngineTrialTest::host_thatIsKilled_namesTheStep()
{
    EngineTrial trial;
    // On a busy machine the trial may end before the kill; then it is tried again.
    for (int i = 0; i < 20 && !trial.error; ++i) {
        auto process = HostProcess::start(ScriptHostPool::shared().nextSettings());
        QVERIFY(process.has_value());
        const auto id = static_cast<pid_t>(process->processId());
        HostConnection host(std::move(*process));
        QVERIFY(host.protection(test::kLongWait).has_value());
        Killer killer([id] { ::kill(id, SIGKILL); });
        trial = tryEngine(host, "UTC", &killer);
    }
    QVERIFY(trial.error.has_value());
    QCOMPARE(trial.error->ending.cause, HostEnding::Cause::Signal);
    QCOMPARE(trial.error->ending.number, SIGKILL);
    QVERIFY(!trial.step.isEmpty());
    QCOMPARE(trial.engine, engineName());
}

void EngineTrialTest::host_missing_isUnavailable()
{
    ScriptHostPool pool([] { return HostProcess::Settings{u"/nowhere/host"_s, 0, {}}; });
    const EngineTrial trial = pool.startTrial()(nullptr);
    QVERIFY(trial.error.has_value());
    QCOMPARE(trial.error->code, ScriptError::Code::HostUnavailable);
}

void EngineTrialTest::deadline_passed_stopsTheTrial()
{
    StoppableWaiter waiter{QDeadlineTimer(0)};
    const EngineTrial trial = ScriptHostPool::shared().startTrial()(&waiter);
    QVERIFY(trial.error.has_value());
    QCOMPARE(trial.error->code, ScriptError::Code::Stopped);
}

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::EngineTrialTest)
#include "EngineTrialTest.moc"
