#include "editor/TextDifference.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class TextDifferenceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void difference_texts_isTheStretchBetween_data();
    void difference_texts_isTheStretchBetween();
    void difference_randomEdits_makesOneOfTheOther();
};

void TextDifferenceTest::difference_texts_isTheStretchBetween_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<qint64>("location");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QString>("replacement");
    QTest::newRow("same") << u"abc"_s << u"abc"_s << qint64{3} << qint64{0} << QString();
    QTest::newRow("both empty") << QString() << QString() << qint64{0} << qint64{0} << QString();
    QTest::newRow("middle") << u"abXcd"_s << u"abYZcd"_s << qint64{2} << qint64{1} << u"YZ"_s;
    QTest::newRow("repeated") << u"aaa"_s << u"aa"_s << qint64{2} << qint64{1} << QString();
    QTest::newRow("grown") << u"aa"_s << u"aaaa"_s << qint64{2} << qint64{0} << u"aa"_s;
    QTest::newRow("all") << u"abc"_s << u"xy"_s << qint64{0} << qint64{3} << u"xy"_s;
    // Both characters share the high surrogate, or the low one.
    QTest::newRow("same high") << u"a\U0001F600b"_s << u"a\U0001F601b"_s << qint64{1} << qint64{2}
                               << u"\U0001F601"_s;
    QTest::newRow("same low") << u"a\U0001F600b"_s << u"a\U0001FA00b"_s << qint64{1} << qint64{2}
                              << u"\U0001FA00"_s;
}

void TextDifferenceTest::difference_texts_isTheStretchBetween()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(qint64, location);
    QFETCH(qint64, length);
    QFETCH(QString, replacement);
    const TextDifference difference = differenceBetween(Text(before), Text(after));
    QCOMPARE(difference.range, (TextRange{location, length}));
    QCOMPARE(difference.replacement.toString(), replacement);
    QCOMPARE(difference.isEmpty(), before == after);
}

void TextDifferenceTest::difference_randomEdits_makesOneOfTheOther()
{
    QRandomGenerator random(20240101);
    const QString letters = u"ab\r\n\U0001F600\U0001F601日本"_s;
    const auto text = [&](int length) {
        QString units;
        for (int i = 0; i < length; ++i)
            units += letters[random.bounded(static_cast<int>(letters.size()))];
        return Text(units); // Lone surrogates become U+FFFD.
    };
    for (int round = 0; round < 300; ++round) {
        // Some texts are longer than a block of the comparison.
        const Text before = text(round % 50 == 0 ? 200'000 : random.bounded(40));
        const Text after = before.replaced(random.bounded(before.size() + 1),
                                           random.bounded(before.size() + 1),
                                           text(random.bounded(10)));
        const TextDifference difference = differenceBetween(before, after);
        QVERIFY(before.replaced(difference.range.location,
                                difference.range.length,
                                difference.replacement) == after);
    }
}

QTEST_APPLESS_MAIN(TextDifferenceTest)
#include "TextDifferenceTest.moc"
