#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "platform/json/JsonText.h"
#include "support/Macros.h"
#include "wording/UIWordingProfile.h"

#include <QTest>

#include <functional>
#include <vector>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

QByteArray nested(const char *opening, const char *closing, int depth)
{
    return QByteArray(opening).repeated(depth) + QByteArray(closing).repeated(depth);
}

QByteArray nestedObjects(int depth)
{
    return QByteArray("{\"a\":").repeated(depth) + '1' + QByteArray("}").repeated(depth);
}

struct ValueCase
{
    const char *name;
    QByteArray value;
    bool isJson;
};

/// Texts in place of a JSON value, valid and invalid.
const std::vector<ValueCase> &valueCases()
{
    static const std::vector<ValueCase> cases{
        {"null", "null", true},
        {"true", "true", true},
        {"false", "false", true},
        {"zero", "0", true},
        {"minus zero", "-0", true},
        {"one digit", "7", true},
        {"many digits", "1234567890", true},
        {"largest 64-bit", "9223372036854775807", true},
        {"smallest 64-bit", "-9223372036854775808", true},
        {"past 64 bits", "9223372036854775808", true},
        {"largest unsigned", "18446744073709551615", true},
        {"past unsigned", "18446744073709551616", true},
        {"a hundred digits", QByteArray(100, '9'), true},
        {"fraction", "0.5", true},
        {"negative fraction", "-0.5", true},
        {"fraction of zeros", "1.000", true},
        {"exponent", "1e5", true},
        {"capital exponent", "1E5", true},
        {"plus exponent", "1e+5", true},
        {"minus exponent", "1e-5", true},
        {"exponent of zero", "0e0", true},
        {"leading zero in an exponent", "1e05", true},
        {"fraction and exponent", "12.34E-56", true},
        {"largest double", "1.7976931348623157e308", true},
        {"too large", "1e400", true},
        {"too large and negative", "-1e400", true},
        {"too large with a fraction", "1.5e999", true},
        {"too small", "1e-400", true},
        {"empty text", "\"\"", true},
        {"blank text", "\" \"", true},
        {"text", "\"abc\"", true},
        {"Japanese", "\"行末スペース\"", true},
        {"beyond the first plane", "\"😀\"", true},
        {"family", "\"👨‍👩‍👧\"", true},
        {"combining", "\"が\"", true},
        {"escaped quote", "\"\\\"\"", true},
        {"escaped backslash", "\"\\\\\"", true},
        {"escaped slash", "\"\\/\"", true},
        {"plain slash", "\"/\"", true},
        {"escaped controls", "\"\\b\\f\\n\\r\\t\"", true},
        {"escaped NUL", "\"\\u0000\"", true},
        {"escaped unit separator", "\"\\u001f\"", true},
        {"escaped letter", "\"\\u0061\"", true},
        {"capital hexadecimal", "\"\\u00AF\"", true},
        {"small hexadecimal", "\"\\u00af\"", true},
        {"escaped pair", "\"\\ud83d\\ude00\"", true},
        {"escaped pair in capitals", "\"\\uD83D\\uDE00\"", true},
        {"escaped noncharacter", "\"\\uffff\"", true},
        {"escaped byte-order mark", "\"\\ufeff\"", true},
        {"byte-order mark inside",
         "\"a\xEF\xBB\xBF"
         "b\"",
         true},
        {"delete character",
         "\"\x7F"
         "\"",
         true},
        {"line separator",
         "\"\xE2\x80\xA8"
         "\"",
         true},
        {"paragraph separator",
         "\"\xE2\x80\xA9"
         "\"",
         true},
        {"noncharacter",
         "\"\xEF\xB7\x90"
         "\"",
         true},
        {"last code point",
         "\"\xF4\x8F\xBF\xBF"
         "\"",
         true},
        {"private use",
         "\"\xEE\x80\x80"
         "\"",
         true},
        {"C1 control",
         "\"\xC2\x85"
         "\"",
         true},
        {"backslash at the end", "\"a\\\\\"", true},
        {"looks like a comment", "\"/* no */ // no\"", true},
        {"looks like JSON", "\"{\\\"a\\\":[1,2]}\"", true},
        {"ends in an escaped backslash", "\"\\\\\\\\\"", true},
        {"empty array", "[]", true},
        {"blank array", "[ ]", true},
        {"array of one", "[1]", true},
        {"array of many", "[1,2,3]", true},
        {"mixed array", "[null,true,1,\"a\",[],{}]", true},
        {"nested arrays", "[[[[[[]]]]]]", true},
        {"a hundred arrays", nested("[", "]", 100), true},
        {"empty object", "{}", true},
        {"blank object", "{ }", true},
        {"object of one", "{\"a\":1}", true},
        {"object of many", "{\"a\":1,\"b\":2,\"c\":3}", true},
        {"empty name", "{\"\":1}", true},
        {"escaped name", "{\"\\u0061\\n\":1}", true},
        {"name twice", "{\"a\":1,\"a\":\"2\"}", true},
        {"nested objects", "{\"a\":{\"b\":{\"c\":{}}}}", true},
        {"a hundred objects", nestedObjects(100), true},
        {"blanks of every kind", " \t\r\n[ \t\r\n1 \t\r\n, \t\r\n2 \t\r\n] \t\r\n", true},
        {"line feeds around", "\n1\n", true},
        {"tabs around", "\t1\t", true},
        {"carriage returns around", "\r1\r", true},
        {"thousand items", QByteArray("[") + QByteArray("1,").repeated(999) + "1]", true},
        {"long text", '"' + QByteArray(100'000, 'x') + '"', true},
        {"nothing", "", false},
        {"word", "nul", false},
        {"capital word", "True", false},
        {"capital null", "NULL", false},
        {"undefined", "undefined", false},
        {"NaN", "NaN", false},
        {"infinity", "Infinity", false},
        {"negative infinity", "-Infinity", false},
        {"two words", "null null", false},
        {"zero in front", "01", false},
        {"zeros", "00", false},
        {"minus and zero in front", "-01", false},
        {"plus", "+1", false},
        {"double minus", "--1", false},
        {"minus alone", "-", false},
        {"minus and a word", "-a", false},
        {"point in front", ".5", false},
        {"minus and a point", "-.5", false},
        {"point at the end", "1.", false},
        {"point and an exponent", "1.e5", false},
        {"exponent without digits", "1e", false},
        {"exponent with a sign only", "1e+", false},
        {"two exponents", "1e5e5", false},
        {"two points", "1.2.3", false},
        {"fractional exponent", "1e1.5", false},
        {"comma for a point", "1,5", false},
        {"digits in groups", "1_000", false},
        {"hexadecimal", "0x10", false},
        {"binary", "0b1", false},
        {"octal", "0o7", false},
        {"full-width digit", "１", false},
        {"letter behind", "1a", false},
        {"not closed", "\"abc", false},
        {"not closed behind a backslash", "\"abc\\\"", false},
        {"single quotes", "'abc'", false},
        {"backquotes", "`abc`", false},
        {"no quotes", "abc", false},
        {"tab in a text", "\"a\tb\"", false},
        {"line feed in a text", "\"a\nb\"", false},
        {"carriage return in a text", "\"a\rb\"", false},
        {"NUL in a text",
         QByteArray("\"a\0"
                    "b\"",
                    sizeof("\"a\0"
                           "b\"") -
                        1),
         false},
        {"control in a text",
         "\"a\x1F"
         "b\"",
         false},
        {"unknown escape", "\"\\a\"", false},
        {"hexadecimal escape", "\"\\x41\"", false},
        {"escaped single quote", "\"\\'\"", false},
        {"escaped zero", "\"\\0\"", false},
        {"capital escape", "\"\\U0041\"", false},
        {"short escape", "\"\\u12\"", false},
        {"escape without digits", "\"\\u\"", false},
        {"escape with another letter", "\"\\u00g0\"", false},
        {"escape with braces", "\"\\u{41}\"", false},
        {"escaped line feed", "\"a\\\nb\"", false},
        {"lone high surrogate", "\"\\ud83d\"", false},
        {"lone low surrogate", "\"\\ude00\"", false},
        {"pair the wrong way round", "\"\\ude00\\ud83d\"", false},
        {"high surrogate and a letter", "\"\\ud83da\"", false},
        {"two high surrogates", "\"\\ud83d\\ud83d\"", false},
        {"stray byte",
         "\"\xFF"
         "\"",
         false},
        {"continuation byte alone",
         "\"\x80"
         "\"",
         false},
        {"cut-off sequence",
         "\"\xE6\x97"
         "\"",
         false},
        {"overlong slash",
         "\"\xC0\xAF"
         "\"",
         false},
        {"encoded surrogate",
         "\"\xED\xA0\x80"
         "\"",
         false},
        {"past the last code point",
         "\"\xF4\x90\x80\x80"
         "\"",
         false},
        {"Latin-1",
         "\"\xE9"
         "\"",
         false},
        {"stray byte outside a text", "\xFF", false},
        {"array not closed", "[1,2", false},
        {"array not opened", "1]", false},
        {"array closed twice", "[1]]", false},
        {"array closed by a brace", "[1}", false},
        {"array with a comma in front", "[,1]", false},
        {"array with a comma behind", "[1,]", false},
        {"array of a comma", "[,]", false},
        {"array with two commas", "[1,,2]", false},
        {"array without commas", "[1 2]", false},
        {"array with a semicolon", "[1;2]", false},
        {"array with a colon", "[\"a\":1]", false},
        {"array not closed in a text", "[\"a]", false},
        {"parentheses", "(1)", false},
        {"object not closed", "{\"a\":1", false},
        {"object closed twice", "{\"a\":1}}", false},
        {"object closed by a bracket", "{\"a\":1]", false},
        {"object with a comma in front", "{,\"a\":1}", false},
        {"object with a comma behind", "{\"a\":1,}", false},
        {"object with two commas", "{\"a\":1,,\"b\":2}", false},
        {"object without commas", "{\"a\":1 \"b\":2}", false},
        {"object without a colon", "{\"a\" 1}", false},
        {"object with two colons", "{\"a\"::1}", false},
        {"object with an equals sign", "{\"a\"=1}", false},
        {"object without a value", "{\"a\":}", false},
        {"object without a name", "{:1}", false},
        {"object of a name", "{\"a\"}", false},
        {"object of a value", "{1}", false},
        {"number for a name", "{1:1}", false},
        {"word for a name", "{null:1}", false},
        {"name without quotes", "{a:1}", false},
        {"name in single quotes", "{'a':1}", false},
        {"name not closed", "{\"a:1}", false},
        {"line comment", "1 // one", false},
        {"block comment", "/* one */ 1", false},
        {"block comment in an array", "[/* one */ 1]", false},
        {"hash comment", "1 # one", false},
        {"no-break space",
         "\xC2\xA0"
         "1",
         false},
        {"ideographic space",
         "\xE3\x80\x80"
         "1",
         false},
        {"form feed", "\f1", false},
        {"vertical tab", "\v1", false},
        {"next line",
         "\xC2\x85"
         "1",
         false},
        {"byte-order mark before a value",
         "\xEF\xBB\xBF"
         "1",
         false},
        {"zero-width space",
         "\xE2\x80\x8B"
         "1",
         false},
        {"NUL behind", QByteArray("1\0", sizeof("1\0") - 1), false},
        {"function call", "f(1)", false},
        {"template text", "${a}", false},
        {"spread", "[...a]", false},
        {"regular expression", "/a/", false},
        {"date", "2025-01-01", false},
        {"513 arrays", nested("[", "]", 513), false},
        {"far too many arrays", nested("[", "]", 100'000), false},
        {"arrays never closed", QByteArray(100'000, '['), false},
        {"far too many objects", nestedObjects(5000), false},
    };
    return cases;
}

UIWordingProfile sampleProfile()
{
    UIWordingProfile profile;
    profile.id = u"A"_s;
    profile.name = u"文言"_s;
    profile.description = u"https://example.com/ 😀"_s;
    profile.locale = u"ja"_s;
    profile.createdAt = u"2025-01-01T00:00:00Z"_s;
    profile.updatedAt = u"2025-01-02T00:00:00Z"_s;
    profile.values = {{u"menu.file"_s, u"ファイル"_s}, {u"menu.edit"_s, QString()}};
    return profile;
}

/// A kind of file: a sample text, whether a text is parsed to the same content, and whether it is
/// refused.
struct Reader
{
    const char *name;
    QByteArray text;
    std::function<bool(const QByteArray &)> readsTheSame;
    std::function<bool(const QByteArray &)> refuses;
};

const std::vector<Reader> &readers()
{
    static const std::vector<Reader> all{
        {"macros",
         MacroJson::write({sampleMacro()}),
         [](const QByteArray &text) { return MacroJson::read(text) == QList{sampleMacro()}; },
         [](const QByteArray &text) { return !MacroJson::read(text).has_value(); }},
        {"macro",
         MacroFile::write(sampleMacro()),
         [](const QByteArray &text) { return MacroFile::read(text) == sampleMacro(); },
         [](const QByteArray &text) { return !MacroFile::read(text).has_value(); }},
        {"profile",
         sampleProfile().toJson(),
         [](const QByteArray &text) { return UIWordingProfile::fromJson(text) == sampleProfile(); },
         [](const QByteArray &text) { return !UIWordingProfile::fromJson(text).has_value(); }},
    };
    return all;
}

/// The text with an additional member at the start of its record.
QByteArray withMember(QByteArray text, const QByteArray &value)
{
    return text.insert(text.indexOf('{') + 1, "\"more\":" + value + ",");
}

/// The text with another value for a member.
QByteArray withValue(const QByteArray &text, const QByteArray &member, const QByteArray &value)
{
    const qsizetype start = text.indexOf("\"" + member + "\" : ") + member.size() + 5;
    qsizetype end = text.indexOf(",\n", start);
    if (end < 0)
        end = text.indexOf("\n", start);
    return text.first(start) + value + text.sliced(end);
}

} // namespace

/// The three kinds of files that users exchange follow the same parsing rules.
class StoredFilesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void unknownMember_anyValue_isIgnoredOrRefusesTheFile_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("isJson");
        for (const ValueCase &row : valueCases())
            QTest::newRow(row.name) << row.value << row.isJson;
        QVERIFY(valueCases().size() >= 200);
    }

    void unknownMember_anyValue_isIgnoredOrRefusesTheFile()
    {
        QFETCH(QByteArray, value);
        QFETCH(bool, isJson);
        for (const Reader &reader : readers()) {
            const QByteArray text = withMember(reader.text, value);
            QVERIFY2(isJson ? reader.readsTheSame(text) : reader.refuses(text), reader.name);
        }
    }

    void wholeText_aroundTheValue_isReadOrRefused_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<bool>("isRead");
        const auto row =
            [](const char *name, const QByteArray &before, const QByteArray &after, bool isRead) {
                QTest::newRow(name) << before << after << isRead;
            };
        row("nothing", "", "", true);
        row("blanks", " \t\r\n", " \t\r\n", true);
        row("line feed", "", "\n", true);
        row("byte-order mark", "\xEF\xBB\xBF", "", true);
        row("two byte-order marks", "\xEF\xBB\xBF\xEF\xBB\xBF", "", false);
        row("byte-order mark behind", "", "\xEF\xBB\xBF", false);
        row("half a byte-order mark", "\xEF\xBB", "", false);
        row("comma", "", ",", false);
        row("comma before", ",", "", false);
        row("second value", "", "1", false);
        row("second object", "", "{}", false);
        row("second array", "", "\n[]", false);
        row("brace", "", "}", false);
        row("bracket", "", "]", false);
        row("comment", "// penwick\n", "", false);
        row("comment behind", "", "/* penwick */", false);
        row("no-break space", "\xC2\xA0", "", false);
        row("form feed behind", "", "\f", false);
        row("NUL behind", "", QByteArray(1, '\0'), false);
        row("NUL and more behind", "", QByteArray("\0x", 2), false);
        row("stray byte behind", "", "\xFF", false);
        row("letter behind", "", "x", false);
        row("array around it", "[", "]", false);
        row("object around it", "{\"a\":", "}", false);
    }

    void wholeText_aroundTheValue_isReadOrRefused()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QFETCH(bool, isRead);
        for (const Reader &reader : readers()) {
            const QByteArray text = before + reader.text + after;
            QVERIFY2(isRead ? reader.readsTheSame(text) : reader.refuses(text), reader.name);
        }
    }

    void wholeText_otherwiseEncodedOrCutOff_isRefused()
    {
        for (const Reader &reader : readers()) {
            QVERIFY(reader.refuses({}));
            QVERIFY(reader.refuses(" \n"));
            const QString text = QString::fromUtf8(reader.text);
            const QByteArray utf16(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
            QVERIFY2(reader.refuses(utf16), reader.name);
            QVERIFY2(reader.refuses("\xFF\xFE" + utf16), reader.name);
            for (qsizetype length = 0; length < reader.text.size(); ++length)
                QVERIFY2(reader.refuses(reader.text.first(length)), reader.name);
        }
    }

    void knownMember_ofAnotherType_isRefused()
    {
        const QByteArrayList values{
            "null", "1", "1.5", "true", "false", "[]", "{}", "[\"a\"]", "\"a\""};
        for (const Reader &reader : readers()) {
            const JsonValue whole = JsonText::read(reader.text).value();
            const JsonValue record = whole.asArray() != nullptr ? whole.asArray()->at(0) : whole;
            for (auto it = record.asObject()->cbegin(); it != record.asObject()->cend(); ++it) {
                for (const QByteArray &value : values) {
                    const bool isText = value.startsWith('"');
                    const bool isTruth = value == "true" || value == "false";
                    const bool fits = (it->asText() != nullptr && isText) ||
                                      (it->asBool() && isTruth) ||
                                      (it->asInteger() && value == "1") ||
                                      (it->asObject() != nullptr && value == "{}");
                    const QByteArray name = it.key().toUtf8();
                    const QByteArray text =
                        it->asObject() != nullptr
                            ? QByteArray(reader.text)
                                  .replace("\"values\" : {",
                                           "\"values\" : " + value + ", \"more\" : {")
                            : withValue(reader.text, name, value);
                    QVERIFY2(reader.refuses(text) != fits, text.constData());
                }
            }
        }
    }

    void sortOrder_wholeNumbersOf64Bits_areKept_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<std::optional<qint64>>("value");
        const auto row = [](const char *number, std::optional<qint64> value) {
            QTest::newRow(number) << QByteArray(number) << value;
        };
        row("0", 0);
        row("-0", 0);
        row("42", 42);
        row("-42", -42);
        row("9007199254740993", 9007199254740993);
        row("9223372036854775807", std::numeric_limits<qint64>::max());
        row("-9223372036854775808", std::numeric_limits<qint64>::min());
        row("9223372036854775808", {});
        row("-9223372036854775809", {});
        row("18446744073709551615", {});
        row("1e2", 100);
        row("7.0", 7);
        row("7.5", {});
        row("1e-1", {});
        row("1e300", {});
        row("1e400", {});
        row("-1e400", {});
        row("\"7\"", {});
        row("true", {});
        row("null", {});
        row("[7]", {});
    }

    void sortOrder_wholeNumbersOf64Bits_areKept()
    {
        QFETCH(QByteArray, number);
        QFETCH(std::optional<qint64>, value);
        const auto macro =
            MacroFile::read(withValue(MacroFile::write(sampleMacro()), "sortOrder", number));
        QCOMPARE(macro.has_value(), value.has_value());
        if (macro)
            QCOMPARE(macro->sortOrder, *value);
    }

    void profileValues_otherThanTexts_areRefused()
    {
        for (const char *value : {"null", "1", "true", "[]", "{}", "[\"a\"]"}) {
            const QByteArray text =
                QByteArray(sampleProfile().toJson()).replace("\"ファイル\"", value);
            QVERIFY2(!UIWordingProfile::fromJson(text), value);
        }
    }
};

QTEST_APPLESS_MAIN(StoredFilesTest)
#include "StoredFilesTest.moc"
