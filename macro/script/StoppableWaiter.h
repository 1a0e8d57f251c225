#pragma once

#include "macro/script/ScriptHost.h"
#include "platform/FileDescriptor.h"

#include <QDeadlineTimer>

#include <atomic>

namespace penwick {

/// Blocks the thread that waits for a script until there is something to do, or until another
/// thread stops the script.
class StoppableWaiter final : public ScriptWaiter
{
public:
    /// \param deadline stops the script, too.
    explicit StoppableWaiter(QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));

    [[nodiscard]] bool wait(int descriptor, bool forWriting) override;

    /// From any thread; for good.
    void stop();

private:
    QDeadlineTimer m_deadline;
    std::atomic<bool> m_isStopped = false;
    FileDescriptor m_wakeUp;
};

} // namespace penwick
