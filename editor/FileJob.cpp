#include "editor/FileJob.h"

namespace penwick {

FileJob::FileJob(const Work &work, QObject *parent)
    : QObject(parent)
    , m_worker([this, work] { return work(m_progress); },
               [this, work] { return work(m_progress); },
               [this] { Q_EMIT finished(); })
{
}

FileJob::~FileJob()
{
    m_progress.cancel();
}

} // namespace penwick
