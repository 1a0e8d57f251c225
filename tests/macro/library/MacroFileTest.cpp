#include "macro/library/MacroFile.h"

#include "macro/library/MacroJson.h"
#include "platform/json/JsonText.h"
#include "support/Macros.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class MacroFileTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void write_macro_isPrettyPrintedWithItsHeader()
    {
        Macro macro = sampleMacro();
        macro.code = u"return {};"_s;
        const QByteArray expected =
            "{\n"
            "  \"category\" : \"text\",\n"
            "  \"code\" : \"\\/\\/ penwick:macro\\n\\/\\/ name: name of A\\n\\/\\/ description: "
            "説明 😀\\n\\/\\/ category: text\\n\\/\\/ version: 2.0\\n\\/\\/ helpURL: "
            "https:\\/\\/example.com\\/help\\n\\nreturn {};\",\n"
            "  \"createdAt\" : \"2020-01-01T00:00:00Z\",\n"
            "  \"description\" : \"説明 😀\",\n"
            "  \"helpURL\" : \"https:\\/\\/example.com\\/help\",\n"
            "  \"id\" : \"A\",\n"
            "  \"isEnabled\" : false,\n"
            "  \"name\" : \"name of A\",\n"
            "  \"sortOrder\" : 1,\n"
            "  \"source\" : \"imported\",\n"
            "  \"updatedAt\" : \"2020-01-02T00:00:00Z\",\n"
            "  \"version\" : \"2.0\"\n"
            "}";
        QCOMPARE(MacroFile::write(macro), expected);
    }

    void read_whatWasWritten_isTheSame()
    {
        QVERIFY(MacroFile::read(MacroFile::write(sampleMacro())) == sampleMacro());
    }

    void read_headerDiffersFromTheMembers_headerCounts()
    {
        Macro macro = sampleMacro();
        macro.code = u"// penwick:macro\n// name: N\n// helpurl: H\n// version: V\n\nx"_s;
        const auto read = MacroFile::read(JsonText::write(MacroJson::encode(macro)));
        macro.name = u"N"_s;
        macro.helpURL = u"H"_s;
        macro.version = u"V"_s;
        macro.code = u"x"_s;
        QVERIFY(read == macro);
    }

    void read_noMarker_leavesTheCode()
    {
        Macro macro = sampleMacro();
        macro.code = u"// name: N\n// version: V\n\nx"_s;
        QVERIFY(MacroFile::read(JsonText::write(MacroJson::encode(macro))) == macro);
    }

    void read_otherJson_isAnError()
    {
        using Kind = JsonRecordError::Kind;
        const auto kindOf = [](QByteArrayView text) { return MacroFile::read(text).error().kind; };
        QCOMPARE(kindOf(MacroJson::write({sampleMacro()})), Kind::WrongType);
        QCOMPARE(kindOf("{}"), Kind::MissingMember);
        QCOMPARE(kindOf(""), Kind::InvalidJson);
        QCOMPARE(kindOf(MacroFile::write(sampleMacro()) + " x"), Kind::InvalidJson);
    }
};

QTEST_APPLESS_MAIN(MacroFileTest)
#include "MacroFileTest.moc"
