#include "editor/TextFile.h"

#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "text/Utf8.h"

#include <QFileInfo>

#include <cerrno>
#include <new>

namespace penwick {

namespace {

tl::unexpected<DocumentError> fileSystemError(const FileError &error)
{
    return tl::unexpected(
        DocumentError{DocumentError::Domain::NSPOSIXErrorDomain, error.errnoValue, error.kind});
}

TransferOutcome readOnce(const QString &path, TransferProgress &progress)
{
    // Taken first: a change during the read then counts as one after it.
    const std::optional<FileStamp> stamp = FileStamp::of(path);
    progress.setTotal(stamp ? stamp->size : 0);
    Utf8Reader reader;
    const auto read = readFileInBlocks(path, [&](QByteArrayView block) {
        progress.advance(block.size());
        return !progress.isCancelled() && reader.append(block);
    });
    // The reader stops it at the first invalid byte, which is not the file system's fault.
    const bool isInvalid = !read && read.error().kind == FileError::Kind::Cancelled;
    if (!read && (!isInvalid || progress.isCancelled())) {
        return fileSystemError(read.error());
    }
    const auto text = reader.finish();
    if (!text) {
        return tl::unexpected(kUnsupportedContent);
    }
    return StoredText{*text, stamp};
}

TransferOutcome writeOnce(const QString &path, const Text &text, TransferProgress &progress)
{
    progress.setTotal(text.metrics().utf8Bytes);
    const auto produce = [&](const WriteBytes &write) {
        return text.forEachUtf8Block([&](QByteArrayView block) {
            progress.advance(block.size());
            return !progress.isCancelled() && write(block);
        });
    };
    const auto written = replaceFile(path, produce, [&] { return !progress.isCancelled(); });
    if (!written) {
        return fileSystemError(written.error());
    }
    return StoredText{text, FileStamp::of(path)};
}

} // namespace

std::optional<FileStamp> FileStamp::of(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return std::nullopt;
    }
    return FileStamp{info.size(), info.lastModified()};
}

TransferOutcome readTextFile(const QString &path, TransferProgress &progress)
{
    try {
        return readOnce(path, progress);
    } catch (const std::bad_alloc &) {
        return fileSystemError(FileError::fromErrno(ENOMEM));
    }
}

TransferOutcome writeTextFile(const QString &path, const Text &text, TransferProgress &progress)
{
    try {
        return writeOnce(path, text, progress);
    } catch (const std::bad_alloc &) {
        return fileSystemError(FileError::fromErrno(ENOMEM));
    }
}

} // namespace penwick
