#include "text/Utf8.h"

#include <algorithm>
#include <cstring>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace penwick {

namespace {

constexpr qsizetype kLongestSequence = 4; // Bytes.

/// Returns the length of the ASCII stretch at the start of `bytes`.
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

/// Decodes the code point at `i` and moves `i` past it. Returns a negative value when it is not
/// valid.
// NOLINTNEXTLINE(readability-function-size): the branches are in the macro.
UChar32 nextCodePoint(const quint8 *bytes, qsizetype &i, qsizetype size)
{
    UChar32 codePoint = 0;
    U8_NEXT(bytes, i, size, codePoint); // NOLINT(bugprone-inc-dec-in-conditions): in the macro.
    return codePoint;
}

void appendCodePoint(char16_t *units, qsizetype &length, UChar32 codePoint)
{
    U16_APPEND_UNSAFE(units, length, codePoint);
}

/// True when the first `size` bytes of `candidate` and one or more of the bytes after them form a
/// valid sequence.
bool isCompletedBy(const quint8 (&candidate)[kLongestSequence], qsizetype size)
{
    for (qsizetype length = size + 1; length <= kLongestSequence; ++length) {
        qsizetype i = 0;
        if (nextCodePoint(candidate, i, length) >= 0 && i == length)
            return true;
    }
    return false;
}

/// True when `bytes` may be the start of a valid sequence whose end is missing.
bool isTruncatedSequence(const quint8 *bytes, qsizetype size)
{
    // Some lead bytes limit the second byte to a part of the range of trail bytes. One of these
    // four values is valid after each of them, so a sequence that no value completes is invalid.
    constexpr quint8 kLowestTrail = 0x80;
    constexpr quint8 kHighestTrail = 0xBF;
    for (const quint8 second : {kLowestTrail, quint8(0x90), quint8(0xA0), kHighestTrail}) {
        quint8 candidate[kLongestSequence] = {0, second, kLowestTrail, kLowestTrail};
        std::copy(bytes, bytes + size, candidate);
        if (isCompletedBy(candidate, size))
            return true;
    }
    return false;
}

/// A fast path for Japanese text, which consists mostly of three-byte sequences. Returns the
/// character of a valid one, or 0 for everything else, which is left to the general decoder.
char16_t threeByteUnit(const quint8 *bytes, qsizetype size)
{
    if (size < 3 || (bytes[0] & 0xF0) != 0xE0 || (bytes[1] & 0xC0) != 0x80 ||
        (bytes[2] & 0xC0) != 0x80)
        return 0;
    const auto unit =
        static_cast<char16_t>((bytes[0] & 0x0F) << 12 | (bytes[1] & 0x3F) << 6 | (bytes[2] & 0x3F));
    const bool isValid = unit >= 0x800 && !U16_IS_SURROGATE(unit);
    return isValid ? unit : u'\0';
}

} // namespace

qsizetype Utf8Reader::decodeNonAscii(QByteArrayView bytes)
{
    constexpr qsizetype kRoom = 1024;
    char16_t units[kRoom + 1];
    qsizetype length = 0;
    const auto *data = reinterpret_cast<const quint8 *>(bytes.data());
    const qsizetype size = bytes.size();
    qsizetype i = 0;
    while (i < size && data[i] >= 0x80 && length < kRoom) {
        if (const char16_t unit = threeByteUnit(data + i, size - i)) {
            units[length++] = unit;
            i += 3;
            continue;
        }
        qsizetype next = i;
        const UChar32 codePoint = nextCodePoint(data, next, size);
        if (codePoint < 0) {
            const qsizetype left = size - i;
            if (left >= kLongestSequence || !isTruncatedSequence(data + i, left))
                m_errorOffset = m_bytesTaken + i;
            break;
        }
        appendCodePoint(units, length, codePoint);
        i = next;
    }
    m_builder.appendNonAscii({units, static_cast<std::size_t>(length)});
    m_bytesTaken += i;
    return i;
}

qsizetype Utf8Reader::decode(QByteArrayView bytes)
{
    qsizetype i = 0;
    while (i < bytes.size() && !m_errorOffset) {
        const QByteArrayView rest = bytes.sliced(i);
        const qsizetype ascii = asciiPrefix(rest.data(), rest.size());
        if (ascii > 0) {
            m_builder.appendAscii({rest.data(), static_cast<std::size_t>(ascii)});
            m_bytesTaken += ascii;
            i += ascii;
            continue;
        }
        const qsizetype taken = decodeNonAscii(rest);
        if (taken == 0)
            break;
        i += taken;
    }
    return i;
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
        m_carry.remove(0, taken);
    }
    const qsizetype taken = decode(block);
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
