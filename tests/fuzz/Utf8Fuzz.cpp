#include "fuzz/Require.h"
#include "support/TextModel.h"
#include "text/Utf8.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <unicode/ustring.h>
#include <vector>

using namespace penwick;

namespace {

/// Decodes the bytes with ICU's strict decoder; null when they are invalid.
std::optional<QString> decodedByIcu(QByteArrayView bytes)
{
    QString units(bytes.size(), Qt::Uninitialized);
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(reinterpret_cast<UChar *>(units.data()),
                  static_cast<int32_t>(units.size()),
                  &length,
                  bytes.data(),
                  static_cast<int32_t>(bytes.size()),
                  &status);
    if (U_FAILURE(status))
        return std::nullopt;
    units.truncate(length);
    return units;
}

tl::expected<Text, Text::Utf8Error> readInBlocks(QByteArrayView bytes, const std::vector<int> &cuts)
{
    Utf8Reader reader;
    qsizetype start = 0;
    for (const int cut : cuts) {
        const qsizetype length = std::min<qsizetype>(cut, bytes.size() - start);
        reader.append(bytes.sliced(start, length));
        start += length;
    }
    reader.append(bytes.sliced(start));
    return reader.finish();
}

/// Checks that valid bytes are returned unchanged and counted as by ICU.
void checkText(const Text &text, const QString &model, QByteArrayView bytes)
{
    REQUIRE(text.toString() == model);
    REQUIRE(text.toUtf8() == bytes);
    REQUIRE(text.metrics() == test::metricsOf(model));
    REQUIRE(text == Text{QStringView(model)});
    QByteArray blocks;
    REQUIRE(text.forEachUtf8Block([&](QByteArrayView block) {
        blocks.append(block);
        return true;
    }));
    REQUIRE(blocks == bytes);
}

/// Checks that the bytes before the reported offset are valid, and that no valid sequence starts
/// there.
void checkError(Text::Utf8Error error, QByteArrayView bytes)
{
    REQUIRE(error.byteOffset >= 0 && error.byteOffset < bytes.size());
    REQUIRE(decodedByIcu(bytes.first(error.byteOffset)));
    for (qsizetype more = 1; more <= 4 && error.byteOffset + more <= bytes.size(); ++more)
        REQUIRE(!decodedByIcu(bytes.sliced(error.byteOffset, more)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    std::vector<int> cuts(provider.ConsumeIntegralInRange<std::size_t>(0, 8));
    for (int &cut : cuts)
        cut = provider.ConsumeIntegralInRange<int>(0, 200);
    const auto rest = provider.ConsumeRemainingBytes<char>();
    const QByteArrayView bytes(rest.data(), static_cast<qsizetype>(rest.size()));

    const auto whole = Text::fromUtf8(bytes);
    const auto inBlocks = readInBlocks(bytes, cuts);
    const auto model = decodedByIcu(bytes);
    REQUIRE(whole.has_value() == model.has_value());
    REQUIRE(whole == inBlocks);
    if (whole)
        checkText(*whole, *model, bytes);
    else
        checkError(whole.error(), bytes);
    return 0;
}
