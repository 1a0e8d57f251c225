#include "platform/files/FileVersion.h"

#include "platform/files/FileSystem.h"

#include <sys/stat.h>

namespace penwick {

namespace {

FileVersion versionOf(const struct stat &status)
{
    constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
#ifdef __APPLE__
    const ::timespec modified = status.st_mtimespec;
#else
    const ::timespec modified = status.st_mtim;
#endif
    return FileVersion{status.st_dev,
                       status.st_ino,
                       status.st_size,
                       modified.tv_sec * kNanosecondsPerSecond + modified.tv_nsec};
}

} // namespace

std::optional<FileVersion> FileVersion::of(const QString &path)
{
    const auto name = systemPath(path);
    struct stat status = {};
    if (!name || ::stat(name->constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return versionOf(status);
}

std::optional<FileVersion> FileVersion::ofEntry(const QString &path)
{
    const auto name = systemPath(path);
    struct stat status = {};
    if (!name || ::lstat(name->constData(), &status) != 0)
        return std::nullopt;
    return versionOf(status);
}

std::optional<FileVersion> FileVersion::of(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        return std::nullopt;
    return versionOf(status);
}

} // namespace penwick
