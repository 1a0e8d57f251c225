#include "wording/UIWordingProfile.h"

#include "platform/json/JsonText.h"
#include "wording/WordingTables.h"

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

QByteArray UIWordingProfile::toJson() const
{
    JsonObject texts;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        texts.insert(it.key(), it.value());
    return JsonText::write(JsonObject{
        {u"id"_s, id},
        {u"name"_s, name},
        {u"description"_s, description},
        {u"locale"_s, locale},
        {u"isBuiltIn"_s, isBuiltIn},
        {u"createdAt"_s, createdAt},
        {u"updatedAt"_s, updatedAt},
        {u"values"_s, std::move(texts)},
    });
}

tl::expected<UIWordingProfile, JsonRecordError> UIWordingProfile::fromJson(QByteArrayView json)
{
    const auto value = JsonText::read(json);
    if (!value)
        return tl::unexpected(
            JsonRecordError{JsonRecordError::Kind::InvalidJson, {}, value.error()});
    JsonRecordReader reader(*value);
    UIWordingProfile profile;
    profile.id = reader.text(u"id"_s);
    profile.name = reader.text(u"name"_s);
    profile.description = reader.text(u"description"_s);
    profile.locale = reader.text(u"locale"_s);
    profile.isBuiltIn = reader.boolean(u"isBuiltIn"_s);
    profile.createdAt = reader.text(u"createdAt"_s);
    profile.updatedAt = reader.text(u"updatedAt"_s);
    profile.values = reader.texts(u"values"_s);
    if (const auto &error = reader.error())
        return tl::unexpected(*error);
    return profile;
}

UIWordingProfile builtInJapaneseProfile()
{
    UIWordingProfile profile;
    profile.id = kBuiltInProfileId;
    profile.name = u"標準日本語"_s;
    profile.description = u"アプリ内蔵の標準的な日本語文言です。"_s;
    profile.locale = u"ja"_s;
    profile.isBuiltIn = true;
    return profile;
}

UIWordingProfile builtInEnglishProfile()
{
    UIWordingProfile profile;
    profile.id = kBuiltInEnglishProfileId;
    profile.name = u"English (Built-in)"_s;
    profile.description = u"Built-in standard English wording."_s;
    profile.locale = u"en"_s;
    profile.isBuiltIn = true;
    profile.values = wording::englishValues();
    return profile;
}

} // namespace penwick
