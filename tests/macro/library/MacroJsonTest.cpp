#include "macro/library/MacroJson.h"

#include "platform/json/JsonText.h"
#include "support/Macros.h"

#include <QTest>

#include <limits>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class MacroJsonTest final : public QObject
{
    Q_OBJECT

private:
    static JsonValue sampleWith(const QString &member, const std::optional<JsonValue> &value)
    {
        JsonObject object = *MacroJson::encode(sampleMacro()).asObject();
        if (value)
            object.insert(member, *value);
        else
            object.remove(member);
        return object;
    }

private Q_SLOTS:

    void write_macro_hasTheStoredForm()
    {
        const QByteArray expected = "[\n"
                                    "  {\n"
                                    "    \"category\" : \"text\",\n"
                                    "    \"code\" : \"\\/\\/ http:\\/\\/example.com\\nreturn { "
                                    "\\\"textEdits\\\": [] };\\n\",\n"
                                    "    \"createdAt\" : \"2020-01-01T00:00:00Z\",\n"
                                    "    \"description\" : \"説明 😀\",\n"
                                    "    \"helpURL\" : \"https:\\/\\/example.com\\/help\",\n"
                                    "    \"id\" : \"A\",\n"
                                    "    \"isEnabled\" : false,\n"
                                    "    \"name\" : \"name of A\",\n"
                                    "    \"sortOrder\" : 1,\n"
                                    "    \"source\" : \"imported\",\n"
                                    "    \"updatedAt\" : \"2020-01-02T00:00:00Z\",\n"
                                    "    \"version\" : \"2.0\"\n"
                                    "  }\n"
                                    "]";
        QCOMPARE(MacroJson::write({sampleMacro()}), expected);
    }

    void writeAndRead_macros_areTheSame()
    {
        Macro strange = sampleMacro(QString(), std::numeric_limits<qint64>::min());
        strange.isEnabled = true;
        strange.code = u"a"_s + QChar(u'\0') + u"\r\n\u2028\\/\"\uFEFF"_s;
        strange.name = QString(QChar(0xFEFF)) + u"b"_s;
        const QList<Macro> macros{
            strange, sampleMacro(u"z"_s, std::numeric_limits<qint64>::max()), Macro()};
        QVERIFY(MacroJson::read(MacroJson::write(macros)).value() == macros);
        QVERIFY(MacroJson::read(MacroJson::write({})).value().isEmpty());
    }

    void read_otherLayoutPlainSlashesAndMoreMembers_isTheSame()
    {
        QByteArray text = MacroJson::write({sampleMacro()});
        text.replace("\\/", "/").replace(" : ", ":").replace("{\n", "{\"more\":[{}],");
        QVERIFY(MacroJson::read(text).value() == QList{sampleMacro()});
    }

    void decode_memberMissingOrOfAnotherType_fails_data()
    {
        QTest::addColumn<QString>("member");
        for (const auto *member : {"id",
                                   "name",
                                   "description",
                                   "code",
                                   "isEnabled",
                                   "source",
                                   "version",
                                   "createdAt",
                                   "updatedAt",
                                   "sortOrder",
                                   "category",
                                   "helpURL"})
            QTest::newRow(member) << QString::fromLatin1(member);
    }

    void decode_memberMissingOrOfAnotherType_fails()
    {
        QFETCH(QString, member);
        using Kind = JsonRecordError::Kind;
        QCOMPARE(MacroJson::decode(sampleWith(member, std::nullopt)).error(),
                 (JsonRecordError{Kind::MissingMember, member, {}}));
        for (const JsonValue &value :
             {JsonValue(nullptr), JsonValue(1.5), JsonValue(JsonArray{}), JsonValue(JsonObject{})})
            QCOMPARE(MacroJson::decode(sampleWith(member, value)).error(),
                     (JsonRecordError{Kind::WrongType, member, {}}));
    }

    void decode_almostTheRightType_fails()
    {
        QVERIFY(!MacroJson::decode(sampleWith(u"isEnabled"_s, 1)).has_value());
        QVERIFY(!MacroJson::decode(sampleWith(u"isEnabled"_s, u"true"_s)).has_value());
        QVERIFY(!MacroJson::decode(sampleWith(u"sortOrder"_s, u"1"_s)).has_value());
        QVERIFY(!MacroJson::decode(sampleWith(u"sortOrder"_s, true)).has_value());
        QVERIFY(!MacroJson::decode(sampleWith(u"sortOrder"_s, 9223372036854775808ULL)).has_value());
        QVERIFY(!MacroJson::decode(sampleWith(u"name"_s, 1)).has_value());
    }

    void read_notAnArrayOfMacros_fails_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("object") << JsonText::write(MacroJson::encode(sampleMacro()));
        QTest::newRow("null") << "null"_ba;
        QTest::newRow("array of texts") << "[\"a\"]"_ba;
        QTest::newRow("second one broken") << JsonText::write(
            JsonArray{MacroJson::encode(sampleMacro()), sampleWith(u"id"_s, std::nullopt)});
    }

    void read_notAnArrayOfMacros_fails()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!MacroJson::read(text).has_value());
    }
};

QTEST_APPLESS_MAIN(MacroJsonTest)
#include "MacroJsonTest.moc"
