#include "view/TextDecoration.h"

#include "support/ShownTextView.h"

#include <QImage>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

namespace {

/// Colors each `x`, and the background of each segment that begins with `!`. The color key is the
/// number of `*` before the segment; an `x` is red when it is 0, otherwise green.
class Decoration final : public TextDecoration
{
public:
    void textChanged(const Text &text, qint64 offset, qint64 oldLength, qint64 newLength) override
    {
        // Every edit is reported, so a decoration can update its state without reading the whole
        // text.
        m_model.replace(offset, oldLength, text.slice(offset, newLength));
        m_isInStep = m_isInStep && m_model == text.toString();
    }

    void paletteChanged(const QPalette &palette) override
    {
        m_base = palette.color(QPalette::Base);
        ++m_palettes;
    }

    quint64 colorKey(const TextSegment &segment) override
    {
        return static_cast<quint64>(m_model.left(segment.start).count(u'*'));
    }

    QList<TextColorRange> colors(const TextSegment &segment) override
    {
        ++m_asked;
        QList<TextColorRange> ranges;
        const QColor color = colorKey(segment) > 0 ? Qt::green : Qt::red;
        for (qint64 i = segment.start; i < segment.end; ++i)
            if (m_model[i] == u'x')
                ranges.append({static_cast<int>(i - segment.start), 1, color});
        return ranges;
    }

    QColor background(const TextSegment &segment) const override
    {
        const bool isFilled = segment.start < segment.end && m_model[segment.start] == u'!';
        return isFilled ? QColor(Qt::cyan) : QColor();
    }

    QString m_model;
    bool m_isInStep = true;
    QColor m_base;
    int m_palettes = 0;
    int m_asked = 0;
};

/// A view with a decoration that outlives the view.
struct Decorated
{
    explicit Decorated(QStringView text)
        : f(text)
    {
        f.view.setDecoration(&decoration);
    }

    ~Decorated() { f.view.setDecoration(nullptr); }

    Q_DISABLE_COPY_MOVE(Decorated)

    Decoration decoration;
    Fixture f;
};

/// Counts pixels in which one channel is well above the other two.
int pixelsOf(const QImage &image, const QRectF &area, Qt::GlobalColor color)
{
    const bool isRed = color == Qt::red;
    int count = 0;
    const QRect rect = area.toAlignedRect().intersected(image.rect());
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            const int wanted = isRed ? c.red() : c.green();
            const int others = std::max(isRed ? c.green() : c.red(), c.blue());
            count += wanted - others > 60 ? 1 : 0;
        }
    }
    return count;
}

QImage pictureOf(Fixture &f)
{
    return f.view.viewport()->grab().toImage();
}

} // namespace

class TextDecorationTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void color_isThatOfItsRange();
    void color_changesNoPlace();
    void color_ofSelectedText_isTheSelections();
    void color_avoidsTheLabelOfAControl();
    void color_goesAroundAComposition();
    void edit_isToldBeforeColorsAreAsked();
    void otherKey_bringsOtherColorsBelow();
    void sameKey_asksNothingBelow();
    void palette_isToldBeforeColorsAreAsked();
    void background_fillsItsRows();
    void noDecoration_restoresPlainText();
    void visibleLines_areThoseThatCanBeSeen();
    void visibleLines_withStartOutOfSight_areSeen();
    void visibleLines_endWithLineFeedsOnly();
    void visibleTextDidChange_followsEditAndScrolling();
};

void TextDecorationTest::color_isThatOfItsRange()
{
    Decorated d(u"axa");
    const QImage image = pictureOf(d.f);
    QVERIFY(pixelsOf(image, d.f.view.characterRectAt(1), Qt::red) > 10);
    QCOMPARE(pixelsOf(image, d.f.view.characterRectAt(0).adjusted(0, 0, -1, 0), Qt::red), 0);
    QCOMPARE(pixelsOf(image, d.f.view.characterRectAt(2).adjusted(2, 0, 0, 0), Qt::red), 0);
}

void TextDecorationTest::color_changesNoPlace()
{
    // The tab is in a first row: in later rows Qt's tab stops depend on where stretches of one
    // format begin, with or without a decoration.
    const QString text = u"a\tx\tb"_s + u"fix 行x字 x\U0001F600x wrap "_s.repeated(30);
    Decorated d(text);
    Fixture plain(text);
    for (const auto *families : {"DejaVu Sans Mono", "DejaVu Sans"}) {
        const QFont font(QString::fromLatin1(families), 12);
        plain.view.setFont(font);
        d.f.view.setFont(font);
        for (qint64 offset = 0; offset <= text.size(); ++offset)
            QCOMPARE(d.f.view.caretRectAt(offset), plain.view.caretRectAt(offset));
    }
}

void TextDecorationTest::color_ofSelectedText_isTheSelections()
{
    Decorated d(u"axa");
    d.f.view.setSelectedRange({0, 3});
    QCOMPARE(pixelsOf(pictureOf(d.f), d.f.view.characterRectAt(1), Qt::red), 0);
}

void TextDecorationTest::color_avoidsTheLabelOfAControl()
{
    // A decoration that colors everything.
    class All final : public TextDecoration
    {
        void textChanged(const Text & /*text*/,
                         qint64 /*offset*/,
                         qint64 /*oldLength*/,
                         qint64 /*newLength*/) override
        {
        }

        void paletteChanged(const QPalette & /*palette*/) override {}

        quint64 colorKey(const TextSegment & /*segment*/) override { return 0; }

        QList<TextColorRange> colors(const TextSegment &segment) override
        {
            return {{0, static_cast<int>(segment.length()), Qt::red}};
        }

        QColor background(const TextSegment & /*segment*/) const override { return {}; }
    } all;

    Fixture f(QString(u"a"_s + QChar(u'\x01') + u"a"_s));
    f.view.setDecoration(&all);
    // The label is drawn over a placeholder of its width, which must stay invisible.
    QCOMPARE(pixelsOf(pictureOf(f), f.view.characterRectAt(1).adjusted(1, 0, -2, 0), Qt::red), 0);
    f.view.setDecoration(nullptr);
}

void TextDecorationTest::color_goesAroundAComposition()
{
    Decorated d(u"axxa");
    d.f.caret(2);
    d.f.compose(u"nnnn"_s);
    const QImage image = pictureOf(d.f);
    const qreal column = d.f.view.characterRectAt(0).width();
    const QRectF first = d.f.view.characterRectAt(0);
    const auto cell = [&](int index) {
        return QRectF(first.x() + column * index + 1, first.y(), column - 2, first.height());
    };
    QVERIFY(pixelsOf(image, cell(1), Qt::red) > 10);
    for (int index = 2; index < 6; ++index)
        QCOMPARE(pixelsOf(image, cell(index), Qt::red), 0);
    QVERIFY(pixelsOf(image, cell(6), Qt::red) > 10);
}

void TextDecorationTest::edit_isToldBeforeColorsAreAsked()
{
    Decorated d(u"one\ntwo");
    QTest::keyClicks(&d.f.view, u"ax"_s);
    d.f.view.undo();
    d.f.view.redo();
    d.f.view.setString(Text(u"other\ntext"));
    d.f.view.selectAll();
    d.f.key(Qt::Key_Delete);
    QVERIFY(d.decoration.m_isInStep);
    QCOMPARE(d.decoration.m_model, QString());
    QTest::keyClicks(&d.f.view, u"x"_s);
    QVERIFY(pixelsOf(pictureOf(d.f), d.f.view.characterRectAt(0), Qt::red) > 10);
}

void TextDecorationTest::otherKey_bringsOtherColorsBelow()
{
    Decorated d(u"a\nx");
    QVERIFY(pixelsOf(pictureOf(d.f), d.f.view.characterRectAt(2), Qt::red) > 10);
    QTest::keyClicks(&d.f.view, u"*"_s);
    const QImage image = pictureOf(d.f);
    QCOMPARE(pixelsOf(image, d.f.view.characterRectAt(3), Qt::red), 0);
    QVERIFY(pixelsOf(image, d.f.view.characterRectAt(3), Qt::green) > 10);
}

void TextDecorationTest::sameKey_asksNothingBelow()
{
    Decorated d(u"a\nx\nx\nx\nx\nx\nx\nx\nx\nx");
    pictureOf(d.f);
    d.decoration.m_asked = 0;
    QTest::keyClicks(&d.f.view, u"b"_s);
    pictureOf(d.f);
    QVERIFY2(d.decoration.m_asked <= 2, qPrintable(QString::number(d.decoration.m_asked)));
    QVERIFY(d.decoration.m_asked > 0);
}

void TextDecorationTest::palette_isToldBeforeColorsAreAsked()
{
    Decorated d(u"x");
    QVERIFY(d.decoration.m_palettes > 0);
    d.decoration.m_asked = 0;
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(1, 2, 3));
    d.f.view.setPalette(dark);
    QCOMPARE(d.decoration.m_base, QColor(1, 2, 3));
    pictureOf(d.f);
    QVERIFY(d.decoration.m_asked > 0);
}

void TextDecorationTest::background_fillsItsRows()
{
    Decorated d(QString(u"a\n!"_s + u"word "_s.repeated(40) + u"\nb"_s));
    const QImage image = pictureOf(d.f);
    const qint64 end = d.f.view.string().size() - 2;
    const int right = image.width() - 2;
    const auto middle = [&d](qint64 offset) {
        return static_cast<int>(d.f.view.caretRectAt(offset).center().y());
    };
    QVERIFY(middle(end) > middle(2)); // The line wraps.
    QCOMPARE(image.pixelColor(right, middle(2)), QColor(Qt::cyan));
    QCOMPARE(image.pixelColor(0, middle(end)), QColor(Qt::cyan));
    QVERIFY(image.pixelColor(right, middle(0)) != QColor(Qt::cyan));
    QVERIFY(image.pixelColor(right, middle(end + 1)) != QColor(Qt::cyan));
}

void TextDecorationTest::noDecoration_restoresPlainText()
{
    Decorated d(u"!x");
    d.f.view.setDecoration(nullptr);
    const QImage image = pictureOf(d.f);
    QCOMPARE(pixelsOf(image, image.rect(), Qt::red), 0);
    QVERIFY(image.pixelColor(image.width() - 2, 10) != QColor(Qt::cyan));
}

void TextDecorationTest::visibleLines_areThoseThatCanBeSeen()
{
    Fixture f(QString(u"a\n"_s + u"word "_s.repeated(40) + u"\n\nb\n"_s.repeated(100)));
    const auto lines = f.view.visibleLines();
    QVERIFY(lines.size() > 5);
    const qint64 third = f.view.string().offsetAfterLineFeed(2);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines[i].number, static_cast<qint64>(i));
        const qint64 start = f.view.string().offsetAfterLineFeed(lines[i].number);
        QCOMPARE(lines[i].top, f.view.caretRectAt(start).top());
    }
    QVERIFY(f.view.caretRectAt(third).top() > lines[1].top + 1.5 * f.view.rowHeight());
    for (std::size_t i = 1; i < lines.size(); ++i)
        QCOMPARE(lines[i - 1].bottom, lines[i].top);
    f.view.scrollTo(f.view.string().size());
    const auto last = f.view.visibleLines().back();
    QCOMPARE(last.number, f.view.string().metrics().lineFeeds);
    QCOMPARE(last.top, f.view.caretRectAt(f.view.string().size()).top());
}

void TextDecorationTest::visibleLines_withStartOutOfSight_areSeen()
{
    // Lines higher than the view. The second is laid out in several pieces.
    for (const int words : {400, 3'000}) {
        Fixture f(QString(u"a\n"_s + u"word "_s.repeated(words)));
        f.view.scrollTo(f.view.string().size());
        const auto lines = f.view.visibleLines();
        QCOMPARE(lines.size(), std::size_t(1));
        QCOMPARE(lines[0].number, 1);
        QVERIFY(lines[0].top <= -f.view.rowHeight());
        QCOMPARE(lines[0].bottom, f.view.caretRectAt(f.view.string().size()).bottom());
    }
}

void TextDecorationTest::visibleLines_endWithLineFeedsOnly()
{
    Fixture f(u"a\rb\u2028c\r\nd\ne");
    const auto lines = f.view.visibleLines();
    QCOMPARE(lines.size(), std::size_t(3));
    QCOMPARE(lines[1].number, 1);
    QCOMPARE(lines[1].top, f.view.caretRectAt(7).top());
}

void TextDecorationTest::visibleTextDidChange_followsEditAndScrolling()
{
    Fixture f(QString(u"a\n"_s.repeated(200)));
    QSignalSpy spy(&f.view, &TextView::visibleTextDidChange);
    QTest::keyClicks(&f.view, u"b"_s);
    QVERIFY(!spy.isEmpty());
    spy.clear();
    f.view.scrollTo(300);
    QVERIFY(!spy.isEmpty());
    spy.clear();
    f.view.verticalScrollBar()->setValue(0);
    QVERIFY(!spy.isEmpty());
    spy.clear();
    f.view.resize(400, 300);
    QCoreApplication::processEvents();
    QVERIFY(!spy.isEmpty());
}

QTEST_MAIN(TextDecorationTest)

#include "TextDecorationTest.moc"
