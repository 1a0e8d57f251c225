#include "wording/UIWordingProfile.h"

#include "platform/json/JsonText.h"
#include "wording/WordingTables.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

UIWordingProfile sample()
{
    UIWordingProfile profile;
    profile.id = u"A1B2/C3"_s;
    profile.name = u"関西弁 😀"_s;
    profile.description = u"\"quoted\"\n\\ / \u2028"_s;
    profile.locale = u"ja-JP"_s;
    profile.createdAt = u"2024-05-01T09:30:00Z"_s;
    profile.updatedAt = u"2024-05-02T09:30:00Z"_s;
    profile.values = {{u"menu.file"_s, u"ふぁいる"_s}, {u"empty"_s, u""_s}, {u""_s, u"no key"_s}};
    return profile;
}

} // namespace

class UIWordingProfileTest final : public QObject
{
    Q_OBJECT

private:
    /// The sample's JSON with one member replaced, or removed when `value` is nothing.
    static QByteArray sampleWith(const QString &member, const std::optional<JsonValue> &value)
    {
        JsonObject object = *JsonText::read(sample().toJson())->asObject();
        if (value)
            object.insert(member, *value);
        else
            object.remove(member);
        return JsonText::write(object);
    }

private Q_SLOTS:

    void json_writtenAndRead_isTheSameProfile()
    {
        UIWordingProfile profile = sample();
        QVERIFY(UIWordingProfile::fromJson(profile.toJson()).value() == profile);
        profile.isBuiltIn = true;
        QVERIFY(UIWordingProfile::fromJson(profile.toJson()).value() == profile);
        QVERIFY(UIWordingProfile::fromJson(UIWordingProfile().toJson()).value() ==
                UIWordingProfile());
    }

    void toJson_profile_isPrettyPrinted()
    {
        UIWordingProfile profile;
        profile.id = u"x"_s;
        profile.values = {{u"menu.file"_s, u"a/b"_s}};
        const QByteArray expected = "{\n"
                                    "  \"createdAt\" : \"\",\n"
                                    "  \"description\" : \"\",\n"
                                    "  \"id\" : \"x\",\n"
                                    "  \"isBuiltIn\" : false,\n"
                                    "  \"locale\" : \"\",\n"
                                    "  \"name\" : \"\",\n"
                                    "  \"updatedAt\" : \"\",\n"
                                    "  \"values\" : {\n"
                                    "    \"menu.file\" : \"a\\/b\"\n"
                                    "  }\n"
                                    "}";
        QCOMPARE(profile.toJson(), expected);
    }

    void fromJson_noValues_isAProfileWithoutValues()
    {
        const auto profile = UIWordingProfile::fromJson(sampleWith(u"values"_s, JsonObject{}));
        QVERIFY(profile.has_value());
        QVERIFY(profile->values.isEmpty());
    }

    void fromJson_moreMembers_ignoresThem()
    {
        QVERIFY(UIWordingProfile::fromJson(sampleWith(u"version"_s, 2)).value() == sample());
    }

    void fromJson_builtIn_isDecoded()
    {
        QVERIFY(UIWordingProfile::fromJson(sampleWith(u"isBuiltIn"_s, true)).value().isBuiltIn);
    }

    void fromJson_memberMissingNullOrOfAnotherType_fails_data()
    {
        QTest::addColumn<QString>("member");
        for (const auto *member : {"id",
                                   "name",
                                   "description",
                                   "locale",
                                   "isBuiltIn",
                                   "createdAt",
                                   "updatedAt",
                                   "values"})
            QTest::newRow(member) << QString::fromLatin1(member);
    }

    void fromJson_memberMissingNullOrOfAnotherType_fails()
    {
        QFETCH(QString, member);
        using Kind = JsonRecordError::Kind;
        const auto missing = UIWordingProfile::fromJson(sampleWith(member, std::nullopt));
        QVERIFY(!missing.has_value());
        QCOMPARE(missing.error(), (JsonRecordError{Kind::MissingMember, member, {}}));
        for (const JsonValue &value : {JsonValue(nullptr), JsonValue(1), JsonValue(JsonArray{})}) {
            const auto wrong = UIWordingProfile::fromJson(sampleWith(member, value));
            QVERIFY(!wrong.has_value());
            QCOMPARE(wrong.error(), (JsonRecordError{Kind::WrongType, member, {}}));
        }
    }

    void fromJson_valueThatIsNoText_fails()
    {
        const auto profile = UIWordingProfile::fromJson(
            sampleWith(u"values"_s, JsonObject{{u"a"_s, u"x"_s}, {u"b"_s, nullptr}}));
        QVERIFY(!profile.has_value());
        QCOMPARE(profile.error().member, u"values.b"_s);
    }

    void fromJson_notAProfile_fails_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no JSON") << QByteArray("profile");
        QTest::newRow("array") << QByteArray("[]");
        QTest::newRow("array around it") << '[' + sample().toJson() + ']';
        QTest::newRow("cut off") << sample().toJson().chopped(1);
    }

    void fromJson_notAProfile_fails()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!UIWordingProfile::fromJson(text).has_value());
    }

    void builtIns_haveTheirTexts()
    {
        const UIWordingProfile japanese = builtInJapaneseProfile();
        QCOMPARE(japanese.id, u"default-ja"_s);
        QCOMPARE(japanese.name, u"標準日本語"_s);
        QCOMPARE(japanese.description, u"アプリ内蔵の標準的な日本語文言です。"_s);
        QCOMPARE(japanese.locale, u"ja"_s);
        QVERIFY(japanese.isBuiltIn);
        QVERIFY(japanese.createdAt.isEmpty() && japanese.updatedAt.isEmpty());
        QVERIFY(japanese.values.isEmpty());

        const UIWordingProfile english = builtInEnglishProfile();
        QCOMPARE(english.id, u"default-en"_s);
        QCOMPARE(english.name, u"English (Built-in)"_s);
        QCOMPARE(english.description, u"Built-in standard English wording."_s);
        QCOMPARE(english.locale, u"en"_s);
        QVERIFY(english.isBuiltIn);
        QVERIFY(english.createdAt.isEmpty() && english.updatedAt.isEmpty());
        QCOMPARE(english.values, wording::englishValues());
    }
};

QTEST_APPLESS_MAIN(UIWordingProfileTest)
#include "UIWordingProfileTest.moc"
