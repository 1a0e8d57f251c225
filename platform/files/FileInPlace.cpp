#include "platform/files/FileInPlace.h"

#include "platform/files/FileWriter.h"
#include "platform/files/SafeCopy.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace penwick {

namespace {

tl::expected<FileVersion, FileError> write(int file, const ProduceBytes &produce)
{
    if (::lseek(file, 0, SEEK_SET) != 0)
        return systemError();
    if (const auto filled = fill(file, produce); !filled)
        return tl::unexpected(filled.error());
    const off_t size = ::lseek(file, 0, SEEK_CUR);
    if (size < 0 || uninterrupted([&] { return ::ftruncate(file, size); }) != 0)
        return systemError();
    if (!synchronise(file))
        return systemError();
    const auto version = FileVersion::of(file);
    if (!version)
        return systemError();
    return *version;
}

/// True when `path` still names this file, or when that cannot be determined. False if it names
/// another file or none.
bool stillLeadsTo(const QByteArray &path, const struct stat &file)
{
    struct stat present = {};
    if (::lstat(path.constData(), &present) != 0)
        return errno != ENOENT && errno != ENOTDIR;
    return present.st_dev == file.st_dev && present.st_ino == file.st_ino;
}

} // namespace

tl::expected<void, FileError> fill(int descriptor, const ProduceBytes &produce)
{
    int problem = 0;
    FileWriter writer(descriptor);
    const bool isComplete = produce([&](QByteArrayView bytes) {
        if (problem == 0 && !writer.write(bytes))
            problem = errno;
        return problem == 0;
    });
    if (problem == 0 && isComplete && !writer.flush())
        problem = errno;
    if (problem != 0)
        return tl::unexpected(FileError::fromErrno(problem));
    if (!isComplete)
        return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
    return {};
}

tl::expected<FileVersion, FileError> overwriteFile(const QByteArray &path,
                                                   const ProduceBytes &produce,
                                                   const std::function<bool()> &isStillWanted)
{
    const FileDescriptor file(uninterrupted(
        [&] { return ::open(path.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    if (!file.isOpen())
        return systemError();
    struct stat status = {};
    if (::lstat(path.constData(), &status) != 0)
        return systemError();
    SafeCopy copy(path);
    if (const auto made = copy.make(file.get()); !made)
        return tl::unexpected(made.error());
    if (isStillWanted && !isStillWanted())
        return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
    auto written = write(file.get(), produce);
    // If another program moved or removed the file, the new content is not at `path`.
    if (written && !stillLeadsTo(path, status))
        written = tl::unexpected(FileError{FileError::Kind::Changed, 0});
    if (!written && !copy.writeBack(file.get())) {
        copy.keep();
        return tl::unexpected(FileError{FileError::Kind::Damaged, written.error().errnoValue});
    }
    return written;
}

} // namespace penwick
