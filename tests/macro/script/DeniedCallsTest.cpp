#include "macro/script/ScriptHostPool.h"
#include "macro/script/SystemCallName.h"
#include "support/Waits.h"

#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/syscall.h>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

constexpr int kUnknown = 4000; // In no system call table.

/// A pool whose hosts make the system calls named by a script.
class DenyingPool final
{
public:
    [[nodiscard]] ScriptOutcome run(const QString &command)
    {
        return m_pool.run({command, std::nullopt}, {}, nullptr);
    }

    [[nodiscard]] bool hasFilter()
    {
        const auto protection = m_pool.protection(test::kLongWait);
        return protection && protection->systemCallFilter;
    }

    ScriptHostPool &pool() { return m_pool; }

private:
    ScriptHostPool m_pool{[] {
        return HostProcess::Settings{
            QStringLiteral(PENWICK_DENYING_HOST), std::uint64_t{1} << 28, "UTC"};
    }};
};

QString command(const char *verb, long number, const char *end = "")
{
    return QString::fromLatin1(verb) + u' ' + QString::number(number) + QString::fromLatin1(end);
}

} // namespace

/// Tests of what the editor learns about system calls that the sandbox denies.
class DeniedCallsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void killed_call_namesItself();
    void refused_call_isNoFailure();
    void refused_callBeforeACrash_namesItself();
    void refused_whereSignalsAreBlocked_isAnsweredFromTheNextHostOn();
    void exit_ofTheHost_reportsItsStatus();
    void name_ofACall_isTheKernels();
};

void DeniedCallsTest::initTestCase()
{
    if (!DenyingPool().hasFilter())
        QSKIP("This build or this system has no filter of system calls.");
}

void DeniedCallsTest::killed_call_namesItself()
{
    DenyingPool pool;
    const ScriptOutcome outcome = pool.run(command("call", SYS_socket));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().code, ScriptError::Code::HostEnded);
    const HostEnding &ending = outcome.error().ending;
    QCOMPARE(ending.cause, HostEnding::Cause::DeniedCall);
    QCOMPARE(ending.engine, u"Denying 1.0"_s);
    QVERIFY((ending.deniedCalls == QList{DeniedCall{SYS_socket, 1, 0, 0}}));
}

void DeniedCallsTest::refused_call_isNoFailure()
{
    DenyingPool pool;
    QVERIFY(pool.run(command("call", kUnknown)) == ScriptValue(double{ENOSYS}));
    QVERIFY(pool.run(command("call", SYS_openat)) == ScriptValue(double{EACCES}));
}

void DeniedCallsTest::refused_callBeforeACrash_namesItself()
{
    DenyingPool pool;
    const ScriptOutcome outcome = pool.run(command("call", kUnknown, " abort"));
    QVERIFY(!outcome.has_value());
    const HostEnding &ending = outcome.error().ending;
    QCOMPARE(ending.cause, HostEnding::Cause::Signal);
    QCOMPARE(ending.number, SIGABRT);
    QVERIFY((ending.deniedCalls == QList{DeniedCall{kUnknown, 0, 0, 0}}));
}

// The first host ends at the call. Later hosts run without reports of refused calls.
void DeniedCallsTest::refused_whereSignalsAreBlocked_isAnsweredFromTheNextHostOn()
{
    DenyingPool pool;
    QVERIFY(pool.pool().prepare()); // A spare host started before the first one ends.
    const ScriptOutcome outcome = pool.run(command("blocked", kUnknown));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().ending.cause, HostEnding::Cause::Signal);
    QCOMPARE(outcome.error().ending.number, SIGSYS);
    QVERIFY(pool.run(command("blocked", kUnknown)) == ScriptValue(double{ENOSYS}));
    const ScriptOutcome killed = pool.run(command("call", SYS_socket));
    QVERIFY(!killed.has_value());
    QCOMPARE(killed.error().ending.cause, HostEnding::Cause::DeniedCall);
}

void DeniedCallsTest::exit_ofTheHost_reportsItsStatus()
{
    DenyingPool pool;
    const ScriptOutcome outcome = pool.run(u"exit 3"_s);
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().ending.cause, HostEnding::Cause::Ended);
    QCOMPARE(outcome.error().ending.number, 3);
}

void DeniedCallsTest::name_ofACall_isTheKernels()
{
    QCOMPARE(systemCallName({SYS_socket, 1, 0, 0}), u"socket (%1)"_s.arg(SYS_socket));
    QCOMPARE(systemCallName({kUnknown, 0, 0, 0}), u"4000"_s);
    QCOMPARE(systemCallName({20, 1, 1, 0}), u"32-bit 20"_s);
}

} // namespace penwick

QTEST_GUILESS_MAIN(penwick::DeniedCallsTest)
#include "DeniedCallsTest.moc"
