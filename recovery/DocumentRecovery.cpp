#include "recovery/DocumentRecovery.h"

#include "recovery/RecoveryWorker.h"

#include <QFile>
#include <QPromise>

#include <cerrno>
#include <utility>

namespace penwick {

/// The file of the document's copy, once the worker has made the folder for it.
struct DocumentRecovery::Slot
{
    explicit Slot(int copyNumber)
        : number(copyNumber)
    {
    }

    [[nodiscard]] tl::expected<RecoveryCopy *, FileError> file(RecoveryWorker &worker)
    {
        if (!copy) {
            const auto session = worker.session();
            if (!session)
                return tl::unexpected(session.error());
            copy.emplace((*session)->copyPath(number));
        }
        return &*copy;
    }

    const int number;
    std::optional<RecoveryCopy> copy;
};

DocumentRecovery::DocumentRecovery(RecoveryWorker &worker,
                                   TextDocument *document,
                                   int number,
                                   RecoveryContext context,
                                   RecoveryTimes times)
    : m_worker(worker)
    , m_document(document)
    , m_context(std::move(context))
    , m_slot(std::make_shared<Slot>(number))
    , m_isCancelled(std::make_shared<std::atomic<bool>>(false))
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(times.pause);
    m_longest.setSingleShot(true);
    m_longest.setInterval(times.longest);
    for (const QTimer *timer : {&m_pause, &m_longest})
        connect(timer, &QTimer::timeout, this, &DocumentRecovery::writeNow);
    connect(&m_write, &QFutureWatcherBase::finished, this, &DocumentRecovery::writeDidEnd);
    connect(document->textStorage(), &TextStorage::changed, this, &DocumentRecovery::textDidChange);
    connect(document, &TextDocument::editedChanged, this, &DocumentRecovery::editedDidChange);
    if (document->isEdited())
        schedule();
}

DocumentRecovery::~DocumentRecovery() = default;

void DocumentRecovery::textDidChange(qint64 offset, qint64 removed, qint64 inserted)
{
    m_changes.add(m_document->textStorage()->text(), offset, removed, inserted);
    // The first edit is reported before it makes the document edited.
    if (m_document->isEdited())
        schedule();
}

void DocumentRecovery::editedDidChange(bool isEdited)
{
    if (isEdited)
        schedule();
    else
        discard();
}

void DocumentRecovery::schedule()
{
    m_isPending = true;
    m_pause.start();
    if (!m_longest.isActive())
        m_longest.start();
}

void DocumentRecovery::writeNow()
{
    if (!m_isPending || m_write.isRunning()) // Otherwise `writeDidEnd` continues.
        return;
    m_isPending = false;
    m_pause.stop();
    m_longest.stop();
    const auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    m_write.setFuture(promise->future());
    m_worker.enqueue([promise, slot = m_slot, isCancelled = m_isCancelled, update = nextUpdate()](
                         RecoveryWorker &worker) {
        promise->addResult(slot->file(worker).and_then(
            [&](RecoveryCopy *copy) { return copy->write(update, *isCancelled); }));
        promise->finish();
    });
}

RecoveryUpdate DocumentRecovery::nextUpdate()
{
    const QString &path = m_document->filePath();
    return {{path, m_context.name(), m_document->fileVersion()},
            m_document->textStorage()->text(),
            m_changes.take(),
            m_context.caret(),
            m_context.clock().toMSecsSinceEpoch()};
}

void DocumentRecovery::writeDidEnd()
{
    // There is no result if memory ran out.
    const Outcome outcome = m_write.future().resultCount() > 0
                                ? m_write.result()
                                : Outcome(tl::unexpected(FileError::fromErrno(ENOMEM)));
    if (!outcome && outcome.error().kind != FileError::Kind::Cancelled) {
        m_isPending = true;
        m_longest.start(); // Another attempt then: the disk may have room again.
        Q_EMIT failed(outcome.error());
        return;
    }
    if (outcome)
        Q_EMIT written();
    if (m_isPending && !m_longest.isActive())
        writeNow(); // It was due during the write.
}

void DocumentRecovery::adopt(const QString &copyPath)
{
    m_worker.enqueue([slot = m_slot, copyPath](RecoveryWorker &worker) {
        if (const auto copy = slot->file(worker))
            QFile::rename(copyPath, (*copy)->path());
    });
}

void DocumentRecovery::discard()
{
    m_isPending = false;
    m_pause.stop();
    m_longest.stop();
    m_changes.requireWhole();
    *m_isCancelled = true;
    m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    m_worker.enqueue([slot = m_slot](RecoveryWorker &) {
        if (slot->copy)
            slot->copy->remove();
    });
}

} // namespace penwick
