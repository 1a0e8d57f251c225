#include "app/EngineCheck.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;

class EngineCheckTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void check_ends_onceWithItsTrial();
    void check_withoutHost_ends();
    void check_destroyedMeanwhile_leavesTheTrial();
};

void EngineCheckTest::check_ends_onceWithItsTrial()
{
    EngineCheck check(ScriptHostPool::shared());
    const QSignalSpy ended(&check, &EngineCheck::ended);
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, EngineCheck::kLongest);
    QVERIFY(check.trial().isPassed());
    QVERIFY(!check.trial().engine.isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(ended.size(), 1);
}

void EngineCheckTest::check_withoutHost_ends()
{
    ScriptHostPool pool([] { return HostProcess::Settings{u"/nowhere/host"_s, 0, {}}; });
    EngineCheck check(pool);
    const QSignalSpy ended(&check, &EngineCheck::ended);
    QTRY_COMPARE(ended.size(), 1);
    QVERIFY(check.trial().error.has_value());
    QCOMPARE(check.trial().error->code, ScriptError::Code::HostUnavailable);
}

// Destroying the check kills the trial's process and emits no signal.
void EngineCheckTest::check_destroyedMeanwhile_leavesTheTrial()
{
    auto check = std::make_unique<EngineCheck>(ScriptHostPool::shared());
    const QSignalSpy ended(check.get(), &EngineCheck::ended);
    check.reset();
    QVERIFY(reapHostProcesses());
    QCoreApplication::processEvents();
    QCOMPARE(ended.size(), 0);
}

QTEST_GUILESS_MAIN(EngineCheckTest)
#include "EngineCheckTest.moc"
