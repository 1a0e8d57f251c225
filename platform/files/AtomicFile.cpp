#include "platform/files/AtomicFile.h"

#include "platform/files/FileAttributes.h"
#include "platform/files/FileInPlace.h"
#include "platform/files/FileWriter.h"
#include "platform/files/SafeCopy.h"
#include "platform/files/TemporaryFile.h"

#include <QByteArray>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace penwick {

namespace {

/// Resolves `path` while it names a symbolic link. Unlike realpath(), this also works for a link
/// whose target does not exist yet: the target is then created and the link stays.
tl::expected<QByteArray, FileError> withoutLinks(QByteArray path)
{
    constexpr int kMaximumLinks = 40; // The kernel's limit.
    for (int links = 0; links <= kMaximumLinks; ++links) {
        QByteArray target(PATH_MAX, Qt::Uninitialized);
        const ssize_t length =
            ::readlink(path.constData(), target.data(), static_cast<size_t>(target.size()));
        if (length < 0)
            return path; // Not a link. Opening the file reports any other error.
        target.truncate(length);
        path = target.startsWith('/') ? target : folderOf(path) + target;
    }
    return tl::unexpected(FileError::fromErrno(ELOOP));
}

/// Returns the status of the regular, writable file at `path`, or std::nullopt if there is no file
/// yet.
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
    // rename() would replace a write-protected file without an error.
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0)
        return systemError();
    return status;
}

/// The outcome of one attempt to put a new file in the place of the old one.
struct Attempt
{
    enum class Next { Nothing, NamedFile, InPlace };

    tl::expected<FileVersion, FileError> outcome;
    Next next = Next::Nothing; // The fallback after a failure.
};

Attempt failed(const FileError &error, Attempt::Next next = Attempt::Next::Nothing)
{
    return {tl::unexpected(error), next};
}

/// Chooses the fallback after `error`. These error numbers concern the folder, not the file, which
/// is writable: the folder takes no new file, the old file must not be removed from it, or the file
/// is a mount point and cannot be replaced.
Attempt::Next nextAfter(const FileError &error, const std::optional<struct stat> &old)
{
    const bool isAboutTheFolder = error.errnoValue == EACCES || error.errnoValue == EPERM ||
                                  error.errnoValue == EBUSY || error.errnoValue == EXDEV ||
                                  error.errnoValue == EROFS;
    return old && isAboutTheFolder ? Attempt::Next::InPlace : Attempt::Next::Nothing;
}

/// The parameters of one save.
struct Request
{
    QByteArray path; // Symbolic links are resolved.
    const ProduceBytes &produce;
    const std::function<bool()> &isStillWanted;
    std::optional<struct stat> old;
};

Attempt putInPlace(TemporaryFile &file, const Request &request)
{
    const auto version = FileVersion::of(file.descriptor());
    if (!version)
        return failed(FileError::fromErrno(errno));
    // linkat() may be unsupported here. A file that has a name from the start does not need it.
    if (const auto named = file.takeName(); !named)
        return failed(named.error(), Attempt::Next::NamedFile);
    if (request.isStillWanted && !request.isStillWanted())
        return failed({FileError::Kind::Cancelled, 0});
    if (const auto moved = file.replaceTarget(); !moved)
        return failed(moved.error(), nextAfter(moved.error(), request.old));
    return {*version};
}

Attempt replaceByNew(const Request &request, TemporaryFile::Name name)
{
    // Only the owner may read the new content until the file has the old file's permissions.
    const mode_t mode =
        request.old ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    TemporaryFile file(request.path);
    if (const auto created = file.create(mode, name); !created)
        return failed(created.error(), nextAfter(created.error(), request.old));
    // Before the content is written: if the attributes cannot be copied, the content must be
    // written in place.
    if (request.old && !copyAttributes(request.path, *request.old, file.descriptor()))
        return failed(FileError::fromErrno(EPERM), Attempt::Next::InPlace);
    if (const auto filled = fill(file.descriptor(), request.produce); !filled)
        return failed(filled.error());
    // Writing to a file clears these bits.
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
    SafeCopy::removeObsolete(path);
    const Request request{path, produce, isStillWanted, *old};
    // A new file would replace only one of the hard links and leave the others with the old
    // content.
    const bool hasOtherNames = request.old && request.old->st_nlink > 1;
    Attempt attempt = hasOtherNames ? failed({}, Attempt::Next::InPlace)
                                    : replaceByNew(request, TemporaryFile::Name::None);
    if (attempt.next == Attempt::Next::NamedFile)
        attempt = replaceByNew(request, TemporaryFile::Name::FromTheStart);
    if (attempt.next == Attempt::Next::InPlace)
        return overwriteFile(path, produce, isStillWanted);
    // The new content is already in place, so a failure is ignored.
    if (attempt.outcome)
        static_cast<void>(synchroniseFolder(folderOf(path)));
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
