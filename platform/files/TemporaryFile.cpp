#include "platform/files/TemporaryFile.h"

#include "platform/files/FileLock.h"
#include "platform/files/FileWriter.h"

#include <QCryptographicHash>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <utility>

namespace penwick {

namespace {

/// The number of names per target. Two are enough unless several processes save one file at once.
constexpr int kSlots = 8;

/// The temporary path for a slot. The name has a fixed length, so that it is valid even for a
/// target with the longest possible name.
QByteArray slotPath(const QByteArray &target, int slot)
{
    constexpr qsizetype kDigestBytes = 8;
    const QByteArray name = target.mid(folderOf(target).size());
    return folderOf(target) + ".penwick-" + digestOf(name, kDigestBytes) + '-' +
           QByteArray::number(slot) + ".tmp";
}

/// Removes the file at `path` if its writer is gone. True when the name is free.
bool clear(const QByteArray &path)
{
    const auto held = openAbandoned(path);
    if (!held)
        return held.error().errnoValue == ENOENT;
    // No other writer can have taken the name: it is still in use, and only the lock holder frees
    // it.
    return ::unlink(path.constData()) == 0;
}

} // namespace

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray("./") : path.left(slash + 1);
}

QByteArray digestOf(const QByteArray &text, qsizetype bytes)
{
    struct utsname machine = {};
    ::uname(&machine);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray(machine.nodename));
    hash.addData(QByteArrayView("/"));
    hash.addData(text);
    return hash.result().left(bytes).toHex();
}

tl::expected<FileDescriptor, FileError> openAbandoned(const QByteArray &path)
{
    FileDescriptor file(uninterrupted(
        [&] { return ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    if (!file.isOpen())
        return systemError();
    if (const auto locked = lockExclusively(file); !locked)
        return tl::unexpected(locked.error());
    // Between opening and locking, the writer may have moved the file to its target and exited.
    struct stat opened = {};
    struct stat present = {};
    if (::fstat(file.get(), &opened) != 0 || ::lstat(path.constData(), &present) != 0)
        return systemError();
    if (opened.st_ino == present.st_ino && opened.st_dev == present.st_dev &&
        S_ISREG(opened.st_mode))
        return file;
    return tl::unexpected(FileError::fromErrno(EBUSY));
}

tl::expected<void, FileError> synchroniseFolder(const QByteArray &folder)
{
    const FileDescriptor descriptor(uninterrupted(
        [&] { return ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!descriptor.isOpen() || !synchronise(descriptor.get()))
        return systemError();
    return {};
}

TemporaryFile::TemporaryFile(QByteArray target)
    : m_target(std::move(target))
{
}

TemporaryFile::~TemporaryFile()
{
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
}

tl::expected<void, FileError> TemporaryFile::create(mode_t mode, Name name)
{
    if (name == Name::None && createUnnamed(mode))
        return {};
    // If an unnamed file could not be created, the attempt to create a named one determines the
    // error.
    for (int slot = 0; slot < kSlots; ++slot) {
        if (createNamed(mode, slot))
            return {};
        if (errno != EEXIST)
            break;
    }
    return systemError();
}

bool TemporaryFile::createUnnamed(mode_t mode)
{
    m_file = FileDescriptor(uninterrupted([&] {
        return ::open(folderOf(m_target).constData(), O_RDWR | O_TMPFILE | O_CLOEXEC, mode);
    }));
    if (!m_file.isOpen())
        return false;
    // No other process can hold the lock. On a file system without locks this fails, but no process
    // removes leftovers there either.
    static_cast<void>(lockExclusively(m_file));
    return true;
}

/// False, with `errno` set, on failure: EEXIST when another slot may succeed.
bool TemporaryFile::createNamed(mode_t mode, int slot)
{
    const QByteArray path = slotPath(m_target, slot);
    const auto open = [&] {
        return FileDescriptor(uninterrupted(
            [&] { return ::open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
    };
    FileDescriptor file = open();
    if (!file.isOpen() && errno == EEXIST) {
        if (clear(path))
            file = open();
        else
            errno = EEXIST; // Its writer is still at work: another slot may be free.
    }
    if (!file.isOpen())
        return false;
    // Before the lock was taken, another process may have treated the file as abandoned and removed
    // it.
    const auto locked = lockExclusively(file);
    struct stat status = {};
    const bool isLost = (!locked && locked.error().kind == FileError::Kind::Locked) ||
                        (::fstat(file.get(), &status) == 0 && status.st_nlink == 0);
    if (isLost) {
        errno = EEXIST;
        return false;
    }
    m_file = std::move(file);
    m_path = path;
    return true;
}

tl::expected<void, FileError> TemporaryFile::takeName()
{
    if (hasName())
        return {};
    const QByteArray open = "/proc/self/fd/" + QByteArray::number(m_file.get());
    for (int slot = 0; slot < kSlots; ++slot) {
        const QByteArray path = slotPath(m_target, slot);
        if (::linkat(AT_FDCWD, open.constData(), AT_FDCWD, path.constData(), AT_SYMLINK_FOLLOW) ==
            0) {
            m_path = path;
            return {};
        }
        if (errno != EEXIST)
            break;
    }
    return systemError();
}

tl::expected<void, FileError> TemporaryFile::replaceTarget()
{
    if (std::rename(m_path.constData(), m_target.constData()) != 0)
        return systemError();
    m_path.clear();
    return {};
}

tl::expected<void, FileError> TemporaryFile::moveToFreePlace(const QByteArray &path)
{
    int moved =
        ::renameat2(AT_FDCWD, m_path.constData(), AT_FDCWD, path.constData(), RENAME_NOREPLACE);
    // Some file systems do not support RENAME_NOREPLACE; then check and rename are two steps.
    if (moved != 0 && errno == EINVAL) {
        struct stat present = {};
        if (::lstat(path.constData(), &present) == 0)
            return tl::unexpected(FileError::fromErrno(EEXIST));
        moved = std::rename(m_path.constData(), path.constData());
    }
    if (moved != 0)
        return systemError();
    m_path.clear();
    return {};
}

void TemporaryFile::removeLeftovers(const QByteArray &target)
{
    for (int slot = 0; slot < kSlots; ++slot)
        clear(slotPath(target, slot));
}

} // namespace penwick
