#include "app/DocumentReading.h"

#include <QDir>
#include <QFileInfo>

#include <optional>

namespace penwick {

namespace {

tl::expected<void, DocumentError>
read(TextDocument &document, const QString &path, const TransferLimits &limits)
{
    const QFileInfo info(path);
    // Report a file that cannot be read at all before a window opens for it.
    if (!info.isFile() || !info.isReadable() || info.size() < limits.directBytes)
        return document.readFromFile(path);
    if (!startsAsText(path))
        return tl::unexpected(kUnsupportedContent);
    const bool pauses = info.size() >= limits.pausedBytes;
    document.startReading(path, pauses ? limits.pause : std::chrono::milliseconds{});
    document.waitForText(limits.firstText);
    if (!pauses && limits.reading.count() > 0) {
        if (const auto outcome = document.waitForTransfer(limits.reading))
            return *outcome;
    }
    document.setFilePath(path); // The window belongs to the file from now on.
    return {};
}

/// Returns why the file cannot become a new document; no value when it simply does not exist yet.
std::optional<DocumentError> obstacleToNewFile(const QString &path, const DocumentError &readError)
{
    if (readError.fileErrorKind != FileError::Kind::NotFound)
        return readError;
    if (!QFileInfo(path).dir().exists())
        return readError;
    // A file name that is not valid text was decoded to another name, which does not exist. An
    // empty window under that name would be mistaken for the file.
    if (path.contains(QChar::ReplacementCharacter)) {
        return DocumentError{
            DocumentError::Domain::NSPOSIXErrorDomain, 0, FileError::Kind::InvalidPath};
    }
    return std::nullopt;
}

} // namespace

tl::expected<std::unique_ptr<TextDocument>, DocumentError>
readDocument(const QString &path, MissingFile missingFile, const TransferLimits &limits)
{
    auto document = std::make_unique<TextDocument>();
    if (const auto wasRead = read(*document, path, limits); !wasRead) {
        const auto obstacle = missingFile == MissingFile::IsAnEmptyDocument
                                  ? obstacleToNewFile(path, wasRead.error())
                                  : wasRead.error();
        if (obstacle)
            return tl::unexpected(*obstacle);
        document->setFilePath(path);
    }
    return document;
}

} // namespace penwick
