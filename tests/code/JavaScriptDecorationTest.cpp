#include "code/JavaScriptDecoration.h"

#include "view/TextViewPainter.h"

#include <QTest>

#include <random>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// The colors of all segments of a text, with offsets relative to the text.
QStringList described(JavaScriptDecoration &decoration, const Text &text)
{
    QStringList result;
    TextSegment segment = segments::at(text, 0);
    while (true) {
        for (const TextColorRange &range : decoration.colors(segment))
            result.append(u"%1+%2 %3"_s.arg(segment.start + range.start)
                              .arg(range.length)
                              .arg(range.color.name()));
        if (segments::isLast(text, segment))
            return result;
        segment = segments::next(text, segment);
    }
}

/// The colors of a new decoration that gets `text` in one piece.
QStringList describedAnew(const Text &text)
{
    JavaScriptDecoration decoration;
    decoration.textChanged(text, 0, 0, text.size());
    return described(decoration, text);
}

QPalette paletteOf(const QColor &base, const QColor &text)
{
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, text);
    return palette;
}

} // namespace

class JavaScriptDecorationTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomEdits_agreeWithANewDecoration();
    void key_differsWhereAStateDoes();
    void key_ofAPartOfALine_changesWithEachEdit();
    void hugeLine_isColouredAtItsStartOnly();
    void bracket_inAStringOrComment_isNone();
    void errorLine_fillsItsSegments();
    void edit_takesTheErrorMarkAway();
    void contrast_isTheOneOfTheGuidelines();
    void colors_canBeReadOnEveryBackground_data();
    void colors_canBeReadOnEveryBackground();
    void colors_differFromEachOther_data();
    void colors_differFromEachOther();
    void colors_followThePalette();
};

void JavaScriptDecorationTest::randomEdits_agreeWithANewDecoration()
{
    const QStringList pieces{u"\n"_s, u"\r"_s,      u"\r\n"_s, u"\u2028"_s,    u"\u0085"_s, u"/*"_s,
                             u"*/"_s, u"`"_s,       u"${"_s,   u"}"_s,         u"'"_s,      u"\\"_s,
                             u"//"_s, u"/ a /"_s,   u"if ("_s, u")"_s,         u"12"_s,     u"行"_s,
                             u"{"_s,  u"return "_s, u" "_s,    u"\U0001F600"_s};
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](qint64 limit) {
            return static_cast<qint64>(random() % static_cast<unsigned>(limit));
        };
        Text text;
        JavaScriptDecoration decoration;
        for (int step = 0; step < 60; ++step) {
            const qint64 offset = below(text.size() + 1);
            const qint64 length = std::min(below(3) == 0 ? below(20) : 0, text.size() - offset);
            QString inserted;
            for (qint64 i = below(4); i > 0; --i)
                inserted += pieces[below(pieces.size())];
            const qint64 sizeBefore = text.size();
            text = text.replaced(offset, length, Text(inserted));
            // A surrogate pair is replaced as a whole; the new size shows whether more was removed.
            const Text piece{QStringView(inserted)};
            if (text.size() != sizeBefore - length + piece.size())
                decoration.textChanged(text, 0, sizeBefore, text.size());
            else
                decoration.textChanged(text, offset, length, piece.size());
            if (below(3) == 0)
                QVERIFY2(described(decoration, text) == describedAnew(text),
                         qPrintable(u"seed %1 step %2"_s.arg(seed).arg(step)));
        }
        QCOMPARE(described(decoration, text), describedAnew(text));
    }
}

void JavaScriptDecorationTest::key_differsWhereAStateDoes()
{
    JavaScriptDecoration decoration;
    Text text(u"a;\nb;\nc;");
    decoration.textChanged(text, 0, 0, text.size());
    const quint64 plain = decoration.colorKey(segments::at(text, 6));
    QCOMPARE(decoration.colorKey(segments::at(text, 3)), plain);
    text = text.replaced(0, 0, Text(u"/*"));
    decoration.textChanged(text, 0, 0, 2);
    QVERIFY(decoration.colorKey(segments::at(text, 8)) != plain);
    text = text.replaced(0, 2, Text());
    decoration.textChanged(text, 0, 2, 0);
    QCOMPARE(decoration.colorKey(segments::at(text, 6)), plain);
}

void JavaScriptDecorationTest::key_ofAPartOfALine_changesWithEachEdit()
{
    // The second part decides whether the slash in the first part begins a regular expression.
    JavaScriptDecoration decoration;
    Text text(QString(u"x = /"_s + u"a"_s.repeated(3'000)));
    decoration.textChanged(text, 0, 0, text.size());
    const TextSegment segment = segments::at(text, 0);
    QVERIFY(segment.end < text.size());
    const quint64 before = decoration.colorKey(segment);
    QCOMPARE(decoration.colors(segment).size(), 0);
    const qint64 end = text.size();
    text = text.appended(Text(u"/"));
    decoration.textChanged(text, end, 0, 1);
    QVERIFY(decoration.colorKey(segment) != before);
    QCOMPARE(decoration.colors(segment).size(), 1);
}

void JavaScriptDecorationTest::hugeLine_isColouredAtItsStartOnly()
{
    JavaScriptDecoration decoration;
    const Text text(QString(u"'a' + "_s.repeated(1'000'000) + u"'\n'b'"_s));
    decoration.textChanged(text, 0, 0, text.size());
    QVERIFY(!decoration.colors(segments::at(text, 0)).isEmpty());
    QVERIFY(decoration.colors(segments::at(text, 3'000'000)).isEmpty());
    // The truncated line does not affect the next one.
    const QList<TextColorRange> last = decoration.colors(segments::at(text, text.size()));
    QCOMPARE(last.size(), 1);
    QCOMPARE(last.first().length, 3);
}

void JavaScriptDecorationTest::bracket_inAStringOrComment_isNone()
{
    JavaScriptDecoration decoration;
    const Text text(u"f( '(' // (\n`(${(}`");
    decoration.textChanged(text, 0, 0, text.size());
    QVERIFY(decoration.isPunctuation(1));
    QVERIFY(!decoration.isPunctuation(4));
    QVERIFY(!decoration.isPunctuation(10));
    QVERIFY(!decoration.isPunctuation(13));
    QVERIFY(decoration.isPunctuation(16));
    QVERIFY(!decoration.isPunctuation(0));
}

void JavaScriptDecorationTest::errorLine_fillsItsSegments()
{
    JavaScriptDecoration decoration;
    // In the view the second line ends at its separator. The last line is empty.
    const Text text(u"a\nb\u2028c\n");
    decoration.textChanged(text, 0, 0, text.size());
    const auto isFilled = [&](qint64 offset) {
        return decoration.background(segments::at(text, offset)).isValid();
    };
    QVERIFY(!isFilled(0));
    decoration.setErrorLine(1);
    QVERIFY(!isFilled(0));
    QVERIFY(isFilled(2));
    QVERIFY(isFilled(4));
    QVERIFY(!isFilled(6));
    decoration.setErrorLine(2);
    QVERIFY(!isFilled(4));
    QVERIFY(isFilled(6));
    decoration.setErrorLine(std::nullopt);
    QVERIFY(!isFilled(6));
}

void JavaScriptDecorationTest::edit_takesTheErrorMarkAway()
{
    JavaScriptDecoration decoration;
    const Text text(u"a\nb");
    decoration.textChanged(text, 0, 0, text.size());
    decoration.setErrorLine(1);
    decoration.textChanged(text.appended(Text(u"c")), 3, 0, 1);
    QVERIFY(!decoration.errorLine());
}

void JavaScriptDecorationTest::contrast_isTheOneOfTheGuidelines()
{
    QCOMPARE(contrastRatio(Qt::white, Qt::black), 21.0);
    QCOMPARE(contrastRatio(Qt::black, Qt::white), 21.0);
    QCOMPARE(contrastRatio(Qt::red, Qt::red), 1.0);
    // The lightest gray that is readable on white.
    QVERIFY(contrastRatio(QColor(118, 118, 118), Qt::white) >= 4.5);
    QVERIFY(contrastRatio(QColor(119, 119, 119), Qt::white) < 4.5);
}

void JavaScriptDecorationTest::colors_canBeReadOnEveryBackground_data()
{
    QTest::addColumn<QColor>("base");
    QTest::addColumn<QColor>("text");
    QTest::newRow("light") << QColor(255, 255, 255) << QColor(0, 0, 0);
    QTest::newRow("light grey") << QColor(239, 240, 241) << QColor(35, 38, 41);
    QTest::newRow("paper") << QColor(253, 246, 227) << QColor(40, 50, 60);
    QTest::newRow("dark") << QColor(35, 38, 41) << QColor(239, 240, 241);
    QTest::newRow("darker") << QColor(20, 20, 20) << QColor(230, 230, 230);
    QTest::newRow("black") << QColor(0, 0, 0) << QColor(255, 255, 255);
    QTest::newRow("blue") << QColor(0, 32, 80) << QColor(255, 255, 255);
}

void JavaScriptDecorationTest::colors_canBeReadOnEveryBackground()
{
    QFETCH(QColor, base);
    QFETCH(QColor, text);
    const QPalette palette = paletteOf(base, text);
    const CodeColors colors(palette);
    const QList<QColor> onText{
        colors.comment, colors.string, colors.regularExpression, colors.number, colors.keyword};
    for (const QColor &color : onText) {
        QVERIFY(contrastRatio(color, textMarkColor(palette)) >= 3);
        for (const QColor &background : {base, colors.errorLine})
            QVERIFY2(contrastRatio(color, background) >= 4.5,
                     qPrintable(color.name() + u" on "_s + background.name()));
    }
    QVERIFY(contrastRatio(colors.lineNumber, base) >= 4.5);
    QVERIFY(contrastRatio(colors.errorSign, base) >= 4.5);
    QVERIFY(contrastRatio(text, colors.errorLine) >= 4.5);
    QVERIFY(colors.errorLine != base);
}

void JavaScriptDecorationTest::colors_differFromEachOther_data()
{
    colors_canBeReadOnEveryBackground_data();
}

void JavaScriptDecorationTest::colors_differFromEachOther()
{
    QFETCH(QColor, base);
    QFETCH(QColor, text);
    const CodeColors c(paletteOf(base, text));
    const QList<QColor> all{
        c.comment, c.string, c.regularExpression, c.number, c.keyword, text, base};
    for (qsizetype i = 0; i < all.size(); ++i) {
        for (qsizetype j = i + 1; j < all.size(); ++j) {
            const int distance = std::abs(all[i].red() - all[j].red()) +
                                 std::abs(all[i].green() - all[j].green()) +
                                 std::abs(all[i].blue() - all[j].blue());
            QVERIFY2(distance >= 40, qPrintable(all[i].name() + u" and "_s + all[j].name()));
        }
    }
}

void JavaScriptDecorationTest::colors_followThePalette()
{
    JavaScriptDecoration decoration;
    const Text text(u"'a'");
    decoration.textChanged(text, 0, 0, text.size());
    decoration.paletteChanged(paletteOf(Qt::white, Qt::black));
    const QColor light = decoration.colors(segments::at(text, 0)).first().color;
    decoration.paletteChanged(paletteOf(Qt::black, Qt::white));
    const QColor dark = decoration.colors(segments::at(text, 0)).first().color;
    QVERIFY(light.lightness() < 128);
    QVERIFY(dark.lightness() > 128);
}

QTEST_MAIN(JavaScriptDecorationTest)

#include "JavaScriptDecorationTest.moc"
