#include "fuzz/Require.h"
#include "macro/library/MacroMetaParser.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace penwick;

namespace {

/// Without the line breaks that no header line can hold and the blanks that it does not keep.
QString asField(const QString &text)
{
    return text.simplified();
}

/// Only the front of the code is taken away, and as a whole number of lines.
void checkStripped(const QString &code, const ParsedMeta &meta)
{
    REQUIRE(code.endsWith(meta.strippedCode));
    const qsizetype cut = code.size() - meta.strippedCode.size();
    REQUIRE(cut == 0 || meta.strippedCode.isEmpty() || code[cut - 1] == u'\n');
    for (const auto *field :
         {&meta.name, &meta.description, &meta.category, &meta.version, &meta.helpURL}) {
        REQUIRE(!*field || (!(*field)->isEmpty() && !(*field)->contains(u'\n')));
        REQUIRE(!*field || cut > 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    FuzzedDataProvider provider(data, size);
    Macro macro;
    macro.name = asField(QString::fromStdString(provider.ConsumeRandomLengthString(40)));
    macro.helpURL = asField(QString::fromStdString(provider.ConsumeRandomLengthString(40)));
    macro.code = QString::fromStdString(provider.ConsumeRemainingBytesAsString());
    checkStripped(macro.code, MacroMetaParser::parse(macro.code));

    const QString built = MacroMetaParser::buildHeader(macro);
    const ParsedMeta meta = MacroMetaParser::parse(built);
    checkStripped(built, meta);
    // An empty name ends its own header.
    if (!macro.name.isEmpty()) {
        REQUIRE(meta.name == macro.name);
        REQUIRE(meta.helpURL.value_or(QString()) == macro.helpURL);
        REQUIRE(macro.code.endsWith(meta.strippedCode));
    }
    return 0;
}
