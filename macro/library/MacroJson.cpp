#include "macro/library/MacroJson.h"

#include "platform/json/JsonText.h"

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

JsonValue MacroJson::encode(const Macro &macro)
{
    return JsonObject{
        {u"id"_s, macro.id},
        {u"name"_s, macro.name},
        {u"description"_s, macro.description},
        {u"code"_s, macro.code},
        {u"isEnabled"_s, macro.isEnabled},
        {u"source"_s, macro.source},
        {u"version"_s, macro.version},
        {u"createdAt"_s, macro.createdAt},
        {u"updatedAt"_s, macro.updatedAt},
        {u"sortOrder"_s, macro.sortOrder},
        {u"category"_s, macro.category},
        {u"helpURL"_s, macro.helpURL},
    };
}

tl::expected<Macro, JsonRecordError> MacroJson::decode(const JsonValue &value)
{
    JsonRecordReader reader(value);
    Macro macro;
    macro.id = reader.text(u"id"_s);
    macro.name = reader.text(u"name"_s);
    macro.description = reader.text(u"description"_s);
    macro.code = reader.text(u"code"_s);
    macro.isEnabled = reader.boolean(u"isEnabled"_s);
    macro.source = reader.text(u"source"_s);
    macro.version = reader.text(u"version"_s);
    macro.createdAt = reader.text(u"createdAt"_s);
    macro.updatedAt = reader.text(u"updatedAt"_s);
    macro.sortOrder = reader.integer(u"sortOrder"_s);
    macro.category = reader.text(u"category"_s);
    macro.helpURL = reader.text(u"helpURL"_s);
    if (const auto &error = reader.error())
        return tl::unexpected(*error);
    return macro;
}

QByteArray MacroJson::write(const QList<Macro> &macros)
{
    JsonArray array;
    array.reserve(macros.size());
    for (const Macro &macro : macros)
        array.append(encode(macro));
    return JsonText::write(array);
}

tl::expected<QList<Macro>, JsonRecordError> MacroJson::read(QByteArrayView text)
{
    const auto value = JsonText::read(text);
    if (!value)
        return tl::unexpected(
            JsonRecordError{JsonRecordError::Kind::InvalidJson, {}, value.error()});
    const JsonArray *array = value->asArray();
    if (array == nullptr)
        return tl::unexpected(JsonRecordError{JsonRecordError::Kind::WrongType, {}, {}});
    QList<Macro> macros;
    macros.reserve(array->size());
    for (const JsonValue &item : *array) {
        auto macro = decode(item);
        if (!macro)
            return tl::unexpected(macro.error());
        macros.append(*std::move(macro));
    }
    return macros;
}

} // namespace penwick
