#include "text/CutText.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class CutTextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_isCutAtACluster_data();
    void text_isCutAtACluster();
};

void CutTextTest::text_isCutAtACluster_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected"); // For at most 4 code units.
    const QString accent(1, QChar(0x0301));
    const QString flag = u"\U0001F1EF\U0001F1F5"_s;
    const QString joiner(1, QChar(0x200D));
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("as long") << u"abcd"_s << u"abcd"_s;
    QTest::newRow("longer") << u"abcde"_s << u"abcd…"_s;
    QTest::newRow("pair at the cut") << u"abc\U0001F600"_s << u"abc…"_s;
    QTest::newRow("pair before the cut") << u"ab\U0001F600c"_s << u"ab\U0001F600…"_s;
    QTest::newRow("pair after the cut") << u"abcd\U0001F600"_s << u"abcd…"_s;
    QTest::newRow("mark at the cut") << u"abcd"_s + accent << u"abc…"_s;
    QTest::newRow("line break at the cut") << u"abc\r\n"_s << u"abc…"_s;
    QTest::newRow("two flags") << flag + flag << flag + u'…';
    QTest::newRow("modifier at the cut") << u"ab\U0001F44D\U0001F3FD"_s << u"ab…"_s;
    QTest::newRow("first cluster too long")
        << u"a"_s + accent.repeated(9) << u"a"_s + accent.repeated(3) + u'…';
    QTest::newRow("pair in a first cluster too long")
        << u"\U0001F469"_s + joiner + u"\U0001F469"_s << u"\U0001F469"_s + joiner + u'…';
    QTest::newRow("lone surrogates")
        << QString(9, QChar(0xD83D)) << QString(4, QChar(0xD83D)) + u'…';
}

void CutTextTest::text_isCutAtACluster()
{
    QFETCH(const QString, text);
    QFETCH(const QString, expected);
    QCOMPARE(cutText(text, 4), expected);
}

QTEST_GUILESS_MAIN(CutTextTest)
#include "CutTextTest.moc"
