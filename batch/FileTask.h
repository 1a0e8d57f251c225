#pragma once

#include "batch/BatchMacros.h"
#include "batch/BatchOptions.h"
#include "batch/FileReport.h"
#include "editor/TextFile.h"
#include "macro/script/HostSequence.h"
#include "macro/script/StoppableWaiter.h"

#include <QTimeZone>

#include <mutex>
#include <utility>

namespace penwick {

/// What is the same for all inputs of a run. A plain value, read by several threads.
struct BatchPlan
{
    BatchOptions options;
    QList<BatchMacro> macros;
    QTimeZone timeZone;
};

/// A process for macros that several workers share: while one of them waits for a disk, another
/// can run its macros.
struct SharedHosts
{
    explicit SharedHosts(HostProcess::Settings settings)
        : hosts(std::move(settings))
    {
    }

    std::mutex mutex; ///< Held while `hosts` is used.
    HostSequence hosts;
};

/// Does the work on inputs, one after the other, on one thread.
class FileWorker final
{
public:
    /// \param plan, hosts must outlive this.
    FileWorker(const BatchPlan &plan, SharedHosts &hosts);

    /// Starts the process for the macros in advance if there is none. Does not wait for it.
    void prepare();

    /// Reads the input, runs all macros on its text, and writes the result if the options say so.
    [[nodiscard]] FileReport process(const BatchInput &input);

    /// Makes `process` return as soon as possible. A file that is being written is left as it was.
    /// Safe to call from any thread.
    void stop();

private:
    class StoppableRun;
    class Task;

    const BatchPlan &m_plan;
    SharedHosts &m_hosts;
    TransferProgress m_progress;
    std::mutex m_mutex; // Protects the following.
    StoppableWaiter *m_waiter = nullptr;
    bool m_isStopped = false;
};

} // namespace penwick
