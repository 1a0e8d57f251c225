#include "fuzz/Require.h"
#include "macro/library/MacroMetaParser.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace penwick;

namespace {

/// `text` without the line breaks and blanks that a header line cannot keep.
QString asField(const QString &text)
{
    return text.simplified();
}

/// Checks that stripping removed only the start of the code, and only whole lines.
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
    // A header whose name is empty ends at that name.
    if (!macro.name.isEmpty()) {
        REQUIRE(meta.name == macro.name);
        REQUIRE(meta.helpURL.value_or(QString()) == macro.helpURL);
        REQUIRE(macro.code.endsWith(meta.strippedCode));
    }
    return 0;
}
