#include "editor/BackgroundTask.h"

#include "support/Waits.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <memory>
#include <new>

using namespace penwick;
using namespace Qt::StringLiterals;

class BackgroundTaskTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void work_completes_onTheThreadOfTheTask();
    void work_thatThrows_fails();
    void work_startedAgain_discardsTheFirst();
    void processEnd_duringWork_doesNotWaitForIt();
};

void BackgroundTaskTest::work_completes_onTheThreadOfTheTask()
{
    BackgroundTask task;
    QThread *worker = nullptr;
    QThread *completer = nullptr;
    task.start([&](const BackgroundTask::IsCancelled &) {
        worker = QThread::currentThread();
        return [&] { completer = QThread::currentThread(); };
    });
    QTRY_VERIFY(!task.isRunning());
    QVERIFY(worker != nullptr && worker != QThread::currentThread());
    QCOMPARE(completer, QThread::currentThread());
}

void BackgroundTaskTest::work_thatThrows_fails()
{
    for (const int wait : {0, 10'000}) {
        BackgroundTask task;
        const QSignalSpy failed(&task, &BackgroundTask::failed);
        task.start(
            [](const BackgroundTask::IsCancelled &) -> BackgroundTask::Completion {
                throw std::bad_alloc();
            },
            wait);
        QTRY_COMPARE(failed.size(), 1);
        QVERIFY(!task.isRunning());
    }
}

void BackgroundTaskTest::work_startedAgain_discardsTheFirst()
{
    BackgroundTask task;
    const auto gate = std::make_shared<QSemaphore>();
    QString order;
    task.start([gate, &order](const BackgroundTask::IsCancelled &) {
        gate->acquire();
        return [&order] { order += u"first "_s; };
    });
    task.start([&order](const BackgroundTask::IsCancelled &) {
        return [&order] { order += u"second"_s; };
    });
    gate->release();
    QTRY_COMPARE(order, u"second"_s);
}

/// Runs this program again, with work that cannot be cancelled.
void BackgroundTaskTest::processEnd_duringWork_doesNotWaitForIt()
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {u"--busy"_s});
    QVERIFY(process.waitForFinished(test::kLongWait));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 7);
}

namespace {

int runBusyProgram(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto started = std::make_shared<QSemaphore>();
    BackgroundTask task;
    task.start([started](const BackgroundTask::IsCancelled &) -> BackgroundTask::Completion {
        started->release();
        QThread::sleep(600);
        return {};
    });
    started->acquire();
    return 7;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && QByteArrayView(argv[1]) == "--busy")
        return runBusyProgram(argc, argv);
    QCoreApplication application(argc, argv);
    BackgroundTaskTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "BackgroundTaskTest.moc"
