#include "text/GraphemeClusters.h"

#include "text/Text.h"

#include <QFile>
#include <QTest>

using namespace penwick;

namespace {

constexpr auto kBreakTestFile = "/usr/share/unicode/auxiliary/GraphemeBreakTest.txt";

struct BreakCase
{
    QString text;
    QList<qint64> boundaries; // Ends of clusters, UTF-16 units.
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
    void certainBoundaries_areBoundariesInEveryCase();
    void plainKoreanAndEmoji_haveCertainBoundaries();
};

void GraphemeClustersTest::unicodeBreakTest_countsAndStepsAgree_data()
{
    QTest::addColumn<QString>("line");
    QFile file(QString::fromLatin1(kBreakTestFile));
    QVERIFY2(file.open(QIODevice::ReadOnly), "the package unicode-data is needed");
    int cases = 0;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).section(u'#', 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        QTest::addRow("case %d", ++cases) << line;
    }
    QCOMPARE(cases, 602);
}

void GraphemeClustersTest::unicodeBreakTest_countsAndStepsAgree()
{
    QFETCH(QString, line);
    const BreakCase expected = parseCase(line);
    QCOMPARE(clusters::count(viewOf(expected.text)), expected.boundaries.size());
    const Text text{QStringView(expected.text)};
    // Lone surrogates stand in no text; such a case speaks of what cannot occur.
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

void GraphemeClustersTest::plainKoreanAndEmoji_haveCertainBoundaries()
{
    // Without them a line of nothing else would have to be looked at from its start.
    QVERIFY(clusters::isCertainBoundary(U'한', U'국'));
    QVERIFY(clusters::isCertainBoundary(U'가', U'나'));
    QVERIFY(clusters::isCertainBoundary(U'😀', U'😀'));
    QVERIFY(!clusters::isCertainBoundary(U'\u1100', U'가'));
    QVERIFY(!clusters::isCertainBoundary(U'가', U'\u11A8'));
}

QTEST_GUILESS_MAIN(GraphemeClustersTest)
#include "GraphemeClustersTest.moc"
