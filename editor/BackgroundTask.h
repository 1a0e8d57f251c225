#pragma once

#include <QFutureWatcher>
#include <QObject>

#include <functional>

namespace penwick {

/// Runs one piece of work at a time on a thread of a separate pool, and its completion on the
/// thread of this object. Starting other work, cancelling and destroying this object cancel the
/// work: its `IsCancelled` returns true, it may run on until it checks, and its completion is
/// discarded. The process waits at its end at most 100 ms for running work.
class BackgroundTask final : public QObject
{
    Q_OBJECT

public:
    explicit BackgroundTask(QObject *parent = nullptr);
    ~BackgroundTask() override;

    using IsCancelled = std::function<bool()>;
    /// Uses the outcome of the work. Runs on the thread of this object.
    using Completion = std::function<void()>;
    /// Runs on the worker thread: it may use only what it owns.
    using Work = std::function<Completion(const IsCancelled &)>;

    /// Starts `work` and waits for it at most `waitTime` milliseconds. If it ends in that time, its
    /// completion is called before this returns, so that the result of quick work is on the screen
    /// at once. Otherwise the completion is called later, from the event loop.
    void start(Work work, int waitTime = 0);

    void cancel();

    [[nodiscard]] bool isRunning() const { return m_isRunning; }

Q_SIGNALS:
    /// The work threw an exception, usually because memory ran out. There is no completion.
    void failed();

private:
    void complete();

    QFutureWatcher<Completion> m_watcher;
    bool m_isRunning = false;
};

} // namespace penwick
