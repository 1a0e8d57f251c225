#include "text/TerminalColumns.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class TerminalColumnsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void columns_ofWideCharacters_areTwo()
    {
        QCOMPARE(terminalColumns(QString()), 0);
        QCOMPARE(terminalColumns(u"abc"), 3);
        QCOMPARE(terminalColumns(u"日本、ａ"), 8);
        QCOMPARE(terminalColumns(u"ﾊﾞ"), 2); // Half-width.
        QCOMPARE(terminalColumns(u"e\u0301"), 1);
        QCOMPARE(terminalColumns(u"\u200D\n"), 0);
        QCOMPARE(terminalColumns(u"😀"), 2);
    }

    void end_isCutToTheColumns()
    {
        QCOMPARE(endWithinColumns(u"abc"_s, 3), u"abc"_s);
        QCOMPARE(endWithinColumns(u"abcd"_s, 3), u"…cd"_s);
        QCOMPARE(endWithinColumns(u"一二三"_s, 5), u"…二三"_s);
        QCOMPARE(endWithinColumns(u"一二三"_s, 4), u"…三"_s);
        QCOMPARE(endWithinColumns(u"a😀b"_s, 3), u"…b"_s);
        QCOMPARE(endWithinColumns(u"abc"_s, 1), u"…"_s);
    }
};

QTEST_APPLESS_MAIN(TerminalColumnsTest)
#include "TerminalColumnsTest.moc"
