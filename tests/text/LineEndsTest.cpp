#include "text/LineEnds.h"

#include "support/TextModel.h"

#include <QRegularExpression>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class LineEndsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void counts_ofEachKind_excludeOtherSeparators();
    void counts_ofCrAndLfThatAnEditJoins_becomeAPair();
    void firstLineEnd_isFoundInAnyChunk_data();
    void firstLineEnd_isFoundInAnyChunk();
    void mostFrequentLineEnd_onEqualCountsIsTheFirst_data();
    void mostFrequentLineEnd_onEqualCountsIsTheFirst();
    void lineEndToInsert_neverJoinsItsNeighbour();
    void rangeOfLineEnds_isWidenedWherePartsWouldJoin();
    void withLineEnds_ofRandomTexts_matchesStringModel_data();
    void withLineEnds_ofRandomTexts_matchesStringModel();
    void withLineEnds_ofAUniformText_isTheSameValue();
    void withLineEnds_ofTenMegabytes_changesEveryLine();
};

namespace {

Text textOf(const QString &string)
{
    return Text{QStringView(string)};
}

} // namespace

void LineEndsTest::counts_ofEachKind_excludeOtherSeparators()
{
    const TextMetrics metrics = Text(u"a\nb\r\nc\rd\u0085e\u2028f\vg\r\n\r").metrics();
    QCOMPARE(metrics.lineEnds(LineEnd::LineFeed), 1);
    QCOMPARE(metrics.lineEnds(LineEnd::CrLf), 2);
    QCOMPARE(metrics.lineEnds(LineEnd::CarriageReturn), 2);
    QCOMPARE(metrics.lineEnds(), 5);
    QVERIFY(metrics.hasMixedLineEnds());
    QVERIFY(!Text(u"a\nb\u2028c\fd\u0085\n").metrics().hasMixedLineEnds());
    QVERIFY(!Text(u"a\r\nb\r\n").metrics().hasMixedLineEnds());
    QVERIFY(!Text(u"a\rb").metrics().hasMixedLineEnds());
    QVERIFY(!Text().metrics().hasMixedLineEnds());
    QVERIFY(Text(u"a\r\nb\n").metrics().hasMixedLineEnds());
    QVERIFY(Text(u"日\r\n本\r").metrics().hasMixedLineEnds());
}

void LineEndsTest::counts_ofCrAndLfThatAnEditJoins_becomeAPair()
{
    // CR and LF are in different chunks at first.
    const QString part(10'000, u'x');
    const Text text = textOf(u"a\n"_s + part + u'\r' + part + u'\n' + part);
    QCOMPARE(text.metrics().lineEnds(LineEnd::CarriageReturn), 1);
    const Text joined = text.replaced(part.size() + 3, part.size(), Text());
    QCOMPARE(joined.metrics().lineEnds(LineEnd::CrLf), 1);
    QCOMPARE(joined.metrics().lineEnds(LineEnd::LineFeed), 1);
    QCOMPARE(joined.metrics().lineEnds(LineEnd::CarriageReturn), 0);
}

void LineEndsTest::firstLineEnd_isFoundInAnyChunk_data()
{
    QTest::addColumn<QString>("string");
    QTest::addColumn<LineEnd>("first");
    const QString part(20'000, u'x');
    QTest::newRow("empty") << QString() << LineEnd::LineFeed;
    QTest::newRow("none") << u"a\u2028b\u0085"_s << LineEnd::LineFeed;
    QTest::newRow("LF") << u"a\nb\r\nc\r"_s << LineEnd::LineFeed;
    QTest::newRow("CR LF") << u"a\r\nb\nc\r"_s << LineEnd::CrLf;
    QTest::newRow("CR") << u"a\rb\r\nc\n"_s << LineEnd::CarriageReturn;
    QTest::newRow("CR, CR LF") << u"\r\r\n"_s << LineEnd::CarriageReturn;
    QTest::newRow("far LF") << part + u"\u2028\n"_s + part + u"\r\n"_s << LineEnd::LineFeed;
    QTest::newRow("far CR LF") << part + u"\u2028\r\n"_s + part + u"\n\r"_s << LineEnd::CrLf;
    QTest::newRow("far CR") << part + u"\u0085日本\r"_s + part + u"\n"_s << LineEnd::CarriageReturn;
}

void LineEndsTest::firstLineEnd_isFoundInAnyChunk()
{
    QFETCH(const QString, string);
    QFETCH(const LineEnd, first);
    QCOMPARE(firstLineEnd(textOf(string)), first);
}

void LineEndsTest::mostFrequentLineEnd_onEqualCountsIsTheFirst_data()
{
    QTest::addColumn<QString>("string");
    QTest::addColumn<LineEnd>("expected");
    QTest::newRow("none") << u"a"_s << LineEnd::LineFeed;
    QTest::newRow("most") << u"\na\r\nb\r\nc\r"_s << LineEnd::CrLf;
    QTest::newRow("equal, CR LF first") << u"a\r\nb\n"_s << LineEnd::CrLf;
    QTest::newRow("equal, LF first") << u"a\nb\r\n"_s << LineEnd::LineFeed;
    QTest::newRow("equal, CR first") << u"\ra\n\rb\n"_s << LineEnd::CarriageReturn;
    QTest::newRow("the first is not one of the most")
        << u"\r\na\n\rb\r\nc\n\n\r\r"_s << LineEnd::LineFeed;
}

void LineEndsTest::mostFrequentLineEnd_onEqualCountsIsTheFirst()
{
    QFETCH(const QString, string);
    QFETCH(const LineEnd, expected);
    QCOMPARE(mostFrequentLineEnd(textOf(string)), expected);
}

void LineEndsTest::lineEndToInsert_neverJoinsItsNeighbour()
{
    const Text text(u"a\nb\rc");
    QCOMPARE(lineEndToInsert(text, {3, 0}), LineEnd::LineFeed);
    QCOMPARE(lineEndToInsert(text, {4, 0}), LineEnd::CarriageReturn);
    QCOMPARE(lineEndToInsert(text, {4, 1}), LineEnd::CarriageReturn);
    const Text other(u"a\rb\nc");
    QCOMPARE(lineEndToInsert(other, {2, 0}), LineEnd::CarriageReturn);
    QCOMPARE(lineEndToInsert(other, {3, 0}), LineEnd::LineFeed);
    QCOMPARE(lineEndToInsert(other, {2, 1}), LineEnd::LineFeed);
    QCOMPARE(lineEndToInsert(Text(u"a\r\nb\rc"), {5, 0}), LineEnd::CrLf);
}

void LineEndsTest::rangeOfLineEnds_isWidenedWherePartsWouldJoin()
{
    const Text text(u"a\r\nb");
    QCOMPARE(rangeOfLineEnds(text, {2, 2}, LineEnd::CarriageReturn), (TextRange{1, 3}));
    QCOMPARE(rangeOfLineEnds(text, {0, 2}, LineEnd::CrLf), (TextRange{0, 3}));
    QCOMPARE(rangeOfLineEnds(text, {0, 1}, LineEnd::CrLf), (TextRange{0, 1}));
    QCOMPARE(rangeOfLineEnds(Text(u"a\r\r\r\nb"), {3, 2}, LineEnd::LineFeed), (TextRange{1, 4}));
    QCOMPARE(rangeOfLineEnds(Text(u"a\r\r\r\nb"), {3, 2}, LineEnd::CrLf), (TextRange{3, 2}));
    QCOMPARE(rangeOfLineEnds(Text(u"a\n\n\nb"), {0, 2}, LineEnd::CarriageReturn),
             (TextRange{0, 4}));
    QCOMPARE(rangeOfLineEnds(Text(u"a\n\n\nb"), {0, 2}, LineEnd::CrLf), (TextRange{0, 2}));
}

void LineEndsTest::withLineEnds_ofRandomTexts_matchesStringModel_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void LineEndsTest::withLineEnds_ofRandomTexts_matchesStringModel()
{
    QFETCH(const quint32, seed);
    QRandomGenerator random(seed);
    const QString model = test::randomText(random, 2000);
    const Text text = textOf(model);
    static const QRegularExpression anyLineEnd(u"\\r\\n|\\r|\\n"_s);
    for (const LineEnd lineEnd : kLineEnds) {
        QString expected = model;
        expected.replace(anyLineEnd, lineEndUnits(lineEnd).toString());
        const Text result = text.withLineEnds(lineEnd);
        QCOMPARE(result.toString(), expected);
        QCOMPARE(result.metrics(), test::metricsOf(expected));
        QVERIFY(result.metrics().hasOnly(lineEnd));
        QCOMPARE(result.metrics().lineBreaks(), text.metrics().lineBreaks());
    }
}

void LineEndsTest::withLineEnds_ofAUniformText_isTheSameValue()
{
    QString lines;
    for (int i = 0; i < 5000; ++i)
        lines += u"行 "_s + QString::number(i) + u"\r\n"_s;
    const Text text = textOf(lines);
    QVERIFY(text.withLineEnds(LineEnd::CrLf).isSameValue(text));
    QVERIFY(!text.withLineEnds(LineEnd::LineFeed).isSameValue(text));
    QVERIFY(Text().withLineEnds(LineEnd::CrLf).isEmpty());
}

void LineEndsTest::withLineEnds_ofTenMegabytes_changesEveryLine()
{
    constexpr qint64 kLines = 100'000;
    const QString line = QString(49, u'x') + u"\n"_s + QString(48, u'y') + u"\r\n"_s;
    const Text text = textOf(line.repeated(kLines));
    QCOMPARE(text.size(), kLines * line.size());
    const Text result = text.withLineEnds(LineEnd::CrLf);
    QCOMPARE(result.size(), text.size() + kLines);
    QCOMPARE(result.metrics().lineEnds(LineEnd::CrLf), 2 * kLines);
    QVERIFY(result.metrics().hasOnly(LineEnd::CrLf));
    QCOMPARE(result.withLineEnds(LineEnd::LineFeed).size(), text.size() - kLines);
}

QTEST_GUILESS_MAIN(LineEndsTest)
#include "LineEndsTest.moc"
