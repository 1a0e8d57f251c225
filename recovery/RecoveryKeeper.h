#pragma once

#include "recovery/DocumentRecovery.h"
#include "recovery/RecoveryWorker.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace penwick {

/// Keeps a copy of each unsaved text of this process, so that the texts survive its sudden end. The
/// copies are written and removed on another thread. Use it from the main thread.
class RecoveryKeeper final : public QObject
{
    Q_OBJECT

public:
    /// \param root absolute path of the folder that the copies of all processes are in; created
    ///        when the first text is edited.
    explicit RecoveryKeeper(const QString &root,
                            RecoveryTimes times = {},
                            Clock clock = systemClock(),
                            QObject *parent = nullptr);
    /// Copies of documents that still have edits stay, with their last state; otherwise nothing is
    /// left on the disk. Waits for that. The documents must still exist.
    ~RecoveryKeeper() override;

    /// Keeps copies for the document from now on.
    /// \param document not owned; call `forget` before it is destroyed.
    /// \param context its clock is replaced by that of this keeper.
    void watch(TextDocument *document, RecoveryContext context);

    [[nodiscard]] bool watches(const TextDocument *document) const
    {
        return find(document) != nullptr;
    }

    /// Removes the document's copy. Does nothing if it is not watched.
    void forget(const TextDocument *document);

    /// Makes another process's copy that of a watched document; see `DocumentRecovery::adopt`.
    void adopt(const TextDocument *document, const QString &copyPath);

    /// Removes another process's copy.
    void remove(const QString &copyPath);

    /// Gives the sessions of dead processes up, after everything above: removes the folders whose
    /// copies are gone, and leaves the others to the next start.
    void release(std::vector<RecoverySession> sessions);

Q_SIGNALS:
    /// The document's copy holds its text as of the start of the write.
    void written(penwick::TextDocument *document);
    /// A copy could not be written. Emitted once; later failures are not reported.
    void failed(const penwick::FileError &error);

private:
    void report(const FileError &error);
    [[nodiscard]] DocumentRecovery *find(const TextDocument *document) const;

    RecoveryTimes m_times;
    Clock m_clock;
    RecoveryWorker m_worker;
    std::vector<std::unique_ptr<DocumentRecovery>> m_documents;
    int m_lastNumber = 0;
    bool m_hasReported = false;
};

} // namespace penwick
