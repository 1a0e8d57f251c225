#include "support/ShownTextView.h"
#include "view/TextViewAccessible.h"

#include <QImage>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

using Wrapping = TextView::Wrapping;

/// A shown view whose lines do not wrap.
struct Unwrapped : test::ShownTextView
{
    explicit Unwrapped(const QString &text)
        : ShownTextView(text)
    {
        view.setWrapping(Wrapping::Off, 0);
    }

    [[nodiscard]] QScrollBar *bar() const { return view.horizontalScrollBar(); }

    [[nodiscard]] bool shows(qint64 offset) const
    {
        return QRectF(view.viewport()->rect()).contains(view.caretRectAt(offset));
    }

    [[nodiscard]] qreal xOf(qint64 offset) const { return view.caretRectAt(offset).left(); }

    void wheel(QPoint pixels, QPoint angle, Qt::KeyboardModifiers modifiers = {})
    {
        const QPointF place(20, 20);
        QWheelEvent event(place,
                          view.mapToGlobal(place),
                          pixels,
                          angle,
                          Qt::NoButton,
                          modifiers,
                          Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }
};

/// A line of 5 MB whose parts have other widths than estimated.
const QString &hugeLine()
{
    static const QString line = u"ﾊﾝｶｸ漢字 some words \U0001F600 Ελληνικά、"_s.repeated(100'000);
    return line;
}

void moveTo(QWidget *target, QPoint point)
{
    QMouseEvent moved(QEvent::MouseMove,
                      point,
                      target->mapToGlobal(point),
                      Qt::NoButton,
                      Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(target, &moved);
}

} // namespace

/// Tests of lines that do not wrap, or wrap at a column.
class TextViewWrappingTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void off_lineIsOneRow();
    void off_bar_isThereWhenNeeded();
    void off_keys_reachBothEnds();
    void off_upAndDown_keepTheColumn();
    void off_bar_reachesBothEnds();
    void off_wheel_scrollsSideways();
    void shiftAndWheel_withoutSides_scrollsRows();
    void off_resize_leavesThePlace();
    void off_click_hitsWhatIsShown();
    void off_dragBeyondTheEdge_scrolls();
    void off_composition_isShown();
    void off_rightToLeftLine_standsOnTheRight();
    void off_selectionAcrossParts_hasNoGap();
    void off_selectedLineBreak_reachesTheEdge();
    void hugeLine_scrolling_isSteady();
    void hugeLine_typing_movesNothingBefore();
    void hugeLine_bar_hardlyMovesWhileTyping();
    void hugeLine_askingElsewhere_movesNothing();
    void hugeLine_endsAreExact();
    void hugeLine_accessibleLine_isBounded();
    void switching_keepsCaretAndTopLine();
    void switching_inHugeLine_keepsTheCaret();
    void zoom_keepsThePlace();
    void column_countsFullWidthTwice();
    void column_widerThanTheView_scrolls();
    void visibleLines_areLinesOnce();
};

void TextViewWrappingTest::off_lineIsOneRow()
{
    Unwrapped f(u"x"_s.repeated(500) + u"\nsecond"_s);
    QCOMPARE(f.view.caretRectAt(0).top(), f.view.caretRectAt(500).top());
    QCOMPARE(f.view.caretRectAt(501).top(), f.view.caretRectAt(0).top() + f.view.rowHeight());
}

void TextViewWrappingTest::off_bar_isThereWhenNeeded()
{
    Unwrapped f(u"short"_s);
    QCOMPARE(f.bar()->maximum(), 0);
    f.key(Qt::Key_End);
    for (int i = 0; i < 200; ++i)
        f.key(Qt::Key_X);
    QVERIFY(f.bar()->maximum() > 0);
    QTRY_VERIFY(f.bar()->isVisible());
    QVERIFY(f.shows(205));
    f.view.setString(Text(u"short"));
    QCOMPARE(f.bar()->maximum(), 0);
    QTRY_VERIFY(!f.bar()->isVisible());
}

void TextViewWrappingTest::off_keys_reachBothEnds()
{
    Unwrapped f(u"word "_s.repeated(100) + u"\nx"_s);
    f.key(Qt::Key_End);
    QCOMPARE(f.view.caretOffset(), 500);
    QVERIFY(f.shows(500));
    QVERIFY(!f.shows(0));
    f.key(Qt::Key_Home);
    QCOMPARE(f.view.caretOffset(), 0);
    QCOMPARE(f.bar()->value(), 0);
    for (int i = 0; i < 150; ++i)
        f.key(Qt::Key_Right);
    QVERIFY(f.shows(150));
    QVERIFY(f.bar()->value() > 0);
    f.key(Qt::Key_Down);
    QCOMPARE(f.view.caretOffset(), 502);
    QVERIFY(f.shows(502));
}

void TextViewWrappingTest::off_upAndDown_keepTheColumn()
{
    const QString line = u"x"_s.repeated(300);
    Unwrapped f(line + u'\n' + u"y"_s.repeated(10) + u'\n' + line);
    f.caret(200);
    f.key(Qt::Key_Down);
    QCOMPARE(f.view.caretOffset(), 311);
    f.key(Qt::Key_Down);
    QCOMPARE(f.view.caretOffset(), 312 + 200);
    f.key(Qt::Key_PageUp);
    QCOMPARE(f.view.caretOffset(), 0 + 200);
}

void TextViewWrappingTest::off_bar_reachesBothEnds()
{
    Unwrapped f(u"x"_s.repeated(700) + u'\n' + u"y"_s.repeated(900));
    f.bar()->setValue(f.bar()->maximum());
    QCOMPARE(f.bar()->value(), f.bar()->maximum());
    QVERIFY(f.shows(701 + 900));
    f.bar()->setValue(0);
    QVERIFY(f.shows(0));
}

void TextViewWrappingTest::off_wheel_scrollsSideways()
{
    Unwrapped f(u"x"_s.repeated(700) + u"\nx"_s.repeated(100));
    const qreal before = f.xOf(0);
    f.wheel({}, {0, -120}, Qt::ShiftModifier);
    const qreal after = f.xOf(0);
    QVERIFY(after < before - 20);
    QCOMPARE(f.view.verticalScrollBar()->value(), 0);
    f.wheel({-30, 0}, {});
    QCOMPARE(f.xOf(0), after - 30);
    f.wheel({10'000, 0}, {});
    QCOMPARE(f.xOf(0), before);
    f.wheel({}, {0, -120});
    QVERIFY(f.view.verticalScrollBar()->value() > 0);
    QCOMPARE(f.xOf(100), before + (f.xOf(100) - f.xOf(0)));
}

void TextViewWrappingTest::shiftAndWheel_withoutSides_scrollsRows()
{
    Unwrapped f(u"x\n"_s.repeated(100));
    f.wheel({}, {0, -120}, Qt::ShiftModifier);
    QVERIFY(f.view.verticalScrollBar()->value() > 0);
}

void TextViewWrappingTest::off_resize_leavesThePlace()
{
    Unwrapped f(u"x"_s.repeated(700));
    f.bar()->setValue(2000);
    const qreal before = f.xOf(300);
    f.view.resize(500, 300); // The caret, scrolled out, does not come back.
    QCOMPARE(f.xOf(300), before);
    f.bar()->setValue(f.bar()->maximum());
    f.view.resize(800, 300); // No empty space appears on the right.
    QVERIFY(f.xOf(700) > f.view.viewport()->width() - 20);
}

void TextViewWrappingTest::off_click_hitsWhatIsShown()
{
    Unwrapped f(u"x"_s.repeated(700));
    f.bar()->setValue(1000);
    const qint64 offset = f.view.offsetAt({100, 10});
    QVERIFY(offset > 100);
    const QPoint point = f.view.caretRectAt(offset).center().toPoint();
    QTest::mouseClick(f.view.viewport(), Qt::LeftButton, {}, point);
    QCOMPARE(f.view.caretOffset(), offset);
    QCOMPARE(f.bar()->value(), 1000);
}

void TextViewWrappingTest::off_dragBeyondTheEdge_scrolls()
{
    Unwrapped f(u"x"_s.repeated(700));
    QWidget *target = f.view.viewport();
    QTest::mousePress(target, Qt::LeftButton, {}, {50, 10});
    moveTo(target, {target->width() + 60, 10});
    QTRY_VERIFY(f.shows(700));
    QTRY_COMPARE(f.view.caretOffset(), 700);
    moveTo(target, {-60, 10});
    QTRY_VERIFY(f.shows(0));
    QTest::mouseRelease(target, Qt::LeftButton, {}, {-60, 10});
}

void TextViewWrappingTest::off_composition_isShown()
{
    Unwrapped f(u"x"_s.repeated(700));
    f.key(Qt::Key_End);
    f.compose(u"へんかんするながいぶん"_s);
    const QRectF caret = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    QVERIFY(QRectF(f.view.viewport()->rect()).contains(caret));
    QVERIFY(caret.left() > f.view.caretRectAt(690).left() + 10);
    f.compose({}, u"変換"_s);
    QVERIFY(f.shows(702));
}

void TextViewWrappingTest::off_rightToLeftLine_standsOnTheRight()
{
    Unwrapped f(u"مرحبا\nlatin"_s);
    QVERIFY(f.xOf(0) > f.view.viewport()->width() - 20);
    const qint64 hit = f.view.offsetAt(f.view.caretRectAt(2).center().toPoint());
    QCOMPARE(hit, 2);
}

void TextViewWrappingTest::off_selectionAcrossParts_hasNoGap()
{
    Unwrapped f(u"x"_s.repeated(3 * segments::kUnits));
    f.view.setSelectedRange({segments::kUnits - 20, 40});
    QCoreApplication::processEvents();
    const QImage image = f.view.viewport()->grab().toImage();
    const QColor color = f.view.palette().color(QPalette::Active, QPalette::Highlight);
    const int y = static_cast<int>(f.view.caretRectAt(segments::kUnits).top()) + 1;
    const auto isSelected = [&](qreal x) { return image.pixelColor(qRound(x), y) == color; };
    for (qint64 i = -19; i < 20; ++i)
        QVERIFY2(isSelected(f.xOf(segments::kUnits + i)), qPrintable(QString::number(i)));
    QVERIFY(!isSelected(f.xOf(segments::kUnits - 20) - 4));
    QVERIFY(!isSelected(f.xOf(segments::kUnits + 20) + 4));
}

void TextViewWrappingTest::off_selectedLineBreak_reachesTheEdge()
{
    Unwrapped f(u"one\ntwo"_s);
    f.view.setSelectedRange({0, 4});
    QCoreApplication::processEvents();
    const QImage image = f.view.viewport()->grab().toImage();
    const QColor color = f.view.palette().color(QPalette::Active, QPalette::Highlight);
    const int y = static_cast<int>(f.view.caretRectAt(0).top()) + 1;
    QCOMPARE(image.pixelColor(300, y), color);
}

void TextViewWrappingTest::hugeLine_scrolling_isSteady()
{
    Unwrapped f(hugeLine());
    f.caret(hugeLine().size() / 2);
    for (const int distance : {-50, 50}) {
        for (int step = 0; step < 800; ++step) {
            const qint64 seen = f.view.offsetAt({distance < 0 ? 60 : 500, 10});
            const qreal before = f.xOf(seen);
            f.wheel({-distance, 0}, {});
            QVERIFY2(std::abs(f.xOf(seen) - (before - distance)) <= 1,
                     qPrintable(QString::number(step)));
        }
    }
}

void TextViewWrappingTest::hugeLine_typing_movesNothingBefore()
{
    Unwrapped f(hugeLine());
    for (const qint64 place : {hugeLine().size() / 3, hugeLine().size() - 10}) {
        f.caret(place);
        for (int i = 0; i < 50; ++i) {
            const qreal left = f.xOf(f.view.caretOffset() - 3);
            const int value = f.bar()->value();
            const qint64 seen = f.view.caretOffset() - 3;
            f.key(Qt::Key_X);
            QCOMPARE(f.xOf(seen) + f.bar()->value(), left + value);
            QVERIFY(f.shows(f.view.caretOffset()));
        }
    }
}

void TextViewWrappingTest::hugeLine_bar_hardlyMovesWhileTyping()
{
    Unwrapped f(hugeLine());
    f.caret(hugeLine().size() / 2);
    const int maximum = f.bar()->maximum();
    const int value = f.bar()->value();
    for (int i = 0; i < 20; ++i)
        f.key(Qt::Key_X);
    const auto most = static_cast<int>(20 * f.view.caretRectAt(0).height());
    QVERIFY(std::abs(f.bar()->maximum() - maximum) <= most);
    QVERIFY(std::abs(f.bar()->value() - value) <= most);
}

void TextViewWrappingTest::hugeLine_askingElsewhere_movesNothing()
{
    Unwrapped f(hugeLine());
    const qint64 place = hugeLine().size() / 2;
    f.caret(place);
    const qreal before = f.xOf(place);
    for (qint64 offset = 0; offset < f.view.string().size(); offset += 50'000)
        QVERIFY(!f.view.characterRectAt(offset).isEmpty());
    f.view.updateMarks();
    QCoreApplication::processEvents();
    QCOMPARE(f.xOf(place), before);
}

void TextViewWrappingTest::hugeLine_endsAreExact()
{
    Unwrapped f(hugeLine());
    const qint64 size = f.view.string().size();
    f.bar()->setValue(f.bar()->maximum());
    QVERIFY(f.shows(size));
    QVERIFY(f.xOf(size) > f.view.viewport()->width() - 20);
    f.bar()->setValue(0);
    QCOMPARE(f.xOf(0), TextViewport::kMargin);
    f.key(Qt::Key_End);
    QVERIFY(f.shows(size));
    f.key(Qt::Key_Home);
    QCOMPARE(f.xOf(0), TextViewport::kMargin);
}

void TextViewWrappingTest::hugeLine_accessibleLine_isBounded()
{
    Unwrapped f(hugeLine());
    TextViewAccessible accessible(&f.view);
    int start = 0;
    int end = 0;
    const QString line =
        accessible.textAtOffset(1'000'000, QAccessible::LineBoundary, &start, &end);
    QVERIFY(start <= 1'000'000 && end > 1'000'000);
    QVERIFY(line.size() < 2 * segments::kUnits);
    f.caret(1'000'000);
    const QRect caret = accessible.characterRect(1'000'000);
    QVERIFY(f.view.rect().contains(f.view.mapFromGlobal(caret.center())));
    QCOMPARE(accessible.offsetAtPoint(caret.center() - QPoint(caret.width() / 2, 0)), 1'000'000);
}

void TextViewWrappingTest::switching_keepsCaretAndTopLine()
{
    Unwrapped f((u"long line of words "_s.repeated(20) + u'\n').repeated(200));
    const qint64 line = 19 * 20 + 1;
    f.caret(101 * line + 200);
    f.wheel({}, {0, -240});
    const qint64 top = f.view.visibleLines().front().number;
    QVERIFY(top > 50);
    for (const Wrapping wrapping :
         {Wrapping::Window, Wrapping::Off, Wrapping::Column, Wrapping::Off}) {
        f.view.setWrapping(wrapping, 30);
        QVERIFY(f.view.visibleLines().front().number >= top);
        QVERIFY(f.view.visibleLines().front().number <= 101);
        QCOMPARE(f.view.caretOffset(), 101 * line + 200);
    }
    QVERIFY(f.shows(101 * line + 200));
}

void TextViewWrappingTest::switching_inHugeLine_keepsTheCaret()
{
    Unwrapped f(hugeLine());
    f.caret(hugeLine().size() / 2);
    for (const Wrapping wrapping :
         {Wrapping::Window, Wrapping::Off, Wrapping::Column, Wrapping::Off}) {
        f.view.setWrapping(wrapping, 40);
        QVERIFY(f.shows(hugeLine().size() / 2));
    }
}

void TextViewWrappingTest::zoom_keepsThePlace()
{
    Unwrapped f(hugeLine());
    f.caret(hugeLine().size() / 2);
    QFont font = f.view.font();
    font.setPixelSize(30);
    f.view.setFont(font);
    const qint64 seen = f.view.offsetAt({10, 10});
    QVERIFY(std::abs(seen - hugeLine().size() / 2) < 500);
}

void TextViewWrappingTest::column_countsFullWidthTwice()
{
    test::ShownTextView f(u"x"_s.repeated(100) + u'\n' + u"漢字かな"_s.repeated(25));
    f.view.setWrapping(Wrapping::Column, 40);
    QCOMPARE(f.view.rowAround(0), (TextRange{0, 40}));
    QCOMPARE(f.view.rowAround(101), (TextRange{101, 20}));
    f.view.setWrapping(Wrapping::Column, 31);
    QCOMPARE(f.view.rowAround(0), (TextRange{0, 31}));
    QCOMPARE(f.view.rowAround(101), (TextRange{101, 15}));
    QCOMPARE(f.view.horizontalScrollBar()->maximum(), 0);
    f.view.resize(500, 300); // The rows do not depend on the view's width.
    QCOMPARE(f.view.rowAround(0), (TextRange{0, 31}));
}

void TextViewWrappingTest::column_widerThanTheView_scrolls()
{
    test::ShownTextView f(u"x"_s.repeated(1000));
    f.view.setWrapping(Wrapping::Column, 200);
    QVERIFY(f.view.horizontalScrollBar()->maximum() > 0);
    f.key(Qt::Key_End);
    QCOMPARE(f.view.caretOffset(), 200);
    const QRectF caret = f.view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    QVERIFY(QRectF(f.view.viewport()->rect()).contains(caret));
    f.view.setWrapping(Wrapping::Window, 0);
    QCOMPARE(f.view.horizontalScrollBar()->maximum(), 0);
}

void TextViewWrappingTest::visibleLines_areLinesOnce()
{
    Unwrapped f(u"a\n"_s + hugeLine() + u"\nb\nc"_s);
    f.caret(hugeLine().size() / 2);
    const auto lines = f.view.visibleLines();
    QCOMPARE(lines.size(), std::size_t(4));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines[i].number, qint64(i));
        QCOMPARE(lines[i].top, lines[0].top + static_cast<qreal>(i) * f.view.rowHeight());
        QCOMPARE(lines[i].bottom, lines[i].top + f.view.rowHeight());
    }
}

QTEST_MAIN(TextViewWrappingTest)
#include "TextViewWrappingTest.moc"
