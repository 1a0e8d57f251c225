#include "platform/AtomicFile.h"

#include "platform/FileAttributes.h"
#include "platform/FileDescriptor.h"
#include "platform/FileInPlace.h"
#include "platform/FileWriter.h"
#include "platform/SafeCopy.h"
#include "platform/TemporaryFile.h"

#include <QByteArray>

#include <climits>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace penwick {

namespace {

tl::unexpected<FileError> systemError()
{
    return tl::unexpected(FileError::fromErrno(errno));
}

/// Follows the path while it names a symbolic link. Unlike realpath() it also answers for a link
/// whose target does not exist yet, so that the target is created and the link stays.
tl::expected<QByteArray, FileError> withoutLinks(QByteArray path)
{
    constexpr int kMostLinks = 40; // As the kernel has it.
    for (int links = 0; links <= kMostLinks; ++links) {
        QByteArray target(PATH_MAX, Qt::Uninitialized);
        const ssize_t length =
            ::readlink(path.constData(), target.data(), static_cast<size_t>(target.size()));
        if (length < 0)
            return path; // Not a link. Whatever else is wrong shows when the file is opened.
        target.truncate(length);
        path = target.startsWith('/') ? target : folderOf(path) + target;
    }
    return tl::unexpected(FileError::fromErrno(ELOOP));
}

/// What stands in the place of the file: its status, or nothing where there is no file yet.
tl::expected<std::optional<struct stat>, FileError> replaceableFile(const QByteArray &path)
{
    struct stat status = {};
    if (::lstat(path.constData(), &status) != 0) {
        if (errno == ENOENT)
            return std::nullopt;
        return systemError();
    }
    if (S_ISDIR(status.st_mode))
        return tl::unexpected(FileError::fromErrno(EISDIR));
    if (!S_ISREG(status.st_mode))
        return tl::unexpected(FileError{FileError::Kind::NotRegular, 0});
    // Renaming would replace a write-protected file without a word.
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0)
        return systemError();
    return status;
}

/// Without this a crash of the system could bring the old file back. The new content is in place
/// already, so a failure is nothing to tell.
void synchroniseFolder(const QByteArray &folder)
{
    const FileDescriptor descriptor(uninterrupted(
        [&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor.isOpen())
        ::fsync(descriptor.get());
}

/// How far an attempt to put a new file in the old one's place came.
struct Attempt
{
    enum class Next { Nothing, WithAName, InPlace };

    tl::expected<FileVersion, FileError> outcome;
    Next next = Next::Nothing; // What may succeed where this did not.
};

Attempt failed(const FileError &error, Attempt::Next next = Attempt::Next::Nothing)
{
    return {tl::unexpected(error), next};
}

/// Where the folder takes no new file, or the old one must not go from it, that is about the folder
/// and not about the file, which is writable. A file that something is mounted on cannot be
/// replaced either.
Attempt::Next nextAfter(const FileError &error, const std::optional<struct stat> &old)
{
    const bool isAboutTheFolder = error.errnoValue == EACCES || error.errnoValue == EPERM ||
                                  error.errnoValue == EBUSY || error.errnoValue == EXDEV ||
                                  error.errnoValue == EROFS;
    return old && isAboutTheFolder ? Attempt::Next::InPlace : Attempt::Next::Nothing;
}

/// What a save is about.
struct Request
{
    QByteArray path; // Without links.
    const ProduceBytes &produce;
    const std::function<bool()> &isStillWanted;
    std::optional<struct stat> old;
};

Attempt putInPlace(TemporaryFile &file, const Request &request)
{
    const auto version = FileVersion::of(file.descriptor());
    if (!version)
        return failed(FileError::fromErrno(errno));
    // Another way to name it may do; a name that it has from the start always does.
    if (const auto named = file.takeName(); !named)
        return failed(named.error(), Attempt::Next::WithAName);
    if (request.isStillWanted && !request.isStillWanted())
        return failed({FileError::Kind::Cancelled, 0});
    if (const auto moved = file.replaceTarget(); !moved)
        return failed(moved.error(), nextAfter(moved.error(), request.old));
    return {*version};
}

Attempt replaceByNew(const Request &request, TemporaryFile::Name name)
{
    // Nobody else may read the new content before it has the old file's permissions.
    const mode_t mode =
        request.old ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    TemporaryFile file(request.path);
    if (const auto created = file.create(mode, name); !created)
        return failed(created.error(), nextAfter(created.error(), request.old));
    // First, for it tells whether this way can be taken at all.
    if (request.old && !copyAttributes(request.path, *request.old, file.descriptor()))
        return failed(FileError::fromErrno(EPERM), Attempt::Next::InPlace);
    if (const auto filled = fill(file.descriptor(), request.produce); !filled)
        return failed(filled.error());
    // Writing takes these away.
    constexpr mode_t kPrivileges = S_ISUID | S_ISGID;
    const bool hasPrivileges = request.old && (request.old->st_mode & kPrivileges) != 0;
    if (hasPrivileges && ::fchmod(file.descriptor(), request.old->st_mode & ALLPERMS) != 0)
        return failed(FileError::fromErrno(errno));
    if (!synchronise(file.descriptor()))
        return failed(FileError::fromErrno(errno));
    return putInPlace(file, request);
}

tl::expected<FileVersion, FileError> replaceResolved(const QByteArray &path,
                                                     const ProduceBytes &produce,
                                                     const std::function<bool()> &isStillWanted)
{
    const auto old = replaceableFile(path);
    if (!old)
        return tl::unexpected(old.error());
    TemporaryFile::removeLeftovers(path);
    SafeCopy::removeDispensable(path);
    const Request request{path, produce, isStillWanted, *old};
    // A new file would take one of the names only, and leave the others with the old text.
    const bool hasOtherNames = request.old && request.old->st_nlink > 1;
    Attempt attempt = hasOtherNames ? failed({}, Attempt::Next::InPlace)
                                    : replaceByNew(request, TemporaryFile::Name::None);
    if (attempt.next == Attempt::Next::WithAName)
        attempt = replaceByNew(request, TemporaryFile::Name::FromTheStart);
    if (attempt.next == Attempt::Next::InPlace)
        return overwriteFile(path, produce, isStillWanted);
    if (attempt.outcome)
        synchroniseFolder(folderOf(path));
    return attempt.outcome;
}

} // namespace

tl::expected<FileVersion, FileError> replaceFile(const QString &path,
                                                 const ProduceBytes &produce,
                                                 const std::function<bool()> &isStillWanted)
{
    return systemPath(path).and_then(withoutLinks).and_then([&](const QByteArray &target) {
        return replaceResolved(target, produce, isStillWanted);
    });
}

tl::expected<void, FileError> replaceFile(const QString &path, QByteArrayView content)
{
    return replaceFile(path, [content](const WriteBytes &write) { return write(content); }, {})
        .map([](const FileVersion & /*version*/) {});
}

} // namespace penwick
