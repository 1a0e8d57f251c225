#include "platform/StandardOutput.h"

#include "support/CapturedOutput.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class StandardOutputTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void printLine_anyText_isOneFlushedLine()
    {
        CapturedOutput output;
        printLine(u"one: 日本語"_s);
        printLine(u"two\nof\r\nthem"_s);
        printLine({});
        QCOMPARE(output.take(), "one: 日本語\ntwo of  them\n\n"_ba);
    }
};

QTEST_APPLESS_MAIN(StandardOutputTest)
#include "StandardOutputTest.moc"
