#include "macro/engine/ContextJson.h"

#include "macro/script/ScriptHost.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

class ContextJsonTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dictionary_everyKind_isWritten();
    void dictionary_empty_isAnEmptyObject();
    void text_specialCharacters_areEscaped_data();
    void text_specialCharacters_areEscaped();
    void text_everyUnit_isReadBack();
    void longTexts_areNamedOnlyWhereWanted();
};

void ContextJsonTest::dictionary_everyKind_isWritten()
{
    const ContextDictionary dictionary{
        {"yes"_L1, true},
        {"no"_L1, false},
        {"number"_L1, qint64{-9007199254740993}},
        {"string"_L1, u"日本"_s},
        {"text"_L1, Text(u"a\u00e9")},
        {"inner"_L1, ContextDictionary{{"zero"_L1, qint64{0}}}},
    };
    QCOMPARE(contextJson(dictionary),
             u"{\"yes\":true,\"no\":false,\"number\":-9007199254740993,"
             "\"string\":\"日本\",\"text\":\"a\u00e9\",\"inner\":{\"zero\":0}}"_s);
}

void ContextJsonTest::dictionary_empty_isAnEmptyObject()
{
    QCOMPARE(contextJson({}), u"{}"_s);
    QCOMPARE(contextJson({{"a"_L1, ContextDictionary()}}), u"{\"a\":{}}"_s);
}

void ContextJsonTest::text_specialCharacters_areEscaped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");

    QTest::newRow("quote") << u"\""_s << u"\\\""_s;
    QTest::newRow("backslash") << u"\\"_s << u"\\\\"_s;
    QTest::newRow("line feed") << u"\n"_s << u"\\n"_s;
    QTest::newRow("carriage return") << u"\r"_s << u"\\r"_s;
    QTest::newRow("tab") << u"\t"_s << u"\\t"_s;
    QTest::newRow("backspace") << u"\b"_s << u"\\b"_s;
    QTest::newRow("form feed") << u"\f"_s << u"\\f"_s;
    QTest::newRow("nul") << QString(QChar::Null) << u"\\u0000"_s;
    QTest::newRow("unit separator") << u"\x1f"_s << u"\\u001F"_s;
    QTest::newRow("line separator") << u"\u2028"_s << u"\\u2028"_s;
    QTest::newRow("paragraph separator") << u"\u2029"_s << u"\\u2029"_s;
    QTest::newRow("slash") << u"</script>"_s << u"</script>"_s;
    QTest::newRow("delete") << u"\x7f"_s << u"\x7f"_s;
    QTest::newRow("outside the plane") << u"😀"_s << u"😀"_s;
}

void ContextJsonTest::text_specialCharacters_areEscaped()
{
    QFETCH(QString, text);
    QFETCH(QString, written);
    QCOMPARE(contextJson({{"a"_L1, text}}), u"{\"a\":\""_s + written + u"\"}"_s);
    QCOMPARE(contextJson({{"a"_L1, Text(text)}}), u"{\"a\":\""_s + written + u"\"}"_s);
}

void ContextJsonTest::text_everyUnit_isReadBack()
{
    QString text;
    for (int unit = 0; unit < 0x10000; ++unit)
        if (!QChar::isSurrogate(static_cast<char32_t>(unit)))
            text += QChar(static_cast<char16_t>(unit));
    const QByteArray written = contextJson({{"a"_L1, Text(text)}}).toUtf8();
    const QJsonDocument document = QJsonDocument::fromJson(written);
    QCOMPARE(document.object().value(u"a").toString(), text);
}

void ContextJsonTest::longTexts_areNamedOnlyWhereWanted()
{
    const QString shortText(32'767, u'\n');
    const QString longText(32'768, u'日');
    const ContextDictionary dictionary{{"a"_L1, Text(longText)},
                                       {"b"_L1, Text(shortText)},
                                       {"c"_L1, longText},
                                       {"d"_L1, Text(longText)}};
    const QString written = u'"' + longText + u'"';
    const QString pattern = u"{\"a\":%1,\"b\":\""_s + u"\\n"_s.repeated(32'767) + u"\",\"c\":"_s +
                            written + u",\"d\":%2}"_s;
    QCOMPARE(contextJson(dictionary), pattern.arg(written, written));
    std::vector<Text> longTexts;
    QCOMPARE(contextJson(dictionary, &longTexts), pattern.arg(longTextName(0), longTextName(1)));
    QVERIFY((longTexts == std::vector<Text>{Text(longText), Text(longText)}));
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ContextJsonTest)
#include "ContextJsonTest.moc"
