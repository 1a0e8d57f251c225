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

/// The pool has more threads than most machines have processors, so that cancelled work that is
/// still running does not delay new work. It is never destroyed: its destructor would block the end
/// of the process until all work has ended. Work uses only what it owns, so the end of the process
/// may interrupt it.
QThreadPool &pool()
{
    constexpr int kThreads = 16;
    static QThreadPool *const instance = [] {
        auto *made = new QThreadPool;
        made->setMaxThreadCount(kThreads);
        qAddPostRoutine([] {
            // Most work ends soon after it is cancelled.
            constexpr int kShutdownTimeout = 100; // Milliseconds.
            isEnding = true;
            pool().waitForDone(kShutdownTimeout);
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

/// Runs the work and stores its completion as the result. Returns false when the work throws:
/// memory may run out over a huge text, and the process must survive to keep unsaved texts.
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
    // Without a result, `complete` emits `failed`.
    static_cast<void>(addOutcome(work, run.promise));
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

void BackgroundTask::start(Work work, int waitTime)
{
    cancel();
    const auto run = std::make_shared<Run>();
    run->promise.start();
    const QFuture<Completion> future = run->promise.future();
    m_isRunning = true;
    pool().start([run, work = std::move(work)] { carryOut(work, *run); });
    const bool hasEnded = waitTime > 0 && run->ended.tryAcquire(1, waitTime);
    m_watcher.setFuture(future);
    if (hasEnded)
        complete();
}

void BackgroundTask::cancel()
{
    m_isRunning = false;
    m_watcher.cancel();
    m_watcher.setFuture({}); // Also drops a pending `finished` signal.
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
    // Called last: it may start the next work.
    if (const Completion completion = future.result())
        completion();
}

} // namespace penwick
