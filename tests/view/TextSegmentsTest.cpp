#include "view/TextSegments.h"

#include "support/TextModel.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class TextSegmentsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyText_isOneEmptySegment();
    void everyKindOfBreak_endsALine();
    void offsetInsideCrLf_belongsToTheLineBefore();
    void hugeLine_isDividedIntoBoundedPieces();
    void lineJustFull_hasNoEmptyPiece();
    void walk_coversTheWholeTextBothWays_data();
    void walk_coversTheWholeTextBothWays();
    void farEdit_keepsEarlierCuts();
};

void TextSegmentsTest::emptyText_isOneEmptySegment()
{
    const TextSegment segment = segments::at(Text(), 0);
    QCOMPARE(segment, (TextSegment{0, 0, 0, 0}));
    QVERIFY(segments::isFirst(segment));
    QVERIFY(segments::isLast(Text(), segment));
}

void TextSegmentsTest::everyKindOfBreak_endsALine()
{
    const Text text(u"a\nb\rc\r\nd\u0085e\u2028f\u2029g\vh\fi");
    TextSegment segment = segments::at(text, 0);
    QStringList lines;
    while (true) {
        lines += text.slice(segment.start, segment.length());
        if (segments::isLast(text, segment))
            break;
        segment = segments::next(text, segment);
    }
    QCOMPARE(lines, u"a b c d e f g h i"_s.split(u' '));
}

void TextSegmentsTest::offsetInsideCrLf_belongsToTheLineBefore()
{
    const Text text(u"ab\r\ncd");
    QCOMPARE(segments::at(text, 3), (TextSegment{0, 0, 2, 2}));
    QCOMPARE(segments::at(text, 2), (TextSegment{0, 0, 2, 2}));
    QCOMPARE(segments::at(text, 4), (TextSegment{4, 4, 6, 0}));
}

void TextSegmentsTest::hugeLine_isDividedIntoBoundedPieces()
{
    const Text text{QString(100'000, u'漢') + u"\nend"_s};
    TextSegment segment = segments::at(text, 0);
    qint64 covered = 0;
    while (segment.breakLength == 0) {
        QCOMPARE(segment.start, covered);
        QVERIFY(segment.length() > 0 && segment.length() <= segments::kUnits);
        covered = segment.end;
        segment = segments::next(text, segment);
    }
    QCOMPARE(segment.end, 100'000);
    QCOMPARE(segments::next(text, segment).start, 100'001);
}

void TextSegmentsTest::lineJustFull_hasNoEmptyPiece()
{
    const Text text{QString(2 * segments::kUnits, u'漢')};
    const TextSegment last = segments::at(text, text.size());
    QVERIFY(last.length() > 0);
    QVERIFY(segments::isLast(text, last));
}

void TextSegmentsTest::walk_coversTheWholeTextBothWays_data()
{
    QTest::addColumn<QString>("units");
    QRandomGenerator random(11);
    QTest::newRow("mixed") << test::randomText(random, 4000);
    QTest::newRow("words") << u"some words and "_s.repeated(3000);
    QTest::newRow("one huge cluster") << u'e' + QString(20'000, u'\u0301');
    QTest::newRow("emoji") << u"👨‍👩‍👧‍👦"_s.repeated(2000);
    QTest::newRow("empty lines") << u"\r\n\n\r"_s.repeated(50);
}

void TextSegmentsTest::walk_coversTheWholeTextBothWays()
{
    QFETCH(QString, units);
    const Text text{QStringView(units)};
    QList<qint64> starts;
    TextSegment segment = segments::at(text, 0);
    while (true) {
        starts.append(segment.start);
        QVERIFY(!QChar::isLowSurrogate(segment.start < text.size() ? text.at(segment.start) : 0));
        if (segments::isLast(text, segment))
            break;
        const TextSegment next = segments::next(text, segment);
        QCOMPARE(next.start, segment.nextStart());
        QCOMPARE(segments::previous(text, next), segment);
        segment = next;
    }
    QCOMPARE(segment.end, text.size());
    // Each offset is in a segment that the walk found.
    for (qint64 offset = 0; offset <= text.size(); offset += 61) {
        const TextSegment found = segments::at(text, offset);
        QVERIFY(starts.contains(found.start));
        QVERIFY(found.start <= offset && offset <= found.nextStart());
    }
}

void TextSegmentsTest::farEdit_keepsEarlierCuts()
{
    const Text text{u"lorem ipsum "_s.repeated(5000)};
    const Text edited = text.replaced(50'000, 3, Text(u"xyz äöü"));
    for (qint64 offset = 0; offset < 45'000; offset += 1000)
        QCOMPARE(segments::at(edited, offset), segments::at(text, offset));
}

QTEST_GUILESS_MAIN(TextSegmentsTest)
#include "TextSegmentsTest.moc"
