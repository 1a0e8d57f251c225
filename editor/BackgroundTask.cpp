#include "editor/BackgroundTask.h"

#include <QCoreApplication>
#include <QPromise>
#include <QSemaphore>
#include <QThreadPool>

#include <atomic>
#include <memory>

namespace penwick {

namespace {

std::atomic<bool> isEnding = false;

/// More threads than processors, so that abandoned work does not keep new work waiting. It is never
/// destroyed: that would wait for work that may take its time, long after the last window is gone.
/// Work only uses what it holds itself, so it may be cut off with the process.
QThreadPool &pool()
{
    constexpr int kThreads = 16;
    static QThreadPool *const instance = [] {
        auto *made = new QThreadPool;
        made->setMaxThreadCount(kThreads);
        qAddPostRoutine([] {
            // Most work ends at once when told to.
            constexpr int kPatience = 100; // Milliseconds.
            isEnding = true;
            pool().waitForDone(kPatience);
        });
        return made;
    }();
    return *instance;
}

struct Run
{
    QPromise<BackgroundTask::Completion> promise;
    QSemaphore ended;
};

/// False where the work fails: memory may run out over a huge text, and the text that is not saved
/// yet has to live on.
bool addOutcome(const BackgroundTask::Work &work, QPromise<BackgroundTask::Completion> &promise)
{
    try {
        return promise.addResult(work([&promise] { return promise.isCanceled() || isEnding; }));
    } catch (...) {
        return false;
    }
}

void carryOut(const BackgroundTask::Work &work, Run &run)
{
    static_cast<void>(addOutcome(work, run.promise)); // Without a result the work counts as failed.
    run.promise.finish();
    run.ended.release();
}

} // namespace

BackgroundTask::BackgroundTask(QObject *parent)
    : QObject(parent)
{
    connect(&m_watcher, &QFutureWatcherBase::finished, this, &BackgroundTask::complete);
}

BackgroundTask::~BackgroundTask()
{
    cancel();
}

void BackgroundTask::start(Work work, int patience)
{
    cancel();
    const auto run = std::make_shared<Run>();
    run->promise.start();
    const QFuture<Completion> future = run->promise.future();
    m_isRunning = true;
    pool().start([run, work = std::move(work)] { carryOut(work, *run); });
    const bool hasEnded = patience > 0 && run->ended.tryAcquire(1, patience);
    m_watcher.setFuture(future);
    if (hasEnded)
        complete();
}

void BackgroundTask::cancel()
{
    m_isRunning = false;
    m_watcher.cancel();
    m_watcher.setFuture({}); // Also forgets what it was about to report.
}

void BackgroundTask::complete()
{
    const QFuture<Completion> future = m_watcher.future();
    if (!m_isRunning || !future.isFinished() || future.isCanceled())
        return;
    m_isRunning = false;
    m_watcher.setFuture({});
    if (future.resultCount() == 0) {
        Q_EMIT failed();
        return;
    }
    // It may start the next work.
    if (const Completion completion = future.result())
        completion();
}

} // namespace penwick
