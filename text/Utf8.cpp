#include "text/Utf8.h"

#include <algorithm>
#include <cstring>
#include <unicode/utf8.h>

namespace penwick {

namespace {

/// Length of the ASCII stretch at the start of `bytes`.
qsizetype asciiPrefix(const char *bytes, qsizetype size)
{
    constexpr quint64 kHighBits = 0x8080808080808080ULL;
    qsizetype i = 0;
    while (i + 32 <= size) {
        quint64 words[4];
        std::memcpy(words, bytes + i, sizeof words);
        if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0)
            break;
        i += 32;
    }
    while (i < size && static_cast<signed char>(bytes[i]) >= 0)
        ++i;
    return i;
}

/// True when `bytes` could be the start of a valid sequence that only lacks its end.
bool isTruncatedSequence(const quint8 *bytes, qsizetype size)
{
    // Complete it with the trail bytes that can follow: if any completion decodes, it was cut.
    constexpr quint8 kLowestTrail = 0x80;
    constexpr quint8 kHighestTrail = 0xBF;
    for (const quint8 second : {kLowestTrail, quint8(0x90), quint8(0xA0), kHighestTrail}) {
        quint8 candidate[4] = {0, second, kLowestTrail, kLowestTrail};
        std::copy(bytes, bytes + size, candidate);
        for (const qsizetype length : {size + 1, size + 2, size + 3}) {
            if (length > 4)
                break;
            qsizetype i = 0;
            UChar32 codePoint = 0;
            U8_NEXT(candidate, i, length, codePoint);
            if (codePoint >= 0 && i == length)
                return true;
        }
    }
    return false;
}

constexpr qsizetype kLongestSequence = 4;

} // namespace

qsizetype Utf8Reader::decode(QByteArrayView bytes)
{
    const auto *data = reinterpret_cast<const quint8 *>(bytes.data());
    const qsizetype size = bytes.size();
    qsizetype i = 0;
    while (i < size) {
        if (data[i] < 0x80) {
            const qsizetype length = asciiPrefix(bytes.data() + i, size - i);
            m_builder.appendAscii({bytes.data() + i, static_cast<std::size_t>(length)});
            i += length;
            continue;
        }
        const qsizetype start = i;
        UChar32 codePoint = 0;
        U8_NEXT(data, i, size, codePoint);
        if (codePoint < 0) {
            const qsizetype left = size - start;
            if (left >= kLongestSequence || !isTruncatedSequence(data + start, left))
                m_errorOffset = m_bytesTaken + start;
            return start;
        }
        m_builder.appendCodePoint(static_cast<char32_t>(codePoint));
    }
    return size;
}

bool Utf8Reader::append(QByteArrayView block)
{
    if (m_errorOffset)
        return false;
    while (!m_carry.isEmpty() && !block.isEmpty()) {
        m_carry.append(block.first(1));
        block = block.sliced(1);
        const qsizetype taken = decode(m_carry);
        if (m_errorOffset)
            return false;
        m_bytesTaken += taken;
        m_carry.remove(0, taken);
    }
    const qsizetype taken = decode(block);
    m_bytesTaken += taken;
    if (m_errorOffset)
        return false;
    m_carry.append(block.sliced(taken));
    return true;
}

tl::expected<Text, Text::Utf8Error> Utf8Reader::finish()
{
    if (!m_errorOffset && !m_carry.isEmpty())
        m_errorOffset = m_bytesTaken;
    if (m_errorOffset)
        return tl::make_unexpected(Text::Utf8Error{*m_errorOffset});
    return m_builder.finish();
}

} // namespace penwick
