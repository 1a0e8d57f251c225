#include "macro/library/MacroList.h"

#include "macro/library/BuiltInMacroProvider.h"
#include "macro/library/MacroJson.h"
#include "platform/files/FileSystem.h"
#include "wording/WordingLookup.h"

#include <QSet>

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

Macro builtInMacro(const BuiltInMacroDefinition &definition)
{
    Macro macro;
    macro.id = definition.id;
    macro.name = wording::text(BuiltInMacroProvider::nameKey(definition.macro));
    macro.description = definition.description;
    macro.code = BuiltInMacroProvider::script(definition.macro);
    macro.isEnabled = true;
    macro.source = u"builtin"_s;
    macro.version = u"1.0.0"_s;
    macro.category = u"general"_s;
    return macro;
}

} // namespace

QString macrosFilePath(const QString &supportFolder)
{
    return supportFolder + u"/macros.json"_s;
}

tl::expected<std::optional<QList<Macro>>, QString> readMacroList(const QString &filePath)
{
    const auto content = readFile(filePath);
    if (!content && content.error().kind == FileError::Kind::NotFound)
        return std::nullopt;
    if (!content)
        return tl::unexpected(content.error().description());
    auto macros = MacroJson::read(*content);
    if (!macros)
        return tl::unexpected(macros.error().description());
    std::stable_sort(macros->begin(), macros->end(), [](const Macro &a, const Macro &b) {
        return a.sortOrder < b.sortOrder;
    });
    return *std::move(macros);
}

QList<Macro> missingBuiltInMacros(const QList<Macro> &present)
{
    QSet<QString> ids;
    for (const Macro &macro : present)
        ids.insert(macro.id);
    QList<Macro> missing;
    for (const BuiltInMacroDefinition &definition : BuiltInMacroProvider::definitions())
        if (!ids.contains(definition.id))
            missing.append(builtInMacro(definition));
    return missing;
}

} // namespace penwick
