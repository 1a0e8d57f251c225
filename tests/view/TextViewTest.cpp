#include "view/TextView.h"

#include "support/ShownTextView.h"
#include "support/Waits.h"
#include "view/CaretMover.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

using Fixture = test::ShownTextView;

class TextViewTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typedKeys_enterTextAndUndoAsARun();
    void backspace_removesWholeClusters_data();
    void backspace_removesWholeClusters();
    void deleteKeys_removeClustersAndWords();
    void arrows_moveByClustersAndExtendWithShift();
    void arrowWithSelection_collapsesToItsEdge();
    void upAndDown_keepTheirColumn();
    void homeAndEnd_workOnVisualRows();
    void controlHomeAndEnd_reachTheEnds();
    void pageKeys_moveByPages();
    void tab_entersATab();
    void selectAllCutPaste_moveTheText();
    void paste_takesStyledTextAsPlain();
    void copy_keepsNoBreakSpaces();
    void click_placesTheCaret();
    void doubleClick_selectsAWord();
    void tripleClick_selectsTheLine();
    void drag_selectsAndScrolls();
    void shiftClick_extends();
    void replaceCharacters_movesTheSelection_data();
    void replaceCharacters_movesTheSelection();
    void undo_restoresTheSelection();
    void scrollBar_hidesWhenEverythingFits();
    void scrollBar_textThatJustFits_dependsOnTheSizeAlone();
    void scrollingToTheEnd_showsTheLastLine();
    void editAboveTheView_keepsWhatIsSeen();
    void wholeReplacement_keepsTheLineOnTop();
    void hugeLine_isEditedAnywhere();
    void rightToLeftLine_leftMovesForward();
    void wheel_scrollsWithoutMovingTheCaret();
    void upAfterCaretWasPlaced_keepsTheNewColumn();
    void caretBetweenCrAndLf_belongsToTheLineBefore();
    void doubleClickOnTheLaterHalf_selectsThatWord();
    void joinersAndPrivateCharacters_areTyped();
    void storageEditedBehindTheView_selectionDividesNoPair();
};

void TextViewTest::typedKeys_enterTextAndUndoAsARun()
{
    Fixture f;
    QSignalSpy changes(&f.view, &TextView::textDidChange);
    QTest::keyClicks(&f.view, u"abc"_s);
    QCOMPARE(f.text(), u"abc"_s);
    QCOMPARE(changes.count(), 3);
    f.view.undo();
    QCOMPARE(f.text(), QString());
    f.view.redo();
    QCOMPARE(f.text(), u"abc"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{3, 0}));
}

void TextViewTest::backspace_removesWholeClusters_data()
{
    QTest::addColumn<QString>("cluster");
    QTest::newRow("letter") << u"x"_s;
    QTest::newRow("family") << u"👨‍👩‍👧‍👦"_s;
    QTest::newRow("flag") << u"🇯🇵"_s;
    QTest::newRow("accent") << u"e\u0301"_s;
    QTest::newRow("CR LF") << u"\r\n"_s;
    QTest::newRow("voiced kana") << u"か\u3099"_s;
    QTest::newRow("variation") << u"葛\U000E0100"_s;
}

void TextViewTest::backspace_removesWholeClusters()
{
    QFETCH(QString, cluster);
    Fixture f(QString(u'a' + cluster + u'b'));
    f.caret(1 + cluster.size());
    f.key(Qt::Key_Backspace);
    QCOMPARE(f.text(), u"ab"_s);
    f.view.undo();
    f.caret(1);
    f.key(Qt::Key_Delete);
    QCOMPARE(f.text(), u"ab"_s);
}

void TextViewTest::deleteKeys_removeClustersAndWords()
{
    Fixture f(u"one two three");
    f.caret(7);
    f.key(Qt::Key_Backspace, Qt::ControlModifier);
    QCOMPARE(f.text(), u"one  three"_s);
    f.key(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(f.text(), u"one three"_s);
}

void TextViewTest::arrows_moveByClustersAndExtendWithShift()
{
    Fixture f(u"a🇯🇵b");
    f.caret(0);
    f.key(Qt::Key_Right);
    f.key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 4}));
    f.key(Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 0}));
    f.key(Qt::Key_Left);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 0}));
}

void TextViewTest::arrowWithSelection_collapsesToItsEdge()
{
    Fixture f(u"abcdef");
    f.view.setSelectedRange({1, 3});
    f.key(Qt::Key_Right);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 0}));
    f.view.setSelectedRange({1, 3});
    f.key(Qt::Key_Left);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 0}));
}

void TextViewTest::upAndDown_keepTheirColumn()
{
    Fixture f(u"aaaaaaaa\naa\naaaaaaaa");
    f.caret(6);
    f.key(Qt::Key_Down);
    QCOMPARE(f.view.selectedRange().location, 11);
    f.key(Qt::Key_Down);
    QCOMPARE(f.view.selectedRange().location, 18);
    f.key(Qt::Key_Up);
    f.key(Qt::Key_Up);
    QCOMPARE(f.view.selectedRange().location, 6);
    f.key(Qt::Key_Up);
    QCOMPARE(f.view.selectedRange().location, 0);
}

void TextViewTest::homeAndEnd_workOnVisualRows()
{
    Fixture f(QString(400, u'x'));
    f.caret(150);
    f.key(Qt::Key_Home);
    const qint64 start = f.view.selectedRange().location;
    QVERIFY(start > 0 && start <= 150);
    f.key(Qt::Key_End);
    const qint64 end = f.view.selectedRange().location;
    QVERIFY(end > 150 && end < 400);
    // At the wrap the caret is drawn at the end of the upper row, so Home goes to that row's start.
    f.key(Qt::Key_Home);
    QCOMPARE(f.view.selectedRange().location, start);
    f.key(Qt::Key_End);
    f.key(Qt::Key_Right);
    QCOMPARE(f.view.selectedRange().location, end + 1);
}

void TextViewTest::controlHomeAndEnd_reachTheEnds()
{
    Fixture f(u"one\ntwo\n");
    f.key(Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{8, 0}));
    f.key(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 8}));
}

void TextViewTest::pageKeys_moveByPages()
{
    Fixture f(u"line\n"_s.repeated(500));
    f.caret(0);
    f.key(Qt::Key_PageDown);
    const qint64 first = f.view.selectedRange().location;
    QVERIFY(first > 25 && first % 5 == 0);
    f.key(Qt::Key_PageDown);
    QCOMPARE(f.view.selectedRange().location, 2 * first);
    f.key(Qt::Key_PageUp);
    f.key(Qt::Key_PageUp);
    QCOMPARE(f.view.selectedRange().location, 0);
}

void TextViewTest::tab_entersATab()
{
    Fixture f;
    f.key(Qt::Key_Tab);
    f.key(Qt::Key_Return);
    QCOMPARE(f.text(), u"\t\n"_s);
    QVERIFY(f.view.hasFocus());
}

void TextViewTest::selectAllCutPaste_moveTheText()
{
    Fixture f(u"日本語\r\nテキスト");
    f.key(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 9}));
    f.view.cut();
    QCOMPARE(f.text(), QString());
    f.view.paste();
    QCOMPARE(f.text(), u"日本語\r\nテキスト"_s);
    f.view.undo();
    QCOMPARE(f.text(), QString());
    f.view.undo();
    QCOMPARE(f.text(), u"日本語\r\nテキスト"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 9}));
}

void TextViewTest::paste_takesStyledTextAsPlain()
{
    Fixture f(u"ab");
    auto *mime = new QMimeData;
    mime->setHtml(u"<b>bold</b>"_s);
    mime->setText(u"bold"_s);
    QGuiApplication::clipboard()->setMimeData(mime);
    f.caret(1);
    f.view.paste();
    QCOMPARE(f.text(), u"aboldb"_s);
}

void TextViewTest::copy_keepsNoBreakSpaces()
{
    Fixture f(u"a\u00A0b\u2028c");
    f.view.selectAll();
    f.view.copy();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"a\u00A0b\u2028c"_s);
}

void TextViewTest::click_placesTheCaret()
{
    Fixture f(u"abcdef\nghijkl");
    QTest::mouseClick(f.view.viewport(), Qt::LeftButton, {}, f.pointOf(9));
    QCOMPARE(f.view.selectedRange(), (TextRange{9, 0}));
}

void TextViewTest::doubleClick_selectsAWord()
{
    Fixture f(u"今日は天気が良い");
    QTest::mouseDClick(f.view.viewport(), Qt::LeftButton, {}, f.pointOf(4));
    QCOMPARE(f.view.selectedRange(), (TextRange{3, 2}));
}

void TextViewTest::tripleClick_selectsTheLine()
{
    Fixture f(u"one\ntwo three\nfour");
    const QPoint point = f.pointOf(6);
    QTest::mouseDClick(f.view.viewport(), Qt::LeftButton, {}, point);
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, point);
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 10}));
}

void TextViewTest::drag_selectsAndScrolls()
{
    Fixture f(u"line\n"_s.repeated(300));
    QTest::mousePress(f.view.viewport(), Qt::LeftButton, {}, f.pointOf(7));
    QTest::mouseMove(f.view.viewport(), f.pointOf(22));
    QMouseEvent inside(QEvent::MouseMove,
                       f.pointOf(22),
                       f.view.viewport()->mapToGlobal(f.pointOf(22)),
                       Qt::NoButton,
                       Qt::LeftButton,
                       {});
    QCoreApplication::sendEvent(f.view.viewport(), &inside);
    QCOMPARE(f.view.selectedRange(), (TextRange{7, 15}));
    QMouseEvent below(QEvent::MouseMove,
                      QPointF(10, 460),
                      f.view.viewport()->mapToGlobal(QPointF(10, 460)),
                      Qt::NoButton,
                      Qt::LeftButton,
                      {});
    QCoreApplication::sendEvent(f.view.viewport(), &below);
    const int before = f.view.verticalScrollBar()->value();
    const qint64 length = f.view.selectedRange().length;
    QTRY_VERIFY_WITH_TIMEOUT(f.view.verticalScrollBar()->value() > before + 100, test::kLongWait);
    QVERIFY(f.view.selectedRange().length > length);
    QTest::mouseRelease(f.view.viewport(), Qt::LeftButton, {}, QPoint(10, 390));
}

void TextViewTest::shiftClick_extends()
{
    Fixture f(u"abcdefgh");
    f.caret(2);
    QTest::mouseClick(f.view.viewport(), Qt::LeftButton, Qt::ShiftModifier, f.pointOf(6));
    QCOMPARE(f.view.selectedRange(), (TextRange{2, 4}));
}

void TextViewTest::replaceCharacters_movesTheSelection_data()
{
    QTest::addColumn<TextRange>("selection");
    QTest::addColumn<TextRange>("range");
    QTest::addColumn<TextRange>("expected");
    // Columns: the selection in "abcdefgh", the range replaced by "XYZ", the selection afterwards.
    QTest::newRow("whole text") << TextRange{2, 3} << TextRange{0, 8} << TextRange{3, 0};
    QTest::newRow("the selection") << TextRange{2, 3} << TextRange{2, 3} << TextRange{5, 0};
    QTest::newRow("at the caret") << TextRange{2, 0} << TextRange{2, 0} << TextRange{5, 0};
    QTest::newRow("at the selection's end")
        << TextRange{1, 2} << TextRange{3, 0} << TextRange{1, 2};
    QTest::newRow("before") << TextRange{4, 2} << TextRange{0, 1} << TextRange{6, 2};
    QTest::newRow("behind") << TextRange{1, 2} << TextRange{5, 2} << TextRange{1, 2};
    QTest::newRow("within") << TextRange{0, 8} << TextRange{3, 1} << TextRange{0, 10};
}

void TextViewTest::replaceCharacters_movesTheSelection()
{
    QFETCH(TextRange, selection);
    QFETCH(TextRange, range);
    QFETCH(TextRange, expected);
    Fixture f(u"abcdefgh");
    f.view.setSelectedRange(selection);
    QVERIFY(f.view.shouldChangeText(range, Text(u"XYZ")));
    f.view.replaceCharacters(range, Text(u"XYZ"));
    f.view.didChangeText();
    QCOMPARE(f.view.selectedRange(), expected);
    f.view.undo();
    QCOMPARE(f.text(), u"abcdefgh"_s);
    QCOMPARE(f.view.selectedRange(), selection);
    f.view.redo();
    QCOMPARE(f.view.selectedRange(), expected);
}

void TextViewTest::undo_restoresTheSelection()
{
    Fixture f(u"abcdef");
    f.view.setSelectedRange({1, 3});
    f.key(Qt::Key_X);
    QCOMPARE(f.text(), u"axef"_s);
    f.caret(4);
    f.view.undo();
    QCOMPARE(f.text(), u"abcdef"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 3}));
}

void TextViewTest::scrollBar_hidesWhenEverythingFits()
{
    Fixture f(u"short");
    QVERIFY(!f.view.verticalScrollBar()->isVisible());
    QVERIFY(!f.view.horizontalScrollBar()->isVisible());
    f.view.setString(Text(u"line\n"_s.repeated(100)));
    QTRY_VERIFY(f.view.verticalScrollBar()->isVisible());
    QVERIFY(!f.view.horizontalScrollBar()->isVisible());
    f.view.setString(Text(u"short again"));
    QTRY_VERIFY(!f.view.verticalScrollBar()->isVisible());
}

void TextViewTest::scrollBar_textThatJustFits_dependsOnTheSizeAlone()
{
    // Lines that take one row more beside a scroll bar.
    Fixture f(u"日本語 "_s.repeated(12) + u"\n"_s + u"abc\n"_s.repeated(9));
    int appearances = 0;
    for (int width = 560; width < 620; width += 3) {
        for (int height = 150; height < 330; ++height) {
            f.view.resize(width, height);
            f.key(Qt::Key_Home, Qt::ControlModifier);
            const bool isNeeded = f.view.verticalScrollBar()->maximum() > 0;
            f.key(Qt::Key_End, Qt::ControlModifier);
            QCOMPARE(f.view.verticalScrollBar()->maximum() > 0, isNeeded);
            f.key(Qt::Key_Home, Qt::ControlModifier);
            QCOMPARE(f.view.verticalScrollBar()->maximum() > 0, isNeeded);
            appearances += isNeeded ? 1 : 0;
        }
    }
    QVERIFY(appearances > 0);
}

void TextViewTest::scrollingToTheEnd_showsTheLastLine()
{
    QString lines;
    for (int i = 0; i < 5000; ++i)
        lines += u"行 %1 の本文はここに続きます。"_s.arg(i).repeated(1 + i % 7) + u'\n';
    Fixture f(lines);
    QScrollBar *bar = f.view.verticalScrollBar();
    bar->setValue(bar->maximum());
    f.view.setSelectedRange(f.view.selectedRange());
    const QRectF caret = [&f] {
        f.caret(f.view.string().size());
        return f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    }();
    QVERIFY(caret.bottom() <= f.view.viewport()->height());
    QVERIFY(caret.bottom() > f.view.viewport()->height() - 40);
    QCOMPARE(bar->value(), bar->maximum());
}

void TextViewTest::editAboveTheView_keepsWhatIsSeen()
{
    Fixture f(u"line\n"_s.repeated(1000));
    f.caret(2500);
    const QRectF before = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    QVERIFY(!before.isNull());
    f.storage.replaceCharacters({0, 10}, Text(u"three\nmore\nlines\n"));
    f.view.setSelectedRange({2507, 0});
    QCOMPARE(f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF(), before);
}

void TextViewTest::wholeReplacement_keepsTheLineOnTop()
{
    Fixture f(u"line  \n"_s.repeated(1000));
    f.caret(7 * 500);
    const QRectF before = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    const Text trimmed(u"line\n"_s.repeated(1000));
    f.view.shouldChangeText({0, f.storage.length()}, trimmed);
    f.view.replaceCharacters({0, f.storage.length()}, trimmed);
    f.view.didChangeText();
    QCOMPARE(f.view.selectedRange(), (TextRange{trimmed.size(), 0}));
    f.caret(5 * 500);
    QCOMPARE(f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF(), before);
}

void TextViewTest::hugeLine_isEditedAnywhere()
{
    Fixture f(QString(300'000, u'x'));
    for (const qint64 offset : {0, 1'000, 150'000, 300'000}) {
        f.caret(offset);
        QTest::keyClicks(&f.view, u"abc"_s);
        QCOMPARE(f.view.string().slice(offset, 3), u"abc"_s);
        const QRectF caret = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
        QVERIFY(!caret.isNull());
        QVERIFY(f.view.viewport()->rect().contains(caret.center().toPoint()));
        f.view.undo();
    }
    QCOMPARE(f.view.string().size(), 300'000);
}

void TextViewTest::rightToLeftLine_leftMovesForward()
{
    Fixture f(u"مرحبا");
    f.caret(0);
    f.key(Qt::Key_Left);
    QCOMPARE(f.view.selectedRange().location, 1);
    f.key(Qt::Key_Right);
    QCOMPARE(f.view.selectedRange().location, 0);
}

void TextViewTest::wheel_scrollsWithoutMovingTheCaret()
{
    Fixture f(u"line\n"_s.repeated(500));
    f.caret(3);
    QWheelEvent wheel(QPointF(50, 50),
                      f.view.mapToGlobal(QPointF(50, 50)),
                      {},
                      QPoint(0, -240),
                      Qt::NoButton,
                      {},
                      Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(f.view.viewport(), &wheel);
    QVERIFY(f.view.verticalScrollBar()->value() > 0);
    QCOMPARE(f.view.selectedRange(), (TextRange{3, 0}));
}

void TextViewTest::upAfterCaretWasPlaced_keepsTheNewColumn()
{
    Fixture f(u"aaaaaaaa\naaaaaaaa\naaaaaaaa");
    f.caret(6);
    f.key(Qt::Key_Down);
    f.caret(20);
    f.key(Qt::Key_Up);
    QCOMPARE(f.view.selectedRange().location, 11);
}

void TextViewTest::caretBetweenCrAndLf_belongsToTheLineBefore()
{
    Fixture f(u"one\r\ntwo");
    f.caret(4);
    f.key(Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(f.view.caretOffset(), 3);
    QCOMPARE(lineAround(f.view.string(), 4), (TextRange{0, 5}));
    f.caret(4);
    f.key(Qt::Key_Home);
    QCOMPARE(f.view.caretOffset(), 0);
}

void TextViewTest::doubleClickOnTheLaterHalf_selectsThatWord()
{
    Fixture f(u"今日は天気");
    const QPoint left = f.pointOf(1);
    const QPoint right = f.pointOf(2);
    QTest::mouseDClick(f.view.viewport(), Qt::LeftButton, {}, (left + right * 3) / 4);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 2}));
}

void TextViewTest::joinersAndPrivateCharacters_areTyped()
{
    Fixture f;
    for (const QString &character : {u"\u200C"_s, u"\uE000"_s, u"x"_s}) {
        QKeyEvent event(QEvent::KeyPress, 0, Qt::ShiftModifier, character);
        QCoreApplication::sendEvent(&f.view, &event);
    }
    QCOMPARE(f.text(), u"\u200C\uE000x"_s);
    QKeyEvent withMeta(QEvent::KeyPress, Qt::Key_Y, Qt::MetaModifier, u"y"_s);
    QCoreApplication::sendEvent(&f.view, &withMeta);
    QKeyEvent withAlt(QEvent::KeyPress, Qt::Key_Y, Qt::AltModifier, u"y"_s);
    QCoreApplication::sendEvent(&f.view, &withAlt);
    QKeyEvent thirdLevel(
        QEvent::KeyPress, Qt::Key_At, Qt::ControlModifier | Qt::AltModifier, u"@"_s);
    QCoreApplication::sendEvent(&f.view, &thirdLevel);
    QCOMPARE(f.text(), u"\u200C\uE000x@"_s);
}

void TextViewTest::storageEditedBehindTheView_selectionDividesNoPair()
{
    Fixture f(u"ab");
    f.caret(1);
    f.storage.replaceCharacters({0, 1}, Text(u"😀"));
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 0}));
}

QTEST_MAIN(TextViewTest)
#include "TextViewTest.moc"
