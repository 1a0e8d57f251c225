#include "recovery/RecoveryWorker.h"

#include <exception>
#include <utility>

namespace penwick {

RecoveryWorker::RecoveryWorker(QString root)
    : m_root(std::move(root))
{
    m_thread.setMaxThreadCount(1);
    m_thread.setThreadPriority(QThread::LowestPriority);
}

RecoveryWorker::~RecoveryWorker()
{
    waitForAll();
    if (m_session)
        m_session->removeIfEmpty();
}

tl::expected<RecoverySession *, FileError> RecoveryWorker::session()
{
    if (!m_session) {
        auto created = RecoverySession::create(m_root);
        if (!created)
            return tl::unexpected(created.error());
        m_session = *std::move(created);
    }
    return &*m_session;
}

void RecoveryWorker::enqueue(Job job)
{
    m_thread.start([this, job = std::move(job)] {
        try {
            job(*this);
        } catch (const std::exception &) { // NOLINT(bugprone-empty-catch): see the header.
        }
    });
}

} // namespace penwick
