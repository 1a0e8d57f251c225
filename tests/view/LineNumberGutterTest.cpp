#include "view/LineNumberGutter.h"

#include "support/ShownTextView.h"
#include "text/Separators.h"

#include <QHBoxLayout>
#include <QScrollBar>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kLineBreaks = TextView::LineCount::LineBreaks;

/// A view in a shown window, with line numbers on its left.
struct Numbered
{
    explicit Numbered(QStringView text)
    {
        auto *layout = new QHBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(&gutter);
        layout->addWidget(&view);
        view.setString(Text(text));
        window.resize(500, 300);
        window.show();
        view.setFocus();
        const bool isActive = QTest::qWaitForWindowActive(&window);
        Q_ASSERT(isActive);
        Q_UNUSED(isActive)
    }

    /// The place of the number of the `index`th visible line.
    QPoint number(std::size_t index)
    {
        return {5, qRound(view.visibleLines(kLineBreaks).at(index).top) + 4};
    }

    void press(std::size_t line, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(&gutter, Qt::LeftButton, modifiers, number(line));
    }

    void release(std::size_t line)
    {
        QTest::mouseRelease(&gutter, Qt::LeftButton, {}, number(line));
    }

    void moveTo(QPoint point)
    {
        QMouseEvent event(QEvent::MouseMove,
                          point,
                          gutter.mapToGlobal(point),
                          Qt::NoButton,
                          Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&gutter, &event);
    }

    QString selected()
    {
        return view.string().slice(view.selectedRange().location, view.selectedRange().length);
    }

    QWidget window;
    TextStorage storage{test::stoppedClock()};
    TextView view{&storage, &window};
    LineNumberGutter gutter{&view, kLineBreaks, &window};
};

/// The number of line breaks before `offset`, counted one by one. A CR LF pair counts at its end.
qint64 lineOf(const QString &text, qsizetype offset)
{
    qint64 count = 0;
    for (qsizetype i = 0; i < offset; ++i) {
        const bool isInPair = text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        count += isSeparator(text[i].unicode()) && !isInPair ? 1 : 0;
    }
    return count;
}

/// Counts the paints of a widget.
class PaintCount final : public QObject
{
public:
    explicit PaintCount(QWidget *widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject * /*object*/, QEvent *event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    /// Paints what waits to be painted; returns the number of paints since the last call.
    int take()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
        return std::exchange(m_count, 0);
    }

private:
    int m_count = 0;
};

} // namespace

class LineNumberGutterTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbers_allLineBreaks_countOnce();
    void numbers_ofAScrolledText_areThoseOfItsLines();
    void width_startsWithThreeDigitsAndGrows();
    void font_ofTheView_isFollowed();
    void click_selectsTheLineWithItsEnd();
    void drag_selectsLinesInBothDirections();
    void drag_belowTheView_scrolls();
    void shiftClick_extendsTheSelection();
    void rightButton_isIgnored();
    void currentLine_isMarked();
    void typing_paintsNumbersOnlyForANewLine();
};

void LineNumberGutterTest::numbers_allLineBreaks_countOnce()
{
    const QString text = u"a\r\nb\rc\u2028d\u0085e\n\r\u2029\n"_s;
    Numbered f(text);
    const auto lines = f.view.visibleLines(kLineBreaks);
    QCOMPARE(qint64(lines.size()), f.view.lineCount(kLineBreaks));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines[i].number, qint64(i));
        QCOMPARE(lines[i].bottom - lines[i].top, f.view.rowHeight());
    }
    for (qsizetype offset = 0; offset <= text.size(); ++offset)
        QCOMPARE(f.view.lineAt(offset, kLineBreaks), lineOf(text, offset));
    QCOMPARE(f.view.lineCount(kLineBreaks), lineOf(text, text.size()) + 1);
}

void LineNumberGutterTest::numbers_ofAScrolledText_areThoseOfItsLines()
{
    QString text;
    for (int i = 0; i < 5000; ++i)
        text += QString(i % 7 * 40, u'x') + (i % 3 == 0 ? u"\r\n"_s : u"\n"_s);
    Numbered f(text);
    for (const int share : {0, 1, 3, 7, 8}) {
        f.view.verticalScrollBar()->setValue(f.view.verticalScrollBar()->maximum() * share / 8);
        for (const auto &line : f.view.visibleLines(kLineBreaks)) {
            if (line.top < 0)
                continue;
            const qint64 offset = f.view.offsetAt({0, qRound(line.top) + 2});
            QCOMPARE(line.number, lineOf(text, offset));
            QCOMPARE(f.view.caretRectAt(offset).top(), line.top);
        }
    }
}

void LineNumberGutterTest::width_startsWithThreeDigitsAndGrows()
{
    Numbered f(u"a");
    const int width = f.gutter.width();
    f.view.setString(Text(u"\r\n"_s.repeated(998)));
    QTRY_COMPARE(f.gutter.width(), width);
    f.view.setSelectedRange({0, 0});
    QTest::keyClick(&f.view, Qt::Key_Return);
    const int digit = qRound(QFontMetricsF(f.view.font()).horizontalAdvance(u'0'));
    QTRY_VERIFY(qAbs(f.gutter.width() - width - digit) <= 1);
}

void LineNumberGutterTest::font_ofTheView_isFollowed()
{
    Numbered f(u"a");
    const int width = f.gutter.width();
    QFont font = f.view.font();
    font.setPixelSize(40);
    f.view.setFont(font);
    QCOMPARE(f.gutter.font().pixelSize(), 40);
    QVERIFY(f.gutter.sizeHint().width() > width);
}

void LineNumberGutterTest::click_selectsTheLineWithItsEnd()
{
    Numbered f(u"one\r\ntwo\rthree");
    const QStringList expected{u"one\r\n"_s, u"two\r"_s, u"three"_s};
    for (std::size_t line : {1, 0, 2}) {
        QTest::mouseClick(&f.gutter, Qt::LeftButton, {}, f.number(line));
        QCOMPARE(f.selected(), expected[qsizetype(line)]);
        QVERIFY(f.view.hasFocus());
    }
}

void LineNumberGutterTest::drag_selectsLinesInBothDirections()
{
    Numbered f(u"one\ntwo\nthree\nfour");
    f.press(1);
    f.moveTo(f.number(2));
    QCOMPARE(f.selected(), u"two\nthree\n"_s);
    QCOMPARE(f.view.caretOffset(), 14);
    f.moveTo(f.number(0));
    QCOMPARE(f.selected(), u"one\ntwo\n"_s);
    QCOMPARE(f.view.caretOffset(), 0);
    f.release(0);
    f.moveTo(f.number(3)); // The button is up.
    QCOMPARE(f.selected(), u"one\ntwo\n"_s);
    QCOMPARE(f.view.string().toString(), u"one\ntwo\nthree\nfour"_s);
}

void LineNumberGutterTest::drag_belowTheView_scrolls()
{
    Numbered f(u"line\n"_s.repeated(200));
    f.press(0);
    f.moveTo({5, f.gutter.height() + 60});
    QTRY_COMPARE(f.view.caretOffset(), 1000);
    f.release(0);
    QCOMPARE(f.view.anchorOffset(), 0);
}

void LineNumberGutterTest::shiftClick_extendsTheSelection()
{
    Numbered f(u"one\ntwo\nthree\nfour");
    f.view.setSelectedRange({5, 0});
    f.press(2, Qt::ShiftModifier);
    QCOMPARE(f.selected(), u"two\nthree\n"_s);
    f.release(2);
    f.press(0, Qt::ShiftModifier);
    QCOMPARE(f.selected(), u"one\ntwo\n"_s);
}

void LineNumberGutterTest::rightButton_isIgnored()
{
    Numbered f(u"one\ntwo");
    f.view.setSelectedRange({1, 1});
    QTest::mouseClick(&f.gutter, Qt::RightButton, {}, f.number(1));
    QCOMPARE(f.view.selectedRange(), (TextRange{1, 1}));
}

void LineNumberGutterTest::currentLine_isMarked()
{
    Numbered f(u"one\ntwo\nthree");
    f.view.setSelectedRange({5, 0});
    const auto colorOf = [&f](std::size_t line) {
        return f.gutter.grab().toImage().pixelColor(1, f.number(line).y());
    };
    QCOMPARE(colorOf(1), colorOf(0));
    f.gutter.setMarksCurrentLine(true);
    QVERIFY(colorOf(1) != colorOf(0));
    QCOMPARE(colorOf(2), colorOf(0));
}

void LineNumberGutterTest::typing_paintsNumbersOnlyForANewLine()
{
    Numbered f(u"a\nb\nc");
    PaintCount paints(&f.gutter);
    paints.take();
    QTest::keyClicks(&f.view, u"x"_s);
    QCOMPARE(paints.take(), 0);
    QTest::keyClick(&f.view, Qt::Key_Return);
    QCOMPARE(paints.take(), 1);
}

QTEST_MAIN(LineNumberGutterTest)
#include "LineNumberGutterTest.moc"
