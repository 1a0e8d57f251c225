#include "platform/files/FileLock.h"

#include "platform/files/FileSystem.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace penwick {

namespace {

tl::expected<FileDescriptor, FileError> open(const QString &path, int flags)
{
    const auto name = systemPath(path);
    if (!name)
        return tl::unexpected(name.error());
    constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
    FileDescriptor file(
        uninterrupted([&] { return ::open(name->constData(), flags | O_CLOEXEC, kPrivate); }));
    if (!file.isOpen())
        return systemError();
    return file;
}

} // namespace

tl::expected<FileDescriptor, FileError> openFolder(const QString &path)
{
    return open(path, O_RDONLY | O_DIRECTORY);
}

tl::expected<FileDescriptor, FileError> openLockFile(const QString &path)
{
    auto file = open(path, O_RDWR | O_CREAT | O_NOFOLLOW);
    struct stat status = {};
    // Only if it is not set yet: every change notifies the programs that watch the folder.
    if (file && ::fstat(file->get(), &status) == 0 && (status.st_mode & S_ISVTX) == 0)
        static_cast<void>(::fchmod(file->get(), S_IRUSR | S_IWUSR | S_ISVTX));
    return file;
}

tl::expected<void, FileError> lockExclusively(const FileDescriptor &file)
{
    if (uninterrupted([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) == 0)
        return {};
    return systemError();
}

} // namespace penwick
