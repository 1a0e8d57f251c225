#pragma once

#include "macro/script/ScriptHost.h"
#include "platform/files/FileDescriptor.h"

#include <QDeadlineTimer>

#include <atomic>

namespace penwick {

/// Blocks the thread that waits for a script until the descriptor is ready, or until another thread
/// stops the script.
class StoppableWaiter final : public ScriptWaiter
{
public:
    /// \param deadline also stops the script.
    explicit StoppableWaiter(QDeadlineTimer deadline = QDeadlineTimer(QDeadlineTimer::Forever));

    [[nodiscard]] bool wait(int descriptor, bool forWriting) override;

    /// Stops the script permanently. Safe from any thread.
    void stop();

private:
    QDeadlineTimer m_deadline;
    std::atomic<bool> m_isStopped = false;
    FileDescriptor m_wakeUp;
};

} // namespace penwick
