#include "macro/script/ScriptValue.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

namespace penwick {

class ScriptValueTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void integer_wholeNumber_isTaken_data();
    void integer_wholeNumber_isTaken();
    void integer_otherNumber_isRefused_data();
    void integer_otherNumber_isRefused();
    void integer_otherKinds_areRefused();
    void member_presentKey_isFound();
    void member_missingKeyOrNoMap_isNull();
    void kinds_ofAFreshValue_isNull();
    void strings_ofBothForms_areEqual();
    void wellFormed_loneSurrogates_becomeReplacementCharacters();
    void isWellFormed_surrogateAnywhere_isFound();
};

void ScriptValueTest::integer_wholeNumber_isTaken_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<qint64>("integer");

    QTest::newRow("zero") << 0.0 << qint64{0};
    QTest::newRow("negative zero") << -0.0 << qint64{0};
    QTest::newRow("three") << 3.0 << qint64{3};
    QTest::newRow("negative") << -7.0 << qint64{-7};
    QTest::newRow("lowest") << -9223372036854775808.0 << std::numeric_limits<qint64>::min();
    QTest::newRow("highest double") << 9223372036854774784.0 << qint64{9223372036854774784};
}

void ScriptValueTest::integer_wholeNumber_isTaken()
{
    QFETCH(double, number);
    QFETCH(qint64, integer);
    QCOMPARE(ScriptValue(number).integer(), std::optional(integer));
}

void ScriptValueTest::integer_otherNumber_isRefused_data()
{
    QTest::addColumn<double>("number");

    QTest::newRow("fraction") << 1.5;
    QTest::newRow("two to the 63") << 9223372036854775808.0;
    QTest::newRow("below the lowest") << -9223372036854777856.0;
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
}

void ScriptValueTest::integer_otherNumber_isRefused()
{
    QFETCH(double, number);
    QCOMPARE(ScriptValue(number).integer(), std::nullopt);
}

void ScriptValueTest::integer_otherKinds_areRefused()
{
    QCOMPARE(ScriptValue().integer(), std::nullopt);
    QCOMPARE(ScriptValue(true).integer(), std::nullopt);
    QCOMPARE(ScriptValue(u"3"_s).integer(), std::nullopt);
    QCOMPARE(ScriptValue::other().integer(), std::nullopt);
}

void ScriptValueTest::member_presentKey_isFound()
{
    const ScriptValue value(ScriptValue::Map{{u"a"_s, ScriptValue(1.0)}, {u"b"_s, ScriptValue()}});
    QVERIFY(value.member(u"a") != nullptr);
    QCOMPARE(value.member(u"a")->integer(), std::optional(qint64{1}));
    QVERIFY(value.member(u"b") != nullptr);
    QVERIFY(value.member(u"b")->isNull());
}

void ScriptValueTest::member_missingKeyOrNoMap_isNull()
{
    const ScriptValue value(ScriptValue::Map{{u"a"_s, ScriptValue(1.0)}});
    QVERIFY(value.member(u"A") == nullptr);
    QVERIFY(ScriptValue(ScriptValue::List{value}).member(u"a") == nullptr);
    QVERIFY(ScriptValue(u"a"_s).member(u"a") == nullptr);
}

void ScriptValueTest::kinds_ofAFreshValue_isNull()
{
    const ScriptValue value;
    QVERIFY(value.isNull());
    QVERIFY(!value.isOther());
    QVERIFY(value.boolean() == nullptr);
    QVERIFY(value.number() == nullptr);
    QVERIFY(value.string() == nullptr);
    QVERIFY(value.list() == nullptr);
    QVERIFY(value.map() == nullptr);
    QVERIFY(ScriptValue::other().isOther());
    QVERIFY(!ScriptValue::other().isNull());
}

void ScriptValueTest::strings_ofBothForms_areEqual()
{
    const ScriptValue fromString(u"日"_s);
    const ScriptValue fromText(Text(u"日"));
    QVERIFY(fromString.string() != nullptr && fromString.text() == nullptr);
    QVERIFY(fromText.string() == nullptr && fromText.text() != nullptr);
    for (const ScriptValue &value : {fromString, fromText}) {
        QVERIFY(value == fromString && value == fromText);
        QVERIFY(!(value == ScriptValue(u"月"_s)) && !(value == ScriptValue(Text(u"月"))));
        QVERIFY(!(value == ScriptValue()) && !(ScriptValue() == value));
        QCOMPARE(value.anyString(), std::optional(u"日"_s));
        QVERIFY(value.anyText() == std::optional(Text(u"日")));
    }
    QVERIFY(!ScriptValue(1.0).anyString() && !ScriptValue(1.0).anyText());
}

void ScriptValueTest::wellFormed_loneSurrogates_becomeReplacementCharacters()
{
    const char16_t units[] = {0xD800, u'a', 0xDC00, 0xD83D, 0xDE00, 0, 0xD83D};
    const QString repaired = wellFormed(QStringView(units, std::size(units)));
    const char16_t expected[] = {0xFFFD, u'a', 0xFFFD, 0xD83D, 0xDE00, 0, 0xFFFD};
    QCOMPARE(repaired, QStringView(expected, std::size(expected)).toString());
}

void ScriptValueTest::isWellFormed_surrogateAnywhere_isFound()
{
    for (qsizetype i = 0; i < 600; ++i) {
        QString text(600, u'x');
        text[i] = QChar(0xD83D);
        QVERIFY(!isWellFormed(text));
        QVERIFY(!isWellFormed(QStringView(text).first(i + 1)));
        text[i] = QChar(0xDE00);
        QVERIFY(!isWellFormed(text));
        if (i == 0)
            continue;
        text[i - 1] = QChar(0xD83D);
        QVERIFY(isWellFormed(text));
        text[i - 1] = QChar(0xDE00);
        QVERIFY(!isWellFormed(text));
    }
    QVERIFY(isWellFormed({}));
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ScriptValueTest)
#include "ScriptValueTest.moc"
