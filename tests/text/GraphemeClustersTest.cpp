#include "text/GraphemeClusters.h"

#include "text/Text.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

using namespace penwick;

namespace {

constexpr auto kBreakTestFile = "/usr/share/unicode/auxiliary/GraphemeBreakTest.txt";

struct BreakCase
{
    QString text;
    QList<qint64> boundaries; // Ends of clusters, in UTF-16 code units.
};

/// Reads a line such as "÷ 0020 × 0308 ÷ 0020 ÷".
BreakCase parseCase(const QString &line)
{
    BreakCase result;
    const QStringList words = line.split(u' ', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < words.size(); ++i) {
        if (words[i] == QStringLiteral("÷")) {
            if (!result.text.isEmpty())
                result.boundaries.append(result.text.size());
        } else if (words[i] != QStringLiteral("×")) {
            const char32_t codePoint = words[i].toUInt(nullptr, 16);
            result.text += QString::fromUcs4(&codePoint, 1);
        }
    }
    return result;
}

std::u16string_view viewOf(const QString &text)
{
    return {reinterpret_cast<const char16_t *>(text.utf16()),
            static_cast<std::size_t>(text.size())};
}

} // namespace

class GraphemeClustersTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unicodeBreakTest_countsAndStepsAgree_data();
    void unicodeBreakTest_countsAndStepsAgree();
    void longStretchesOfCommonCharacters_areCountedAsTheIteratorDoes();
    void certainBoundaries_areBoundariesInEveryCase();
    void certainBoundaries_divideWhatIsCounted();
    void commonCharacters_haveCertainBoundaries();
};

void GraphemeClustersTest::unicodeBreakTest_countsAndStepsAgree_data()
{
    QTest::addColumn<QString>("line");
    QFile file(QString::fromLatin1(kBreakTestFile));
    QVERIFY2(file.open(QIODevice::ReadOnly), "the package unicode-data is needed");
    int cases = 0;
    int announced = 0; // The count that the end of the file states. It grows with each Unicode
                       // version.
    while (!file.atEnd()) {
        const QString whole = QString::fromUtf8(file.readLine());
        if (whole.startsWith(u"# Lines:"))
            announced = whole.section(u':', 1).trimmed().toInt();
        const QString line = whole.section(u'#', 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        QTest::addRow("case %d", ++cases) << line;
    }
    QVERIFY(cases >= 602);
    QCOMPARE(cases, announced);
}

void GraphemeClustersTest::unicodeBreakTest_countsAndStepsAgree()
{
    QFETCH(QString, line);
    const BreakCase expected = parseCase(line);
    QCOMPARE(clusters::count(viewOf(expected.text)), expected.boundaries.size());
    const Text text{QStringView(expected.text)};
    // A text never holds a lone surrogate, so a case with one does not apply.
    if (text.toString() != expected.text)
        return;
    QCOMPARE(text.metrics().clusters, expected.boundaries.size());
    qint64 previous = 0;
    for (const qint64 boundary : expected.boundaries) {
        QCOMPARE(text.nextClusterBoundary(previous), boundary);
        QCOMPARE(text.previousClusterBoundary(boundary), previous);
        previous = boundary;
    }
}

void GraphemeClustersTest::longStretchesOfCommonCharacters_areCountedAsTheIteratorDoes()
{
    // Common characters are counted in blocks; the others stand anywhere in and between those.
    const QStringList common{QStringLiteral("a"),
                             QStringLiteral("か"),
                             QStringLiteral("漢"),
                             QStringLiteral("가"),
                             QStringLiteral("각"),
                             QStringLiteral("\uD7A3"),
                             QStringLiteral("\r\n"),
                             QStringLiteral("\r"),
                             QStringLiteral("\n"),
                             QStringLiteral("\u00AD"),
                             QStringLiteral("\u02FF"),
                             QStringLiteral("\u9FFF")};
    const QStringList rare{QStringLiteral("\u3099"),
                           QStringLiteral("\u302A"),
                           QStringLiteral("\u0301"),
                           QStringLiteral("\u0300"),
                           QStringLiteral("\uFF9E"),
                           QStringLiteral("\u200D\U0001F469"),
                           QStringLiteral("\u1100\u1161"),
                           QStringLiteral("\u1100"),
                           QStringLiteral("\u1161"),
                           QStringLiteral("\u11A8"),
                           QStringLiteral("\uD7A4"),
                           QStringLiteral("\uD7B0"),
                           QStringLiteral("\uABFF"),
                           QStringLiteral("\uA66F"),
                           QStringLiteral("\u2FFF")};
    QRandomGenerator random(11);
    for (int run = 0; run < 3000; ++run) {
        QString text;
        const int rarity = random.bounded(2, 200);
        for (int i = random.bounded(1, 400); i > 0; --i)
            text += random.bounded(rarity) == 0 ? rare[random.bounded(rare.size())]
                                                : common[random.bounded(common.size())];
        qint64 steps = 0;
        for (qsizetype at = 0; at < text.size(); at = clusters::following(viewOf(text), at))
            ++steps;
        QCOMPARE(clusters::count(viewOf(text)), steps);
    }
}

void GraphemeClustersTest::certainBoundaries_areBoundariesInEveryCase()
{
    QFile file(QString::fromLatin1(kBreakTestFile));
    QVERIFY(file.open(QIODevice::ReadOnly));
    int certain = 0;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).section(u'#', 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        const BreakCase expected = parseCase(line);
        const QList<uint> points = expected.text.toUcs4();
        qint64 offset = 0;
        for (qsizetype i = 1; i < points.size(); ++i) {
            offset += QChar::requiresSurrogates(points[i - 1]) ? 2 : 1;
            if (!clusters::isCertainBoundary(points[i - 1], points[i]))
                continue;
            ++certain;
            QVERIFY2(expected.boundaries.contains(offset), qPrintable(line));
        }
    }
    QVERIFY(certain > 250);
}

void GraphemeClustersTest::certainBoundaries_divideWhatIsCounted()
{
    // Characters of every break class, and of the scripts and sequences in which more than two
    // characters decide about a boundary.
    const QList<char32_t> alphabet{
        U'a',          U' ',      U'\n',     U'\r',     U'\u0085',     U'か',         U'\u3099',
        U'\u0301',     U'\u200D', U'\uFE0F', U'\u2764', U'\U0001F469', U'\U0001F3FD', U'\U0001F1EF',
        U'\U0001F1F5', U'\u1100', U'\u1161', U'\u11A8', U'가',         U'각',         U'\u0915',
        U'\u094D',     U'\u0930', U'\u093F', U'\u0903', U'\u0995',     U'\u09CD',     U'\u0D15',
        U'\u0D4D',     U'\u0600', U'\u0628', U'\u0E01', U'\u0E33',     U'\u20E3',     U'1',
        U'\u00A9',     U'\u00AD', U'\u200B', U'\u1F1E', U'\U000E0067', U'\U000E007F'};
    QRandomGenerator random(4);
    int certain = 0;
    for (int run = 0; run < 30'000; ++run) {
        QList<char32_t> points(random.bounded(2, 10));
        for (char32_t &point : points)
            point = alphabet[random.bounded(alphabet.size())];
        for (qsizetype i = 1; i < points.size(); ++i) {
            if (!clusters::isCertainBoundary(points[i - 1], points[i]))
                continue;
            ++certain;
            const QString before = QString::fromUcs4(points.constData(), i);
            const QString after = QString::fromUcs4(points.constData() + i, points.size() - i);
            const QString whole = before + after;
            QVERIFY2(clusters::isBoundary(viewOf(whole), before.size()), qPrintable(whole));
            QCOMPARE(clusters::count(viewOf(before)) + clusters::count(viewOf(after)),
                     clusters::count(viewOf(whole)));
        }
    }
    QVERIFY(certain > 50'000);
}

void GraphemeClustersTest::commonCharacters_haveCertainBoundaries()
{
    // Otherwise a line of only these characters would have to be scanned from its start.
    QVERIFY(clusters::isCertainBoundary(U'한', U'국'));
    QVERIFY(clusters::isCertainBoundary(U'가', U'나'));
    QVERIFY(clusters::isCertainBoundary(U'😀', U'😀'));
    QVERIFY(!clusters::isCertainBoundary(U'\u1100', U'가'));
    QVERIFY(!clusters::isCertainBoundary(U'가', U'\u11A8'));
    // Decomposed sequences, as file systems and input methods produce them.
    QVERIFY(clusters::isCertainBoundary(U'\u3099', U'か'));
    QVERIFY(clusters::isCertainBoundary(U'\u0301', U'e'));
    QVERIFY(clusters::isCertainBoundary(U'\uFE0F', U'\u2764'));
    QVERIFY(clusters::isCertainBoundary(U'\U0001F3FD', U'\U0001F469'));
    QVERIFY(!clusters::isCertainBoundary(U'\u200D', U'\U0001F469'));
    QVERIFY(!clusters::isCertainBoundary(U'\u094D', U'\u0930'));
}

QTEST_GUILESS_MAIN(GraphemeClustersTest)
#include "GraphemeClustersTest.moc"
