#pragma once

#include "editor/TextFile.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

namespace penwick {

/// One load or save on a thread of its own. Make and use it on the main thread; only the work runs
/// on the other one, and touches nothing but what it was given. The thread never outlives this
/// object: the destructor calls the work off and waits for it.
class FileJob final : public QObject
{
    Q_OBJECT

public:
    using Work = std::function<TransferOutcome(TransferProgress &)>;

    /// Starts the work. Where the system gives no thread it is done before this returns.
    /// \param work throws nothing.
    explicit FileJob(Work work, QObject *parent = nullptr);
    ~FileJob() override;

    [[nodiscard]] TransferProgress &progress() { return m_progress; }

    /// True when the work ended within `time`.
    [[nodiscard]] bool waitFor(std::chrono::milliseconds time) const;

    /// What came of it; waits for the end. Call it once.
    [[nodiscard]] TransferOutcome takeOutcome() { return m_outcome.get(); }

Q_SIGNALS:
    /// The work ended. Emitted on the main thread, in a later turn of its event loop.
    void finished();

private:
    TransferProgress m_progress;
    std::future<TransferOutcome> m_outcome;
    std::thread m_thread;
};

} // namespace penwick
