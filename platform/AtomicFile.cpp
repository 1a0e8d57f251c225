#include "platform/AtomicFile.h"

#include "platform/FileDescriptor.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <linux/limits.h>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace penwick {

namespace {

tl::unexpected<FileError> systemError()
{
    return tl::unexpected(FileError::fromErrno(errno));
}

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray("./") : path.left(slash + 1);
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

/// The new content while it is being written, next to the file that it will replace. Unless it is
/// moved there it disappears with this object.
class TemporaryFile final
{
public:
    TemporaryFile() = default;
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    ~TemporaryFile()
    {
        if (!m_path.isEmpty())
            ::unlink(m_path.constData());
    }

    /// \param mode as for open(): the user's mask is taken off.
    tl::expected<void, FileError> create(const QByteArray &folder, mode_t mode)
    {
        constexpr int kAttempts = 100;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const quint64 random = QRandomGenerator::system()->generate64();
            const QByteArray path = folder + ".penwick-" + QByteArray::number(random, 16) + ".tmp";
            m_file = FileDescriptor(uninterrupted([&] {
                return ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            }));
            if (m_file.isOpen()) {
                m_path = path;
                return {};
            }
            if (errno != EEXIST)
                break;
        }
        return systemError();
    }

    /// False, with `errno` set, on failure. Small pieces are gathered.
    bool write(QByteArrayView bytes)
    {
        constexpr qsizetype kBufferSize = 1 << 18;
        if (m_buffer.size() + bytes.size() <= kBufferSize) {
            m_buffer.append(bytes.data(), bytes.size());
            return true;
        }
        return flush() && writeThrough(bytes);
    }

    bool flush()
    {
        const bool isWritten = writeThrough(m_buffer);
        m_buffer.resize(0);
        return isWritten;
    }

    /// Gives the temporary file what belongs to the old file besides its content.
    tl::expected<void, FileError> adoptAttributes(const QByteArray &oldPath, const struct stat &old)
    {
        mode_t mode = old.st_mode & ALLPERMS;
        const bool keepsGroup = ::fchown(m_file.get(), uid_t(-1), old.st_gid) == 0;
        const bool keepsOwner = ::fchown(m_file.get(), old.st_uid, gid_t(-1)) == 0;
        // What the old group was allowed is not for the members of another one.
        if (!keepsGroup)
            mode = (mode & ~mode_t{S_IRWXG}) | (mode & ((mode & S_IRWXO) << 3));
        if (!keepsGroup || !keepsOwner)
            mode &= ~mode_t{S_ISUID | S_ISGID};
        if (::fchmod(m_file.get(), mode) != 0)
            return systemError();
        if (keepsGroup && keepsOwner)
            copyExtendedAttributes(oldPath);
        return {};
    }

    /// Waits until the content is safe on the disk.
    tl::expected<void, FileError> settle()
    {
        // File systems that have nothing to synchronise answer EINVAL.
        if (uninterrupted([this] { return ::fsync(m_file.get()); }) != 0 && errno != EINVAL)
            return systemError();
        if (!m_file.close())
            return systemError();
        return {};
    }

    /// Puts the file in the place of `path`.
    tl::expected<void, FileError> moveTo(const QByteArray &path)
    {
        if (std::rename(m_path.constData(), path.constData()) != 0)
            return systemError();
        m_path.clear();
        return {};
    }

private:
    bool writeThrough(QByteArrayView bytes)
    {
        while (!bytes.isEmpty()) {
            const auto count = uninterrupted([&] {
                return ::write(m_file.get(), bytes.data(), static_cast<size_t>(bytes.size()));
            });
            if (count < 0)
                return false;
            bytes = bytes.sliced(count);
        }
        return true;
    }

    /// Access control lists, labels and the like, as far as the file system and our rights go.
    void copyExtendedAttributes(const QByteArray &oldPath)
    {
        QByteArray names(XATTR_LIST_MAX, Qt::Uninitialized);
        const ssize_t length =
            ::listxattr(oldPath.constData(), names.data(), static_cast<size_t>(names.size()));
        if (length <= 0)
            return;
        names.truncate(length);
        QByteArray value(XATTR_SIZE_MAX, Qt::Uninitialized);
        for (const QByteArray &name : names.split('\0')) {
            if (name.isEmpty())
                continue;
            const ssize_t size = ::getxattr(oldPath.constData(),
                                            name.constData(),
                                            value.data(),
                                            static_cast<size_t>(value.size()));
            if (size >= 0)
                ::fsetxattr(m_file.get(),
                            name.constData(),
                            value.constData(),
                            static_cast<size_t>(size),
                            0);
        }
    }

    QByteArray m_path; ///< Empty when there is nothing to remove.
    FileDescriptor m_file;
    QByteArray m_buffer;
};

/// Without this a crash of the system could bring the old file back. The new content is in place
/// already, so a failure is nothing to tell.
void synchroniseFolder(const QByteArray &folder)
{
    const FileDescriptor descriptor(uninterrupted(
        [&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor.isOpen())
        ::fsync(descriptor.get());
}

tl::expected<void, FileError> fill(TemporaryFile &file, const ProduceBytes &produce)
{
    int problem = 0;
    const bool isComplete = produce([&](QByteArrayView bytes) {
        if (problem == 0 && !file.write(bytes))
            problem = errno;
        return problem == 0;
    });
    if (problem == 0 && isComplete && !file.flush())
        problem = errno;
    if (problem != 0)
        return tl::unexpected(FileError::fromErrno(problem));
    if (!isComplete)
        return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
    return {};
}

tl::expected<void, FileError> replaceResolved(const QByteArray &path,
                                              const ProduceBytes &produce,
                                              const std::function<bool()> &isStillWanted)
{
    const auto old = replaceableFile(path);
    if (!old)
        return tl::unexpected(old.error());
    // Nobody else may read the new content before it has the old file's permissions.
    const mode_t mode =
        *old ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    TemporaryFile temporary;
    return temporary.create(folderOf(path), mode)
        .and_then([&] { return fill(temporary, produce); })
        .and_then([&]() -> tl::expected<void, FileError> {
            if (*old)
                return temporary.adoptAttributes(path, **old);
            return {};
        })
        .and_then([&] { return temporary.settle(); })
        .and_then([&]() -> tl::expected<void, FileError> {
            if (isStillWanted && !isStillWanted())
                return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
            return temporary.moveTo(path);
        })
        .map([&] { synchroniseFolder(folderOf(path)); });
}

} // namespace

tl::expected<void, FileError> replaceFile(const QString &path,
                                          const ProduceBytes &produce,
                                          const std::function<bool()> &isStillWanted)
{
    return systemPath(path).and_then(withoutLinks).and_then([&](const QByteArray &target) {
        return replaceResolved(target, produce, isStillWanted);
    });
}

tl::expected<void, FileError> replaceFile(const QString &path, QByteArrayView content)
{
    return replaceFile(path, [content](const WriteBytes &write) { return write(content); });
}

} // namespace penwick
