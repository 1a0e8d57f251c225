#include "editor/TextDocument.h"

#include "platform/AtomicFile.h"
#include "platform/FileSystem.h"
#include "text/Utf8.h"

#include <QFileInfo>

namespace penwick {

namespace {

DocumentError fileSystemError(const FileError &error)
{
    return {DocumentError::Domain::NSPOSIXErrorDomain, error.errnoValue, error.kind};
}

} // namespace

TextDocument::TextDocument(QObject *parent)
    : QObject(parent)
    , m_storage(std::make_shared<TextStorage>())
{
    connect(m_storage.get(), &TextStorage::modifiedChanged, this, &TextDocument::editedChanged);
}

TextDocument::~TextDocument() = default;

void TextDocument::setContentString(const Text &text)
{
    m_contentString = text;
    Q_EMIT contentStringChanged();
}

tl::expected<void, DocumentError> TextDocument::readFromData(QByteArrayView data,
                                                             const QString & /*typeName*/)
{
    const auto text = Text::fromUtf8(data);
    if (!text) {
        return tl::unexpected(kUnsupportedContent);
    }
    setContentString(*text);
    return {};
}

tl::expected<QByteArray, DocumentError> TextDocument::dataOfType(const QString & /*typeName*/) const
{
    return m_contentString.toUtf8(); // A text holds no lone surrogate, so this cannot fail.
}

void TextDocument::setFilePath(const QString &absolutePath)
{
    if (m_filePath == absolutePath) {
        return;
    }
    m_filePath = absolutePath;
    Q_EMIT filePathChanged();
}

tl::expected<void, DocumentError> TextDocument::readFromFile(const QString &absolutePath)
{
    // Taken first: a change during the read then counts as one after it.
    const std::optional<FileStamp> stamp = stampOf(absolutePath);
    Utf8Reader reader;
    const auto read =
        readFileInBlocks(absolutePath, [&](QByteArrayView block) { return reader.append(block); });
    // The reader stops it at the first invalid byte, which is not the file system's fault.
    if (!read && read.error().kind != FileError::Kind::Cancelled) {
        return tl::unexpected(fileSystemError(read.error()));
    }
    const auto text = reader.finish();
    if (!text) {
        return tl::unexpected(kUnsupportedContent);
    }
    setContentString(*text);
    m_stamp = stamp;
    setFilePath(absolutePath);
    return {};
}

tl::expected<void, DocumentError> TextDocument::writeToFile(const QString &absolutePath)
{
    Q_EMIT aboutToSave();
    const Text text = m_contentString;
    const auto written = replaceFile(
        absolutePath, [&text](const WriteBytes &write) { return text.forEachUtf8Block(write); });
    if (!written) {
        return tl::unexpected(fileSystemError(written.error()));
    }
    m_stamp = stampOf(absolutePath);
    setFilePath(absolutePath);
    m_storage->setSavePoint();
    return {};
}

bool TextDocument::fileChangedOnDisk() const
{
    if (m_filePath.isEmpty()) {
        return false;
    }
    const std::optional<FileStamp> present = stampOf(m_filePath);
    return present.has_value() && present != m_stamp;
}

std::optional<TextDocument::FileStamp> TextDocument::stampOf(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        return std::nullopt;
    }
    return FileStamp{info.size(), info.lastModified()};
}

} // namespace penwick
