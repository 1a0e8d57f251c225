#include "platform/json/JsonRecord.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class JsonRecordTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void members_allThere_areGiven()
    {
        const JsonValue record =
            JsonText::read(R"({"t":"x","b":true,"i":5,"m":{"k":"v"},"more":null})").value();
        JsonRecordReader reader(record);
        QCOMPARE(reader.text(u"t"_s), u"x"_s);
        QCOMPARE(reader.boolean(u"b"_s), true);
        QCOMPARE(reader.integer(u"i"_s), 5);
        QCOMPARE(reader.texts(u"m"_s), (QHash<QString, QString>{{u"k"_s, u"v"_s}}));
        QVERIFY(!reader.error());
    }

    void member_missing_isTheErrorThatStays()
    {
        const JsonValue record = JsonText::read(R"({"b":"not a truth value"})").value();
        JsonRecordReader reader(record);
        QCOMPARE(reader.text(u"T"_s), QString());
        QCOMPARE(reader.boolean(u"b"_s), false);
        QVERIFY(reader.error().has_value());
        QCOMPARE(*reader.error(),
                 (JsonRecordError{JsonRecordError::Kind::MissingMember, u"T"_s, {}}));
        QVERIFY(reader.error()->description().contains(u"\"T\""_s));
    }

    void member_wrongType_isAnError_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("member");
        QTest::newRow("number as text") << R"({"t":1})"_ba << u"t"_s;
        QTest::newRow("null as text") << R"({"t":null})"_ba << u"t"_s;
        QTest::newRow("number as truth value") << R"({"t":"","b":1})"_ba << u"b"_s;
        QTest::newRow("fraction as integer") << R"({"t":"","b":true,"i":1.5})"_ba << u"i"_s;
        QTest::newRow("text as integer") << R"({"t":"","b":true,"i":"1"})"_ba << u"i"_s;
        QTest::newRow("array as map") << R"({"t":"","b":true,"i":1,"m":[]})"_ba << u"m"_s;
        QTest::newRow("number in map") << R"({"t":"","b":true,"i":1,"m":{"k":1}})"_ba << u"m.k"_s;
    }

    void member_wrongType_isAnError()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, member);
        const JsonValue record = JsonText::read(text).value();
        JsonRecordReader reader(record);
        (void)reader.text(u"t"_s);
        (void)reader.boolean(u"b"_s);
        (void)reader.integer(u"i"_s);
        (void)reader.texts(u"m"_s);
        QVERIFY(reader.error().has_value());
        QCOMPARE(*reader.error(), (JsonRecordError{JsonRecordError::Kind::WrongType, member, {}}));
    }

    void record_notAnObject_isAnError()
    {
        const JsonValue record = JsonArray{};
        JsonRecordReader reader(record);
        QCOMPARE(reader.text(u"t"_s), QString());
        QCOMPARE(*reader.error(), (JsonRecordError{JsonRecordError::Kind::WrongType, {}, {}}));
    }
};

QTEST_APPLESS_MAIN(JsonRecordTest)
#include "JsonRecordTest.moc"
