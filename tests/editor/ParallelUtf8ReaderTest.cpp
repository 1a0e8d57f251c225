#include "editor/ParallelUtf8Reader.h"

#include "support/FailingAllocation.h"
#include "support/TextModel.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class ParallelUtf8ReaderTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_anyPieces_isTheSame_data();
    void text_anyPieces_isTheSame();
    void start_anyPieces_growsToTheText();
    void start_beforeAnInvalidByte_isNoFurtherThanIt();
    void bytes_invalidAnywhere_areRefused();
    void reader_droppedEarly_ends();
    void memory_missing_isReported();
};

namespace {

/// Reads in blocks of random sizes.
std::optional<Text>
read(QByteArrayView bytes, unsigned threads, qsizetype piece, QRandomGenerator &random)
{
    ParallelUtf8Reader reader({}, threads, piece);
    while (!bytes.isEmpty()) {
        const qsizetype size = std::min<qsizetype>(bytes.size(), 1 + random.bounded(40));
        reader.append(bytes.first(size));
        bytes = bytes.sliced(size);
    }
    return reader.finish();
}

} // namespace

void ParallelUtf8ReaderTest::text_anyPieces_isTheSame_data()
{
    QTest::addColumn<unsigned>("threads");
    QTest::newRow("none") << 0U;
    QTest::newRow("one") << 1U;
    QTest::newRow("four") << 4U;
}

// Line breaks are rare in some texts, so that pieces also end inside of lines, CR LF pairs and
// grapheme clusters.
void ParallelUtf8ReaderTest::text_anyPieces_isTheSame()
{
    QFETCH(const unsigned, threads);
    QRandomGenerator random(threads + 1);
    for (int i = 0; i < 100; ++i) {
        QString model = test::randomText(random, random.bounded(200));
        if (i % 2 == 0)
            model.replace(u'\n', u'ー');
        const Text expected(model);
        const QByteArray bytes = expected.toUtf8();
        const auto text = read(bytes, threads, 5 + random.bounded(60), random);
        QVERIFY(text.has_value());
        QCOMPARE(text->toString(), expected.toString());
        QVERIFY(text->metrics() == expected.metrics());
        const qint64 offset = random.bounded(expected.size() + 1);
        QVERIFY(text->metricsBefore(offset) == expected.metricsBefore(offset));
    }
}

// The pieces end as above, so a start may end inside of a line, a CR LF pair or a cluster.
void ParallelUtf8ReaderTest::start_anyPieces_growsToTheText()
{
    QRandomGenerator random(3);
    for (int i = 0; i < 100; ++i) {
        QString model = test::randomText(random, 20 + random.bounded(200));
        if (i % 2 == 0)
            model.replace(u'\n', u'ー');
        const Text expected(model);
        std::vector<Text> starts;
        ParallelUtf8Reader reader([&](const Text &start) { starts.push_back(start); },
                                  static_cast<unsigned>(i % 4),
                                  5 + random.bounded(60));
        reader.append(expected.toUtf8());
        QVERIFY(reader.finish().has_value());
        qint64 before = 0;
        for (const Text &start : starts) {
            QVERIFY(start.size() >= before);
            before = start.size();
            QCOMPARE(start.toString(), expected.mid(0, before).toString());
            QVERIFY(start.metrics() == expected.metricsBefore(before));
        }
        QVERIFY(starts.back() == expected);
    }
}

void ParallelUtf8ReaderTest::start_beforeAnInvalidByte_isNoFurtherThanIt()
{
    const QByteArray valid = QByteArray("行\r\n").repeated(100);
    Text start;
    ParallelUtf8Reader reader([&](const Text &text) { start = text; }, 2, 20);
    reader.append(valid + '\xFF' + valid);
    QVERIFY(!reader.finish().has_value());
    QVERIFY(start.metrics().utf8Bytes <= valid.size());
    QVERIFY(start == Text::fromUtf8(valid)->mid(0, start.size()));
}

void ParallelUtf8ReaderTest::bytes_invalidAnywhere_areRefused()
{
    QRandomGenerator random(7);
    int refused = 0;
    for (int i = 0; i < 500; ++i) {
        QByteArray bytes = Text(test::randomText(random, 1 + random.bounded(80))).toUtf8();
        const qsizetype at = random.bounded(bytes.size());
        if (i % 2 == 0)
            bytes[at] = static_cast<char>(random.bounded(256));
        else
            bytes.remove(at, 1 + random.bounded(3));
        const bool isValid = Text::fromUtf8(bytes).has_value();
        refused += isValid ? 0 : 1;
        QCOMPARE(read(bytes, 2, 5 + random.bounded(30), random).has_value(), isValid);
    }
    QVERIFY(refused > 80);
}

void ParallelUtf8ReaderTest::reader_droppedEarly_ends()
{
    ParallelUtf8Reader reader({}, 2, 10);
    for (int i = 0; i < 100; ++i)
        QVERIFY(reader.append("some text\n"));
}

void ParallelUtf8ReaderTest::memory_missing_isReported()
{
    ParallelUtf8Reader reader({}, 1, 1000);
    test::failsNextAllocation = true;
    reader.append(QByteArray("some text\n").repeated(1000));
    QVERIFY_THROWS_EXCEPTION(std::bad_alloc, static_cast<void>(reader.finish()));
    QVERIFY(!test::failsNextAllocation);
}

QTEST_GUILESS_MAIN(ParallelUtf8ReaderTest)
#include "ParallelUtf8ReaderTest.moc"
