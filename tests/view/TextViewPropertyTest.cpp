#include "support/ShownTextView.h"
#include "support/TextModel.h"
#include "view/TextView.h"

#include <QRandomGenerator>
#include <QScrollBar>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr Qt::KeyboardModifiers kModifiers[] = {
    Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};

template <typename T, std::size_t N> T oneOf(QRandomGenerator &random, const T (&list)[N])
{
    return list[random.bounded(static_cast<quint32>(N))];
}

bool isInsidePair(const Text &text, qint64 offset)
{
    return offset > 0 && offset < text.size() && QChar::isLowSurrogate(text.at(offset));
}

bool isClusterBoundary(const Text &text, qint64 offset)
{
    return text.clusterBoundaryAtOrBefore(offset) == offset;
}

/// What must hold for the view after an action.
struct Promise
{
    bool caretIsShown = false;
    bool caretIsAtCluster = false;
};

/// A view for random actions, and a new view over the same text for comparison.
class Play final
{
public:
    Play(quint32 seed, const QString &text, TextView::Wrapping wrapping)
        : m_random(seed)
        , m_shown(text)
    {
        setWrapping(wrapping);
    }

    /// Performs a random action and returns what must hold afterwards.
    Promise act();
    /// True when `promise` holds; otherwise `failure` says what does not.
    bool holds(const Promise &promise, QString &failure);
    /// True when the layout equals that of a new view; otherwise `failure` says where it differs.
    bool looksLikeNew(QString &failure);

private:
    Promise move();
    Promise edit();
    Promise compose();
    Promise click();
    Promise scroll();
    Promise resize();
    Promise select();
    Promise scrollSideways();
    void setWrapping(TextView::Wrapping wrapping);
    [[nodiscard]] bool scrollBarHolds(QString &failure) const;
    [[nodiscard]] qint64 anyOffset();

    QRandomGenerator m_random;
    test::ShownTextView m_shown;
    test::ShownTextView m_fresh;
    QString m_preedit;
    TextView::Wrapping m_wrapping = TextView::Wrapping::Window;
};

void Play::setWrapping(TextView::Wrapping wrapping)
{
    m_wrapping = wrapping;
    m_shown.view.setWrapping(wrapping, 50);
    m_fresh.view.setWrapping(wrapping, 50);
}

qint64 Play::anyOffset()
{
    return m_random.bounded(m_shown.view.string().size() + 1);
}

Promise Play::act()
{
    switch (m_random.bounded(12)) {
    case 0:
    case 1:
    case 2:
        return move();
    case 3:
    case 4:
    case 5:
        return edit();
    case 6:
    case 7:
        return compose();
    case 8:
        return click();
    case 9:
        return scroll();
    case 10:
        return resize();
    default:
        return select();
    }
}

Promise Play::move()
{
    const Qt::Key key = oneOf(m_random, test::kCaretKeys);
    const Qt::KeyboardModifiers modifiers = oneOf(m_random, kModifiers);
    const bool isByRows = key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp ||
                          key == Qt::Key_PageDown;
    if (isByRows && modifiers == Qt::ControlModifier)
        return {};
    const bool collapses = m_shown.view.selectedRange().length > 0;
    m_preedit.clear();
    m_shown.key(key, modifiers);
    // A program may have put the edges of a selection inside a cluster.
    return {true, !collapses};
}

Promise Play::edit()
{
    m_preedit.clear();
    switch (m_random.bounded(8)) {
    case 0:
        m_shown.key(Qt::Key_Backspace, oneOf(m_random, kModifiers));
        break;
    case 1:
        m_shown.key(Qt::Key_Delete);
        break;
    case 2:
        m_shown.key(Qt::Key_Return);
        break;
    case 3:
        m_shown.view.undo();
        break;
    case 4:
        m_shown.view.redo();
        break;
    case 5: {
        const TextRange range{anyOffset(), m_random.bounded(20)};
        const Text text{test::randomText(m_random, m_random.bounded(3))};
        m_shown.view.shouldChangeText(range, text);
        m_shown.view.replaceCharacters(range, text);
        m_shown.view.didChangeText();
        return {};
    }
    default:
        m_shown.compose({}, test::randomText(m_random, 1 + m_random.bounded(3)));
        break;
    }
    return {};
}

Promise Play::compose()
{
    m_preedit = m_random.bounded(3) == 0 ? QString() : test::randomText(m_random, 2);
    const bool commits = m_random.bounded(3) == 0;
    const int start = m_random.bounded(8) - 6;
    const int length = m_random.bounded(4) == 0 ? m_random.bounded(6) : 0;
    m_shown.compose(m_preedit, commits ? u"漢"_s : QString(), length > 0 ? start : 0, length);
    return {};
}

Promise Play::click()
{
    QWidget *target = m_shown.view.viewport();
    m_preedit.clear();
    const auto point = [&] {
        return QPoint(m_random.bounded(target->width() + 8) - 4,
                      m_random.bounded(target->height() + 8) - 4);
    };
    const bool extends = m_random.bounded(2) == 0;
    const bool isDouble = m_random.bounded(3) == 0;
    if (isDouble)
        QTest::mouseDClick(target, Qt::LeftButton, {}, point());
    else
        QTest::mousePress(
            target, Qt::LeftButton, extends ? Qt::ShiftModifier : Qt::NoModifier, point());
    if (m_random.bounded(2) == 0) {
        const QPoint to = point();
        QMouseEvent moved(QEvent::MouseMove,
                          to,
                          target->mapToGlobal(to),
                          Qt::NoButton,
                          Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(target, &moved);
    }
    QTest::mouseRelease(target, Qt::LeftButton, {}, point());
    return {false, !extends};
}

Promise Play::scrollSideways()
{
    QScrollBar *bar = m_shown.view.horizontalScrollBar();
    bar->setValue(m_random.bounded(bar->maximum() + 1));
    if (m_random.bounded(2) == 0)
        return {};
    m_shown.view.setSelectedRange(m_shown.view.selectedRange());
    return {true, false};
}

Promise Play::scroll()
{
    if (m_random.bounded(3) == 0)
        return scrollSideways();
    if (m_random.bounded(2) == 0) {
        QScrollBar *bar = m_shown.view.verticalScrollBar();
        bar->setValue(m_random.bounded(bar->maximum() + 1));
        m_shown.view.setSelectedRange(m_shown.view.selectedRange());
        return {true, false};
    }
    const QPoint notches(0, (m_random.bounded(21) - 10) * 120);
    QWheelEvent wheel(QPointF(1, 1),
                      m_shown.view.mapToGlobal(QPointF(1, 1)),
                      {},
                      notches,
                      Qt::NoButton,
                      {},
                      Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(m_shown.view.viewport(), &wheel);
    return {};
}

Promise Play::resize()
{
    constexpr int kSizes[] = {0, 1, 20, 60, 200, 400, 600};
    const QSize size(oneOf(m_random, kSizes), oneOf(m_random, kSizes));
    m_shown.view.resize(size);
    m_fresh.view.resize(size);
    QCoreApplication::processEvents();
    return {};
}

Promise Play::select()
{
    m_shown.view.setSelectedRange({anyOffset(), m_random.bounded(4) == 0 ? 5 : 0});
    return {true, false};
}

bool Play::scrollBarHolds(QString &failure) const
{
    const TextView &view = m_shown.view;
    const QScrollBar *bar = view.verticalScrollBar();
    const qreal height = view.viewport()->height();
    const QRectF first = view.caretRectAt(0);
    const QRectF last = view.caretRectAt(view.string().size());
    const bool fits = height >= last.height() + 2 * TextViewport::kMargin;
    const bool isAtEnd = bar->value() == bar->maximum();
    if (bar->value() == 0 && (first.isNull() || first.top() < 0))
        failure = u"the bar is at 0, the text is not at its start"_s;
    else if (isAtEnd && fits && (last.isNull() || last.bottom() > height + 1))
        failure = u"the bar is at its end, the text is not"_s;
    else if (view.horizontalScrollBar()->maximum() != 0 && m_wrapping == TextView::Wrapping::Window)
        failure = u"there is something to the side"_s;
    return failure.isEmpty();
}

bool Play::holds(const Promise &promise, QString &failure)
{
    const TextView &view = m_shown.view;
    const Text &text = view.string();
    const TextRange range = view.selectedRange();
    const QRectF caret = view.inputMethodQuery(Qt::ImCursorRectangle).toRectF();
    const qreal height = view.viewport()->height();
    if (range.location < 0 || range.length < 0 || range.end() > text.size())
        failure = u"the selection is outside the text"_s;
    else if (isInsidePair(text, range.location) || isInsidePair(text, range.end()))
        failure = u"the selection divides a surrogate pair"_s;
    else if (promise.caretIsAtCluster && !isClusterBoundary(text, view.caretOffset()))
        failure = u"the caret is inside a cluster"_s;
    else if (promise.caretIsShown && caret.isNull())
        failure = u"the caret is scrolled away"_s;
    else if (promise.caretIsShown && height >= caret.height() + 2 * TextViewport::kMargin &&
             (caret.top() < 0 || caret.bottom() > height))
        failure = u"the caret is not in view: %1 to %2 of %3"_s.arg(caret.top())
                      .arg(caret.bottom())
                      .arg(height);
    else if (promise.caretIsShown && m_wrapping != TextView::Wrapping::Window &&
             view.viewport()->width() > 2 * TextViewport::kMargin &&
             (caret.left() < 0 || caret.left() > view.viewport()->width()))
        failure = u"the caret is beside the view, at %1"_s.arg(caret.left());
    else
        return scrollBarHolds(failure);
    return false;
}

bool Play::looksLikeNew(QString &failure)
{
    TextView &view = m_shown.view;
    view.scrollTo(view.caretOffset());
    TextView &fresh = m_fresh.view;
    m_fresh.compose({});
    fresh.setString(view.string());
    fresh.setSelectedRange({view.caretOffset(), 0});
    if (view.viewport()->size() != fresh.viewport()->size())
        return true; // Only one of the two has a scroll bar at the moment.
    if (view.hasMarkedText())
        m_fresh.compose(m_preedit);
    const qint64 caret = view.caretOffset();
    const QPointF delta = view.caretRectAt(caret).topLeft() - fresh.caretRectAt(caret).topLeft();
    for (int i = 0; i < 20; ++i) {
        const qint64 offset =
            std::clamp<qint64>(caret + m_random.bounded(200) - 100, 0, view.string().size());
        // Between the parts of a huge line, a view may know only an estimate.
        if (m_wrapping == TextView::Wrapping::Off &&
            segments::at(view.string(), offset).start != segments::at(view.string(), caret).start)
            continue;
        const QRectF here = view.caretRectAt(offset);
        const QRectF there = fresh.caretRectAt(offset);
        if (!here.isNull() && !there.isNull() && here.topLeft() - there.topLeft() != delta) {
            failure = u"offset %1 stands at (%2, %3) from where it belongs"_s.arg(offset)
                          .arg(here.left() - there.left() - delta.x())
                          .arg(here.top() - there.top() - delta.y());
            return false;
        }
    }
    return true;
}

} // namespace

class TextViewPropertyTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void anythingDone_keepsTheViewSound_data();
    void anythingDone_keepsTheViewSound();
};

void TextViewPropertyTest::initTestCase_data()
{
    QTest::addColumn<TextView::Wrapping>("wrapping");
    QTest::newRow("at the window") << TextView::Wrapping::Window;
    QTest::newRow("off") << TextView::Wrapping::Off;
    QTest::newRow("at a column") << TextView::Wrapping::Column;
}

void TextViewPropertyTest::anythingDone_keepsTheViewSound_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("steps");
    QRandomGenerator random(5);
    for (quint32 seed = 1; seed <= 6; ++seed)
        QTest::addRow("mixed %u", seed) << seed << test::randomText(random, 300) << 120;
    QTest::newRow("empty") << 20U << QString() << 200;
    QTest::newRow("line breaks") << 21U << u"\r\n\n\r\u2028"_s.repeated(200) << 150;
    QTest::newRow("words in one line") << 22U << u"some words and "_s.repeated(2000) << 100;
    QTest::newRow("emoji in one line")
        << 23U << u"👨‍👩‍👧‍👦😀🇯🇵"_s.repeated(800) << 15;
    QTest::newRow("marks on blanks") << 24U << u" \u0301x"_s.repeated(4000) << 60;
    QTest::newRow("one huge cluster") << 25U << u'e' + QString(100'000, u'\u0301') + u"\nx"_s << 25;
    QTest::newRow("5 MB in one line") << 26U << u"漢字かな "_s.repeated(1'000'000 / 3) << 40;
    QTest::newRow("right to left") << 27U << u"مرحبا بالعالم abc שלום\n"_s.repeated(100) << 100;
}

void TextViewPropertyTest::anythingDone_keepsTheViewSound()
{
    QFETCH(quint32, seed);
    QFETCH(QString, text);
    QFETCH(int, steps);
    QFETCH_GLOBAL(TextView::Wrapping, wrapping);
    Play play(seed, text, wrapping);
    QString failure;
    for (int step = 0; step < steps; ++step) {
        const Promise promise = play.act();
        QVERIFY2(play.holds(promise, failure), qPrintable(u"step %1: "_s.arg(step) + failure));
        if (step % 10 == 9)
            QVERIFY2(play.looksLikeNew(failure), qPrintable(u"step %1: "_s.arg(step) + failure));
    }
}

QTEST_MAIN(TextViewPropertyTest)
#include "TextViewPropertyTest.moc"
