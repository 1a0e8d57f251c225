#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>

#include <optional>

namespace penwick {

// The file of a copy is a sequence of records: a header with a checksum, then the content, whose
// checksum is in the header. So a damaged content does not hide the records after it.

enum class RecordKind : quint32 {
    Origin = 1, ///< What the copy was made from.
    Change,     ///< A replacement; its new text follows in blocks.
    Block,      ///< A stretch of the new text of the last change, as UTF-8.
    State,      ///< Ends a write: the changes before it count.
};

struct RecordHeader
{
    static constexpr int kSize = 36; ///< Bytes in the file.

    RecordKind kind = RecordKind::State; ///< Another number in a file of a later penwick.
    qint64 bytes = 0;                    ///< Size of the content.
    qint64 units = 0;                    ///< UTF-16 code units in a block; 0 for other kinds.
    QByteArray checksum;                 ///< Of the content.
};

/// Returns the header of a record in the form that it has in the file.
[[nodiscard]] QByteArray headerOf(RecordKind kind, QByteArrayView content, qint64 units = 0);

/// Reads a header at the current position. No value if the file ends before the header does, or the
/// header is damaged.
[[nodiscard]] std::optional<RecordHeader> readHeader(QIODevice &file);

/// Reads the content of the record whose header was read last. No value if it is damaged or
/// incomplete.
[[nodiscard]] std::optional<QByteArray> readContent(QIODevice &file, const RecordHeader &header);

} // namespace penwick
