#include "macro/library/MacroMetaParser.h"

#include "support/Macros.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kMarker = u"// penwick:macro\n"_s;

ParsedMeta codeOnly(const QString &code)
{
    ParsedMeta meta;
    meta.strippedCode = code;
    return meta;
}

} // namespace

class MacroMetaParserTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void buildHeader_everyField_standsAboveTheCode()
    {
        Macro macro = sampleMacro();
        macro.code = u"\n return 1;\r\n"_s;
        QCOMPARE(MacroMetaParser::buildHeader(macro),
                 u"// penwick:macro\n"
                 "// name: name of A\n"
                 "// description: 説明 😀\n"
                 "// category: text\n"
                 "// version: 2.0\n"
                 "// helpURL: https://example.com/help\n"
                 "\n"
                 "\n return 1;\r\n"_s);
    }

    void buildHeader_emptyFields_leavesAllButTheNameOut()
    {
        QCOMPARE(MacroMetaParser::buildHeader(Macro()), u"// penwick:macro\n// name: \n\n"_s);
    }

    void parse_code_isTakenApart_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<ParsedMeta>("expected");

        QTest::newRow("empty") << QString() << codeOnly({});
        for (const auto &code : {u"\n\nreturn {};"_s,
                                 u"// name: A\n// version: 2\nreturn {};"_s,
                                 u"// PENWICK:MACRO\n// name: A\n"_s,
                                 u"// Penwick:macro\n// name: A\n"_s,
                                 u"//penwick:macro\n// name: A\n"_s,
                                 u"//  penwick:macro\n// name: A\n"_s,
                                 u"// penwick:macro \r\n// name: A\r\n"_s,
                                 u"\u2028// penwick:macro\n// name: A\n"_s,
                                 u"\n// penwick:macro\n// name: A\n"_s,
                                 u"x // penwick:macro\n// name: A\n"_s})
            QTest::addRow("no header: %s", qPrintable(code)) << code << codeOnly(code);

        for (const auto &marker : {u" // penwick:macro"_s,
                                   u"\t// penwick:macro\t \t"_s,
                                   u"\u3000// penwick:macro\u00A0"_s,
                                   u"\u2003// penwick:macro\u205F"_s}) {
            ParsedMeta expected = codeOnly(u"x"_s);
            expected.name = u"A"_s;
            QTest::addRow("marker: %s", qPrintable(marker))
                << QString(marker + u"\n// name: A\nx"_s) << expected;
        }
        QTest::newRow("marker alone") << u"// penwick:macro"_s << codeOnly({});
        QTest::newRow("marker and blank lines")
            << u"// penwick:macro\n \n\t\u3000\n"_s << codeOnly({});
        QTest::newRow("carriage return behind the code")
            << QString(kMarker + u"x\r\n"_s) << codeOnly(u"x\r\n"_s);
        QTest::newRow("a line with only a carriage return is code")
            << QString(kMarker + u"\n\r\nx"_s) << codeOnly(u"\r\nx"_s);

        ParsedMeta all = codeOnly(u"return {};\n\n\n// name: not me\n"_s);
        all.name = u"名前: 一"_s;
        all.description = u"説明"_s;
        all.category = u"10:30:00"_s;
        all.version = u"2.0"_s;
        all.helpURL = u"https://example.com:8080/a//b"_s;
        QTest::newRow("every field, any order and case")
            << QString(kMarker + u"// HelpURL:https://example.com:8080/a//b\n"
                                 "//   DESCRIPTION\u3000:\t説明  \n"
                                 "  // Version: 1.0\n"
                                 "// author: A. Author\n"
                                 "// name: 名前: 一\n"
                                 "// HELPURL : https://example.com:8080/a//b\n"
                                 "// ::category: 10:30:00\n"
                                 "// version: 2.0\n"
                                 "\n \n\t\n"
                                 "return {};\n\n\n// name: not me\n"_s)
            << all;

        ParsedMeta named = codeOnly(u"//category: A\nx"_s);
        named.name = u"N"_s;
        QTest::newRow("no blank behind the slashes ends it")
            << QString(kMarker + u"// name: N\n//category: A\nx"_s) << named;
        named.strippedCode = u"// no colon\n// version: 3"_s;
        QTest::newRow("no colon ends it")
            << QString(kMarker + u"// name: N\n// no colon\n// version: 3"_s) << named;
        named.strippedCode = u"// version:  \t\n// version: 3"_s;
        QTest::newRow("nothing behind the colon ends it")
            << QString(kMarker + u"// name: N\n// version:  \t\n// version: 3"_s) << named;
        ParsedMeta versioned = named;
        versioned.version = u"2"_s;
        QTest::newRow("nothing behind the colon keeps the earlier value")
            << QString(kMarker + u"// name: N\n// version: 2\n// version:  \t\n// version: 3"_s)
            << versioned;
        named.strippedCode = u"// :version\nx"_s;
        QTest::newRow("nothing before the colon ends it")
            << QString(kMarker + u"// name: N\n// :version\nx"_s) << named;
        named.strippedCode = u"// version: 3"_s;
        QTest::newRow("an empty line ends it")
            << QString(kMarker + u"// name: N\n\n// version: 3"_s) << named;
        named.strippedCode = u"x"_s;
        QTest::newRow("no key counts as an unknown key")
            << QString(kMarker + u"//  : A\n// name: N\nx"_s) << named;
        named.name = u":"_s;
        QTest::newRow("a colon is a value") << QString(kMarker + u"// name::\nx"_s) << named;
        named.name = u"N\r"_s;
        QTest::newRow("a carriage return belongs to the value")
            << QString(kMarker + u"// name: N\r\nx"_s) << named;
    }

    void parse_code_isTakenApart()
    {
        QFETCH(QString, code);
        QFETCH(ParsedMeta, expected);
        const ParsedMeta meta = MacroMetaParser::parse(code);
        QCOMPARE(meta.name, expected.name);
        QCOMPARE(meta.description, expected.description);
        QCOMPARE(meta.category, expected.category);
        QCOMPARE(meta.version, expected.version);
        QCOMPARE(meta.helpURL, expected.helpURL);
        QCOMPARE(meta.strippedCode, expected.strippedCode);
    }

    void parse_headerThatWasBuilt_givesTheSame()
    {
        const Macro macro = sampleMacro();
        const ParsedMeta meta = MacroMetaParser::parse(MacroMetaParser::buildHeader(macro));
        QCOMPARE(meta.name, macro.name);
        QCOMPARE(meta.description, macro.description);
        QCOMPARE(meta.category, macro.category);
        QCOMPARE(meta.version, macro.version);
        QCOMPARE(meta.helpURL, macro.helpURL);
        QCOMPARE(meta.strippedCode, macro.code);
    }

    void parse_headerOfAnEmptyName_endsThere()
    {
        Macro macro = sampleMacro();
        macro.name.clear();
        const QString built = MacroMetaParser::buildHeader(macro);
        QCOMPARE(MacroMetaParser::parse(built), codeOnly(built.mid(kMarker.size())));
    }
};

QTEST_APPLESS_MAIN(MacroMetaParserTest)
#include "MacroMetaParserTest.moc"
