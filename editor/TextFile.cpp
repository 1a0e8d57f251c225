#include "editor/TextFile.h"

#include "editor/ParallelUtf8Reader.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileSystem.h"
#include "text/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace penwick {

namespace {

tl::unexpected<DocumentError> fileSystemError(const FileError &error)
{
    return tl::unexpected(documentError(error));
}

TransferOutcome readOnce(const QString &path, TransferProgress &progress)
{
    // Taken before the read: a change during the read then counts as a later one.
    const std::optional<FileVersion> version = FileVersion::of(path);
    progress.setTotal(version ? version->size : 0);
    ParallelUtf8Reader reader([&progress](const Text &text) { progress.setReadSoFar(text); });
    const auto read = readFileInBlocks(path, [&](QByteArrayView block) {
        progress.advance(block.size());
        const bool isRead = !progress.isCancelled() && reader.append(block);
        if (isRead && progress.done() >= ParallelUtf8Reader::kFirstPiece)
            progress.pause();
        return isRead;
    });
    // The reader stops at an invalid byte, which is reported as a cancellation but is no
    // file system error.
    const bool isInvalid = !read && read.error().kind == FileError::Kind::Cancelled;
    if (!read && (!isInvalid || progress.isCancelled()))
        return fileSystemError(read.error());
    const auto text = reader.finish();
    if (!text)
        return tl::unexpected(kUnsupportedContent);
    return StoredText{*text, version};
}

TransferOutcome writeOnce(const QString &path,
                          const Text &text,
                          TransferProgress &progress,
                          const Replaceable &replaceable)
{
    progress.setTotal(text.metrics().utf8Bytes);
    const auto produce = [&](const WriteBytes &write) {
        return text.forEachUtf8Block([&](QByteArrayView block) {
            progress.advance(block.size());
            return !progress.isCancelled() && write(block);
        });
    };
    // Checked before anything is written, and again as late as possible.
    bool isReplaceable = replaceable.fits(path);
    const auto isStillWanted = [&] {
        isReplaceable = replaceable.fits(path);
        return isReplaceable && !progress.isCancelled();
    };
    const auto written = isReplaceable ? replaceFile(path, produce, isStillWanted)
                                       : tl::unexpected(FileError{FileError::Kind::Changed, 0});
    if (!isReplaceable)
        return fileSystemError(FileError{FileError::Kind::Changed, 0});
    if (!written)
        return fileSystemError(written.error());
    return StoredText{text, *written};
}

} // namespace

bool Replaceable::fits(const QString &path) const
{
    const std::optional<FileVersion> present = FileVersion::of(path);
    return present ? anyState || present == state : missing;
}

TransferOutcome readTextFile(const QString &path, TransferProgress &progress)
{
    try {
        return readOnce(path, progress);
    } catch (const std::bad_alloc &) {
        return fileSystemError(FileError::fromErrno(ENOMEM));
    }
}

bool startsAsText(const QString &path)
{
    bool isText = true;
    const auto take = [&isText](QByteArrayView block) {
        constexpr qsizetype kChecked = 1 << 16;
        isText = Utf8Reader().append(block.first(std::min(block.size(), kChecked)));
        return false;
    };
    static_cast<void>(readFileInBlocks(path, take));
    return isText;
}

TransferOutcome writeTextFile(const QString &path,
                              const Text &text,
                              TransferProgress &progress,
                              const Replaceable &replaceable)
{
    try {
        return writeOnce(path, text, progress, replaceable);
    } catch (const std::bad_alloc &) {
        return fileSystemError(FileError::fromErrno(ENOMEM));
    }
}

} // namespace penwick
