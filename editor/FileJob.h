#pragma once

#include "editor/TextFile.h"
#include "editor/Worker.h"

#include <QObject>

#include <chrono>
#include <functional>

namespace penwick {

/// Runs one load or save on its own thread. Create and use it on the main thread; only the work
/// runs on the other thread, and it uses only what it was given. The thread never outlives this
/// object: the destructor cancels the work and waits for it.
class FileJob final : public QObject
{
    Q_OBJECT

public:
    using Work = std::function<TransferOutcome(TransferProgress &)>;

    /// Starts the work. If the system can start no thread, the work runs before this returns, and
    /// does not pause.
    /// \param work must not throw.
    /// \param longestPause see `TransferProgress`.
    explicit FileJob(const Work &work,
                     std::chrono::milliseconds longestPause = {},
                     QObject *parent = nullptr);
    ~FileJob() override;

    [[nodiscard]] TransferProgress &progress() { return m_progress; }

    /// Waits for the work at most `time`. Returns true when it has ended.
    [[nodiscard]] bool waitFor(std::chrono::milliseconds time) const
    {
        return m_worker.waitFor(time);
    }

    /// Waits for the end of the work and returns its outcome. Call it once.
    [[nodiscard]] TransferOutcome takeOutcome() { return m_worker.take(); }

Q_SIGNALS:
    /// The work has ended. Emitted on the main thread, from its event loop.
    void finished();

private:
    TransferProgress m_progress;
    Worker<TransferOutcome> m_worker; // Last, so that it is destroyed first.
};

} // namespace penwick
