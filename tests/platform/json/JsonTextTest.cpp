#include "platform/json/JsonText.h"

#include <QTest>

#include <limits>

using namespace penwick;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(penwick::JsonValue)
Q_DECLARE_METATYPE(penwick::JsonError::Kind)

class JsonTextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void read_validText_givesItsValue_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<JsonValue>("value");
        const auto row = [](const char *name, const QByteArray &text, const JsonValue &value) {
            QTest::newRow(name) << text << value;
        };
        row("null", "null", nullptr);
        row("true", "true", true);
        row("false in white space", " \t\r\n false \n", false);
        row("too large", "[-1e400]", JsonArray{nullptr});
        row("too large in many digits", QByteArray(400, '9'), nullptr);
        row("too large among others",
            "{\"a\\\"1e999\":1.5e3, \"b\":[1E+999,\"1e999\\\\\",-0.9e+9999],\"c\":\"1e999\"}",
            JsonObject{{u"a\"1e999"_s, 1500.0},
                       {u"b"_s, JsonArray{nullptr, u"1e999\\"_s, nullptr}},
                       {u"c"_s, u"1e999"_s}});
        row("empty array", "[]", JsonArray{});
        row("empty object", "{}", JsonObject{});
        row("nested", R"([1,{"a":[]}])", JsonArray{1, JsonObject{{u"a"_s, JsonArray{}}}});
        row("smallest whole number", "-9223372036854775808", std::numeric_limits<qint64>::min());
        row("largest whole number", "9223372036854775807", std::numeric_limits<qint64>::max());
        row("largest without sign", "18446744073709551615", std::numeric_limits<quint64>::max());
        row("past 64 bits", "18446744073709551616", 18446744073709551616.0);
        row("past 2^53", "9007199254740993", qint64{9007199254740993});
        row("fraction", "0.1", 0.1);
        row("whole with fraction", "7.0", 7.0);
        row("exponent", "-1E+2", -100.0);
        row("underflow", "1e-400", 0.0);
        row("text", R"("日本語 é")", u"日本語 é"_s);
        row("escapes", "\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u0041\"", u"\"\\/\b\f\n\r\tA"_s);
        row("surrogate pair", "\"\\uD83D\\ude00\"", u"😀"_s);
        row("NUL escaped", R"("a\u0000b")", u"a"_s + QChar(u'\0') + u'b');
        row("byte-order mark inside", "\"\xEF\xBB\xBFx\"", QString(QChar(0xFEFF)) + u'x');
        row("byte-order mark before", "\xEF\xBB\xBF[]", JsonArray{});
        row("noncharacter", "\"\xEF\xBF\xBF\"", QString(QChar(0xFFFF)));
        row("delete character", "\"\x7F\"", QString(QChar(0x7F)));
        row("same name twice", R"({"a":1,"b":2,"a":3})", JsonObject{{u"a"_s, 3}, {u"b"_s, 2}});
        row("empty name", R"({"":0})", JsonObject{{QString(), 0}});
    }

    void read_validText_givesItsValue()
    {
        QFETCH(QByteArray, text);
        QFETCH(JsonValue, value);
        const auto read = JsonText::read(text);
        QVERIFY2(read.has_value(), qPrintable(read ? QString() : read.error().description()));
        QVERIFY(*read == value);
    }

    void read_invalidText_fails_data()
    {
        using Kind = JsonError::Kind;
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<Kind>("kind");
        const auto row = [](const char *name, const QByteArray &text, Kind kind = Kind::Syntax) {
            QTest::newRow(name) << text << kind;
        };
        row("nothing", "");
        row("blank", "  ");
        row("only a byte-order mark", "\xEF\xBB\xBF");
        row("UTF-16", QByteArray("[\0]\0", 4));
        row("two values", "1 2");
        row("something after", "[] x");
        row("NUL after", QByteArray("[]\0", 3));
        row("NUL in a number", QByteArray("123\0", 4));
        row("comment", "[1 /* one */]");
        row("line comment", "[] // end");
        row("comma at the end of an array", "[1,]");
        row("comma at the end of an object", R"({"a":1,})");
        row("comma missing", R"(["a" "b"])");
        row("colon missing", R"({"a" 1})");
        row("no name", "{1:1}");
        row("single quotes", "['a']");
        row("not closed", "[[1]");
        row("closed twice", "[]]");
        row("closed by the other", "[}");
        row("text not closed", "\"abc");
        row("control character", "\"a\tb\"");
        row("line break in a text", "\"a\nb\"");
        row("unknown escape", R"("\x41")");
        row("short escape", R"("\u12")");
        row("unpaired high surrogate", R"("\uD83D")");
        row("unpaired low surrogate", R"("\uDE00")");
        row("surrogates the wrong way round", R"("\uDE00\uD83D")");
        row("high surrogate before a letter", R"("\uD83Dx")");
        row("zero in front", "01");
        row("plus", "+1");
        row("no digit after the point", "1.");
        row("no digit before the point", ".5");
        row("no exponent", "1e");
        row("hexadecimal", "0x10");
        row("NaN", "NaN");
        row("infinity", "-Infinity");
        row("other words", "True");
        row("no-break space",
            "[1,\xC2\xA0"
            "2]");
        row("form feed", "[\f]");
        row("stray byte", "\"\xFF\"", Kind::InvalidUtf8);
        row("overlong", "\"\xC0\xAF\"", Kind::InvalidUtf8);
        row("encoded surrogate", "\"\xED\xA0\x80\"", Kind::InvalidUtf8);
        row("past U+10FFFF", "\"\xF4\x90\x80\x80\"", Kind::InvalidUtf8);
        row("truncated", "\"\xE6\x97\"", Kind::InvalidUtf8);
        row("too large, and then more", "[1e400,]", Kind::Syntax);
        row("too large, and a word", "[-1e400, 1e400a]", Kind::Syntax);
        row("too large, and a point", "[1e400.5]", Kind::Syntax);
        row("too large, and an exponent", "[1e400e1]", Kind::Syntax);
        row("too large, with a zero in front", "[01e400]", Kind::Syntax);
        row("too large, with no digit after the point", "[1e400, 1.]", Kind::Syntax);
        row("too large, as a name", "{1e400:1}", Kind::Syntax);
        row("too large, and a stray byte", "[1e400, \"\xFF\"]", Kind::InvalidUtf8);
        row("too large, and too deep", "[1e400" + QByteArray(513, '['), Kind::Syntax);
        row("too deep", QByteArray(513, '['), Kind::TooDeep);
        row("far too deep", QByteArray(100000, '['), Kind::TooDeep);
        row("too deep in objects", QByteArray(R"({"a":)").repeated(513), Kind::TooDeep);
    }

    void read_invalidText_fails()
    {
        QFETCH(QByteArray, text);
        QFETCH(JsonError::Kind, kind);
        const auto read = JsonText::read(text);
        QVERIFY(!read.has_value());
        QCOMPARE(static_cast<int>(read.error().kind), static_cast<int>(kind));
        QVERIFY(read.error().byteOffset >= 0 && read.error().byteOffset <= text.size());
        QVERIFY(!read.error().description().isEmpty());
    }

    void read_deepestAllowed_succeeds()
    {
        const QByteArray text = QByteArray(512, '[') + QByteArray(512, ']');
        QVERIFY(JsonText::read(text).has_value());
    }

    void read_sliceOfALargerText_staysInside()
    {
        const QByteArray text = "[1]garbage";
        QVERIFY(JsonText::read(QByteArrayView(text).first(3)).has_value());
    }

    void write_anyValue_hasTheStoredForm()
    {
        const JsonValue value = JsonArray{
            JsonObject{{u"b"_s, u"a/b\\c\"d\n\u0001\u007F"_s},
                       {u"B"_s, JsonArray{1, -2, 0.5, true, nullptr}},
                       {u"a"_s, JsonObject{{u"é"_s, u"日本語😀\u2028"_s}}}},
            JsonArray{},
            JsonObject{},
        };
        const QByteArray expected = "[\n"
                                    "  {\n"
                                    "    \"B\" : [\n"
                                    "      1,\n"
                                    "      -2,\n"
                                    "      0.5,\n"
                                    "      true,\n"
                                    "      null\n"
                                    "    ],\n"
                                    "    \"a\" : {\n"
                                    "      \"é\" : \"日本語😀\u2028\"\n"
                                    "    },\n"
                                    "    \"b\" : \"a\\/b\\\\c\\\"d\\n\\u0001\x7F\"\n"
                                    "  },\n"
                                    "  [],\n"
                                    "  {}\n"
                                    "]";
        QCOMPARE(JsonText::write(value), expected);
    }

    void write_controlCharacters_areEscaped()
    {
        QString text;
        for (char16_t unit = 0; unit < 0x20; ++unit)
            text += QChar(unit);
        const QByteArray expected = "\"\\u0000\\u0001\\u0002\\u0003\\u0004\\u0005\\u0006\\u0007"
                                    "\\b\\t\\n\\u000b\\f\\r\\u000e\\u000f"
                                    "\\u0010\\u0011\\u0012\\u0013\\u0014\\u0015\\u0016\\u0017"
                                    "\\u0018\\u0019\\u001a\\u001b\\u001c\\u001d\\u001e\\u001f\"";
        QCOMPARE(JsonText::write(text), expected);
        QVERIFY(JsonText::read(JsonText::write(text)).value() == JsonValue(text));
    }

    void write_names_areInByteOrder()
    {
        // U+FF5E sorts before U+1F600 in UTF-8, but after its surrogates in UTF-16.
        const JsonObject object{{u"😀"_s, 1}, {u"～"_s, 2}, {u"ab"_s, 3}, {u"a"_s, 4}};
        QCOMPARE(JsonText::write(object),
                 "{\n  \"a\" : 4,\n  \"ab\" : 3,\n  \"～\" : 2,\n  \"😀\" : 1\n}"_ba);
    }

    void write_whatJsonCannotSay_isReplaced()
    {
        const QString text = u"a"_s + QChar(0xD83D) + u'b' + QChar(0xDE00);
        QCOMPARE(JsonText::write(text),
                 "\"a\xEF\xBF\xBD"
                 "b\xEF\xBF\xBD\""_ba);
        QCOMPARE(JsonText::write(std::numeric_limits<double>::infinity()), "null"_ba);
        QCOMPARE(JsonText::write(std::numeric_limits<double>::quiet_NaN()), "null"_ba);
    }

    void write_thenRead_givesTheSameValue()
    {
        const JsonValue value = JsonArray{
            std::numeric_limits<qint64>::min(),
            std::numeric_limits<quint64>::max(),
            0.1,
            1e-300,
            1.7976931348623157e308,
            QString(QChar(0xFEFF)) + u"\u0000/\u2029\uFFFE"_s,
            JsonObject{{QString(), nullptr}},
        };
        QVERIFY(JsonText::read(JsonText::write(value)).value() == value);
    }

    void writeLine_anyValue_isOneLineOfTheSameValue()
    {
        const JsonValue value = JsonObject{{u"b"_s, JsonArray{1, u"a/b\n\"日"_s, JsonArray()}},
                                           {u"a"_s, JsonObject{{u"c"_s, nullptr}}}};
        const QByteArray line = JsonText::writeLine(value);
        QCOMPARE(QString::fromUtf8(line),
                 u"{\"a\": {\"c\": null}, \"b\": [1, \"a/b\\n\\\"日\", []]}"_s);
        QVERIFY(JsonText::read(line).value() == value);
    }

    void asInteger_wholeNumbers_onlyExactOnes()
    {
        QCOMPARE(JsonText::read("7.0")->asInteger(), std::optional<qint64>(7));
        QCOMPARE(JsonText::read("-7e2")->asInteger(), std::optional<qint64>(-700));
        QCOMPARE(JsonText::read("7.5")->asInteger(), std::nullopt);
        QCOMPARE(JsonText::read("9223372036854775808")->asInteger(), std::nullopt);
        QCOMPARE(JsonText::read("1e18")->asInteger(), std::nullopt);
        QCOMPARE(JsonText::read("\"7\"")->asInteger(), std::nullopt);
        QCOMPARE(JsonText::read("true")->asInteger(), std::nullopt);
    }
};

QTEST_APPLESS_MAIN(JsonTextTest)
#include "JsonTextTest.moc"
