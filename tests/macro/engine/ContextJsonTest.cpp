#include "macro/engine/ContextJson.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

QString json(const ContextDictionary &dictionary)
{
    QString out;
    writeContextJson(dictionary, [&out](QStringView piece) { out += piece; });
    return out;
}

} // namespace

class ContextJsonTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dictionary_everyKind_isWritten();
    void dictionary_empty_isAnEmptyObject();
    void text_specialCharacters_areEscaped_data();
    void text_specialCharacters_areEscaped();
    void text_everyUnit_isReadBack();
    void length_ofAnything_isExact();
    void write_largeText_passesPiecesOfBoundedSize();
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
    QCOMPARE(json(dictionary),
             u"{\"yes\":true,\"no\":false,\"number\":-9007199254740993,"
             "\"string\":\"日本\",\"text\":\"a\u00e9\",\"inner\":{\"zero\":0}}"_s);
}

void ContextJsonTest::dictionary_empty_isAnEmptyObject()
{
    QCOMPARE(json({}), u"{}"_s);
    QCOMPARE(json({{"a"_L1, ContextDictionary()}}), u"{\"a\":{}}"_s);
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
    QCOMPARE(json({{"a"_L1, text}}), u"{\"a\":\""_s + written + u"\"}"_s);
    QCOMPARE(json({{"a"_L1, Text(text)}}), u"{\"a\":\""_s + written + u"\"}"_s);
}

void ContextJsonTest::text_everyUnit_isReadBack()
{
    QString text;
    for (int unit = 0; unit < 0x10000; ++unit)
        if (!QChar::isSurrogate(static_cast<char32_t>(unit)))
            text += QChar(static_cast<char16_t>(unit));
    const QByteArray written = json({{"a"_L1, Text(text)}}).toUtf8();
    const QJsonDocument document = QJsonDocument::fromJson(written);
    QCOMPARE(document.object().value(u"a").toString(), text);
}

void ContextJsonTest::length_ofAnything_isExact()
{
    const QString text = u"a\"\\\n\u2028\x01日本😀"_s;
    const ContextDictionary dictionary{{"text"_L1, Text(text)},
                                       {"string"_L1, text},
                                       {"number"_L1, qint64{-12}},
                                       {"flag"_L1, false},
                                       {"inner"_L1, ContextDictionary{{"none"_L1, QString()}}},
                                       {"empty"_L1, ContextDictionary()}};
    QCOMPARE(contextJsonLength(dictionary), qint64{json(dictionary).size()});
}

void ContextJsonTest::write_largeText_passesPiecesOfBoundedSize()
{
    const ContextDictionary dictionary{{"text"_L1, Text(u"\u0001\n"_s.repeated(1'000'000))}};
    qsizetype longest = 0;
    QString written;
    writeContextJson(dictionary, [&](QStringView piece) {
        longest = std::max(longest, piece.size());
        written += piece;
    });
    QVERIFY(longest < 100'000);
    QCOMPARE(written, u"{\"text\":\""_s + u"\\u0001\\n"_s.repeated(1'000'000) + u"\"}"_s);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::ContextJsonTest)
#include "ContextJsonTest.moc"
