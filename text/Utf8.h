#pragma once

#include "text/Text.h"
#include "text/TextBuilder.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace penwick {

/// Decodes UTF-8 in blocks, so that a large file is never in memory twice. As strict as
/// `Text::fromUtf8`.
class Utf8Reader final
{
public:
    /// Decodes the next block, which may end anywhere, also inside a sequence. Returns false once
    /// an invalid byte was found; all later blocks are ignored.
    bool append(QByteArrayView block);

    /// Returns the text, or the position of the first invalid byte. A truncated last sequence is
    /// invalid. The reader cannot be used afterwards.
    [[nodiscard]] tl::expected<Text, Text::Utf8Error> finish();

private:
    /// Decodes the complete sequences in `bytes` and returns their length in bytes. Leaves an
    /// incomplete sequence at the end; an invalid one sets `m_errorOffset`.
    qsizetype decode(QByteArrayView bytes);
    qsizetype decodeNonAscii(QByteArrayView bytes);

    TextBuilder m_builder;
    QByteArray m_carry;      // An incomplete sequence from the last block, at most three bytes.
    qint64 m_bytesTaken = 0; // Number of bytes decoded so far.
    std::optional<qint64> m_errorOffset;
};

} // namespace penwick
