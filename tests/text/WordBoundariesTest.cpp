#include "text/WordBoundaries.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class WordBoundariesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void forwardSteps_stopAtWordStartsAndLineBreaks();
    void backwardSteps_stopAtWordStartsAndLineBreaks();
    void japanese_isDividedByTheDictionary();
    void doubleClick_takesWordBlanksOrMark();
    void farIntoALongText_stepsStayBounded();
    void hugeCluster_isOneWord();
    void offsetsOutsideTheText_areClamped();
    void prependedMark_staysWithItsCharacter();
};

void WordBoundariesTest::forwardSteps_stopAtWordStartsAndLineBreaks()
{
    const Text text(u"one  two\n three");
    QCOMPARE(words::nextWordStart(text, 0), 5);
    QCOMPARE(words::nextWordStart(text, 5), 8);
    QCOMPARE(words::nextWordStart(text, 8), 9);
    QCOMPARE(words::nextWordStart(text, 9), 10);
    QCOMPARE(words::nextWordStart(text, 10), 15);
    QCOMPARE(words::nextWordStart(text, 15), 15);
}

void WordBoundariesTest::backwardSteps_stopAtWordStartsAndLineBreaks()
{
    const Text text(u"one  two\r\nthree");
    QCOMPARE(words::previousWordStart(text, 15), 10);
    QCOMPARE(words::previousWordStart(text, 10), 8);
    QCOMPARE(words::previousWordStart(text, 8), 5);
    QCOMPARE(words::previousWordStart(text, 5), 0);
    QCOMPARE(words::previousWordStart(text, 0), 0);
}

void WordBoundariesTest::japanese_isDividedByTheDictionary()
{
    const Text text(u"今日は天気が良い");
    QCOMPARE(words::nextWordStart(text, 0), 2);
    QCOMPARE(words::nextWordStart(text, 2), 3);
    QCOMPARE(words::nextWordStart(text, 3), 5);
    QCOMPARE(words::wordAround(text, 4), std::pair(qint64(3), qint64(5)));
}

void WordBoundariesTest::doubleClick_takesWordBlanksOrMark()
{
    const Text text(u"ab  cd, e\n\nf");
    QCOMPARE(words::wordAround(text, 1), std::pair(qint64(0), qint64(2)));
    QCOMPARE(words::wordAround(text, 2), std::pair(qint64(2), qint64(4)));
    QCOMPARE(words::wordAround(text, 6), std::pair(qint64(6), qint64(7)));
    QCOMPARE(words::wordAround(text, 9), std::pair(qint64(8), qint64(9)));
    QCOMPARE(words::wordAround(text, 10), std::pair(qint64(10), qint64(10)));
    QCOMPARE(words::wordAround(text, 12), std::pair(qint64(11), qint64(12)));
}

void WordBoundariesTest::farIntoALongText_stepsStayBounded()
{
    const Text text{QString(200'000, u'x')};
    const qint64 next = words::nextWordStart(text, 100'000);
    QVERIFY(next > 100'000 && next <= 102'000);
    const qint64 previous = words::previousWordStart(text, 100'000);
    QVERIFY(previous < 100'000 && previous >= 98'000);
}

void WordBoundariesTest::hugeCluster_isOneWord()
{
    const qint64 size = 20'001;
    const Text text{QString(u'e' + QString(size - 1, u'\u0301') + u" x"_s)};
    for (const qint64 offset : {qint64(0), qint64(1), size / 2, size - 1}) {
        QCOMPARE(words::wordAround(text, offset), std::pair(qint64(0), size));
        QVERIFY(words::nextWordStart(text, offset) >= size);
        QCOMPARE(words::previousWordStart(text, offset), 0);
    }
    QCOMPARE(words::previousWordStart(text, size), 0);
}

void WordBoundariesTest::offsetsOutsideTheText_areClamped()
{
    const Text text(u"one two");
    QCOMPARE(words::wordAround(text, -1), std::pair(qint64(0), qint64(3)));
    QCOMPARE(words::wordAround(text, 99), std::pair(qint64(4), qint64(7)));
    QCOMPARE(words::nextWordStart(text, -5), 4);
    QCOMPARE(words::previousWordStart(text, 99), 4);
}

void WordBoundariesTest::prependedMark_staysWithItsCharacter()
{
    const Text text(u"a \u0600漢 b");
    QCOMPARE(words::nextWordStart(text, 2), 5);
    QCOMPARE(words::previousWordStart(text, 4), 2);
    QCOMPARE(words::wordAround(text, 3), std::pair(qint64(2), qint64(4)));
}

QTEST_GUILESS_MAIN(WordBoundariesTest)
#include "WordBoundariesTest.moc"
