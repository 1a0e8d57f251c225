#include "platform/process/ThreadPriority.h"

#include <QTest>

#include <sys/resource.h>
#include <thread>

using namespace penwick;

namespace {

int niceness()
{
    return ::getpriority(PRIO_PROCESS, 0);
}

} // namespace

class ThreadPriorityTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lowered_onAThread_holdsForItAndTheThreadsThatItStarts();
};

void ThreadPriorityTest::lowered_onAThread_holdsForItAndTheThreadsThatItStarts()
{
    const int before = niceness();
    int own = before;
    int started = before;
    std::thread([&] {
        lowerThreadPriority();
        own = niceness();
        std::thread([&] { started = niceness(); }).join();
    }).join();
    QVERIFY(own > before);
    QCOMPARE(started, own);
    QCOMPARE(niceness(), before);
}

QTEST_GUILESS_MAIN(ThreadPriorityTest)
#include "ThreadPriorityTest.moc"
