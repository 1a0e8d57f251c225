#include "editor/Worker.h"

#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <memory>

using namespace penwick;
using namespace std::chrono_literals;

class WorkerTest final : public QObject
{
    Q_OBJECT

private:
    using NumberWorker = Worker<int>;

    static int noThread() { return -1; }

private Q_SLOTS:

    void work_runsOnAnotherThreadAndEndsInTheEventLoop()
    {
        std::atomic<std::thread::id> place;
        int result = 0;
        NumberWorker worker(
            [&] {
                place = std::this_thread::get_id();
                return 7;
            },
            noThread,
            [&] {
                QCOMPARE(std::this_thread::get_id(), m_main);
                result = worker.take();
            });
        QVERIFY(worker.waitFor(60s));
        QCOMPARE(result, 0);
        QTRY_COMPARE(result, 7);
        QVERIFY(place.load() != m_main);
    }

    void waitFor_isBounded()
    {
        QSemaphore gate;
        NumberWorker worker(
            [&] {
                gate.acquire();
                return 7;
            },
            noThread,
            [] {});
        QVERIFY(!worker.waitFor(1ms));
        gate.release();
        QCOMPARE(worker.take(), 7);
    }

    void take_beforeTheEventLoop_endsNothing()
    {
        bool hasEnded = false;
        NumberWorker worker([] { return 7; }, noThread, [&] { hasEnded = true; });
        QCOMPARE(worker.take(), 7);
        QTest::qWait(20);
        QVERIFY(!hasEnded);
    }

    void destroyed_waitsAndEndsNothing()
    {
        QSemaphore gate;
        std::atomic<bool> isDone = false;
        bool hasEnded = false;
        auto worker = std::make_unique<NumberWorker>(
            [&] {
                gate.acquire();
                QTest::qSleep(20);
                isDone = true;
                return 7;
            },
            noThread,
            [&] { hasEnded = true; });
        gate.release();
        worker.reset();
        QVERIFY(isDone);
        QTest::qWait(20);
        QVERIFY(!hasEnded);
    }

    void work_isFreedBeforeTheOutcomeIsThere()
    {
        auto held = std::make_shared<int>(7);
        const std::weak_ptr<int> watch = held;
        NumberWorker worker([held = std::move(held)] { return *held; }, noThread, [] {});
        QCOMPARE(worker.take(), 7);
        QVERIFY(watch.expired());
    }

private:
    const std::thread::id m_main = std::this_thread::get_id();
};

QTEST_GUILESS_MAIN(WorkerTest)
#include "WorkerTest.moc"
