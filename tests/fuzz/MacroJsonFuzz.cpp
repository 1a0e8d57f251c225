#include "fuzz/Require.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "platform/json/JsonText.h"

using namespace penwick;

// Writing a parsed value and parsing it again must give the same value.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    const QByteArrayView text(data, static_cast<qsizetype>(size));
    if (const auto value = JsonText::read(text)) {
        // Compares the second output with the first, not with the input: 7.0 is written as 7.
        const QByteArray written = JsonText::write(*value);
        const auto again = JsonText::read(written);
        REQUIRE(again.has_value());
        REQUIRE(JsonText::write(*again) == written);
    }
    if (const auto macros = MacroJson::read(text))
        REQUIRE(MacroJson::read(MacroJson::write(*macros)) == *macros);
    if (const auto macro = MacroFile::read(text)) {
        const auto again = MacroFile::read(MacroFile::write(*macro));
        REQUIRE(again.has_value());
        REQUIRE(again->id == macro->id && again->sortOrder == macro->sortOrder);
    }
    return 0;
}
