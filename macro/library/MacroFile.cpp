#include "macro/library/MacroFile.h"

#include "macro/library/MacroJson.h"
#include "macro/library/MacroMetaParser.h"
#include "platform/json/JsonText.h"

#include <optional>
#include <utility>

namespace penwick {

QByteArray MacroFile::write(const Macro &macro)
{
    Macro written = macro;
    written.code = MacroMetaParser::buildHeader(macro);
    return JsonText::write(MacroJson::encode(written));
}

tl::expected<Macro, JsonRecordError> MacroFile::read(QByteArrayView text)
{
    const auto value = JsonText::read(text);
    if (!value)
        return tl::unexpected(
            JsonRecordError{JsonRecordError::Kind::InvalidJson, {}, value.error()});
    auto macro = MacroJson::decode(*value);
    if (!macro)
        return macro;
    const auto replace = [](QString &field, std::optional<QString> &said) {
        if (said)
            field = *std::move(said);
    };
    ParsedMeta meta = MacroMetaParser::parse(macro->code);
    replace(macro->name, meta.name);
    replace(macro->description, meta.description);
    replace(macro->category, meta.category);
    replace(macro->version, meta.version);
    replace(macro->helpURL, meta.helpURL);
    macro->code = std::move(meta.strippedCode);
    return macro;
}

} // namespace penwick
