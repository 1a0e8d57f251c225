#include "encoding/StrictDecoder.h"
#include "fuzz/Require.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>

using namespace penwick;

namespace {

struct Decoded
{
    std::u16string text;
    std::optional<qint64> errorOffset;
};

Decoded decode(const Encoding &encoding, QByteArrayView bytes, const std::vector<int> &cuts)
{
    StrictDecoder decoder(encoding);
    Decoded decoded;
    qsizetype start = 0;
    const auto append = [&](qsizetype length) {
        if (decoder.append(bytes.sliced(start, length)))
            decoded.text += decoder.units();
        start += length;
    };
    for (const int cut : cuts)
        append(std::min<qsizetype>(cut, bytes.size() - start));
    append(bytes.size() - start);
    if (decoder.finish())
        decoded.text += decoder.units();
    decoded.errorOffset = decoder.errorOffset();
    return decoded;
}

/// Checks that the text holds no lone surrogate and no NUL.
void checkText(const std::u16string &text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        REQUIRE(text[i] != 0 && !QChar::isLowSurrogate(text[i]));
        if (QChar::isHighSurrogate(text[i])) {
            ++i;
            REQUIRE(i < text.size() && QChar::isLowSurrogate(text[i]));
        }
    }
}

} // namespace

/// Each encoding must accept or refuse the bytes at the same position, wherever the blocks end.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    const Encoding &encoding =
        encodings()[provider.ConsumeIntegralInRange<std::size_t>(0, encodings().size() - 1)];
    std::vector<int> cuts(provider.ConsumeIntegralInRange<std::size_t>(0, 8));
    for (int &cut : cuts)
        cut = provider.ConsumeIntegralInRange<int>(0, 200);
    const auto rest = provider.ConsumeRemainingBytes<char>();
    const QByteArrayView bytes(rest.data(), static_cast<qsizetype>(rest.size()));

    const Decoded whole = decode(encoding, bytes, {});
    const Decoded inBlocks = decode(encoding, bytes, cuts);
    REQUIRE(whole.errorOffset.has_value() == inBlocks.errorOffset.has_value());
    // The position may be off at an escape sequence.
    REQUIRE(whole.errorOffset == inBlocks.errorOffset || encoding.name == u"ISO-2022-JP");
    if (whole.errorOffset) {
        REQUIRE(*whole.errorOffset >= 0 && *whole.errorOffset <= bytes.size());
    } else {
        REQUIRE(whole.text == inBlocks.text);
        checkText(whole.text);
    }
    return 0;
}
