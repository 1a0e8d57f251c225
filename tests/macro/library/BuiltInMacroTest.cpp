#include "macro/library/BuiltInMacro.h"

#include <QSet>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class BuiltInMacroTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void rawValue_everyMacro_leadsBackToIt()
    {
        QStringList rawValues;
        for (const BuiltInMacro macro : allBuiltInMacros()) {
            rawValues.append(rawValue(macro));
            QVERIFY(builtInMacro(rawValue(macro)) == macro);
        }
        QCOMPARE(rawValues,
                 (QStringList{u"trimTrailingSpaces"_s,
                              u"removeEmptyLines"_s,
                              u"addLinePrefix"_s,
                              u"addLineSuffix"_s,
                              u"insertDateTime"_s,
                              u"extractUrls"_s,
                              u"stripHtmlTags"_s}));
    }

    void builtInMacro_otherText_isNothing()
    {
        for (const auto &text : {u""_s, u"TrimTrailingSpaces"_s, u"default_extractUrls"_s})
            QVERIFY(!builtInMacro(text).has_value());
    }

    void macros_canBeKeptInASet()
    {
        const QSet<BuiltInMacro> set(allBuiltInMacros().cbegin(), allBuiltInMacros().cend());
        QCOMPARE(set.size(), 7);
    }
};

QTEST_APPLESS_MAIN(BuiltInMacroTest)
#include "BuiltInMacroTest.moc"
