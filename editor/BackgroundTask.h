#pragma once

#include <QFutureWatcher>
#include <QObject>

#include <functional>

namespace penwick {

/// One piece of work at a time on a thread of its own pool, and what follows from it on the thread
/// of this object. Starting another, cancelling and destroying this object abandon the work: it is
/// told, may take its time to end, and what it came to is dropped. The end of the process waits for
/// work no longer than a moment.
class BackgroundTask final : public QObject
{
    Q_OBJECT

public:
    explicit BackgroundTask(QObject *parent = nullptr);
    ~BackgroundTask() override;

    using IsCancelled = std::function<bool()>;
    /// What is to be done with the outcome, on the thread of the task.
    using Completion = std::function<void()>;
    /// Runs on the other thread: it may only use what it holds itself.
    using Work = std::function<Completion(const IsCancelled &)>;

    /// Starts `work` and waits for it at most `patience` milliseconds. If it ends by then, its
    /// completion is called before this returns: most work is done before anyone could notice, and
    /// what is on the screen changes at once. Otherwise it is called in a later turn.
    void start(Work work, int patience = 0);

    void cancel();

    [[nodiscard]] bool isRunning() const { return m_isRunning; }

Q_SIGNALS:
    /// The work threw an exception, for want of memory as a rule: there is no completion.
    void failed();

private:
    void complete();

    QFutureWatcher<Completion> m_watcher;
    bool m_isRunning = false;
};

} // namespace penwick
