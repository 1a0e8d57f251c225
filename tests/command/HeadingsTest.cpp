#include "command/Headings.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class HeadingsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void line_isHeading_data();
    void line_isHeading();
    void scan_crLf_countsOnce();
    void scan_longText_findsAllInSteps();
    void scan_lineAcrossSteps_isOneLine();
};

void HeadingsTest::line_isHeading_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isExpected");
    QTest::newRow("square") << u"■はじめに"_s << true;
    QTest::newRow("blanks before") << u"　 \t◆ 次"_s << true;
    QTest::newRow("hash") << u"# Title"_s << true;
    QTest::newRow("six hashes") << u"###### x"_s << true;
    QTest::newRow("hash before Japanese") << u"##概要"_s << true;
    QTest::newRow("chapter") << u"第三章　海へ"_s << true;
    QTest::newRow("wide number") << u"第１２節"_s << true;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("text") << u"本文 ■"_s << false;
    QTest::newRow("seven hashes") << u"####### x"_s << false;
    QTest::newRow("hashes only") << u"###"_s << false;
    QTest::newRow("directive") << u"#include <x>"_s << false;
    QTest::newRow("no number") << u"第章"_s << false;
    QTest::newRow("another word") << u"第一に、"_s << false;
    QTest::newRow("number at the end") << u"第三"_s << false;
}

void HeadingsTest::line_isHeading()
{
    QFETCH(const QString, line);
    QFETCH(const bool, isExpected);
    QCOMPARE(isHeading(line), isExpected);
}

void HeadingsTest::scan_crLf_countsOnce()
{
    HeadingScan scan(Text(u"■ a\r\nx\n # b \u2028■c"_s));
    const QList<Heading> found = scan.step();
    QVERIFY(scan.isDone());
    QCOMPARE(found.size(), 3);
    QCOMPARE(found.at(0).text, u"■ a"_s);
    QCOMPARE(found.at(0).line, 1);
    QCOMPARE(found.at(1).text, u"# b"_s);
    QCOMPARE(found.at(1).line, 3);
    QCOMPARE(found.at(1).offset, 7);
    QCOMPARE(found.at(2).text, u"■c"_s);
    QCOMPARE(found.at(2).line, 4);
}

void HeadingsTest::scan_longText_findsAllInSteps()
{
    const QString part = u"■見出し\n"_s + QString(997, u'x') + u'\n';
    HeadingScan scan(Text(part.repeated(300)));
    qsizetype count = 0;
    int steps = 0;
    while (!scan.isDone()) {
        for (const Heading &heading : scan.step()) {
            QCOMPARE(heading.offset, count * part.size());
            QCOMPARE(heading.line, 2 * count + 1);
            QCOMPARE(heading.text, u"■見出し"_s);
            ++count;
        }
        ++steps;
    }
    QCOMPARE(count, 300);
    QVERIFY(steps > 3); // No step looks through all of it.
}

void HeadingsTest::scan_lineAcrossSteps_isOneLine()
{
    for (int before = 65'500; before < 65'560; ++before) {
        HeadingScan scan(Text(QString(before - 1, u'x') + u"\n■ 長い見出し\n"_s +
                              QString(70'000, u'■') + u'\n'));
        QStringList found;
        while (!scan.isDone())
            for (const Heading &heading : scan.step())
                found << heading.text;
        QCOMPARE(found.value(0), u"■ 長い見出し"_s);
        QCOMPARE(found.size(), 2);
        QVERIFY(found.at(1).size() < 1000); // Only the start of a long line.
    }
}

QTEST_APPLESS_MAIN(HeadingsTest)
#include "HeadingsTest.moc"
