#include "encoding/StrictDecoder.h"

#include <QChar>

#include <algorithm>
#include <unicode/uchar.h>

namespace penwick {

namespace {

constexpr char16_t kMark = 0xFEFF;

/// Opens a converter that stops at what it cannot convert; null when the system has none.
icu::LocalUConverterPointer openConverter(const char *name)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer converter(ucnv_open(name, &status));
    if (U_FAILURE(status))
        return icu::LocalUConverterPointer();
    ucnv_setToUCallBack(
        converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(
        converter.getAlias(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return U_SUCCESS(status) ? std::move(converter) : icu::LocalUConverterPointer();
}

bool isRefused(UChar32 codePoint, Script script)
{
    constexpr UChar32 kNextLine = 0x85;
    switch (u_charType(codePoint)) {
    case U_UNASSIGNED: // Noncharacters, too.
        return true;
    case U_CONTROL_CHAR:
        return codePoint == 0 ||
               (codePoint > 0x7F && (codePoint != kNextLine || script != Script::Any));
    case U_PRIVATE_USE_CHAR: // Some converters decode bytes without a meaning to U+F8F0 and above.
        return script != Script::Any && codePoint >= 0xF8F0 && codePoint <= 0xF8FF;
    default:
        return false;
    }
}

} // namespace

StrictDecoder::StrictDecoder(const Encoding &encoding)
    : m_encoding(encoding)
    , m_decoder(openConverter(encoding.converter))
    , m_encoder(openConverter(encoding.converter))
{
    if (m_decoder.isNull() || m_encoder.isNull())
        m_errorOffset = 0;
}

bool StrictDecoder::append(QByteArrayView block)
{
    return decode(block, false);
}

bool StrictDecoder::finish()
{
    return decode({}, true);
}

std::u16string_view StrictDecoder::units() const
{
    const std::u16string_view all = m_units;
    return m_isAtStart && m_hasMark ? all.substr(std::min<std::size_t>(1, all.size())) : all;
}

bool StrictDecoder::decode(QByteArrayView block, bool isLast)
{
    m_isAtStart = m_bytesTaken == m_pending.size();
    m_units.clear();
    if (m_errorOffset)
        return false;
    QByteArray source = m_pending;
    source.append(block);
    const qint64 start = m_bytesTaken - m_pending.size();
    qint64 end = convert(block, isLast);
    if (const auto refused = refusedUnit()) {
        end = offsetOfUnit(*refused);
        m_errorOffset = end;
        m_units.resize(*refused);
    }
    // The bytes before a failure may fail as well.
    const auto converted = QByteArrayView(source).first(end - start);
    if (const auto irreversible = irreversibleBytes(converted)) {
        m_errorOffset = irreversible;
        m_units.clear();
    }
    m_bytesTaken += block.size();
    m_pending = source.sliced(converted.size());
    if (m_isAtStart && m_encoding.script == Script::Any && !m_units.empty())
        m_hasMark = m_units.front() == kMark;
    return !m_errorOffset;
}

/// Converts the block into `m_units`. Returns the position behind the last complete sequence; after
/// a failure that is `m_errorOffset`.
qint64 StrictDecoder::convert(QByteArrayView block, bool isLast)
{
    // No sequence has more characters than bytes.
    const auto room = static_cast<std::size_t>(m_pending.size() + block.size());
    m_units.resize(room);
    m_offsets.resize(room);
    char16_t *target = m_units.data();
    const char *source = block.data();
    const char *const sourceEnd = source + block.size();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(m_decoder.getAlias(),
                   &target,
                   m_units.data() + room,
                   &source,
                   sourceEnd,
                   m_offsets.data(),
                   isLast ? 1 : 0,
                   &status);
    m_units.resize(static_cast<std::size_t>(target - m_units.data()));
    const qint64 taken = m_bytesTaken + (source - block.data());
    if (U_SUCCESS(status)) {
        const int32_t pending = ucnv_toUCountPending(m_decoder.getAlias(), &status);
        return taken - (isLast ? 0 : pending);
    }
    char invalid[32];
    auto invalidLength = static_cast<int8_t>(sizeof invalid);
    status = U_ZERO_ERROR;
    ucnv_getInvalidChars(m_decoder.getAlias(), invalid, &invalidLength, &status);
    // Bytes behind the invalid ones that the converter has taken back from an earlier block.
    const int32_t replayed = ucnv_toUCountPending(m_decoder.getAlias(), &status);
    const qint64 start = m_bytesTaken - m_pending.size();
    qint64 error = std::max(start, taken - invalidLength - replayed);
    if (m_encoding.script == Script::Any)
        error -= error % 2; // One byte taken back in UTF-16 is not among them.
    m_errorOffset = error;
    return error;
}

qint64 StrictDecoder::offsetOfUnit(std::size_t index) const
{
    const int32_t offset = m_offsets[index];
    return offset < 0 ? m_bytesTaken - m_pending.size() : m_bytesTaken + offset;
}

/// Returns the index in `m_units` of the first character that is not accepted.
std::optional<std::size_t> StrictDecoder::refusedUnit() const
{
    for (std::size_t i = 0; i < m_units.size(); ++i) {
        const char16_t unit = m_units[i];
        if (unit < 0x80 && unit != 0)
            continue;
        const bool isPair = QChar::isHighSurrogate(unit) && i + 1 < m_units.size();
        const char32_t codePoint =
            isPair ? QChar::surrogateToUcs4(unit, m_units[i + 1]) : char32_t(unit);
        if (isRefused(static_cast<UChar32>(codePoint), m_encoding.script))
            return i;
        i += isPair ? 1 : 0;
    }
    return std::nullopt;
}

/// Returns the position of the first bytes that encoding `m_units` again does not give.
/// \param source the bytes that `m_units` was converted from.
std::optional<qint64> StrictDecoder::irreversibleBytes(QByteArrayView source)
{
    if (m_units.empty())
        return std::nullopt;
    UConverter *encoder = m_encoder.getAlias();
    ucnv_reset(encoder);
    constexpr qsizetype kEscapes = 16; // Bytes that ISO-2022-JP may add at both ends.
    QByteArray encoded(static_cast<qsizetype>(m_units.size()) * ucnv_getMaxCharSize(encoder) +
                           kEscapes,
                       Qt::Uninitialized);
    char *target = encoded.data();
    const char16_t *units = m_units.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(encoder,
                     &target,
                     encoded.data() + encoded.size(),
                     &units,
                     units + m_units.size(),
                     nullptr,
                     1,
                     &status);
    if (U_FAILURE(status)) {
        const auto index = static_cast<std::size_t>(units - m_units.data());
        return offsetOfUnit(index > 0 ? index - 1 : 0);
    }
    encoded.truncate(target - encoded.data());
    const auto difference =
        std::mismatch(source.begin(), source.end(), encoded.cbegin(), encoded.cend());
    if (difference.first == source.end() && difference.second == encoded.cend())
        return std::nullopt;
    if (!m_encoding.isReversible && isSameText(encoded))
        return std::nullopt;
    return m_bytesTaken - m_pending.size() + (difference.first - source.begin());
}

bool StrictDecoder::isSameText(const QByteArray &encoded)
{
    std::u16string again(static_cast<std::size_t>(encoded.size()), u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(m_encoder.getAlias(),
                                         again.data(),
                                         static_cast<int32_t>(again.size()),
                                         encoded.constData(),
                                         static_cast<int32_t>(encoded.size()),
                                         &status);
    return U_SUCCESS(status) &&
           std::u16string_view(again).substr(0, static_cast<std::size_t>(length)) == m_units;
}

} // namespace penwick
