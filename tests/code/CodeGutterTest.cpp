#include "macro/library/CodeForm.h"

#include <QScrollBar>
#include <QWheelEvent>

using namespace penwick;
using namespace Qt::StringLiterals;
using Form = test::CodeForm;

namespace {

/// Counts pixels that differ from the background in `height` rows from `top` on.
int inkAt(const QImage &image, qreal top, qreal height, const QColor &background)
{
    int count = 0;
    for (int y = qRound(top); y < qRound(top + height) && y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) != background ? 1 : 0;
    return count;
}

} // namespace

/// Tests of the line numbers in the code editor.
class CodeGutterTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbers_areThoseOfLinesAndNotOfRows();
    void width_growsWithTheDigits();
    void numbers_followScrolling();
    void click_selectsTheLine();
    void wheel_scrollsTheText();
    void errorSign_coversEveryRowOfTheLine();
    void caretLine_standsOut();
    void numbers_endInOneColumn();
};

void CodeGutterTest::numbers_areThoseOfLinesAndNotOfRows()
{
    Form f(QString(u"a\n"_s + u"word "_s.repeated(40) + u"\nb"_s));
    const QImage image = f.gutterPicture();
    const QColor base = f.gutter()->palette().color(QPalette::Base);
    const qreal height = f.view()->rowHeight();
    const auto lines = f.view()->visibleLines();
    QCOMPARE(lines.size(), std::size_t(3));
    for (const auto &line : lines)
        QVERIFY(inkAt(image, line.top, height, base) > 5);
    QVERIFY(lines[2].top >= lines[1].top + 2 * height);
    for (qreal top = lines[1].top + height; top + height <= lines[2].top; top += height)
        QCOMPARE(inkAt(image, top, height, base), 0);
    // The gutter is vertically aligned with the text.
    QCOMPARE(f.gutter()->mapToGlobal(QPoint(0, 0)).y(),
             f.view()->viewport()->mapToGlobal(QPoint(0, 0)).y());
}

void CodeGutterTest::width_growsWithTheDigits()
{
    Form f(u"\n"_s.repeated(98));
    const int width = f.gutter()->width();
    f.type(u"\n"_s); // The hundredth line.
    QTRY_VERIFY(f.gutter()->width() > width);
    f.editor.undo();
    QTRY_COMPARE(f.gutter()->width(), width);
    f.editor.setText({});
    QCoreApplication::processEvents();
    QCOMPARE(f.gutter()->width(), width); // There is always room for two digits.
}

void CodeGutterTest::numbers_followScrolling()
{
    Form f(u"\n"_s.repeated(300));
    const QImage top = f.gutterPicture();
    f.view()->verticalScrollBar()->setValue(f.view()->verticalScrollBar()->maximum() / 2);
    const QImage middle = f.gutterPicture();
    QVERIFY(middle != top);
    f.view()->verticalScrollBar()->setValue(0);
    QCOMPARE(f.gutterPicture(), top);
}

void CodeGutterTest::click_selectsTheLine()
{
    Form f(u"one\ntwo\nthree"_s);
    f.before.setFocus();
    const auto lines = f.view()->visibleLines();
    QTest::mouseClick(f.gutter(), Qt::LeftButton, {}, QPoint(5, qRound(lines[1].top) + 4));
    QCOMPARE(f.view()->selectedRange(), (TextRange{4, 4}));
    QVERIFY(f.view()->hasFocus());
    QTest::mouseClick(f.gutter(), Qt::LeftButton, {}, QPoint(5, qRound(lines[2].top) + 4));
    QCOMPARE(f.view()->selectedRange(), (TextRange{8, 5}));
}

void CodeGutterTest::wheel_scrollsTheText()
{
    Form f(u"\n"_s.repeated(300));
    QWheelEvent event({5, 5},
                      f.gutter()->mapToGlobal(QPointF(5, 5)),
                      {},
                      {0, -240},
                      Qt::NoButton,
                      Qt::NoModifier,
                      Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(f.gutter(), &event);
    QVERIFY(f.view()->verticalScrollBar()->value() > 0);
}

void CodeGutterTest::errorSign_coversEveryRowOfTheLine()
{
    Form f(QString(u"a\n"_s + u"word "_s.repeated(40) + u"\nb"_s));
    f.editor.markErrorLine(2);
    const QImage image = f.gutterPicture();
    const QColor background = CodeColors(f.gutter()->palette()).errorLine;
    const auto lines = f.view()->visibleLines();
    const auto colorAt = [&image](qreal y) { return image.pixelColor(1, qRound(y)); };
    QVERIFY(colorAt(lines[1].top - 1) != background);
    QCOMPARE(colorAt(lines[1].top + 1), background);
    QCOMPARE(colorAt(lines[1].bottom - 2), background);
    QVERIFY(colorAt(lines[2].top + 1) != background);
}

void CodeGutterTest::caretLine_standsOut()
{
    Form f(u"a\nb"_s);
    const QImage first = f.gutterPicture();
    f.caret(2);
    QVERIFY(f.gutterPicture() != first);
    f.caret(1);
    QCOMPARE(f.gutterPicture(), first);
}

void CodeGutterTest::numbers_endInOneColumn()
{
    Form f(u"\n"_s.repeated(11));
    f.caret(f.editor.text().size());
    const QImage image = f.gutterPicture();
    const QColor base = f.gutter()->palette().color(QPalette::Base);
    const auto lastInk = [&](qreal top) {
        for (int x = image.width() - 1; x >= 0; --x) {
            for (int y = qRound(top); y < qRound(top + f.view()->rowHeight()); ++y)
                if (image.pixelColor(x, y) != base)
                    return x;
        }
        return -1;
    };
    const auto lines = f.view()->visibleLines();
    QVERIFY(lastInk(lines[0].top) > 0);
    QCOMPARE(lastInk(lines[0].top), lastInk(lines[10].top)); // The numbers 1 and 11.
}

QTEST_MAIN(CodeGutterTest)

#include "CodeGutterTest.moc"
