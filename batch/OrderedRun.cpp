#include "batch/OrderedRun.h"

#include <algorithm>
#include <limits>
#include <sys/resource.h>
#include <system_error>
#include <utility>

namespace penwick {

namespace {

constexpr qsizetype kWorkersPerHost = 2;
constexpr qsizetype kMostAhead = 256; // Reports that wait for an earlier one.

/// How many hosts the limit on open files allows, with the files of their workers.
qsizetype mostHosts()
{
    constexpr rlim_t kForOthers = 16;
    constexpr rlim_t kForEach = 16;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur < kForOthers + kForEach)
        return 1;
    return static_cast<qsizetype>(std::min<rlim_t>((limit.rlim_cur - kForOthers) / kForEach,
                                                   std::numeric_limits<int>::max()));
}

qsizetype hostCount(const BatchPlan &plan, qsizetype inputs)
{
    const qsizetype processors = std::max(1U, std::thread::hardware_concurrency());
    const qsizetype wanted = plan.options.jobs > 0 ? plan.options.jobs : processors;
    return std::min({wanted, inputs, mostHosts()});
}

} // namespace

OrderedRun::OrderedRun(const BatchPlan &plan,
                       const QList<BatchInput> &inputs,
                       const HostProcess::Settings &settings)
    : m_inputs(inputs)
{
    const qsizetype count = hostCount(plan, inputs.size());
    for (qsizetype i = 0; i < count; ++i)
        m_hosts.push_back(std::make_unique<SharedHosts>(settings));
    const qsizetype workers = std::min(inputs.size(), count * kWorkersPerHost);
    for (qsizetype i = 0; i < workers; ++i)
        m_workers.push_back(
            std::make_unique<FileWorker>(plan, *m_hosts[static_cast<std::size_t>(i % count)]));
    startThreads();
}

/// Does with fewer threads if the system allows no more.
void OrderedRun::startThreads()
{
    try {
        for (const auto &worker : m_workers)
            m_threads.emplace_back([this, &worker = *worker] { work(worker); });
    } catch (const std::system_error &) {
        if (m_threads.empty())
            throw;
    }
}

OrderedRun::~OrderedRun()
{
    stop();
    join();
}

std::optional<FileReport> OrderedRun::next(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    const auto isReady = [this] { return m_reports.contains(m_nextReport); };
    if (!m_isReady.wait_for(lock, timeout, isReady))
        return std::nullopt;
    auto report = m_reports.extract(m_nextReport++);
    m_isRoom.notify_all();
    return std::optional<FileReport>(std::move(report.mapped()));
}

void OrderedRun::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
    }
    m_isRoom.notify_all();
    m_isOver.notify_all();
    for (const auto &worker : m_workers)
        worker->stop();
}

void OrderedRun::join()
{
    for (std::thread &thread : std::exchange(m_threads, {}))
        thread.join();
}

QByteArray OrderedRun::currentName() const
{
    const std::lock_guard lock(m_mutex);
    return m_nextInput > 0 ? m_inputs.at(m_nextInput - 1).name : QByteArray();
}

void OrderedRun::work(FileWorker &worker)
{
    while (const auto index = take()) {
        worker.prepare();
        put(*index, worker.process(m_inputs.at(*index)));
    }
    waitForAll();
}

/// The end of a thread is also the end of the processes that it has started, which another worker
/// may be using.
void OrderedRun::waitForAll()
{
    std::unique_lock lock(m_mutex);
    m_isOver.wait(lock, [this] { return m_isStopped || m_done == m_inputs.size(); });
}

/// The index of the next input; nothing when the thread is to end.
std::optional<qsizetype> OrderedRun::take()
{
    std::unique_lock lock(m_mutex);
    m_isRoom.wait(lock, [this] { return m_isStopped || m_nextInput < m_nextReport + kMostAhead; });
    if (m_isStopped || m_nextInput == m_inputs.size())
        return std::nullopt;
    return m_nextInput++;
}

void OrderedRun::put(qsizetype index, FileReport report)
{
    bool isLast = false;
    {
        const std::lock_guard lock(m_mutex);
        m_reports.emplace(index, std::move(report));
        isLast = ++m_done == m_inputs.size();
    }
    m_isReady.notify_one();
    if (isLast)
        m_isOver.notify_all();
}

} // namespace penwick
