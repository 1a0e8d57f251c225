#include "recovery/RecoveryKeeper.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace penwick {

RecoveryKeeper::RecoveryKeeper(const QString &root,
                               RecoveryTimes times,
                               Clock clock,
                               QObject *parent)
    : QObject(parent)
    , m_times(times)
    , m_clock(std::move(clock))
    , m_worker(root)
{
}

RecoveryKeeper::~RecoveryKeeper()
{
    // A write that is under way may be of an older text.
    m_worker.waitForAll();
    for (const auto &recovery : m_documents) {
        recovery->blockSignals(true);
        recovery->writeNow();
    }
}

void RecoveryKeeper::watch(TextDocument *document, RecoveryContext context)
{
    context.clock = m_clock;
    m_documents.push_back(std::make_unique<DocumentRecovery>(
        m_worker, document, ++m_lastNumber, std::move(context), m_times));
    const DocumentRecovery *recovery = m_documents.back().get();
    connect(recovery, &DocumentRecovery::failed, this, &RecoveryKeeper::report);
    connect(
        recovery, &DocumentRecovery::written, this, [this, document] { Q_EMIT written(document); });
}

void RecoveryKeeper::forget(const TextDocument *document)
{
    const auto found = std::find_if(m_documents.begin(), m_documents.end(), [&](const auto &r) {
        return r->document() == document;
    });
    if (found == m_documents.end())
        return;
    (*found)->discard();
    m_documents.erase(found);
}

void RecoveryKeeper::adopt(const TextDocument *document, const QString &copyPath)
{
    if (DocumentRecovery *recovery = find(document))
        recovery->adopt(copyPath);
}

void RecoveryKeeper::remove(const QString &copyPath)
{
    m_worker.enqueue([copyPath](RecoveryWorker &) { QFile::remove(copyPath); });
}

void RecoveryKeeper::release(std::vector<RecoverySession> sessions)
{
    // A job has to be copyable.
    const auto shared = std::make_shared<std::vector<RecoverySession>>(std::move(sessions));
    m_worker.enqueue([shared](RecoveryWorker &) {
        for (RecoverySession &session : *shared)
            session.removeIfEmpty();
    });
}

DocumentRecovery *RecoveryKeeper::find(const TextDocument *document) const
{
    const auto found = std::find_if(m_documents.begin(), m_documents.end(), [&](const auto &r) {
        return r->document() == document;
    });
    return found != m_documents.end() ? found->get() : nullptr;
}

void RecoveryKeeper::report(const FileError &error)
{
    if (!std::exchange(m_hasReported, true))
        Q_EMIT failed(error);
}

} // namespace penwick
