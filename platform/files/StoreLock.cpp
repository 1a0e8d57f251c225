#include "platform/files/StoreLock.h"

#include "platform/files/FileLock.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <thread>
#include <utility>

namespace penwick {

namespace {

// Other processes hold the lock for as long as it takes to write a small file.
constexpr std::chrono::milliseconds kShortestPause{1};
constexpr std::chrono::milliseconds kLongestPause{10};

/// True for the errors of file systems without this kind of lock. NFS requires a file that is open
/// for writing, which a folder never is.
bool isWithoutLocks(const FileError &error)
{
    constexpr int kAnswers[] = {ENOTSUP, EOPNOTSUPP, ENOSYS, ENOLCK, EBADF, EINVAL};
    return std::find(std::begin(kAnswers), std::end(kAnswers), error.errnoValue) !=
           std::end(kAnswers);
}

// Waiting processes retry, so one that saves again and again would win each time. A waiting process
// therefore marks the folder, and the others let it go first. The mark is a record lock, which is
// independent of the lock itself: a read lock, the only kind that a folder can have.

struct flock firstByte(short type)
{
    struct flock region = {};
    region.l_type = type;
    region.l_whence = SEEK_SET;
    region.l_len = 1;
    return region;
}

/// Waits while another process is waiting for the lock, up to a limit: that process may be stopped.
void letOthersGoFirst(const FileDescriptor &folder)
{
    constexpr std::chrono::milliseconds kLimit{50};
    for (const QDeadlineTimer deadline(kLimit); !deadline.hasExpired();) {
        struct flock mark = firstByte(F_WRLCK);
        if (::fcntl(folder.get(), F_GETLK, &mark) != 0 || mark.l_type == F_UNLCK)
            return;
        std::this_thread::sleep_for(kShortestPause);
    }
}

tl::expected<void, FileError> waitForLock(const FileDescriptor &folder,
                                          const QDeadlineTimer &deadline)
{
    for (auto pause = kShortestPause;; pause = std::min(pause * 2, kLongestPause)) {
        auto locked = lockExclusively(folder);
        if (locked || isWithoutLocks(locked.error()))
            return {};
        if (locked.error().kind != FileError::Kind::Locked || deadline.hasExpired())
            return locked;
        std::this_thread::sleep_for(pause);
    }
}

} // namespace

tl::expected<StoreLock::Holder, FileError> StoreLock::take(std::chrono::milliseconds timeout)
{
    if (m_depth > 0) {
        ++m_depth;
        return Holder(this);
    }
    auto folder = openFolder(m_folder);
    if (!folder)
        return tl::unexpected(folder.error());
    const QDeadlineTimer deadline(timeout);
    letOthersGoFirst(*folder);
    struct flock mark = firstByte(F_RDLCK);
    static_cast<void>(::fcntl(folder->get(), F_SETLK, &mark));
    const auto locked = waitForLock(*folder, deadline);
    mark.l_type = F_UNLCK;
    static_cast<void>(::fcntl(folder->get(), F_SETLK, &mark));
    if (!locked)
        return tl::unexpected(locked.error());
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
