#pragma once

#include "recovery/RecoverySession.h"

#include <QThreadPool>

#include <functional>
#include <optional>

namespace penwick {

/// Runs the file operations of all copies of this process, one after the other in the order of the
/// calls, on a thread of low priority.
class RecoveryWorker final
{
public:
    /// \param root as for `RecoverySession::create`; nothing is created there before it is needed.
    explicit RecoveryWorker(QString root);
    RecoveryWorker(const RecoveryWorker &) = delete;
    RecoveryWorker &operator=(const RecoveryWorker &) = delete;
    /// Waits for all jobs, then removes the session's folder if it holds no copy.
    ~RecoveryWorker();

    /// The session's folder, made on first use. For use in jobs only.
    [[nodiscard]] tl::expected<RecoverySession *, FileError> session();

    /// An exception ends only the job: memory may run out over a huge text.
    using Job = std::function<void(RecoveryWorker &)>;
    void enqueue(Job job);

    void waitForAll() { m_thread.waitForDone(); }

private:
    const QString m_root;
    std::optional<RecoverySession> m_session;
    QThreadPool m_thread; // Last, so that it is destroyed first.
};

} // namespace penwick
