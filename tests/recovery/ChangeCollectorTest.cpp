#include "recovery/ChangeCollector.h"

#include "editor/TextStorage.h"
#include "support/StoppedClock.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// A storage whose changes a collector follows.
struct FollowedStorage
{
    explicit FollowedStorage(const QString &text = {})
    {
        storage.setText(Text(text));
        static_cast<void>(collector.take());
        QObject::connect(&storage,
                         &TextStorage::changed,
                         [this](qint64 offset, qint64 removed, qint64 inserted) {
                             collector.add(storage.text(), offset, removed, inserted);
                         });
    }

    TextStorage storage{test::stoppedClock()};
    ChangeCollector collector;
};

Text applied(Text text, const std::vector<TextDifference> &changes)
{
    for (const TextDifference &change : changes)
        text = text.replaced(change.range.location, change.range.length, change.replacement);
    return text;
}

} // namespace

class ChangeCollectorTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void take_firstTime_requiresTheWholeText()
    {
        ChangeCollector collector;
        QVERIFY(!collector.take());
        QVERIFY(collector.take());
        collector.requireWhole();
        QVERIFY(!collector.take());
    }

    void typing_inOnePlace_isOneChange()
    {
        FollowedStorage followed(u"abcdef"_s);
        for (int i = 0; i < 5; ++i)
            followed.storage.replaceCharacters({3 + i, 0}, Text(u"x"));
        followed.storage.replaceCharacters({2, 4}, Text());
        const auto changes = followed.collector.take();
        QCOMPARE(changes->size(), std::size_t(1));
        QCOMPARE(changes->front().range, (TextRange{2, 1}));
        QCOMPARE(changes->front().replacement.toString(), u"xx"_s);
    }

    void edits_inManyPlaces_requireTheWholeText()
    {
        FollowedStorage followed(u"-"_s.repeated(10'000));
        for (int i = 0; i < 1000; ++i)
            followed.storage.replaceCharacters({i * 3, 1}, Text(u"x"));
        QCOMPARE(followed.collector.take()->size(), std::size_t(1000));
        for (int i = 0; i < 1001; ++i)
            followed.storage.replaceCharacters({i * 3, 1}, Text(u"y"));
        QVERIFY(!followed.collector.take());
    }

    void randomEdits_appliedToTheFormerText_giveTheNew()
    {
        QRandomGenerator random(20'261'122);
        FollowedStorage followed(u"あa😀b"_s);
        Text former = followed.storage.text();
        int changeCount = 0;
        for (int i = 0; i < 20'000; ++i) {
            const qint64 length = followed.storage.length();
            const qint64 offset = random.bounded(length + 1);
            const qint64 removed =
                random.bounded(8) == 0 ? random.bounded(length - offset + 1) : random.bounded(3);
            followed.storage.replaceCharacters({offset, removed},
                                               Text(u"い😀xyz"_s.first(random.bounded(7))));
            if (random.bounded(10) == 0)
                followed.storage.undo();
            if (random.bounded(20) > 0)
                continue;
            const auto changes = followed.collector.take();
            QVERIFY(changes);
            changeCount += static_cast<int>(changes->size());
            QCOMPARE(applied(former, *changes).toString(), followed.storage.text().toString());
            former = followed.storage.text();
        }
        QVERIFY(changeCount > 1000);
    }
};

QTEST_GUILESS_MAIN(ChangeCollectorTest)
#include "ChangeCollectorTest.moc"
