#include "recovery/RecoveryCopy.h"

#include "platform/files/FileSystem.h"
#include "platform/files/FileWriter.h"
#include "platform/files/TemporaryFile.h"
#include "recovery/RecoveryRecords.h"

#include <QDataStream>
#include <QStorageInfo>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace penwick {

namespace {

constexpr qsizetype kBlockBytes = 1 << 17;
constexpr qint64 kSmallFile =
    1 << 20; // Bytes; the changes in a smaller file are not worth a rewrite.

constexpr auto kStreamVersion = QDataStream::Qt_6_0;

template <typename... Values> QByteArray contentOf(const Values &...values)
{
    QByteArray content;
    QDataStream stream(&content, QIODevice::WriteOnly);
    stream.setVersion(kStreamVersion);
    (stream << ... << values);
    return content;
}

/// UTF-16 code units of valid UTF-8.
qint64 unitsOf(QByteArrayView utf8)
{
    return std::count_if(utf8.begin(),
                         utf8.end(),
                         [](char byte) {
                             constexpr int kContinuation = 0x80;
                             constexpr int kContinuationMask = 0xC0;
                             return (byte & kContinuationMask) != kContinuation;
                         }) +
           std::count_if(utf8.begin(), utf8.end(), [](char byte) {
               constexpr uchar kFourBytes = 0xF0; // A surrogate pair.
               return static_cast<uchar>(byte) >= kFourBytes;
           });
}

/// Writes the records of an update to an open file.
class RecordWriter final
{
public:
    RecordWriter(int descriptor, const std::atomic<bool> &isCancelled)
        : m_file(descriptor)
        , m_isCancelled(isCancelled)
    {
    }

    /// Each returns false, with `errno` set, on failure.
    bool writeOrigin(const RecoveryOrigin &origin)
    {
        const FileVersion version = origin.version.value_or(FileVersion());
        return write(RecordKind::Origin,
                     contentOf(origin.filePath,
                               origin.name,
                               origin.version.has_value(),
                               version.device,
                               version.inode,
                               version.size,
                               version.modifiedNanoseconds));
    }

    bool writeChange(const TextDifference &change)
    {
        if (!write(RecordKind::Change, contentOf(change.range.location, change.range.length)))
            return false;
        QByteArray block;
        const bool isWritten = change.replacement.forEachUtf8Block([&](QByteArrayView piece) {
            block.append(piece);
            return block.size() < kBlockBytes || writeBlock(block);
        });
        return isWritten && writeBlock(block);
    }

    bool writeState(const RecoveryUpdate &update)
    {
        return write(RecordKind::State,
                     contentOf(update.caret, update.time, update.text.metrics().utf8Bytes)) &&
               m_file.flush();
    }

    [[nodiscard]] qint64 size() const { return m_file.size(); }

private:
    bool writeBlock(QByteArray &block)
    {
        if (block.isEmpty())
            return true;
        const bool isWritten = write(RecordKind::Block, block, unitsOf(block));
        block.resize(0);
        return isWritten;
    }

    bool write(RecordKind kind, const QByteArray &content, qint64 units = 0)
    {
        return !m_isCancelled && m_file.write(headerOf(kind, content, units)) &&
               m_file.write(content);
    }

    FileWriter m_file;
    const std::atomic<bool> &m_isCancelled;
};

/// A full disk should not first be filled by a text that has no room on it.
bool hasRoomFor(const QString &path, const Text &text)
{
    const QByteArray folder = folderOf(QFile::encodeName(path));
    const QStorageInfo disk(QFile::decodeName(folder));
    return !disk.isValid() || disk.bytesAvailable() > text.metrics().utf8Bytes + kSmallFile;
}

} // namespace

tl::expected<void, FileError> RecoveryCopy::write(const RecoveryUpdate &update,
                                                  const std::atomic<bool> &isCancelled)
{
    const qint64 limit = std::max(kSmallFile, 2 * update.text.metrics().utf8Bytes);
    const qint64 size = std::exchange(m_size, 0); // Stays so after a failure or an exception.
    const bool isWhole = !update.changes || size == 0 || size > limit;
    auto written = isWhole ? rewrite(update, isCancelled) : append(update, size, isCancelled);
    if (!written) {
        if (isCancelled)
            return tl::unexpected(FileError{FileError::Kind::Cancelled});
        return written;
    }
    m_origin = update.origin;
    return written;
}

tl::expected<void, FileError> RecoveryCopy::rewrite(const RecoveryUpdate &update,
                                                    const std::atomic<bool> &isCancelled)
{
    if (!hasRoomFor(m_path, update.text))
        return tl::unexpected(FileError::fromErrno(ENOSPC));
    constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
    const QByteArray path = QFile::encodeName(m_path);
    TemporaryFile file(path);
    if (auto created = file.create(kPrivate); !created)
        return created;
    RecordWriter writer(file.descriptor(), isCancelled);
    if (!writer.writeOrigin(update.origin) || !writer.writeChange({{0, 0}, update.text}) ||
        !writer.writeState(update) || !synchronise(file.descriptor()))
        return systemError();
    auto replaced = file.takeName().and_then([&] { return file.replaceTarget(); });
    if (replaced)
        replaced = synchroniseFolder(folderOf(path));
    if (replaced)
        m_size = writer.size();
    return replaced;
}

tl::expected<void, FileError> RecoveryCopy::append(const RecoveryUpdate &update,
                                                   qint64 size,
                                                   const std::atomic<bool> &isCancelled)
{
    const FileDescriptor file(uninterrupted([&] {
        return ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    }));
    if (!file.isOpen())
        return systemError();
    RecordWriter writer(file.get(), isCancelled);
    const bool isWritten =
        (update.origin == m_origin || writer.writeOrigin(update.origin)) &&
        std::all_of(update.changes->begin(),
                    update.changes->end(),
                    [&](const TextDifference &change) { return writer.writeChange(change); }) &&
        writer.writeState(update) && synchronise(file.get());
    if (isWritten) {
        m_size = size + writer.size();
        return {};
    }
    const auto error = systemError();
    // Room for others; a reader ignores the incomplete write anyway.
    static_cast<void>(::ftruncate(file.get(), size));
    return error;
}

void RecoveryCopy::remove()
{
    m_size = 0;
    static_cast<void>(removeFile(m_path));
}

} // namespace penwick
