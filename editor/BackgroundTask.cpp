#include "editor/BackgroundTask.h"

#include <QPromise>
#include <QSemaphore>
#include <QThreadPool>

#include <memory>

namespace penwick {

namespace {

/// More threads than processors, so that abandoned work does not keep new work waiting.
QThreadPool &pool()
{
    constexpr int kThreads = 8;
    static QThreadPool instance;
    instance.setMaxThreadCount(kThreads);
    return instance;
}

struct Run
{
    QPromise<BackgroundTask::Completion> promise;
    QSemaphore ended;
};

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
    pool().start([run, work = std::move(work)] {
        Completion completion = work([run] { return run->promise.isCanceled(); });
        run->promise.addResult(std::move(completion));
        run->promise.finish();
        run->ended.release();
    });
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
    if (!m_isRunning || !future.isFinished() || future.isCanceled() || future.resultCount() == 0)
        return;
    m_isRunning = false;
    m_watcher.setFuture({});
    // It may start the next work.
    if (const Completion completion = future.result())
        completion();
}

} // namespace penwick
