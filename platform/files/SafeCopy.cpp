#include "platform/files/SafeCopy.h"

#include "platform/files/ApplicationSupport.h"
#include "platform/files/FileSystem.h"
#include "platform/files/FileWriter.h"
#include "platform/files/TemporaryFile.h"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr int kCopies = 8;
constexpr size_t kBlockSize = 1 << 18;

QByteArray fallbackFolder()
{
    return QFile::encodeName(ApplicationSupport::folderPath() + u"/interrupted-saves/"_s);
}

/// The path of the copy in `slot`. Its name shows the user which file was copied; the digest
/// distinguishes files of the same name.
QByteArray copyPath(const QByteArray &folder, const QByteArray &original, int slot)
{
    constexpr qsizetype kDigestBytes = 4;
    constexpr qsizetype kMaximumNameBytes = 200;
    QByteArray name = original.mid(folderOf(original).size());
    qsizetype length = std::min(name.size(), kMaximumNameBytes);
    constexpr unsigned kContinuation = 0x80;
    constexpr unsigned kContinuationMask = 0xC0;
    while (length < name.size() && length > 0 &&
           (static_cast<unsigned char>(name[length]) & kContinuationMask) == kContinuation)
        --length;
    name.truncate(length);
    return folder + name + ".penwick-" + digestOf(original, kDigestBytes) + '-' +
           QByteArray::number(slot) + ".bak";
}

/// Reads a block of the file at `offset`. Returns the number of bytes, less than `kBlockSize` only
/// at the end of the file; -1 on failure.
ssize_t readAt(int file, char *bytes, off_t offset)
{
    size_t filled = 0;
    while (filled < kBlockSize) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(
                file, bytes + filled, kBlockSize - filled, offset + static_cast<off_t>(filled));
        });
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        filled += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

/// Copies the whole file. False, with `errno` set, on failure.
bool copyBytes(int from, FileWriter &to)
{
    std::vector<char> block(kBlockSize);
    for (off_t offset = 0;;) {
        const ssize_t count = readAt(from, block.data(), offset);
        if (count <= 0)
            return count == 0 && to.flush();
        if (!to.write({block.data(), count}))
            return false;
        offset += count;
    }
}

/// True when both files hold the same bytes; false also when that could not be determined.
bool holdSame(int one, int other)
{
    struct stat ofOne = {};
    struct stat ofOther = {};
    if (::fstat(one, &ofOne) != 0 || ::fstat(other, &ofOther) != 0)
        return false;
    if (ofOne.st_size != ofOther.st_size)
        return false;
    std::vector<char> blocks(2 * kBlockSize);
    for (off_t offset = 0;;) {
        const ssize_t count = readAt(one, blocks.data(), offset);
        if (count < 0 || readAt(other, blocks.data() + kBlockSize, offset) != count)
            return false;
        if (count == 0)
            return true;
        if (!std::equal(blocks.begin(), blocks.begin() + count, blocks.begin() + kBlockSize))
            return false;
        offset += count;
    }
}

/// True for a copy with the content of the file, and for an empty one, which is no longer needed.
bool isObsoleteCopy(int copy, const QByteArray &original)
{
    const FileDescriptor file(uninterrupted(
        [&] { return ::open(original.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
    struct stat status = {};
    const bool isEmpty = ::fstat(copy, &status) == 0 && status.st_size == 0;
    return isEmpty || holdSame(copy, file.get());
}

/// Calls `visit` for each copy of this file that a process that is gone has left, with its path and
/// whether it is obsolete. The copy is locked during the call.
void forEachLeftover(const QByteArray &original,
                     const std::function<void(const QByteArray &, bool)> &visit)
{
    for (const QByteArray &folder : {folderOf(original), fallbackFolder()}) {
        for (int slot = 0; slot < kCopies; ++slot) {
            const QByteArray path = copyPath(folder, original, slot);
            if (const auto copy = openAbandoned(path))
                visit(path, isObsoleteCopy(copy->get(), original));
        }
    }
}

/// The path without links, so that a file has one name however the user opened it. Returns `path`
/// itself if it cannot be resolved.
QByteArray canonical(const QByteArray &path)
{
    const std::unique_ptr<char, void (*)(void *)> real(::realpath(path.constData(), nullptr),
                                                       std::free);
    return real != nullptr ? QByteArray(real.get()) : path;
}

} // namespace

SafeCopy::SafeCopy(const QByteArray &original)
    : m_original(canonical(original))
{
}

SafeCopy::~SafeCopy()
{
    if (m_path.isEmpty())
        return;
    // Emptied first: if it cannot be removed, its size marks it as no longer needed.
    uninterrupted([this] { return ::ftruncate(m_copy.get(), 0); });
    ::unlink(m_path.constData());
    ::rmdir(fallbackFolder().constData()); // Only succeeds if the folder is empty.
}

void SafeCopy::removeObsolete(const QByteArray &file)
{
    forEachLeftover(canonical(file), [](const QByteArray &path, bool isObsolete) {
        if (isObsolete)
            ::unlink(path.constData());
    });
}

tl::expected<void, FileError> SafeCopy::make(int file)
{
    auto made = makeIn(folderOf(m_original), file);
    if (!made && made.error().kind == FileError::Kind::PermissionDenied) {
        const QByteArray folder = fallbackFolder();
        made =
            createFolder(QFile::decodeName(folder)).and_then([&] { return makeIn(folder, file); });
    }
    return made;
}

tl::expected<void, FileError> SafeCopy::makeIn(const QByteArray &folder, int file)
{
    const QByteArray namesake = folder + m_original.mid(folderOf(m_original).size());
    TemporaryFile::removeLeftovers(namesake);
    TemporaryFile copy(namesake);
    // Named from the start: an unnamed copy would need a fallback for systems that cannot name it
    // later, which is not worth it.
    auto result = copy.create(S_IRUSR | S_IWUSR, TemporaryFile::Name::FromTheStart);
    if (!result)
        return result;
    FileWriter writer(copy.descriptor());
    if (!copyBytes(file, writer) || !synchronise(copy.descriptor()))
        return systemError();
    // This duplicate keeps the lock when `copy` closes its descriptor.
    FileDescriptor held(::fcntl(copy.descriptor(), F_DUPFD_CLOEXEC, 0));
    if (!held.isOpen())
        return systemError();
    for (int slot = 0; slot < kCopies; ++slot) {
        const QByteArray path = copyPath(folder, m_original, slot);
        result = copy.moveToFreePlace(path);
        if (result) {
            m_path = path;
            m_copy = std::move(held);
            break;
        }
        if (result.error().errnoValue != EEXIST)
            break;
    }
    if (!result)
        return result;
    result = synchroniseFolder(folder);
    if (!result)
        ::unlink(std::exchange(m_path, {}).constData());
    return result;
}

bool SafeCopy::writeBack(int file) const
{
    FileWriter writer(file);
    return ::lseek(file, 0, SEEK_SET) == 0 && copyBytes(m_copy.get(), writer) &&
           uninterrupted([&] { return ::ftruncate(file, writer.size()); }) == 0 &&
           synchronise(file);
}

QStringList SafeCopy::left(const QString &file)
{
    QStringList paths;
    const auto original = systemPath(file).map(canonical);
    if (!original)
        return paths;
    forEachLeftover(*original, [&](const QByteArray &path, bool isObsolete) {
        if (!isObsolete)
            paths << QFile::decodeName(path);
    });
    return paths;
}

} // namespace penwick
