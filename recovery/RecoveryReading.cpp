#include "platform/files/FileDescriptor.h"
#include "recovery/RecoveryCopy.h"
#include "recovery/RecoveryRecords.h"
#include "text/Utf8.h"

#include <QDataStream>
#include <QFile>

#include <algorithm>
#include <fcntl.h>
#include <utility>

namespace penwick {

namespace {

/// Reads what `contentOf` made. False if it has another form.
template <typename... Values> bool take(const QByteArray &content, Values &...values)
{
    QDataStream stream(content);
    stream.setVersion(QDataStream::Qt_6_0);
    (stream >> ... >> values);
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

std::optional<RecoveryOrigin> originIn(const QByteArray &content)
{
    RecoveryOrigin origin;
    FileVersion version;
    bool hasVersion = false;
    if (!take(content,
              origin.filePath,
              origin.name,
              hasVersion,
              version.device,
              version.inode,
              version.size,
              version.modifiedNanoseconds))
        return std::nullopt;
    if (hasVersion)
        origin.version = version;
    return origin;
}

/// Follows the records of a copy.
class CopyReader final
{
public:
    enum class Extent { Summary, WholeText };

    CopyReader(QIODevice &file, Extent extent)
        : m_file(file)
        , m_extent(extent)
    {
    }

    /// Reads the next record. False at the end, and where the rest of the file is unreadable.
    bool readNext()
    {
        // A killed process leaves a record that the end of the file cuts off: this is no damage.
        if (remaining() < RecordHeader::kSize)
            return false;
        const auto header = readHeader(m_file);
        if (header && remaining() < header->bytes)
            return false;
        const bool isRead = header && readRecord(*header);
        m_outcome.isDamaged = m_outcome.isDamaged || !isRead;
        return isRead;
    }

    /// Call this at the end.
    [[nodiscard]] RecoveredText outcome()
    {
        if (!m_hasState) { // Even the first write is damaged.
            finishChange();
            m_outcome.text = m_text;
            m_outcome.isDamaged = true;
        }
        m_outcome.caret = std::clamp<qint64>(m_outcome.caret, 0, m_outcome.text.size());
        return std::move(m_outcome);
    }

private:
    /// Bytes between the current position and the end.
    [[nodiscard]] qint64 remaining() const { return m_file.size() - m_file.pos(); }

    bool readRecord(const RecordHeader &header)
    {
        if (m_extent == Extent::Summary && header.kind != RecordKind::Origin &&
            header.kind != RecordKind::State)
            return m_file.seek(m_file.pos() + header.bytes);
        const auto content = readContent(m_file, header);
        return content ? takeRecord(header, *content) : replaceDamaged(header);
    }

    bool takeRecord(const RecordHeader &header, const QByteArray &content)
    {
        switch (header.kind) {
        case RecordKind::Origin:
            if (auto origin = originIn(content))
                m_outcome.summary.origin = *std::move(origin);
            return true;
        case RecordKind::Change:
            finishChange();
            m_replacement.emplace();
            return take(content, m_range.location, m_range.length);
        case RecordKind::Block:
            return m_replacement && m_replacement->append(content);
        case RecordKind::State:
            finishChange();
            m_outcome.text = m_text;
            m_hasState = true;
            return take(
                content, m_outcome.caret, m_outcome.summary.time, m_outcome.summary.utf8Bytes);
        }
        return false; // A record of a later penwick.
    }

    bool replaceDamaged(const RecordHeader &header)
    {
        if (header.kind != RecordKind::Block || !m_replacement)
            return false;
        m_outcome.isDamaged = true;
        return m_replacement->append(QByteArray("\uFFFD").repeated(header.units));
    }

    void finishChange()
    {
        if (!m_replacement)
            return;
        if (const auto replacement = m_replacement->finish())
            m_text = m_text.replaced(m_range.location, m_range.length, *replacement);
        m_replacement.reset();
    }

    QIODevice &m_file;
    Extent m_extent;
    RecoveredText m_outcome; // As of the last completed write.
    bool m_hasState = false;
    Text m_text; // With the changes of an incomplete write.
    TextRange m_range;
    std::optional<Utf8Reader> m_replacement; // Of the last change; none outside of one.
};

tl::expected<RecoveredText, FileError>
readCopy(const QString &path, CopyReader::Extent extent, const std::atomic<bool> &isCancelled)
{
    const QByteArray name = QFile::encodeName(path);
    const FileDescriptor descriptor(
        uninterrupted([&] { return ::open(name.constData(), O_RDONLY | O_CLOEXEC); }));
    if (!descriptor.isOpen())
        return systemError();
    QFile file;
    if (!file.open(descriptor.get(), QIODevice::ReadOnly))
        return tl::unexpected(FileError());
    CopyReader reader(file, extent);
    while (!isCancelled && reader.readNext()) {
    }
    if (isCancelled)
        return tl::unexpected(FileError{FileError::Kind::Cancelled});
    return reader.outcome();
}

} // namespace

tl::expected<RecoverySummary, FileError> RecoveryCopy::readSummary(const QString &path)
{
    const std::atomic<bool> isCancelled = false;
    return readCopy(path, CopyReader::Extent::Summary, isCancelled)
        .map([](const RecoveredText &copy) { return copy.summary; });
}

tl::expected<RecoveredText, FileError> RecoveryCopy::read(const QString &path,
                                                          const std::atomic<bool> &isCancelled)
{
    return readCopy(path, CopyReader::Extent::WholeText, isCancelled);
}

} // namespace penwick
