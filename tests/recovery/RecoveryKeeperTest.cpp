#include "recovery/RecoveryKeeper.h"

#include "recovery/RecoverySession.h"
#include "support/FailingAllocation.h"
#include "support/FakeClock.h"
#include "support/TemporaryHome.h"
#include "support/Waits.h"

#include <QDirIterator>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr RecoveryTimes kSoon{1ms, 1h};

/// A document with a keeper.
class KeptDocument final
{
public:
    explicit KeptDocument(const test::TemporaryHome &home, RecoveryTimes times = kSoon)
        : m_root(home.file(u"state/penwick/recovery"_s))
    {
        keeper.emplace(m_root, times, clock.clock());
        keeper->watch(&document, {[this] { return caret; }, [] { return u"メモ"_s; }});
    }

    ~KeptDocument()
    {
        if (keeper)
            keeper->forget(&document);
    }

    void type(const QString &text)
    {
        document.textStorage()->replaceCharacters({document.textStorage()->length(), 0},
                                                  Text(text));
    }

    [[nodiscard]] QStringList copies() const
    {
        QStringList paths;
        for (QDirIterator files(m_root, {u"*.copy"_s}, QDir::Files, QDirIterator::Subdirectories);
             files.hasNext();)
            paths << files.next();
        return paths;
    }

    /// The only copy; empty if there is none.
    [[nodiscard]] RecoveredText copy() const
    {
        const std::atomic<bool> isCancelled = false;
        const QStringList paths = copies();
        return paths.size() == 1
                   ? RecoveryCopy::read(paths.front(), isCancelled).value_or(RecoveredText())
                   : RecoveredText();
    }

    [[nodiscard]] const QString &root() const { return m_root; }

    test::FakeClock clock;
    TextDocument document;
    qint64 caret = 0;
    std::optional<RecoveryKeeper> keeper;

private:
    QString m_root;
};

} // namespace

class RecoveryKeeperTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void edits_afterAPause_areInTheCopy();
    void typing_withoutAPause_isWrittenMeanwhile();
    void document_withoutEdits_hasNoCopy();
    void document_editedBefore_hasACopy();
    void save_removesTheCopy();
    void undoToTheSavedText_removesTheCopy();
    void forget_removesTheCopy();
    void end_withoutEdits_leavesNothing();
    void end_withEdits_keepsTheLastState();
    void failure_isReportedOnceAndTriedAgain();
    void failure_withoutAnotherEdit_isTriedAgain();
    void adoptedCopy_isReplacedByTheDocuments();
    void write_withoutMemory_isAFailure();
};

void RecoveryKeeperTest::edits_afterAPause_areInTheCopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.caret = 2;
    kept.type(u"日本語"_s);
    QVERIFY(written.wait(test::kLongWait));
    const RecoveredText first = kept.copy();
    QCOMPARE(first.text.toString(), u"日本語"_s);
    QCOMPARE(first.caret, 2);
    QCOMPARE(first.summary.origin.name, u"メモ"_s);
    QCOMPARE(first.summary.time, kept.clock.clock()().toMSecsSinceEpoch());
    kept.clock.advanceSeconds(10);
    kept.type(u"の文章"_s);
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(kept.copy().text.toString(), u"日本語の文章"_s);
    QCOMPARE(kept.copy().summary.time - first.summary.time, 10'000);
}

void RecoveryKeeperTest::typing_withoutAPause_isWrittenMeanwhile()
{
    const test::TemporaryHome home;
    KeptDocument kept(home, {1h, 1ms});
    const QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    QTimer keys;
    connect(&keys, &QTimer::timeout, this, [&kept] { kept.type(u"x"_s); });
    keys.start(0);
    QTRY_VERIFY_WITH_TIMEOUT(written.size() >= 3, test::kLongWait);
    QVERIFY(kept.copy().text.size() > 0);
}

void RecoveryKeeperTest::document_withoutEdits_hasNoCopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home, {0ms, 0ms});
    kept.document.setContentString(Text(u"opened"));
    QCoreApplication::processEvents();
    kept.keeper->forget(&kept.document);
    kept.keeper.reset(); // Waits for what it may have started.
    QVERIFY(!QFile::exists(home.file(u"state"_s)));
}

void RecoveryKeeperTest::document_editedBefore_hasACopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    TextDocument other;
    other.setContentString(Text(u"from elsewhere"));
    other.textStorage()->forgetSavePoint();
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.keeper->watch(&other, {[] { return 0; }, [] { return QString(); }});
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(kept.copy().text.toString(), u"from elsewhere"_s);
    kept.keeper->forget(&other);
}

void RecoveryKeeperTest::save_removesTheCopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    for (int round = 0; round < 3; ++round) {
        kept.type(u"text"_s);
        QVERIFY(written.wait(test::kLongWait));
        QCOMPARE(kept.copies().size(), 1);
        QVERIFY(kept.document.writeToFile(home.file(u"a.txt"_s)));
        QTRY_COMPARE_WITH_TIMEOUT(kept.copies().size(), 0, test::kLongWait);
    }
    kept.type(u"."_s);
    QVERIFY(written.wait(test::kLongWait));
    const RecoverySummary summary = kept.copy().summary;
    QCOMPARE(summary.origin.filePath, home.file(u"a.txt"_s));
    QVERIFY(summary.origin.version == FileVersion::of(home.file(u"a.txt"_s)));
    QCOMPARE(summary.utf8Bytes, 13);
}

void RecoveryKeeperTest::undoToTheSavedText_removesTheCopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"text"_s);
    QVERIFY(written.wait(test::kLongWait));
    kept.document.textStorage()->undo();
    QTRY_COMPARE_WITH_TIMEOUT(kept.copies().size(), 0, test::kLongWait);
    kept.document.textStorage()->redo();
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(kept.copy().text.toString(), u"text"_s);
}

void RecoveryKeeperTest::forget_removesTheCopy()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"text"_s);
    QVERIFY(written.wait(test::kLongWait));
    kept.type(u"not written yet"_s);
    kept.keeper->forget(&kept.document);
    QTRY_COMPARE_WITH_TIMEOUT(kept.copies().size(), 0, test::kLongWait);
}

void RecoveryKeeperTest::end_withoutEdits_leavesNothing()
{
    const test::TemporaryHome home;
    KeptDocument kept(home);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"text"_s);
    QVERIFY(written.wait(test::kLongWait));
    kept.keeper->forget(&kept.document);
    kept.keeper.reset();
    QVERIFY(!QFile::exists(home.file(u"state/penwick"_s)));
}

void RecoveryKeeperTest::end_withEdits_keepsTheLastState()
{
    const test::TemporaryHome home;
    KeptDocument kept(home, {1h, 1h});
    kept.type(u"typed a moment ago"_s);
    kept.keeper.reset();
    QCOMPARE(kept.copy().text.toString(), u"typed a moment ago"_s);
    const auto abandoned = RecoverySession::takeAbandoned(kept.root());
    QCOMPARE(abandoned.size(), std::size_t(1));
    QCOMPARE(abandoned.front().copies(), kept.copies());
}

void RecoveryKeeperTest::failure_isReportedOnceAndTriedAgain()
{
    const test::TemporaryHome home;
    home.write(u"state/penwick"_s, "a file where the folder should be");
    KeptDocument kept(home);
    QSignalSpy failed(&*kept.keeper, &RecoveryKeeper::failed);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"one"_s);
    QVERIFY(failed.wait(test::kLongWait));
    kept.type(u" two"_s);
    kept.keeper->forget(&kept.document); // Discards the second write.
    kept.keeper->watch(&kept.document, {[] { return 0; }, [] { return QString(); }});
    QVERIFY(QFile::remove(home.file(u"state/penwick"_s)));
    kept.type(u" three"_s);
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(failed.size(), 1);
    QCOMPARE(kept.copy().text.toString(), u"one two three"_s);
}

void RecoveryKeeperTest::failure_withoutAnotherEdit_isTriedAgain()
{
    const test::TemporaryHome home;
    home.write(u"state/penwick"_s, "a file where the folder should be");
    KeptDocument kept(home, {1ms, 1ms});
    QSignalSpy failed(&*kept.keeper, &RecoveryKeeper::failed);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"text"_s);
    QVERIFY(failed.wait(test::kLongWait));
    QVERIFY(QFile::remove(home.file(u"state/penwick"_s)));
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(kept.copy().text.toString(), u"text"_s);
}

void RecoveryKeeperTest::adoptedCopy_isReplacedByTheDocuments()
{
    const test::TemporaryHome home;
    KeptDocument kept(home, {1h, 1h});
    {
        KeptDocument former(home, {1h, 1h});
        former.type(u"left"_s);
        former.keeper.reset();
    }
    const QStringList left = kept.copies();
    QCOMPARE(left.size(), 1);
    kept.type(u"left and continued"_s);
    kept.keeper->adopt(&kept.document, left.front());
    QTRY_VERIFY_WITH_TIMEOUT(kept.copies() != left, test::kLongWait);
    QCOMPARE(kept.copy().text.toString(), u"left"_s); // There is one at every moment.
    kept.keeper.reset();
    QCOMPARE(kept.copy().text.toString(), u"left and continued"_s);
}

void RecoveryKeeperTest::write_withoutMemory_isAFailure()
{
    const test::TemporaryHome home;
    KeptDocument kept(home, {1ms, 1h});
    QSignalSpy failed(&*kept.keeper, &RecoveryKeeper::failed);
    QSignalSpy written(&*kept.keeper, &RecoveryKeeper::written);
    kept.type(u"text"_s);
    QVERIFY(written.wait(test::kLongWait)); // The thread runs now.
    test::failsNextAllocation = true;
    kept.type(u" lost"_s);
    QVERIFY(failed.wait(test::kLongWait));
    QVERIFY(!test::failsNextAllocation);
    kept.type(u" and more"_s);
    QVERIFY(written.wait(test::kLongWait));
    QCOMPARE(kept.copy().text.toString(), u"text lost and more"_s);
}

QTEST_GUILESS_MAIN(RecoveryKeeperTest)
#include "RecoveryKeeperTest.moc"
