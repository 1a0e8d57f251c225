#include "platform/files/StoreLock.h"

#include "platform/settings/UserDefaults.h"
#include "support/ChildProcess.h"
#include "support/TemporaryHome.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstdio>
#include <unistd.h>

using namespace penwick;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::ChildProcess;
using test::TemporaryHome;

namespace {

constexpr int kRounds = 60;

/// Runs in the child process; `arguments` are the child's command line.
int runChild(const QStringList &arguments)
{
    if (arguments.at(1) == u"hold"_s) {
        StoreLock lock(arguments.at(2));
        const auto held = lock.take();
        std::puts(held ? "held" : "failed");
        std::fflush(stdout);
        while (true)
            ::pause();
    }
    // "count": sets a key of its own again and again.
    UserDefaults defaults(arguments.at(2));
    for (int i = 1; i <= kRounds; ++i)
        if (!defaults.setString(arguments.at(3), QString::number(i)))
            return 1;
    return 0;
}

} // namespace

class StoreLockTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void take_freeFolder_leavesNothingInIt()
    {
        const TemporaryHome home;
        StoreLock lock(home.path());
        const auto held = lock.take();
        QVERIFY(held);
        QVERIFY(QDir(home.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    }

    void take_byTheHolderAgain_nests()
    {
        const TemporaryHome home;
        StoreLock lock(home.path());
        StoreLock other(home.path()); // A second open file conflicts as another process does.
        {
            const auto outer = lock.take();
            {
                const auto inner = lock.take();
                QVERIFY(outer && inner);
            }
            QCOMPARE(other.take(0ms).error().kind, FileError::Kind::Locked);
        }
        QVERIFY(other.take(0ms));
    }

    void take_missingFolder_fails()
    {
        const TemporaryHome home;
        StoreLock lock(home.file(u"nowhere"_s));
        QCOMPARE(lock.take().error().kind, FileError::Kind::NotFound);
    }

    void take_heldByAnotherProcess_failsInTime()
    {
        const TemporaryHome home;
        ChildProcess child({u"hold"_s, home.path()});
        QCOMPARE(child.readLine(), "held");
        child.sendSignal(SIGSTOP); // The lock holder hangs.
        StoreLock lock(home.path());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(lock.take(100ms).error().kind, FileError::Kind::Locked);
        QVERIFY(timer.elapsed() >= 100);
        QVERIFY(!FileError(lock.take(0ms).error()).description().isEmpty());
    }

    void take_afterTheHolderWasKilled_succeeds()
    {
        const TemporaryHome home;
        ChildProcess child({u"hold"_s, home.path()});
        QCOMPARE(child.readLine(), "held");
        child.kill();
        StoreLock lock(home.path());
        QVERIFY(lock.take(0ms));
    }

    void defaults_writtenByTwoProcesses_keepBoth()
    {
        const TemporaryHome home;
        const QString path = home.file(u"config/d.conf"_s);
        ChildProcess first({u"count"_s, path, u"first"_s});
        ChildProcess second({u"count"_s, path, u"second"_s});
        QVERIFY(first.succeeds());
        QVERIFY(second.succeeds());
        const UserDefaults defaults(path);
        QCOMPARE(defaults.string(u"first"_s), QString::number(kRounds));
        QCOMPARE(defaults.string(u"second"_s), QString::number(kRounds));
    }

    void defaults_heldByAHungProcess_keepTheValueInMemory()
    {
        const TemporaryHome home;
        const QString path = home.write(u"config/d.conf"_s, "[General]\nkey=old\n");
        ChildProcess child({u"hold"_s, home.file(u"config"_s)});
        QCOMPARE(child.readLine(), "held");
        UserDefaults defaults(path);
        QVERIFY(!defaults.setString(u"key"_s, u"new"_s));
        QCOMPARE(defaults.string(u"key"_s), u"new"_s);
        QCOMPARE(home.read(u"config/d.conf"_s), "[General]\nkey=old\n");
        child.kill();
        QVERIFY(defaults.setString(u"key"_s, u"newer"_s));
        QVERIFY(home.read(u"config/d.conf"_s).contains("key=newer"));
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == u"hold"_s ||
        QCoreApplication::arguments().value(1) == u"count"_s)
        return runChild(QCoreApplication::arguments());
    StoreLockTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "StoreLockTest.moc"
