#include "editor/FileJob.h"

#include <memory>
#include <system_error>
#include <utility>

namespace penwick {

FileJob::FileJob(Work work, QObject *parent)
    : QObject(parent)
{
    auto task = std::make_shared<std::packaged_task<TransferOutcome()>>(
        [this, work = std::move(work)] { return work(m_progress); });
    m_outcome = task->get_future();
    auto run = [this, task = std::move(task)]() mutable {
        (*task)();
        task.reset(); // Drop this thread's reference to the work before `finished` is posted.
        QMetaObject::invokeMethod(this, &FileJob::finished, Qt::QueuedConnection);
    };
    try {
        m_thread = std::thread(run);
    } catch (const std::system_error &) {
        run();
    }
}

FileJob::~FileJob()
{
    m_progress.cancel();
    if (m_thread.joinable())
        m_thread.join();
}

bool FileJob::waitFor(std::chrono::milliseconds time) const
{
    return m_outcome.wait_for(time) == std::future_status::ready;
}

} // namespace penwick
