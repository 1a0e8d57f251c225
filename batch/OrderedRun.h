#pragma once

#include "batch/FileTask.h"

#include <QList>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace penwick {

/// Works on inputs with several threads, and delivers the reports in the order of the inputs. The
/// threads run ahead of the delivery only so far, which bounds the memory for reports.
class OrderedRun final
{
public:
    /// Starts the threads. Throws std::system_error if the system allows none.
    /// \param plan, inputs must outlive this.
    OrderedRun(const BatchPlan &plan,
               const QList<BatchInput> &inputs,
               const HostProcess::Settings &settings);
    OrderedRun(const OrderedRun &) = delete;
    OrderedRun &operator=(const OrderedRun &) = delete;
    /// Stops, and waits for the threads.
    ~OrderedRun();

    /// Waits for the next report, at most as long as `timeout`. Call it `inputs.size()` times
    /// with success.
    [[nodiscard]] std::optional<FileReport> next(std::chrono::milliseconds timeout);

    /// Makes the threads end as soon as possible. Reports that are not delivered yet are lost.
    void stop();

    /// Waits for the threads. Call it after `stop`, or after the last report.
    void join();

    /// How many inputs are done, delivered or not.
    [[nodiscard]] qsizetype done() const { return m_done.load(); }

    /// The name of an input that is being worked on.
    [[nodiscard]] QByteArray currentName() const;

private:
    void startThreads();
    void work(FileWorker &worker);
    [[nodiscard]] std::optional<qsizetype> take();
    void put(qsizetype index, FileReport report);
    void waitForAll();

    const QList<BatchInput> &m_inputs;
    std::vector<std::unique_ptr<SharedHosts>> m_hosts;
    std::vector<std::unique_ptr<FileWorker>> m_workers;
    mutable std::mutex m_mutex; // Protects the following, up to the threads.
    std::condition_variable m_isReady;
    std::condition_variable m_isRoom;          // For threads that run ahead.
    std::condition_variable m_isOver;          // All inputs are done, or there will be no more.
    std::map<qsizetype, FileReport> m_reports; // Not delivered yet.
    qsizetype m_nextInput = 0;
    qsizetype m_nextReport = 0;
    bool m_isStopped = false;
    std::atomic<qsizetype> m_done = 0;
    std::vector<std::thread> m_threads;
};

} // namespace penwick
