#pragma once

#include "editor/TextDocument.h"
#include "platform/settings/Timestamp.h"
#include "recovery/ChangeCollector.h"
#include "recovery/RecoveryCopy.h"

#include <QFutureWatcher>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace penwick {

class RecoveryWorker;

/// When the copy of an edited text is written.
struct RecoveryTimes
{
    std::chrono::milliseconds pause{2000};   ///< After the last edit.
    std::chrono::milliseconds longest{5000}; ///< After the first edit that is not in the copy.
};

/// What a copy needs to know and the document does not know.
struct RecoveryContext
{
    std::function<qint64()> caret; ///< UTF-16 code units, 0-based.
    std::function<QString()> name; ///< The document's name as the user sees it.
    Clock clock = systemClock();
};

/// Keeps a copy of one document's text while the document has unsaved edits. Use it from the main
/// thread.
class DocumentRecovery final : public QObject
{
    Q_OBJECT

public:
    /// \param worker, document not owned; must outlive this.
    /// \param number of the copy; no other document of the process has it.
    DocumentRecovery(RecoveryWorker &worker,
                     TextDocument *document,
                     int number,
                     RecoveryContext context,
                     RecoveryTimes times);
    ~DocumentRecovery() override;

    [[nodiscard]] const TextDocument *document() const { return m_document; }

    /// Makes another process's copy the document's own, until it is replaced by the first write or
    /// removed. Call this for a document that holds the text of that copy.
    void adopt(const QString &copyPath);

    /// Writes what is not in the copy yet; does nothing for a document without edits.
    void writeNow();

    /// Removes the copy. Call this before the destructor if the text is no longer needed; without
    /// it the copy stays.
    void discard();

Q_SIGNALS:
    /// The copy holds the text as it was at the start of the write.
    void written();
    /// It does not. Another attempt follows.
    void failed(const penwick::FileError &error);

private:
    using Outcome = tl::expected<void, FileError>;

    void textDidChange(qint64 offset, qint64 removed, qint64 inserted);
    void editedDidChange(bool isEdited);
    void schedule();
    void writeDidEnd();
    [[nodiscard]] RecoveryUpdate nextUpdate();

    RecoveryWorker &m_worker;
    TextDocument *m_document;
    RecoveryContext m_context;
    struct Slot; // Belongs to the worker thread.
    std::shared_ptr<Slot> m_slot;
    std::shared_ptr<std::atomic<bool>> m_isCancelled; // Of the jobs since the last `discard`.
    ChangeCollector m_changes;
    bool m_isPending = false; // The text differs from the copy.
    QTimer m_pause;
    QTimer m_longest;
    QFutureWatcher<Outcome> m_write;
};

} // namespace penwick
