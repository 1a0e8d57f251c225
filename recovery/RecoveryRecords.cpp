#include "recovery/RecoveryRecords.h"

#include <QCryptographicHash>
#include <QDataStream>

namespace penwick {

namespace {

constexpr auto kHeaderVersion = QDataStream::Qt_6_0;
constexpr qsizetype kChecksumSize = sizeof(quint64);

/// It detects damage, not attacks: the first bytes of a digest are enough.
QByteArray checksumOf(QByteArrayView bytes)
{
    QCryptographicHash hash(QCryptographicHash::Blake2b_160);
    hash.addData(bytes);
    return hash.result().first(kChecksumSize);
}

} // namespace

QByteArray headerOf(RecordKind kind, QByteArrayView content, qint64 units)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(kHeaderVersion);
    stream << static_cast<quint32>(kind) << qint64(content.size()) << units;
    bytes += checksumOf(content);
    return bytes + checksumOf(bytes);
}

std::optional<RecordHeader> readHeader(QIODevice &file)
{
    const QByteArray bytes = file.read(RecordHeader::kSize);
    const qsizetype checked = RecordHeader::kSize - kChecksumSize;
    if (bytes.size() != RecordHeader::kSize ||
        bytes.sliced(checked) != checksumOf(bytes.first(checked)))
        return std::nullopt;
    RecordHeader header;
    quint32 kind = 0;
    QDataStream stream(bytes);
    stream.setVersion(kHeaderVersion);
    stream >> kind >> header.bytes >> header.units;
    header.kind = static_cast<RecordKind>(kind);
    header.checksum = bytes.sliced(checked - kChecksumSize, kChecksumSize);
    return header;
}

std::optional<QByteArray> readContent(QIODevice &file, const RecordHeader &header)
{
    QByteArray content = file.read(header.bytes);
    if (content.size() != header.bytes || checksumOf(content) != header.checksum)
        return std::nullopt;
    return content;
}

} // namespace penwick
