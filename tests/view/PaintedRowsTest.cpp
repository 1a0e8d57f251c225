#include "support/ShownTextView.h"
#include "support/TextModel.h"
#include "view/TextView.h"

#include <QApplication>
#include <QPaintEvent>
#include <QRandomGenerator>
#include <QScreen>
#include <QTest>
#include <QWheelEvent>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// Paints what waits to be painted.
void paint()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

/// Collects the area that a widget paints.
class PaintedArea final : public QObject
{
public:
    explicit PaintedArea(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject * /*object*/, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_area += static_cast<QPaintEvent *>(event)->region();
        return false;
    }

    /// Returns the height of what was painted since the last call, in logical pixels.
    int takeHeight()
    {
        paint();
        return std::exchange(m_area, QRegion()).boundingRect().height();
    }

private:
    QRegion m_area;
};

/// A view with the focus, and what the screen shows of it.
class Screen final
{
public:
    explicit Screen(const QString &text)
        : f(text)
    {
    }

    /// True when each pixel is as if the whole view was painted now.
    [[nodiscard]] bool isCurrent()
    {
        paint();
        const QWidget *viewport = f.view.viewport();
        const QRect area(viewport->mapTo(&f.view, QPoint()), viewport->size());
        const QImage shown = f.view.screen()
                                 ->grabWindow(f.view.winId())
                                 .copy(area)
                                 .toImage()
                                 .convertToFormat(QImage::Format_RGB32);
        const QImage painted =
            f.view.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        return shown == painted;
    }

    test::ShownTextView f;
};

/// Performs a random action of a user.
void act(test::ShownTextView &f, QRandomGenerator &random)
{
    switch (random.bounded(12)) {
    case 0:
        return f.key(Qt::Key_Return);
    case 1:
        return f.key(Qt::Key_Backspace);
    case 2:
        return f.view.undo();
    case 3:
        return f.compose(test::randomText(random, 2));
    case 4: {
        const QPoint notches(0, (random.bounded(7) - 3) * 120);
        QWheelEvent wheel({1, 1}, {1, 1}, {}, notches, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(f.view.viewport(), &wheel);
        return;
    }
    case 5:
        return f.view.setMarksCurrentLine(random.bounded(2) == 0);
    case 6:
        return f.view.setShownMarks(random.bounded(2) == 0 ? ShownMarks::None : ShownMarks::All);
    case 7:
        return f.view.resize(300 + random.bounded(300), 400);
    case 8:
    case 9:
        return f.key(test::kCaretKeys[random.bounded(8)],
                     random.bounded(2) == 0 ? Qt::ShiftModifier : Qt::NoModifier);
    default:
        return f.compose({}, test::randomText(random, 1 + random.bounded(2)));
    }
}

} // namespace

class PaintedRowsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void typing_paintsTheRowsAround();
    void typingAtTheEndOfALongParagraph_leavesItsOtherRows();
    void caretMove_paintsNoRow();
    void newLine_paintsWhatIsBelow();
    void anythingDone_showsThePresentText_data();
    void anythingDone_showsThePresentText();
};

void PaintedRowsTest::initTestCase()
{
    QApplication::setCursorFlashTime(0); // Nothing but the actions changes the picture.
}

void PaintedRowsTest::typing_paintsTheRowsAround()
{
    Screen screen(u"犬も歩けば棒に当たる\n"_s.repeated(30));
    TextView &view = screen.f.view;
    screen.f.caret(11 * 5);
    PaintedArea area(view.viewport());
    area.takeHeight();
    QTest::keyClicks(&view, u"x"_s);
    const int height = area.takeHeight();
    QVERIFY(height >= view.rowHeight());
    QVERIFY2(height <= 3 * view.rowHeight() + 2, qPrintable(QString::number(height)));
    QVERIFY(screen.isCurrent());
}

void PaintedRowsTest::typingAtTheEndOfALongParagraph_leavesItsOtherRows()
{
    Screen screen(u"犬も歩けば棒に当たる。"_s.repeated(30));
    TextView &view = screen.f.view;
    screen.f.caret(view.string().size());
    PaintedArea area(view.viewport());
    area.takeHeight();
    QTest::keyClicks(&view, u"x"_s);
    const int height = area.takeHeight();
    QVERIFY(height >= view.rowHeight());
    // The row before it knows the first characters of the last row.
    QVERIFY2(height <= 4 * view.rowHeight() + 2, qPrintable(QString::number(height)));
    QVERIFY(screen.isCurrent());
}

void PaintedRowsTest::caretMove_paintsNoRow()
{
    Screen screen(u"犬も歩けば棒に当たる\n"_s.repeated(30));
    screen.f.caret(0);
    PaintedArea area(screen.f.view.viewport());
    area.takeHeight();
    screen.f.key(Qt::Key_Right);
    QVERIFY(area.takeHeight() <= screen.f.view.rowHeight() + 2);
    QVERIFY(screen.isCurrent());
}

void PaintedRowsTest::newLine_paintsWhatIsBelow()
{
    Screen screen(u"一\n二\n三\n四\n五"_s);
    screen.f.caret(2);
    PaintedArea area(screen.f.view.viewport());
    area.takeHeight();
    screen.f.key(Qt::Key_Return);
    QVERIFY(area.takeHeight() >= 5 * screen.f.view.rowHeight());
    QVERIFY(screen.isCurrent());
}

void PaintedRowsTest::anythingDone_showsThePresentText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TextView::Wrapping>("wrapping");
    QRandomGenerator random(3);
    QTest::newRow("empty") << QString() << TextView::Wrapping::Window;
    QTest::newRow("mixed") << test::randomText(random, 400) << TextView::Wrapping::Window;
    QTest::newRow("mixed, not wrapped") << test::randomText(random, 400) << TextView::Wrapping::Off;
    QTest::newRow("paragraphs") << u"犬も歩けば棒に当たる。"_s.repeated(20).append(u'\n').repeated(
                                       4)
                                << TextView::Wrapping::Window;
    QTest::newRow("marks over the row above")
        << u"a\u0301\u0302\u0303\u0304\u0305 b\n"_s.repeated(20) << TextView::Wrapping::Window;
    QTest::newRow("right to left")
        << u"مرحبا بالعالم abc שלום\n"_s.repeated(20) << TextView::Wrapping::Window;
}

void PaintedRowsTest::anythingDone_showsThePresentText()
{
    QFETCH(QString, text);
    QFETCH(TextView::Wrapping, wrapping);
    Screen screen(text);
    screen.f.view.setWrapping(wrapping, 80);
    QRandomGenerator random(7);
    for (int step = 0; step < 150; ++step) {
        act(screen.f, random);
        QVERIFY2(screen.isCurrent(), qPrintable(u"after step %1"_s.arg(step)));
    }
}

QTEST_MAIN(PaintedRowsTest)
#include "PaintedRowsTest.moc"
