#include "editor/FileCheck.h"

#include "platform/files/SafeCopy.h"

#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

namespace penwick {

FileCheckResult
checkFile(const QString &path, const std::optional<FileVersion> &known, TransferProgress &progress)
{
    // Another program may be writing the file in several steps: retry until the version is the same
    // before and after the read.
    constexpr int kAttempts = 10;
    constexpr std::chrono::milliseconds kPause{50};
    FileCheckResult finding;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        finding = {};
        finding.stored.version = FileVersion::of(path);
        if (finding.stored.version == known)
            return finding;
        auto read = readTextFile(path, progress);
        if (read) {
            finding.kind = FileCheckResult::Kind::Text;
            finding.stored = std::move(*read);
        } else if (read.error().fileErrorKind == FileError::Kind::NotFound) {
            finding.kind = FileCheckResult::Kind::Missing;
        } else {
            finding.kind = FileCheckResult::Kind::Unreadable;
            finding.error = read.error();
        }
        if (progress.isCancelled() || FileVersion::of(path) == finding.stored.version)
            break;
        std::this_thread::sleep_for(kPause);
    }
    return finding;
}

/// The state that the owner's thread and the worker share.
struct FileCheck::Shared
{
    std::mutex mutex; // Guards `owner`, so that it cannot be destroyed during `post`.
    FileCheck *owner = nullptr;
    TransferProgress progress;

    void post(const FileCheckResult &finding)
    {
        const std::lock_guard lock(mutex);
        if (owner == nullptr)
            return;
        QMetaObject::invokeMethod(
            owner,
            [receiver = owner, finding] { Q_EMIT receiver->finished(finding); },
            Qt::QueuedConnection);
    }
};

FileCheck::FileCheck(const QString &path, const std::optional<FileVersion> &known, QObject *parent)
    : QObject(parent)
    , m_shared(std::make_shared<Shared>())
{
    m_shared->owner = this;
    const auto run = [shared = m_shared, path, known] {
        FileCheckResult finding = checkFile(path, known, shared->progress);
        finding.copies = SafeCopy::left(path);
        shared->post(finding);
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error &) {
        run();
    }
}

FileCheck::~FileCheck()
{
    m_shared->progress.cancel();
    const std::lock_guard lock(m_shared->mutex);
    m_shared->owner = nullptr;
}

} // namespace penwick
