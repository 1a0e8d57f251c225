#include "support/ShownTextView.h"
#include "view/TextSegments.h"
#include "view/TextView.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

/// Tests of a view with an input method.
class TextViewCompositionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void composition_staysOutOfTheText();
    void compositionCommittedOverSelection_isOneUndoStep();
    void commits_areUndoStepsOfTheirOwn();
    void commitsWithoutComposition_undoAsTyping();
    void outsideChange_endsTheComposition();
    void storageChangedFromOutside_resetsTheComposition();
    void undoDuringAComposition_forgetsIt();
    void clickDuringAComposition_endsIt();
    void wrappingComposition_keepsTheCursorRectangleAtItsCaret();
    void clauses_keepTheLooksTheyAreGiven();
    void replacementBeyondTheText_isCutToIt();
    void replacementOfHalfAPair_takesItWhole();
    void deletionAroundTheCaret_needsNoCommit();
    void keyThatPassesTheInputMethod_endsTheComposition_data();
    void keyThatPassesTheInputMethod_endsTheComposition();
    void modifierKey_leavesTheComposition();
    void lostFocus_endsTheComposition_butAMenuDoesNot();
    void caretPlacedElsewhere_endsTheComposition();
    void compositionWhereSegmentsMeet_isShownOnce();
    void compositionOfSeveralRows_isScrolledWithTheCaret();
    void compositionOnTheLastRow_isScrolledToItsEnd_data();
    void compositionOnTheLastRow_isScrolledToItsEnd();
    void queriesInsideAHugeCluster_areAnswered();
};

void TextViewCompositionTest::composition_staysOutOfTheText()
{
    Fixture f(u"ab");
    QSignalSpy changes(&f.view, &TextView::textDidChange);
    f.caret(1);
    f.compose(u"にほん"_s);
    QVERIFY(f.view.hasMarkedText());
    QCOMPARE(f.text(), u"ab"_s);
    QCOMPARE(changes.count(), 0);
    QVERIFY(!f.storage.isModified());
    f.compose({}, u"日本"_s);
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"a日本b"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{3, 0}));
}

void TextViewCompositionTest::compositionCommittedOverSelection_isOneUndoStep()
{
    Fixture f(u"abcd");
    f.view.setSelectedRange({1, 2});
    f.compose(u"に"_s);
    QCOMPARE(f.text(), u"abcd"_s);
    f.compose({}, u"二"_s);
    QCOMPARE(f.text(), u"a二d"_s);
    f.view.undo();
    QCOMPARE(f.text(), u"abcd"_s);
    QVERIFY(!f.storage.canUndo());
}

void TextViewCompositionTest::commits_areUndoStepsOfTheirOwn()
{
    Fixture f;
    QTest::keyClicks(&f.view, u"ab"_s);
    f.compose(u"に"_s);
    f.compose({}, u"二"_s);
    f.compose(u"ほん"_s);
    f.compose({}, u"本"_s);
    QTest::keyClicks(&f.view, u"cd"_s);
    for (const QString &text : {u"ab二本"_s, u"ab二"_s, u"ab"_s, QString()}) {
        f.view.undo();
        QCOMPARE(f.text(), text);
    }
}

// Some input methods commit each key that they do not compose.
void TextViewCompositionTest::commitsWithoutComposition_undoAsTyping()
{
    Fixture f;
    f.compose({}, u"a"_s);
    f.compose({}, u"b"_s);
    f.view.undo();
    QCOMPARE(f.text(), QString());
}

void TextViewCompositionTest::outsideChange_endsTheComposition()
{
    Fixture f(u"ab");
    f.caret(1);
    f.compose(u"に"_s);
    f.view.setString(Text(u"other"));
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"other"_s);
}

void TextViewCompositionTest::storageChangedFromOutside_resetsTheComposition()
{
    Fixture f(u"abcd");
    f.caret(2);
    f.compose(u"に"_s);
    f.storage.replaceCharacters({0, 1}, Text(u"xyz"));
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"xyzbcd"_s);
}

void TextViewCompositionTest::undoDuringAComposition_forgetsIt()
{
    Fixture f;
    QTest::keyClicks(&f.view, u"ab"_s);
    f.compose(u"に"_s);
    f.view.undo();
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), QString());
    f.view.redo();
    QCOMPARE(f.text(), u"ab"_s);
}

void TextViewCompositionTest::clickDuringAComposition_endsIt()
{
    Fixture f(u"abcd\nefgh");
    f.caret(2);
    f.compose(u"に"_s);
    QTest::mouseClick(
        f.view.viewport(), Qt::LeftButton, {}, f.view.caretRectAt(7).center().toPoint());
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.view.selectedRange(), (TextRange{7, 0}));
}

void TextViewCompositionTest::wrappingComposition_keepsTheCursorRectangleAtItsCaret()
{
    Fixture f(u"start ");
    f.view.resize(200, 300);
    QCoreApplication::processEvents();
    f.caret(6);
    const QString reading = u"にほんごのながいぶんしょう"_s.repeated(4);
    QRectF last = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    const qreal firstRow = last.top();
    for (qsizetype length = 1; length <= reading.size(); ++length) {
        f.compose(reading.first(length));
        const QRectF now = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
        // Each character moves the caret further along the row, or to the next row.
        QVERIFY(now.top() > last.top() || (now.top() == last.top() && now.x() > last.x()));
        QVERIFY(now.right() <= f.view.viewport()->width());
        last = now;
    }
    QVERIFY(last.top() > firstRow);
}

void TextViewCompositionTest::clauses_keepTheLooksTheyAreGiven()
{
    Fixture f;
    QTextCharFormat marked;
    marked.setBackground(QColor(255, 0, 0));
    marked.setForeground(QColor(255, 0, 0)); // A single color, so that any pixel can be tested.
    const QInputMethodEvent event(
        u"ああああ"_s,
        {{QInputMethodEvent::TextFormat, 2, 2, marked}, {QInputMethodEvent::Cursor, 4, 1, {}}});
    QInputMethodEvent sent(event.preeditString(), event.attributes());
    QCoreApplication::sendEvent(&f.view, &sent);
    const QRectF caret = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    const QRectF start = QRectF(TextViewport::kMargin, caret.top(), 1, caret.height());
    const qreal width = (caret.x() - start.x()) / 4;
    const QImage image = f.view.viewport()->grab().toImage();
    const auto pixel = [&](qreal clause) {
        return image.pixelColor(static_cast<int>(start.x() + clause * width),
                                static_cast<int>(caret.center().y()));
    };
    QCOMPARE(pixel(2.5), QColor(255, 0, 0));
    QCOMPARE(pixel(3.5), QColor(255, 0, 0));
    QVERIFY(pixel(1.5) != QColor(255, 0, 0));
}

void TextViewCompositionTest::replacementBeyondTheText_isCutToIt()
{
    Fixture f(u"abcd");
    f.caret(1);
    f.compose({}, u"x"_s, -3, 3);
    QCOMPARE(f.text(), u"xbcd"_s);
    f.compose({}, u"y"_s, 2, 9);
    QCOMPARE(f.text(), u"xbcy"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 0}));
}

void TextViewCompositionTest::replacementOfHalfAPair_takesItWhole()
{
    Fixture f(u"a😀b");
    f.caret(3);
    f.compose({}, u"x"_s, -1, 1);
    QCOMPARE(f.text(), u"axb"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{2, 0}));
}

void TextViewCompositionTest::deletionAroundTheCaret_needsNoCommit()
{
    Fixture f(u"abcd");
    f.caret(3);
    f.compose({}, {}, -2, 2);
    QCOMPARE(f.text(), u"ad"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 0}));
}

void TextViewCompositionTest::keyThatPassesTheInputMethod_endsTheComposition_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("caret") << Qt::Key_Left << u"abcd"_s;
    QTest::newRow("letter") << Qt::Key_X << u"abxcd"_s;
    QTest::newRow("line") << Qt::Key_Return << u"ab\ncd"_s;
    QTest::newRow("backspace") << Qt::Key_Backspace << u"acd"_s;
}

void TextViewCompositionTest::keyThatPassesTheInputMethod_endsTheComposition()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, expected);
    Fixture f(u"abcd");
    f.caret(2);
    f.compose(u"に"_s);
    f.key(key);
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), expected);
}

void TextViewCompositionTest::modifierKey_leavesTheComposition()
{
    Fixture f(u"ab");
    f.compose(u"に"_s);
    f.key(Qt::Key_Shift);
    f.key(Qt::Key_Control);
    QVERIFY(f.view.hasMarkedText());
}

void TextViewCompositionTest::lostFocus_endsTheComposition_butAMenuDoesNot()
{
    Fixture f(u"ab");
    f.compose(u"に"_s);
    QFocusEvent menu(QEvent::FocusOut, Qt::PopupFocusReason);
    QCoreApplication::sendEvent(&f.view, &menu);
    QVERIFY(f.view.hasMarkedText());
    QFocusEvent window(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(&f.view, &window);
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"ab"_s);
}

void TextViewCompositionTest::caretPlacedElsewhere_endsTheComposition()
{
    Fixture f(u"abcd");
    f.caret(1);
    f.compose(u"に"_s);
    f.view.setSelectedRange({1, 0});
    QVERIFY(f.view.hasMarkedText());
    f.view.setSelectedRange({3, 0});
    QVERIFY(!f.view.hasMarkedText());
}

void TextViewCompositionTest::compositionWhereSegmentsMeet_isShownOnce()
{
    // A huge line is laid out in pieces; the first ends at this offset.
    Fixture f(QString(segments::kUnits, u'x') + QString(segments::kUnits, u'y'));
    f.caret(segments::kUnits);
    const QRectF before = f.view.caretRectAt(segments::kUnits - 1);
    f.compose(u"にほんご"_s);
    QCOMPARE(f.view.caretRectAt(segments::kUnits - 1), before);
    const QImage image = f.view.grab().toImage();
    f.view.setSelectedRange({segments::kUnits, 0});
    // The space after the last row of the first piece must stay empty.
    const QPointF behind = before.topRight() + QPointF(2 * before.height(), before.height() / 2);
    if (behind.x() < f.view.viewport()->width() - before.height())
        QCOMPARE(image.pixelColor(behind.toPoint()), f.view.palette().color(QPalette::Base));
}

void TextViewCompositionTest::compositionOfSeveralRows_isScrolledWithTheCaret()
{
    Fixture f;
    f.view.resize(200, 70);
    QCoreApplication::processEvents();
    const QString reading = u"にほんご"_s.repeated(30);
    f.compose(reading);
    const QRectF caret = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    QVERIFY(!caret.isNull());
    QVERIFY(caret.top() >= 0 && caret.bottom() <= f.view.viewport()->height());
    f.compose(u"にほんご"_s.repeated(30), {});
    f.view.verticalScrollBar()->setValue(0);
    QCOMPARE(f.view.verticalScrollBar()->value(), 0);
}

void TextViewCompositionTest::compositionOnTheLastRow_isScrolledToItsEnd_data()
{
    QTest::addColumn<int>("cursor");
    QTest::newRow("at the start") << 1;
    QTest::newRow("hidden") << 0;
}

void TextViewCompositionTest::compositionOnTheLastRow_isScrolledToItsEnd()
{
    QFETCH(int, cursor);
    const QString lines = u"line\n"_s.repeated(100);
    Fixture f(lines + u"ab\n"_s + lines);
    const auto behind = static_cast<qint64>(lines.size()) + 1;
    f.caret(behind);
    f.view.verticalScrollBar()->setValue(0);
    f.caret(0);
    f.caret(behind);
    while (f.view.caretRectAt(behind).bottom() + f.view.rowHeight() < f.view.viewport()->height())
        QTest::keyClick(f.view.verticalScrollBar(), Qt::Key_Up); // Until it is on the last row.
    QInputMethodEvent event(u"にほんご"_s.repeated(30),
                            {{QInputMethodEvent::Cursor, 0, cursor, {}}});
    QCoreApplication::sendEvent(&f.view, &event);
    const QRectF last = f.view.characterRectAt(behind + 1); // What comes after the composition.
    QVERIFY(!last.isEmpty());
    QVERIFY(last.bottom() <= f.view.viewport()->height());
    QVERIFY(f.view.caretRectAt(behind).top() >= 0);
}

void TextViewCompositionTest::queriesInsideAHugeCluster_areAnswered()
{
    Fixture f(u'e' + QString(20'000, u'\u0301'));
    for (const qint64 offset : {0, 1, 10'000, 20'001}) {
        f.caret(offset);
        const QString around = f.view.inputMethodQuery(Qt::ImSurroundingText).toString();
        const int caret = f.view.inputMethodQuery(Qt::ImCursorPosition).toInt();
        QVERIFY(caret >= 0 && caret <= around.size());
        QVERIFY(around.size() <= 2000);
        QCOMPARE(f.view.inputMethodQuery(Qt::ImTextBeforeCursor).toString(), around.first(caret));
        QCOMPARE(f.view.inputMethodQuery(Qt::ImTextAfterCursor).toString(), around.sliced(caret));
    }
}

QTEST_MAIN(TextViewCompositionTest)
#include "TextViewCompositionTest.moc"
