#include "support/TextModel.h"
#include "text/Text.h"

#include <QTest>

using namespace penwick;

namespace {

/// A random offset of the model text that is not inside a surrogate pair.
qsizetype randomOffset(QRandomGenerator &random, const QString &model)
{
    qsizetype offset = random.bounded(model.size() + 1);
    if (offset < model.size() && model[offset].isLowSurrogate())
        --offset;
    return offset;
}

} // namespace

class TextPropertyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomEdits_matchStringModelAndIcu_data();
    void randomEdits_matchStringModelAndIcu();
    void randomOffsets_positionsMatchModel();
    void clusterSteps_matchIcu();
};

void TextPropertyTest::randomEdits_matchStringModelAndIcu_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TextPropertyTest::randomEdits_matchStringModelAndIcu()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    QString model = test::randomText(random, 600);
    Text text{QStringView(model)};
    for (int edit = 0; edit < 150; ++edit) {
        const qsizetype start = randomOffset(random, model);
        const qsizetype reach = random.bounded(6) == 0 ? 5000 : 12;
        qsizetype end = std::min<qsizetype>(model.size(), start + random.bounded(reach));
        if (end < model.size() && model[end].isLowSurrogate())
            ++end;
        const QString insertion = test::randomText(random, random.bounded(4));
        model.replace(start, end - start, insertion);
        text = text.replaced(start, end - start, Text{QStringView(insertion)});
        QCOMPARE(text.metrics(), test::metricsOf(model));
        if (edit % 25 == 0) {
            QCOMPARE(text.toString(), model);
            QCOMPARE(text, Text{QStringView(model)});
            QCOMPARE(text.toUtf8(), model.toUtf8());
        }
    }
    QCOMPARE(text.toString(), model);
}

void TextPropertyTest::randomOffsets_positionsMatchModel()
{
    QRandomGenerator random(99);
    const QString model = test::randomText(random, 3000);
    const Text text{QStringView(model)};
    for (int i = 0; i < 400; ++i) {
        const qsizetype offset = randomOffset(random, model);
        QCOMPARE(text.metricsBefore(offset), test::metricsOf(model.first(offset)));
        QCOMPARE(text.lineBreaksBefore(offset), text.metricsBefore(offset).lineBreaks());
        QCOMPARE(text.separatorLineAndColumn(offset), test::separatorLineAndColumn(model, offset));
        const qsizetype lineStart = offset == 0 ? 0 : model.lastIndexOf(u'\n', offset - 1) + 1;
        QCOMPARE(text.lineFeedLineAndColumn(offset).second,
                 test::clustersByIcu(QStringView(model).sliced(lineStart, offset - lineStart)));
        const qint64 end = randomOffset(random, model);
        const qint64 length = std::max<qint64>(0, end - offset);
        QCOMPARE(text.mid(offset, length).toString(), model.mid(offset, length));
        QCOMPARE(text.slice(offset, length), model.mid(offset, length));
    }
}

void TextPropertyTest::clusterSteps_matchIcu()
{
    QRandomGenerator random(7);
    const QString model = test::randomText(random, 1500);
    const Text text{QStringView(model)};
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText units = UTEXT_INITIALIZER;
    utext_openUChars(&units, QStringView(model).utf16(), model.size(), &status);
    iterator->setText(&units, status);
    qint64 previous = 0;
    for (int32_t next = iterator->next(); next != icu::BreakIterator::DONE;
         next = iterator->next()) {
        QCOMPARE(text.nextClusterBoundary(previous), qint64(next));
        QCOMPARE(text.previousClusterBoundary(next), previous);
        QCOMPARE(text.clusterBoundaryAtOrBefore(next), qint64(next));
        const auto within = text.clusterBoundaryWithin(next, 32);
        QVERIFY(!within || *within == next);
        for (qint64 inside = previous + 1; inside < next; ++inside)
            QCOMPARE(text.clusterBoundaryAtOrBefore(inside), previous);
        previous = next;
    }
    QCOMPARE(previous, text.size());
    utext_close(&units);
}

QTEST_GUILESS_MAIN(TextPropertyTest)
#include "TextPropertyTest.moc"
