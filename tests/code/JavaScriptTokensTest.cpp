#include "code/JavaScriptTokens.h"

#include "macro/library/BuiltInMacroProvider.h"

#include <QRegularExpression>
#include <QTest>

#include <random>

using namespace penwick;
using namespace Qt::StringLiterals;
using Kind = JavaScriptToken::Kind;

namespace {

/// The letter for a kind of token.
QChar letter(Kind kind)
{
    return u"CSRNKAIP"[static_cast<int>(kind)];
}

/// `code` with each character of a token replaced by the letter of its kind.
QString painted(const QString &code)
{
    QString result;
    JavaScriptState state;
    for (qsizetype start = 0; start < code.size();) {
        const qsizetype feed = code.indexOf(u'\n', start);
        const qsizetype end = feed < 0 ? code.size() : feed + 1;
        QString line = code.mid(start, end - start);
        const QString before = line;
        for (const JavaScriptToken &token : tokenizeJavaScript(before, state))
            line.replace(token.start, token.length, QString(token.length, letter(token.kind)));
        result += line;
        start = end;
    }
    return result;
}

} // namespace

class JavaScriptTokensTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void code_isDividedIntoTokens_data();
    void code_isDividedIntoTokens();
    void anything_givesOrderedTokensWithinTheLine();
    void builtInMacros_endOutsideOfEverything();
    void deepNesting_keepsTheStateSmall();
};

void JavaScriptTokensTest::code_isDividedIntoTokens_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &code, const QString &expected) {
        QTest::newRow(name) << code << expected;
    };
    row("nothing", u""_s, u""_s);
    row("line comment", u"a // b\nc"_s, u"I CCCC\nI"_s);
    row("comment ends at CR", u"// b\rc"_s, u"CCCC\rI"_s);
    row("comment ends at U+2028", u"// b\u2028c"_s, u"CCCC\u2028I"_s);
    row("comment goes on behind NEL", u"// b\u0085c"_s, u"CCCCCC"_s);
    row("block comment", u"a/*b\n'*/c"_s, u"ICCCCCCCI"_s);
    row("comment without end", u"/*/ x"_s, u"CCCCC"_s);
    row("strings", u"'a' + \"b'\""_s, u"SSS P SSSS"_s);
    row("escaped quote", u"'a\\'b' c"_s, u"SSSSSS I"_s);
    row("string without end", u"'ab\nif"_s, u"SSS\nKK"_s);
    row("string over a line end", u"'a\\\nb' c"_s, u"SSSSSS I"_s);
    row("string over CR LF", u"'a\\\r\nb' c"_s, u"SSSSSSS I"_s);
    row("string with U+2028", u"'a\u2028b' c"_s, u"SSSSS I"_s);
    row("lone quote at the end", u"a = '"_s, u"I P S"_s);
    row("template", u"`a` b"_s, u"SSS I"_s);
    row("template over lines", u"`a\nif` b"_s, u"SSSSSS I"_s);
    row("substitution", u"`a${b}c`"_s, u"SSPPIPSS"_s);
    row("nested template", u"`${`${1}x`}y`;"_s, u"SPPSPPNPSSPSSP"_s);
    row("braces in a substitution", u"`${{a:1}}b`"_s, u"SPPPIPNPPSS"_s);
    row("substitution over lines", u"`${\na\n}b`"_s, u"SPP\nI\nPSS"_s);
    row("escaped substitution", u"`\\${a}` b"_s, u"SSSSSSS I"_s);
    row("dollar alone", u"`$a$`"_s, u"SSSSS"_s);
    row("parenthesis left open in a substitution", u"`${(a}b`"_s, u"SPPPIPSS"_s);
    row("parenthesis closed in a substitution", u"(`${a)}b`"_s, u"PSPPIPPSS"_s);
    row("division", u"a / b / c"_s, u"I P I P I"_s);
    row("division of a call", u"f(a) / 2 / g"_s, u"IPIP P N P I"_s);
    row("division of an element", u"a[0] /2/ 1"_s, u"IPNP PNP N"_s);
    row("division of a number", u"1 /2/ 3"_s, u"N PNP N"_s);
    row("division of a property", u"a.return /2/ b"_s, u"IPIIIIII PNP I"_s);
    row("division after an increment", u"a++ /2/ b"_s, u"IPP PNP I"_s);
    row("division of a template", u"`a` /2/ b"_s, u"SSS PNP I"_s);
    row("division of an object", u"x = {a: 1} /2/ b"_s, u"I P PIP NP PNP I"_s);
    row("division assignment", u"a /= 2 / b"_s, u"I PP N P I"_s);
    row("regular expression", u"x = /a/gi"_s, u"I P RRRRR"_s);
    row("expression as an argument", u"s.replace(/\\s+$/, '')"_s, u"IPIIIIIIIPRRRRRRP SSP"_s);
    row("expression after return", u"return /a/;"_s, u"KKKKKK RRRP"_s);
    row("expression after an arrow", u"x => /a/.test(x)"_s, u"I PP RRRPIIIIPIP"_s);
    row("expression after a condition", u"if (a) /b/.test(c)"_s, u"KK PIP RRRPIIIIPIP"_s);
    row("expression after a block", u"if (a) { b } /c/.d()"_s, u"KK PIP P I P RRRPIPP"_s);
    row("expression with a class", u"[/[/\\]]/, 1]"_s, u"PRRRRRRRP NP"_s);
    row("escaped slash", u"(/\\//)"_s, u"PRRRRP"_s);
    row("expression without end", u"a = /b;\nc"_s, u"I P PIP\nI"_s);
    row("expression over a comment", u"a /* x */ / b / c"_s, u"I CCCCCCC P I P I"_s);
    row("condition over lines", u"while (a\n&& b)\n/c/.d()"_s, u"KKKKK PI\nPP IP\nRRRPIPP"_s);
    row("parentheses in a condition", u"if ((a) /2/ b) /c/;"_s, u"KK PPIP PNP IP RRRP"_s);
    row("for await", u"for await (a of b) /c/;"_s, u"KKK KKKKK PI KK IP RRRP"_s);
    row("numbers", u"1 2.5 .5 1e9 1E-9 0xFFn 1_000 5."_s, u"N NNN NN NNN NNNN NNNNN NNNNN NN"_s);
    row("number and method", u"1..toFixed()"_s, u"NNPIIIIIIIPP"_s);
    row("spread", u"[...a, ...'b']"_s, u"PPPPIP PPPSSSP"_s);
    row("optional chain", u"a?.if ?? .5"_s, u"IPPII PP NN"_s);
    row("keywords and constants", u"const a = null, b = this"_s, u"KKKKK I P AAAAP I P KKKK"_s);
    row("names", u"$a _b #c 行 \\u0061b iff"_s, u"II II II I IIIIIII III"_s);
    row("name outside the first plane", u"\U0001D4D0b = 1"_s, u"III P N"_s);
    row("mistakes", u"@ ) ] } \U0001F600 a"_s, u"P P P P PP I"_s);
    row("byte order mark", u"\uFEFFif"_s, u"\uFEFFKK"_s);
}

void JavaScriptTokensTest::code_isDividedIntoTokens()
{
    QFETCH(QString, code);
    QFETCH(QString, expected);
    QCOMPARE(painted(code), expected);
}

void JavaScriptTokensTest::anything_givesOrderedTokensWithinTheLine()
{
    std::mt19937 random(20);
    const QString alphabet = u"'\"`${}()[]/*\\\n\r a1.e+=if\U0001D400\u2028\u0085"_s;
    for (int round = 0; round < 20'000; ++round) {
        QString line;
        for (int i = 0; i < 12; ++i)
            line += alphabet[static_cast<qsizetype>(random() % alphabet.size())];
        JavaScriptState state;
        qsizetype reached = 0;
        for (const JavaScriptToken &token : tokenizeJavaScript(line, state)) {
            QVERIFY(token.start >= reached);
            QVERIFY(token.length > 0);
            reached = token.end();
        }
        QVERIFY(reached <= line.size());
        // Characters outside of all tokens are blanks.
        const QString rest = painted(line).remove(QRegularExpression(u"[CSRNKAIP]"_s));
        QVERIFY2(rest.trimmed().isEmpty(), qPrintable(rest));
    }
}

void JavaScriptTokensTest::builtInMacros_endOutsideOfEverything()
{
    const QList<BuiltInMacroDefinition> &macros = BuiltInMacroProvider::definitions();
    QCOMPARE(macros.size(), 7);
    for (const BuiltInMacroDefinition &definition : macros) {
        JavaScriptState state;
        const QString script = BuiltInMacroProvider::script(definition.macro);
        QVERIFY(tokenizeJavaScript(script, state).size() > 20);
        QVERIFY2(state.open.isEmpty(), qPrintable(definition.id));
        QVERIFY(state.inside == JavaScriptState::Inside::Code);
    }
}

void JavaScriptTokensTest::deepNesting_keepsTheStateSmall()
{
    JavaScriptState state;
    static_cast<void>(tokenizeJavaScript(u"`${({["_s.repeated(10'000), state));
    QVERIFY(state.open.size() < 1'000);
    QVERIFY(!state.open.isEmpty());
}

QTEST_APPLESS_MAIN(JavaScriptTokensTest)

#include "JavaScriptTokensTest.moc"
