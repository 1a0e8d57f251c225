#pragma once

#include "editor/TextFile.h"

#include <QFutureWatcher>
#include <QObject>
#include <QStringList>

#include <memory>

namespace penwick {

/// What a check found at the path of a document's file.
struct FileCheckResult
{
    enum class Kind {
        Same,       ///< The known version.
        Text,       ///< Another version. Its text may still be the same.
        Missing,    ///< No file.
        Unreadable, ///< A file that cannot be read, or that holds no UTF-8.
    };

    Kind kind = Kind::Same;
    StoredText stored;   ///< The version for every kind, the text only for `Text`.
    DocumentError error; ///< For `Unreadable`.
    QStringList copies;  ///< The result of `SafeCopy::left`. Only `FileCheck` sets it.
};

/// Compares the version of the file with `known` and reads the file if it differs. Retries for a
/// short time while the file changes during the read. Safe to call from any thread.
[[nodiscard]] FileCheckResult
checkFile(const QString &path, const std::optional<FileVersion> &known, TransferProgress &progress);

/// Runs `checkFile` on a detached thread, so that the main thread does not wait for a file system
/// that does not respond. If the system can start no thread, the check runs in the constructor.
/// Create and use it on the main thread. Destroying it at any time cancels the check: `finished` is
/// not emitted, and the thread ends as soon as the file system responds.
class FileCheck final : public QObject
{
    Q_OBJECT

public:
    FileCheck(const QString &path, const std::optional<FileVersion> &known, QObject *parent);
    ~FileCheck() override;

Q_SIGNALS:
    /// Emitted once, from the event loop.
    void finished(const penwick::FileCheckResult &finding);

private:
    std::shared_ptr<TransferProgress> m_progress;
    QFutureWatcher<FileCheckResult> m_watcher;
};

} // namespace penwick
