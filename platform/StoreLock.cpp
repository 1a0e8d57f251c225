#include "platform/StoreLock.h"

#include "platform/FileLock.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

namespace penwick {

namespace {

/// What file systems without this kind of lock answer. That of NFS wants a file that is open for
/// writing, which a folder never is.
bool isWithoutLocks(const FileError &error)
{
    constexpr int kAnswers[] = {ENOTSUP, EOPNOTSUPP, ENOSYS, ENOLCK, EBADF, EINVAL};
    return std::find(std::begin(kAnswers), std::end(kAnswers), error.errnoValue) !=
           std::end(kAnswers);
}

} // namespace

tl::expected<StoreLock::Holder, FileError> StoreLock::take(std::chrono::milliseconds patience)
{
    if (m_depth > 0) {
        ++m_depth;
        return Holder(this);
    }
    auto folder = openFolder(m_folder);
    if (!folder)
        return tl::unexpected(folder.error());
    const QDeadlineTimer deadline(patience);
    // Others hold it for as long as a small file takes to be written.
    constexpr std::chrono::milliseconds kLongestPause{10};
    for (std::chrono::milliseconds pause{1};; pause = std::min(pause * 2, kLongestPause)) {
        const auto locked = lockExclusively(*folder);
        if (locked || isWithoutLocks(locked.error()))
            break;
        if (locked.error().kind != FileError::Kind::Locked || deadline.hasExpired())
            return tl::unexpected(locked.error());
        std::this_thread::sleep_for(pause);
    }
    m_descriptor = *std::move(folder);
    m_depth = 1;
    return Holder(this);
}

void StoreLock::release()
{
    if (--m_depth == 0)
        m_descriptor.close();
}

} // namespace penwick
