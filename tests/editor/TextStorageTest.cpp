#include "editor/TextStorage.h"

#include "support/StoppedClock.h"
#include "support/TextModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = TextStorage::EditKind;

class TextStorageTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typingRun_undoesAsOneStep();
    void typedLineBreak_endsTheRun();
    void movedCaret_endsTheRun();
    void pause_endsTheRun_data();
    void pause_endsTheRun();
    void changeFromTypingToDeleting_endsTheRun();
    void backspaceRun_undoesAsOneStep();
    void forwardDeleteRun_undoesAsOneStep();
    void editsInRows_undoAsOneStep();
    void group_undoesAsOneStep();
    void groupWithoutEdits_leavesNoStep();
    void undo_returnsSelectionBeforeAndRedoAfter();
    void savePoint_isFoundAgainByUndoAndRedo();
    void savePointInsideLostBranch_staysModified();
    void savePointInsideGroup_isPassedByUndoAndRedo();
    void saving_editedMeanwhile_isModifiedUntilUndone();
    void saving_stateThrownAwayMeanwhile_staysModified();
    void saving_replacedMeanwhile_staysModified();
    void saving_failed_keepsTheFormerSavePoint();
    void forgetSavePoint_everyState_isModifiedUntilSaved();
    void saving_typingGoesOn_isAStepOfItsOwn();
    void typingAfterSave_startsNewStep();
    void deletionsThatInsert_areStepsOfTheirOwn();
    void setText_emptiesHistoryAndKeepsEditedState();
    void extend_longerText_reportsWhatWasAddedAndRegistersNothing();
    void emptyEdit_registersNothing();
    void halfAPair_isReplacedWhole();
    void insertionInsidePair_removesNothing();
    void wholeReplacement_undoGivesTheSameValue();
    void changed_anyEdit_reportsWhatWasReplaced();
    void undoLimit_dropsTheOldestSteps();
    void undoLimit_largeStep_isKept();
    void undoLimit_smallSteps_count();
    void undoLimit_savePointDropped_isUnreachable();
    void randomEditsUndoRedo_matchModel_data();
    void randomEditsUndoRedo_matchModel();
};

namespace {

void type(TextStorage &storage, QStringView characters)
{
    for (const QChar c : characters)
        storage.replaceCharacters({storage.length(), 0}, Text(QStringView(&c, 1)), Kind::Typing);
}

} // namespace

void TextStorageTest::typingRun_undoesAsOneStep()
{
    TextStorage storage(test::stoppedClock());
    type(storage, u"abc");
    storage.undo();
    QVERIFY(storage.text().isEmpty());
    QVERIFY(!storage.canUndo());
    storage.redo();
    QCOMPARE(storage.text().toString(), u"abc"_s);
}

void TextStorageTest::typedLineBreak_endsTheRun()
{
    TextStorage storage(test::stoppedClock());
    type(storage, u"abc\ndef");
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abc\n"_s);
    storage.undo();
    QVERIFY(storage.text().isEmpty());
}

void TextStorageTest::movedCaret_endsTheRun()
{
    TextStorage storage(test::stoppedClock());
    type(storage, u"ab");
    storage.breakUndoCoalescing();
    type(storage, u"cd");
    storage.undo();
    QCOMPARE(storage.text().toString(), u"ab"_s);
}

void TextStorageTest::pause_endsTheRun_data()
{
    QTest::addColumn<int>("pause");
    QTest::addColumn<QString>("afterUndo");
    QTest::newRow("short") << 999 << QString();
    QTest::newRow("a second") << 1000 << u"ab"_s;
}

void TextStorageTest::pause_endsTheRun()
{
    QFETCH(const int, pause);
    QFETCH(const QString, afterUndo);
    std::chrono::steady_clock::time_point now;
    TextStorage storage([&now] { return now; });
    type(storage, u"a");
    now += 600ms; // Shorter than a pause; both together are longer.
    type(storage, u"b");
    now += std::chrono::milliseconds(pause);
    type(storage, u"cd");
    storage.undo();
    QCOMPARE(storage.text().toString(), afterUndo);
    storage.redo();
    QCOMPARE(storage.text().toString(), u"abcd"_s);
    now += std::chrono::milliseconds(pause);
    for (const qint64 offset : {3, 2})
        storage.replaceCharacters({offset, 1}, Text(), Kind::DeletingBackward);
    now += std::chrono::milliseconds(pause);
    storage.replaceCharacters({1, 1}, Text(), Kind::DeletingBackward);
    storage.undo();
    QCOMPARE(storage.text().toString(), afterUndo.isEmpty() ? u"abcd"_s : u"ab"_s);
}

void TextStorageTest::changeFromTypingToDeleting_endsTheRun()
{
    TextStorage storage(test::stoppedClock());
    type(storage, u"abc");
    storage.replaceCharacters({2, 1}, Text(), Kind::DeletingBackward);
    storage.replaceCharacters({1, 1}, Text(), Kind::DeletingBackward);
    type(storage, u"d");
    storage.undo();
    QCOMPARE(storage.text().toString(), u"a"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abc"_s);
    storage.undo();
    QVERIFY(storage.text().isEmpty());
}

void TextStorageTest::backspaceRun_undoesAsOneStep()
{
    TextStorage storage(test::stoppedClock());
    storage.setText(Text(u"abcdef"));
    for (const qint64 offset : {5, 4, 3})
        storage.replaceCharacters({offset, 1}, Text(), Kind::DeletingBackward);
    QCOMPARE(storage.text().toString(), u"abc"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abcdef"_s);
    storage.redo();
    QCOMPARE(storage.text().toString(), u"abc"_s);
}

void TextStorageTest::forwardDeleteRun_undoesAsOneStep()
{
    TextStorage storage(test::stoppedClock());
    storage.setText(Text(u"abcdef"));
    for (int i = 0; i < 3; ++i)
        storage.replaceCharacters({1, 1}, Text(), Kind::DeletingForward);
    QCOMPARE(storage.text().toString(), u"aef"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abcdef"_s);
}

void TextStorageTest::editsInRows_undoAsOneStep()
{
    TextStorage storage(test::stoppedClock());
    storage.setText(Text(u"a\nb\nc"));
    storage.replaceCharacters({0, 4}, Text(u"ax\nbx\n"), Kind::TypingInRows);
    storage.replaceCharacters({0, 6}, Text(u"axy\nbxy\n"), Kind::TypingInRows);
    storage.replaceCharacters({0, 8}, Text(u"ax\nbx\n"), Kind::DeletingInRows);
    storage.replaceCharacters({0, 6}, Text(u"a\nb\n"), Kind::DeletingInRows);
    storage.replaceCharacters({2, 2}, Text(u"b!\n"), Kind::DeletingInRows);
    QCOMPARE(storage.text().toString(), u"a\nb!\nc"_s);
    for (const QString &text : {u"a\nb\nc"_s, u"axy\nbxy\nc"_s, u"a\nb\nc"_s}) {
        storage.undo();
        QCOMPARE(storage.text().toString(), text);
    }
    QVERIFY(!storage.canUndo());
    for (const QString &text : {u"axy\nbxy\nc"_s, u"a\nb\nc"_s, u"a\nb!\nc"_s}) {
        storage.redo();
        QCOMPARE(storage.text().toString(), text);
    }
}

void TextStorageTest::group_undoesAsOneStep()
{
    TextStorage storage;
    storage.setText(Text(u"abc"));
    storage.beginUndoGrouping();
    storage.replaceCharacters({0, 3}, Text(u"xyz"));
    storage.replaceCharacters({3, 0}, Text(u"!"));
    storage.beginUndoGrouping();
    storage.replaceCharacters({0, 1}, Text());
    storage.endUndoGrouping();
    QVERIFY(!storage.canUndo());
    storage.endUndoGrouping();
    QCOMPARE(storage.text().toString(), u"yz!"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abc"_s);
    QVERIFY(!storage.canUndo());
    storage.redo();
    QCOMPARE(storage.text().toString(), u"yz!"_s);
}

void TextStorageTest::groupWithoutEdits_leavesNoStep()
{
    TextStorage storage;
    storage.beginUndoGrouping();
    storage.endUndoGrouping();
    QVERIFY(!storage.canUndo());
    storage.replaceCharacters({0, 0}, Text(u"a"));
    storage.replaceCharacters({1, 0}, Text(u"b"));
    storage.undo();
    storage.setSavePoint();
    storage.beginUndoGrouping();
    storage.beginUndoGrouping();
    storage.replaceCharacters({0, 0}, Text()); // Changes nothing.
    storage.endUndoGrouping();
    storage.endUndoGrouping();
    QVERIFY(!storage.isModified());
    QVERIFY(storage.canRedo());
    storage.redo();
    QCOMPARE(storage.text().toString(), u"ab"_s);
    storage.undo();
    storage.undo();
    QVERIFY(storage.text().isEmpty());
    QVERIFY(!storage.canUndo());
}

void TextStorageTest::undo_returnsSelectionBeforeAndRedoAfter()
{
    TextStorage storage;
    storage.setText(Text(u"abcdef"));
    storage.setSelectionForUndo({1, 3});
    storage.replaceCharacters({1, 3}, Text(u"X"));
    storage.setSelectionForUndo({2, 0});
    storage.setSelectionForUndo({0, 0}); // The caret moved later.
    QCOMPARE(storage.undo(), (TextRange{1, 3}));
    QCOMPARE(storage.redo(), (TextRange{2, 0}));
}

void TextStorageTest::savePoint_isFoundAgainByUndoAndRedo()
{
    TextStorage storage;
    QSignalSpy spy(&storage, &TextStorage::modifiedChanged);
    QVERIFY(!storage.isModified());
    type(storage, u"a");
    QVERIFY(storage.isModified());
    storage.setSavePoint();
    QVERIFY(!storage.isModified());
    storage.undo();
    QVERIFY(storage.isModified());
    storage.redo();
    QVERIFY(!storage.isModified());
    QCOMPARE(spy.count(), 4);
}

void TextStorageTest::saving_editedMeanwhile_isModifiedUntilUndone()
{
    TextStorage storage;
    storage.replaceCharacters({0, 0}, Text(u"a"));
    storage.beginSaving();
    storage.replaceCharacters({1, 0}, Text(u"b"));
    storage.endSaving(true);
    QVERIFY(storage.isModified());
    storage.undo();
    QVERIFY(!storage.isModified());
    storage.undo();
    QVERIFY(storage.isModified());
    storage.redo();
    QVERIFY(!storage.isModified());
}

void TextStorageTest::saving_stateThrownAwayMeanwhile_staysModified()
{
    TextStorage storage;
    storage.replaceCharacters({0, 0}, Text(u"a"));
    storage.beginSaving();
    storage.undo();
    storage.replaceCharacters({0, 0}, Text(u"b")); // As many undo steps as the text being saved.
    storage.endSaving(true);
    QVERIFY(storage.isModified());
    storage.undo();
    QVERIFY(storage.isModified());
}

void TextStorageTest::saving_replacedMeanwhile_staysModified()
{
    TextStorage storage;
    storage.beginSaving();
    storage.setText(Text(u"from outside"));
    storage.endSaving(true);
    QVERIFY(storage.isModified());
    storage.setSavePoint();
    QVERIFY(!storage.isModified());
}

void TextStorageTest::forgetSavePoint_everyState_isModifiedUntilSaved()
{
    TextStorage storage;
    storage.setText(Text(u"a"));
    storage.replaceCharacters({0, 0}, Text(u"b"));
    storage.setSavePoint();
    const QSignalSpy modified(&storage, &TextStorage::modifiedChanged);
    storage.forgetSavePoint();
    QVERIFY(storage.isModified());
    QCOMPARE(modified.count(), 1);
    storage.undo();
    QVERIFY(storage.isModified());
    storage.redo();
    QVERIFY(storage.isModified());
    storage.setSavePoint();
    QVERIFY(!storage.isModified());
}

void TextStorageTest::saving_failed_keepsTheFormerSavePoint()
{
    TextStorage storage;
    storage.replaceCharacters({0, 0}, Text(u"a"));
    storage.beginSaving();
    storage.endSaving(false);
    QVERIFY(storage.isModified());
    storage.undo();
    QVERIFY(!storage.isModified());
}

void TextStorageTest::saving_typingGoesOn_isAStepOfItsOwn()
{
    TextStorage storage;
    storage.replaceCharacters({0, 0}, Text(u"a"), TextStorage::EditKind::Typing);
    storage.beginSaving();
    storage.replaceCharacters({1, 0}, Text(u"b"), TextStorage::EditKind::Typing);
    storage.endSaving(true);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"a"_s);
    QVERIFY(!storage.isModified());
}

void TextStorageTest::savePointInsideLostBranch_staysModified()
{
    TextStorage storage;
    type(storage, u"a");
    storage.setSavePoint();
    storage.undo();
    type(storage, u"b");
    QVERIFY(storage.isModified());
    storage.undo();
    QVERIFY(storage.isModified());
}

void TextStorageTest::savePointInsideGroup_isPassedByUndoAndRedo()
{
    TextStorage storage;
    storage.beginUndoGrouping();
    storage.replaceCharacters({0, 0}, Text(u"a"_s));
    storage.setSavePoint();
    QVERIFY(!storage.isModified());
    storage.replaceCharacters({1, 0}, Text(u"b"_s));
    QVERIFY(storage.isModified());
    storage.endUndoGrouping();
    QVERIFY(storage.isModified());
    storage.undo();
    QVERIFY(storage.isModified());
    storage.redo();
    QVERIFY(storage.isModified());
}

void TextStorageTest::deletionsThatInsert_areStepsOfTheirOwn()
{
    TextStorage storage;
    storage.setText(Text(u"abcd"_s));
    storage.replaceCharacters({3, 1}, Text(u"X"_s), Kind::DeletingBackward);
    storage.replaceCharacters({2, 1}, Text(), Kind::DeletingBackward);
    storage.replaceCharacters({1, 1}, Text(u"Y"_s), Kind::DeletingBackward);
    QCOMPARE(storage.text().toString(), u"aYX"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abX"_s);
    storage.undo();
    storage.undo();
    QCOMPARE(storage.text().toString(), u"abcd"_s);
}

void TextStorageTest::typingAfterSave_startsNewStep()
{
    TextStorage storage;
    type(storage, u"a");
    storage.setSavePoint();
    type(storage, u"b");
    QVERIFY(storage.isModified());
    storage.undo();
    QCOMPARE(storage.text().toString(), u"a"_s);
    QVERIFY(!storage.isModified());
}

void TextStorageTest::extend_longerText_reportsWhatWasAddedAndRegistersNothing()
{
    TextStorage storage(test::stoppedClock());
    const Text whole(u"abcdef"_s);
    storage.setText(whole.mid(0, 2));
    QSignalSpy changed(&storage, &TextStorage::changed);
    storage.extend(whole);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first(), QVariantList({qint64{2}, qint64{0}, qint64{4}}));
    QVERIFY(storage.text().isSameValue(whole));
    QVERIFY(!storage.canUndo());
    QVERIFY(!storage.isModified());
}

void TextStorageTest::setText_emptiesHistoryAndKeepsEditedState()
{
    TextStorage storage;
    storage.setText(Text(u"loaded"));
    QVERIFY(!storage.isModified());
    QVERIFY(!storage.canUndo());
    type(storage, u"x");
    storage.setText(Text(u"other"));
    QVERIFY(storage.isModified());
    QVERIFY(!storage.canUndo());
    storage.setSavePoint();
    QVERIFY(!storage.isModified());
}

void TextStorageTest::emptyEdit_registersNothing()
{
    TextStorage storage;
    storage.setText(Text(u"abc"));
    QSignalSpy spy(&storage, &TextStorage::changed);
    storage.replaceCharacters({1, 0}, Text());
    QCOMPARE(spy.count(), 0);
    QVERIFY(!storage.canUndo());
}

void TextStorageTest::halfAPair_isReplacedWhole()
{
    TextStorage storage;
    storage.setText(Text(u"a😀b"));
    storage.replaceCharacters({2, 1}, Text(u"x"));
    QCOMPARE(storage.text().toString(), u"axb"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"a😀b"_s);
}

void TextStorageTest::insertionInsidePair_removesNothing()
{
    TextStorage storage;
    storage.setText(Text(u"a😀b"));
    storage.replaceCharacters({2, 0}, Text(u"x"));
    QCOMPARE(storage.text().toString(), u"ax😀b"_s);
    storage.undo();
    QCOMPARE(storage.text().toString(), u"a😀b"_s);
}

void TextStorageTest::wholeReplacement_undoGivesTheSameValue()
{
    TextStorage storage;
    const Text before(u"before");
    storage.setText(before);
    storage.replaceCharacters({0, storage.length()}, Text(u"after"));
    storage.undo();
    QVERIFY(storage.text().isSameValue(before));
}

void TextStorageTest::changed_anyEdit_reportsWhatWasReplaced()
{
    TextStorage storage;
    storage.setText(Text(u"abc"));
    QSignalSpy spy(&storage, &TextStorage::changed);
    storage.replaceCharacters({1, 1}, Text(u"xyz"));
    QCOMPARE(spy.takeFirst(), (QVariantList{qint64(1), qint64(1), qint64(3)}));
    storage.undo();
    QCOMPARE(spy.takeFirst(), (QVariantList{qint64(1), qint64(3), qint64(1)}));
}

void TextStorageTest::undoLimit_dropsTheOldestSteps()
{
    const auto content = [](int i) { return Text(QString(10000, QChar(u'a' + i))); };
    TextStorage storage;
    storage.setUndoLimit(35000);
    storage.setText(content(0));
    for (int i = 1; i <= 10; ++i)
        storage.replaceCharacters({0, storage.length()}, content(i));
    for (int i = 9; i >= 7; --i) {
        storage.undo();
        QVERIFY(storage.text() == content(i));
    }
    QVERIFY(!storage.canUndo());
    // What is undone is not lost by undoing, and counts again when it is repeated.
    for (int i = 8; i <= 10; ++i) {
        storage.redo();
        QVERIFY(storage.text() == content(i));
    }
    storage.replaceCharacters({0, storage.length()}, content(11));
    for (int i = 10; i >= 8; --i)
        storage.undo();
    QVERIFY(storage.text() == content(8));
    QVERIFY(!storage.canUndo());
}

void TextStorageTest::undoLimit_largeStep_isKept()
{
    TextStorage storage;
    storage.setUndoLimit(100);
    storage.setText(Text(QString(5000, u'a')));
    storage.beginUndoGrouping(); // As a macro's result.
    storage.replaceCharacters({0, 4000}, Text(u"b"));
    storage.replaceCharacters({1, 1000}, Text(u"c"));
    storage.endUndoGrouping();
    QVERIFY(storage.canUndo());
    storage.undo();
    QCOMPARE(storage.text().toString(), QString(5000, u'a'));
}

void TextStorageTest::undoLimit_smallSteps_count()
{
    TextStorage storage;
    storage.setUndoLimit(100'000);
    for (int i = 0; i < 2000; ++i)
        storage.replaceCharacters({storage.length(), 0}, Text(u"x"));
    int steps = 0;
    for (; storage.canUndo(); ++steps)
        storage.undo();
    QVERIFY2(steps > 100 && steps < 1000, qPrintable(QString::number(steps)));
    QCOMPARE(storage.length(), 2000 - steps);
}

void TextStorageTest::undoLimit_savePointDropped_isUnreachable()
{
    TextStorage storage;
    storage.setUndoLimit(20'000);
    storage.setText(Text(QString(10'000, u'a')));
    const auto replace = [&storage](char16_t unit) {
        storage.replaceCharacters({0, storage.length()}, Text(QString(10'000, unit)));
    };
    replace(u'b');
    storage.setSavePoint();
    replace(u'c');
    storage.undo();
    QVERIFY(!storage.isModified());
    storage.redo();
    replace(u'd');
    replace(u'e'); // Only this one can be undone: the saved state was two before.
    while (storage.canUndo())
        storage.undo();
    QVERIFY(storage.isModified());
}

void TextStorageTest::randomEditsUndoRedo_matchModel_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TextStorageTest::randomEditsUndoRedo_matchModel()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    TextStorage storage;
    // The model keeps every state as a whole; each step of it is one undo step of the storage.
    QList<QString> states{test::randomText(random, 300)};
    qsizetype position = 0;
    storage.setText(Text{QStringView(states.first())});
    for (int i = 0; i < 300; ++i) {
        const int action = random.bounded(10);
        if (action < 2 && position > 0) {
            storage.undo();
            --position;
        } else if (action < 4 && position + 1 < states.size()) {
            storage.redo();
            ++position;
        } else {
            QString model = states[position];
            const int edits = 1 + random.bounded(3);
            storage.beginUndoGrouping();
            for (int edit = 0; edit < edits; ++edit) {
                qsizetype start = random.bounded(model.size() + 1);
                qsizetype end = std::min<qsizetype>(model.size(), start + random.bounded(9));
                start -= start < model.size() && model[start].isLowSurrogate() ? 1 : 0;
                end += end < model.size() && model[end].isLowSurrogate() ? 1 : 0;
                const QString insertion = u'+' + test::randomText(random, random.bounded(3));
                storage.replaceCharacters({start, end - start}, Text{QStringView(insertion)});
                model.replace(start, end - start, insertion);
            }
            storage.endUndoGrouping();
            states.resize(position + 1);
            states.append(model);
            ++position;
        }
        QCOMPARE(storage.canUndo(), position > 0);
        QCOMPARE(storage.canRedo(), position + 1 < states.size());
        QCOMPARE(storage.text().toString(), states[position]);
        // Another test covers the counters of edited texts. A wrong one would persist, so some
        // rounds suffice here.
        if (i % 10 == 0)
            QCOMPARE(storage.text().metrics(), test::metricsOf(states[position]));
    }
}

QTEST_GUILESS_MAIN(TextStorageTest)
#include "TextStorageTest.moc"
