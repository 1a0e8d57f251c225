#include "text/Text.h"

#include "support/TextModel.h"
#include "text/TextBuilder.h"
#include "text/TextNode.h"

#include <QTest>

#include <vector>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// The chunks of a text, and whether each is stored as ASCII.
std::vector<std::pair<qsizetype, bool>> chunksOf(const Text &text)
{
    std::vector<std::pair<qsizetype, bool>> chunks;
    text.forEachChunk(0, text.size(), [&chunks](const TextChunkView &chunk) {
        chunks.emplace_back(chunk.length, chunk.ascii != nullptr);
        return true;
    });
    return chunks;
}

} // namespace

class TextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyText_hasNoCharactersAndNoRoot();
    void loneSurrogates_becomeReplacementCharacters();
    void insertionInsidePair_goesBeforeThePair();
    void replacingHalfAPair_replacesThePair();
    void emptyStretchInsidePair_isEmpty();
    void boundaryWithin_isFoundOrNot();
    void lineOfEmoji_isSteppedThroughAtAnySize();
    void copies_areTheSameValue();
    void crLf_isOneClusterTwoSeparatorsOneLineBreak();
    void offsetAfterBreaks_countsEachKind();
    void hugeCluster_staysOneCluster();
    void markTypedAtChunkEdge_joinsTheLastCharacter();
    void asciiWithCrLfAtChunkEdge_hasTheMetricsOfItsBytes();
    void deletionJoiningCrAndLf_makesOnePair();
    void mixedText_equalsItselfBuiltInPieces();
    void text_doesNotDependOnHowTheUnitsCome();
    void asciiAtTheStart_fillsWholeChunks();
    void manyLines_areFoundByNumber();
};

void TextTest::emptyText_hasNoCharactersAndNoRoot()
{
    const Text text;
    QCOMPARE(text.size(), 0);
    QCOMPARE(text.metrics(), TextMetrics());
    QCOMPARE(text.toUtf8(), QByteArray());
    QCOMPARE(text, Text(u""));
    QCOMPARE(text.separatorLineAndColumn(0), std::pair(qint64(1), qint64(0)));
    QCOMPARE(text.nextClusterBoundary(0), 0);
    QCOMPARE(text.previousClusterBoundary(0), 0);
}

void TextTest::loneSurrogates_becomeReplacementCharacters()
{
    const char16_t units[] = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D, 0xDE00, 0xD83D};
    const Text text(QStringView(units, 7));
    QCOMPARE(text.toString(), u"a\uFFFDb\uFFFD😀\uFFFD"_s);
    QCOMPARE(text.toUtf8(), u"a\uFFFDb\uFFFD😀\uFFFD"_s.toUtf8());
}

void TextTest::insertionInsidePair_goesBeforeThePair()
{
    QCOMPARE(Text(u"a😀b").replaced(2, 0, Text(u"x")).toString(), u"ax😀b"_s);
}

void TextTest::replacingHalfAPair_replacesThePair()
{
    QCOMPARE(Text(u"a😀b").replaced(1, 1, Text(u"x")).toString(), u"axb"_s);
    QCOMPARE(Text(u"a😀b").replaced(2, 1, Text(u"x")).toString(), u"axb"_s);
}

void TextTest::emptyStretchInsidePair_isEmpty()
{
    const Text text(u"a😀b");
    QCOMPARE(text.mid(2, 0), Text());
    QCOMPARE(text.mid(2, -1), Text());
    QCOMPARE(text.mid(2, 1).toString(), u"😀"_s);
}

void TextTest::boundaryWithin_isFoundOrNot()
{
    const Text text{QString(u"abc"_s + QString(5000, u'\u0301') + u"def"_s)};
    QCOMPARE(text.clusterBoundaryWithin(2, 1000), 2);
    QCOMPARE(text.clusterBoundaryWithin(500, 1000), 2);
    QCOMPARE(text.clusterBoundaryWithin(4000, 1000), std::nullopt);
    QCOMPARE(text.clusterBoundaryWithin(5005, 1000), 5005);
    QCOMPARE(text.clusterBoundaryWithin(9999, 1000), text.size());
    QCOMPARE(text.lineBreaksBefore(5005), 0);
    QCOMPARE(Text(u"a\r\nb\n").lineBreaksBefore(2), 1);
    QCOMPARE(Text(u"a\r\nb\n").lineBreaksBefore(3), 1);
    QCOMPARE(Text(u"a\r\nb\n").lineBreaksBefore(5), 2);
}

void TextTest::lineOfEmoji_isSteppedThroughAtAnySize()
{
    const Text text{u"😀"_s.repeated(1'000'000)};
    qint64 offset = 1'000'000;
    for (int i = 0; i < 1000; ++i) {
        QCOMPARE(text.nextClusterBoundary(offset), offset + 2);
        QCOMPARE(text.previousClusterBoundary(offset), offset - 2);
        offset += 2;
    }
}

void TextTest::copies_areTheSameValue()
{
    const Text text(u"日本語");
    const Text copy = text;
    QVERIFY(copy.isSameValue(text));
    QVERIFY(!Text(u"日本語").isSameValue(text));
    QCOMPARE(Text(u"日本語"), text);
    QVERIFY(Text(u"日本") != text);
}

void TextTest::crLf_isOneClusterTwoSeparatorsOneLineBreak()
{
    const TextMetrics metrics = Text(u"a\r\nb").metrics();
    QCOMPARE(metrics.clusters, 3);
    QCOMPARE(metrics.separators, 2);
    QCOMPARE(metrics.lineBreaks(), 1);
    QCOMPARE(metrics.lineFeeds, 1);
}

void TextTest::offsetAfterBreaks_countsEachKind()
{
    const Text text(u"a\r\nb\rc\nd\u2028e");
    QCOMPARE(text.offsetAfterLineFeed(0), 0);
    QCOMPARE(text.offsetAfterLineFeed(1), 3);
    QCOMPARE(text.offsetAfterLineFeed(2), 7);
    QCOMPARE(text.offsetAfterLineFeed(3), text.size());
    QCOMPARE(text.offsetAfterLineBreak(1), 3);
    QCOMPARE(text.offsetAfterLineBreak(2), 5);
    QCOMPARE(text.offsetAfterLineBreak(3), 7);
    QCOMPARE(text.offsetAfterLineBreak(4), 9);
    QCOMPARE(text.offsetAfterSeparator(1), 2);
    QCOMPARE(text.offsetAfterSeparator(2), 3);
    QCOMPARE(text.offsetAfterSeparator(3), 5);
}

void TextTest::hugeCluster_staysOneCluster()
{
    const QString marks = u'e' + QString(100'000, u'\u0301');
    Text text{QStringView(marks)};
    QCOMPARE(text.metrics().clusters, 1);
    QCOMPARE(text.nextClusterBoundary(0), text.size());
    QCOMPARE(text.previousClusterBoundary(text.size()), 0);
    text = text.replaced(50'000, 0, Text(u"x"));
    QCOMPARE(text.metrics().clusters, 2);
    text = text.replaced(50'000, 1, Text());
    QCOMPARE(text.metrics().clusters, 1);
}

void TextTest::markTypedAtChunkEdge_joinsTheLastCharacter()
{
    // Chunks hold some thousand code units, so these offsets cover several chunk edges.
    const QString plain(20'000, u'x');
    for (const qsizetype offset : {4095, 4096, 4097, 8192, 12'288, 20'000}) {
        const Text text = Text{QStringView(plain)}.replaced(offset, 0, Text(u"\u0301"));
        QCOMPARE(text.metrics().clusters, 20'000);
        QCOMPARE(text.previousClusterBoundary(offset + 1), offset - 1);
    }
}

void TextTest::asciiWithCrLfAtChunkEdge_hasTheMetricsOfItsBytes()
{
    for (const qsizetype length : {100, 1100, 4094, 4095, 4096, 8190, 8191, 8192, 12'287}) {
        for (const QString &before : {QString(), u"日"_s, u"a\r"_s, QString(2000, u'a')}) {
            const QString model = before + QString(length, u'x') + u"\r\n"_s + QString(6000, u'\n');
            const Text text{QStringView(model)};
            QCOMPARE(text.toString(), model);
            QCOMPARE(text.metrics(), Text::fromUtf8(model.toUtf8())->metrics());
            QCOMPARE(text.metrics().crLfPairs, 1);
        }
    }
}

void TextTest::deletionJoiningCrAndLf_makesOnePair()
{
    const QString lines = QString(4095, u'x') + u"\rabc\n"_s + QString(5000, u'y');
    const Text text = Text{QStringView(lines)}.replaced(4096, 3, Text());
    QCOMPARE(text.metrics().crLfPairs, 1);
    QCOMPARE(text.metrics().lineBreaks(), 1);
    QCOMPARE(text.metrics().clusters, text.size() - 1);
}

void TextTest::mixedText_equalsItselfBuiltInPieces()
{
    QRandomGenerator random(3);
    const QString model = test::randomText(random, 2000);
    Text pieces;
    for (qsizetype i = 0; i < model.size(); i += 997)
        pieces = pieces.appended(Text{QStringView(model.mid(i, 997))});
    // A piece may end inside a surrogate pair: each half then becomes U+FFFD.
    Text whole;
    for (qsizetype i = 0; i < model.size(); i += 997)
        whole = whole.replaced(whole.size(), 0, Text{QStringView(model.mid(i, 997))});
    QCOMPARE(pieces, whole);
    QCOMPARE(pieces.metrics(), test::metricsOf(pieces.toString()));
}

// Stretches of ASCII and of other characters, which are appended in blocks or unit by unit.
void TextTest::text_doesNotDependOnHowTheUnitsCome()
{
    QRandomGenerator random(5);
    for (int round = 0; round < 60; ++round) {
        const int longest = 1 << random.bounded(1, 13);
        QString units;
        while (units.size() < 30'000) {
            for (const QString &unit :
                 {u"a"_s, u"日"_s, u"a"_s, u"é\n"_s, u"\r\n"_s, u"👩‍👧"_s})
                if (random.bounded(6) != 0)
                    units += unit.repeated(random.bounded(longest));
        }
        const std::u16string copy = units.toStdU16String();
        const std::u16string_view all = copy;
        TextBuilder whole;
        whole.appendUtf16(all);
        TextBuilder single;
        for (std::size_t i = 0; i < all.size(); ++i)
            single.appendUtf16(all.substr(i, 1));
        const Text expected = single.finish();
        const Text text = whole.finish();
        QCOMPARE(text, expected);
        QCOMPARE(text.toString(), units);
        QVERIFY(text.metrics() == expected.metrics());
        // Of a longer stretch of ASCII that comes at once, whole chunks are cut off directly.
        if (longest <= TextNode::kLeafUnits / 8)
            QVERIFY(chunksOf(text) == chunksOf(expected));
    }
}

void TextTest::asciiAtTheStart_fillsWholeChunks()
{
    constexpr qsizetype kLeaf = TextNode::kLeafUnits;
    TextBuilder builder;
    builder.appendUtf16(std::u16string(kLeaf * 5 / 2, u'a'));
    const std::vector<std::pair<qsizetype, bool>> expected{
        {kLeaf, true}, {kLeaf, true}, {kLeaf / 2, true}};
    QVERIFY(chunksOf(builder.finish()) == expected);
}

void TextTest::manyLines_areFoundByNumber()
{
    QString lines;
    for (int i = 0; i < 20'000; ++i)
        lines += QString::number(i) + u'\n';
    const Text text{QStringView(lines)};
    for (const int line : {0, 1, 9, 10, 999, 12'345, 19'999}) {
        const qint64 start = text.offsetAfterLineFeed(line);
        QVERIFY(text.slice(start, 8).startsWith(QString::number(line) + u'\n'));
        QCOMPARE(text.lineFeedLineAndColumn(start), std::pair(qint64(line), qint64(0)));
    }
}

QTEST_GUILESS_MAIN(TextTest)
#include "TextTest.moc"
