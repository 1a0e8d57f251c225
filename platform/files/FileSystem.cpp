#include "platform/files/FileSystem.h"

#include "platform/files/FileDescriptor.h"

#include <QByteArrayList>
#include <QFile>

#include <algorithm>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace penwick {

namespace {

tl::expected<QByteArray, FileError> readAll(const FileDescriptor &file, qsizetype expectedSize)
{
    // One byte more than expected, so that the end is detected without growing the buffer. Files in
    // /proc report a size of 0.
    constexpr qsizetype kSmallest = 4096;
    QByteArray content(std::max(expectedSize + 1, kSmallest), Qt::Uninitialized);
    qsizetype filled = 0;
    while (true) {
        if (filled == content.size())
            content.resize(content.size() * 2);
        const auto count = uninterrupted([&] {
            return ::read(
                file.get(), content.data() + filled, static_cast<size_t>(content.size() - filled));
        });
        if (count < 0)
            return systemError();
        if (count == 0)
            break;
        filled += count;
    }
    content.truncate(filled);
    return content;
}

struct OpenFile
{
    FileDescriptor descriptor;
    qsizetype size = 0; // As the system reports it; may be wrong.
};

tl::expected<OpenFile, FileError> openRegularFile(const QString &path)
{
    const auto name = systemPath(path);
    if (!name)
        return tl::unexpected(name.error());
    // Without O_NONBLOCK, opening a pipe that has no writer would block forever.
    FileDescriptor file(uninterrupted(
        [&] { return ::open(name->constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    if (!file.isOpen())
        return systemError();
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        return systemError();
    if (S_ISDIR(status.st_mode))
        return tl::unexpected(FileError::fromErrno(EISDIR));
    if (!S_ISREG(status.st_mode))
        return tl::unexpected(FileError{FileError::Kind::NotRegular, 0});
    return OpenFile{std::move(file), status.st_size};
}

tl::expected<void, FileError> readInBlocks(int descriptor, const TakeBytes &take)
{
    constexpr size_t kBlockSize = 1 << 18; // Fits into the processor's cache.
    const auto block = std::make_unique_for_overwrite<char[]>(kBlockSize);
    while (true) {
        const auto count =
            uninterrupted([&] { return ::read(descriptor, block.get(), kBlockSize); });
        if (count < 0)
            return systemError();
        if (count == 0)
            return {};
        if (!take(QByteArrayView(block.get(), count)))
            return tl::unexpected(FileError{FileError::Kind::Cancelled, 0});
    }
}

bool isFolder(const QByteArray &path)
{
    struct stat status = {};
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

tl::expected<QByteArray, FileError> systemPath(const QString &path)
{
    if (path.isEmpty() || path.contains(QChar(u'\0')))
        return tl::unexpected(FileError{FileError::Kind::InvalidPath, 0});
    return QFile::encodeName(path);
}

tl::expected<QByteArray, FileError> currentFolder()
{
    QByteArray path(PATH_MAX, Qt::Uninitialized);
    while (::getcwd(path.data(), static_cast<size_t>(path.size())) == nullptr) {
        if (errno != ERANGE)
            return systemError();
        path.resize(path.size() * 2);
    }
    path.truncate(static_cast<qsizetype>(std::strlen(path.constData())));
    // Linux prefixes the path of an unreachable folder with "(unreachable)".
    if (!path.startsWith('/'))
        return tl::unexpected(FileError::fromErrno(ENOENT));
    return path;
}

tl::expected<QByteArray, FileError> readFile(const QString &path)
{
    return openRegularFile(path).and_then(
        [](const OpenFile &file) -> tl::expected<QByteArray, FileError> {
            try {
                return readAll(file.descriptor, file.size);
            } catch (const std::bad_alloc &) {
                return tl::unexpected(FileError::fromErrno(ENOMEM));
            }
        });
}

tl::expected<void, FileError> readFileInBlocks(const QString &path, const TakeBytes &take)
{
    return openRegularFile(path).and_then(
        [&take](const OpenFile &file) { return readInBlocks(file.descriptor.get(), take); });
}

tl::expected<void, FileError> readStandardInput(const TakeBytes &take)
{
    auto read = readInBlocks(STDIN_FILENO, take);
    // The stream does not block, and has nothing yet.
    while (!read && read.error().errnoValue == EAGAIN) {
        ::pollfd waited{STDIN_FILENO, POLLIN, 0};
        static_cast<void>(uninterrupted([&] { return ::poll(&waited, 1, -1); }));
        read = readInBlocks(STDIN_FILENO, take);
    }
    return read;
}

tl::expected<void, FileError> removeFile(const QString &path)
{
    const auto name = systemPath(path);
    if (!name)
        return tl::unexpected(name.error());
    if (::unlink(name->constData()) != 0)
        return systemError();
    return {};
}

tl::expected<void, FileError> createFolder(const QString &path)
{
    const auto name = systemPath(path);
    if (!name)
        return tl::unexpected(name.error());
    constexpr mode_t kDefaultMode = 0777;
    for (qsizetype end = 0; end >= 0;) {
        end = name->indexOf('/', end + 1);
        const QByteArray folder = end < 0 ? *name : name->left(end);
        if (::mkdir(folder.constData(), kDefaultMode) != 0) {
            const int problem = errno;
            // Another process may have created it in the meantime, and for "/" or a mount point
            // mkdir() may fail with any error.
            if (!isFolder(folder))
                return tl::unexpected(FileError::fromErrno(problem));
        }
    }
    return {};
}

void makeNewFilesPrivate()
{
    ::umask(S_IRWXG | S_IRWXO);
}

tl::expected<QStringList, FileError> folderEntries(const QString &path)
{
    const auto name = systemPath(path);
    if (!name)
        return tl::unexpected(name.error());
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(name->constData()), ::closedir);
    if (!folder)
        return systemError();
    QByteArrayList names;
    errno = 0;
    while (const dirent *entry = ::readdir(folder.get())) {
        const QByteArray entryName(entry->d_name);
        if (entryName != "." && entryName != "..")
            names.append(entryName);
        errno = 0;
    }
    if (errno != 0)
        return systemError();
    std::sort(names.begin(), names.end());
    QStringList decoded;
    for (const QByteArray &entryName : std::as_const(names))
        decoded.append(QFile::decodeName(entryName));
    return decoded;
}

} // namespace penwick
