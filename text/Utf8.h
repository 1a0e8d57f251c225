#pragma once

#include "text/Text.h"
#include "text/TextBuilder.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace penwick {

/// Decodes UTF-8 that arrives in blocks, so that a large file never stands in memory twice.
/// As strict as `Text::fromUtf8`.
class Utf8Reader final
{
public:
    /// Decodes the next block; it may end anywhere, also inside a sequence. Returns false once an
    /// invalid byte was met; what comes after that is ignored.
    bool append(QByteArrayView block);

    /// The text read, or where it was invalid (a truncated last sequence included). The reader is
    /// spent afterwards.
    [[nodiscard]] tl::expected<Text, Text::Utf8Error> finish();

private:
    /// Decodes whole sequences of `bytes` and returns how many bytes they took. An incomplete
    /// sequence at the end is left; an invalid one sets `m_errorOffset`.
    qsizetype decode(QByteArrayView bytes);
    qsizetype decodeNonAscii(QByteArrayView bytes);

    TextBuilder m_builder;
    QByteArray m_carry;      // An incomplete sequence from the block before, at most three bytes.
    qint64 m_bytesTaken = 0; // Decoded so far.
    std::optional<qint64> m_errorOffset;
};

} // namespace penwick
