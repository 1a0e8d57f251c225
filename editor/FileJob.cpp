#include "editor/FileJob.h"

namespace penwick {

FileJob::FileJob(const Work &work, std::chrono::milliseconds longestPause, QObject *parent)
    : QObject(parent)
    , m_progress(longestPause)
    , m_worker([this, work] { return work(m_progress); },
               [this, work] {
                   m_progress.resume();
                   return work(m_progress);
               },
               [this] { Q_EMIT finished(); })
{
}

FileJob::~FileJob()
{
    m_progress.cancel();
}

} // namespace penwick
