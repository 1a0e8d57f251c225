#include "editor/FileCheck.h"

#include "platform/files/SafeCopy.h"

#include <QPromise>

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

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

FileCheck::FileCheck(const QString &path, const std::optional<FileVersion> &known, QObject *parent)
    : QObject(parent)
    , m_progress(std::make_shared<TransferProgress>())
{
    connect(&m_watcher, &QFutureWatcherBase::finished, this, [this] {
        Q_EMIT finished(m_watcher.result());
    });
    const auto promise = std::make_shared<QPromise<FileCheckResult>>();
    promise->start();
    m_watcher.setFuture(promise->future());
    const auto run = [promise, progress = m_progress, path, known] {
        FileCheckResult finding = checkFile(path, known, *progress);
        finding.copies = SafeCopy::left(path);
        promise->addResult(std::move(finding));
        promise->finish();
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error &) {
        run();
    }
}

FileCheck::~FileCheck()
{
    m_progress->cancel();
}

} // namespace penwick
