#pragma once

#include "encoding/Encoding.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <string>
#include <string_view>
#include <unicode/ucnv.h>
#include <vector>

namespace penwick {

/// Decodes bytes block by block without loss, or fails. These bytes fail: a sequence that is
/// invalid, unassigned or truncated; one whose characters cannot be encoded again to the same bytes
/// (`Encoding::isReversible`) or at least to bytes of the same characters (other encodings); and
/// one for U+0000, a C1 control (except U+0085 in UTF-16), an unassigned code point or a
/// noncharacter. A converter that the ICU of this system lacks fails at the first byte.
class StrictDecoder final
{
public:
    explicit StrictDecoder(const Encoding &encoding);

    /// Decodes the next block, which may end anywhere. Returns false once bytes have failed; all
    /// later blocks are ignored.
    [[nodiscard]] bool append(QByteArrayView block);

    /// Call this after the last block. Returns false when a sequence is truncated there, too.
    [[nodiscard]] bool finish();

    /// The characters of the last block, without the byte-order mark at the start of a file in
    /// UTF-16. No surrogate pair is split. Valid until the next block. When the block has failed:
    /// characters before the failing bytes, or none.
    [[nodiscard]] std::u16string_view units() const;

    /// True when the bytes started with a byte-order mark.
    [[nodiscard]] bool hasMark() const { return m_hasMark; }

    /// 0-based position of the first byte that failed; no value without a failure. In ISO-2022-JP
    /// it may be off by the length of an escape sequence there.
    [[nodiscard]] std::optional<qint64> errorOffset() const { return m_errorOffset; }

private:
    bool decode(QByteArrayView block, bool isLast);
    [[nodiscard]] qint64 convert(QByteArrayView block, bool isLast);
    [[nodiscard]] qint64 offsetOfUnit(std::size_t index) const;
    [[nodiscard]] std::optional<std::size_t> refusedUnit() const;
    [[nodiscard]] std::optional<qint64> irreversibleBytes(QByteArrayView source);
    [[nodiscard]] bool isSameText(const QByteArray &encoded);

    const Encoding &m_encoding;
    icu::LocalUConverterPointer m_decoder;
    icu::LocalUConverterPointer m_encoder; // For complete texts; also decodes what it has encoded.
    std::u16string m_units;
    std::vector<int32_t> m_offsets; // In the current block, by unit; -1 for one begun before it.
    QByteArray m_pending;           // The bytes of an incomplete sequence.
    qint64 m_bytesTaken = 0;
    bool m_isAtStart = true; // No character was decoded before the current block.
    bool m_hasMark = false;
    std::optional<qint64> m_errorOffset;
};

} // namespace penwick
