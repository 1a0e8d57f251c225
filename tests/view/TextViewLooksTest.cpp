#include "support/ShownTextView.h"
#include "view/EditorFont.h"
#include "view/InvisibleMarks.h"
#include "window/TextViewRepresentable.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

namespace {

/// A picture of the view without its blinking caret.
QImage pictureOf(Fixture &f)
{
    f.caret(f.view.string().size());
    QCoreApplication::processEvents();
    QImage image = f.view.viewport()->grab().toImage();
    const QRect caret = f.view.caretRectAt(f.view.caretOffset()).toAlignedRect();
    for (int y = caret.top(); y <= caret.bottom(); ++y)
        for (int x = caret.left(); x <= caret.right() + 1; ++x)
            image.setPixelColor(x, y, f.view.palette().color(QPalette::Base));
    return image;
}

/// Counts pixels whose color differs from `background`.
int inkIn(const QImage &image, const QRect &area, const QColor &background)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixelColor(x, y) != background ? 1 : 0;
    return count;
}

QColor baseOf(const Fixture &f)
{
    return f.view.palette().color(QPalette::Active, QPalette::Base);
}

QRect rowOf(const Fixture &f, qint64 offset)
{
    const QRect caret = f.view.caretRectAt(offset).toAlignedRect();
    return {0, caret.top(), f.view.viewport()->width(), caret.height()};
}

} // namespace

/// Tests of what a view draws, by its pixels.
class TextViewLooksTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void invisibleCharacter_canBeSeen_data();
    void invisibleCharacter_canBeSeen();
    void shownBlanks_areMarked_data();
    void shownBlanks_areMarked();
    void shownBlanks_betweenWords_areNotMarked();
    void shownBlanks_keepTheirPlaces();
    void allMarks_areShown_data();
    void allMarks_areShown();
    void allMarks_differ();
    void allMarks_keepTheirPlaces();
    void lineEndMark_standsBehindTheTextAndInsideTheView();
    void lineSpacing_leavesTextMarksAndCaretAsTheyAre();
    void controlCharacters_lookDifferent();
    void ordinaryLineEnds_areNotDrawn_data();
    void ordinaryLineEnds_areNotDrawn();
    void labelledCharacters_keepTheirOffsets();
    void labelAtTheEndOfAFullRow_isInsideTheView();
    void everyControlHasALabel();
    void labels_fitInLegibleSize();
    void joiners_areLeftAlone();
    void tabStops_areFourColumnsApart();
    void selectionWithoutFocus_isPaler();
    void selectionInMixedDirections_coversWhatIsSelected();
    void selectedLineBreak_leavesNoGap();
    void selectedLabels_showNothingElse();
    void rightToLeftLine_standsOnTheRight();
    void darkPalette_isFollowed();
    void text_hasAMargin();
    void editorFont_isTheSystemsFixedFontWithFallbacks();
    void emojiPresentation_isInColour_data();
    void emojiPresentation_isInColour();
};

void TextViewLooksTest::invisibleCharacter_canBeSeen_data()
{
    QTest::addColumn<QString>("character");
    constexpr char16_t kUnits[] = {0x00,   0x01,   0x08,   0x0B,   0x0C,   0x0D,   0x1B,   0x1F,
                                   0x7F,   0x80,   0x85,   0x9F,   0xA0,   0xAD,   0x200B, 0x200E,
                                   0x200F, 0x2028, 0x2029, 0x202E, 0x202F, 0x2060, 0x2066, 0xFEFF,
                                   0xFDD0, 0xFFFC, 0xFFFE, 0xFFFF, 0xE000};
    for (const char16_t unit : kUnits)
        QTest::addRow("U+%04X", static_cast<unsigned>(unit)) << QString(QChar(unit));
    QTest::addRow("U+1FFFE") << QString::fromUcs4(U"\U0001FFFE", 1);
}

void TextViewLooksTest::invisibleCharacter_canBeSeen()
{
    QFETCH(QString, character);
    // The character is alone in its line, so all that is drawn there belongs to it.
    Fixture f(QString(character + (character == u"\r" ? u"x"_s : u"\n\n"_s)));
    const QImage image = pictureOf(f);
    QVERIFY(inkIn(image, rowOf(f, 0), baseOf(f)) > 3);
}

void TextViewLooksTest::shownBlanks_areMarked_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("tab") << u"\tx\n\n"_s;
    QTest::newRow("ideographic space") << u"\u3000x\n\n"_s;
    QTest::newRow("spaces at the end") << u"x  \n\n"_s;
    QTest::newRow("space before CR LF") << u"x \r\n\n"_s;
    QTest::newRow("space before a tab at the end") << u"x \t\n\n"_s;
    QTest::newRow("space at the end of the text") << u"x "_s;
}

void TextViewLooksTest::shownBlanks_areMarked()
{
    QFETCH(const QString, text);
    Fixture f(text);
    const int before = inkIn(pictureOf(f), rowOf(f, 0), baseOf(f));
    f.view.setShownMarks(ShownMarks::Blanks);
    const int shown = inkIn(pictureOf(f), rowOf(f, 0), baseOf(f));
    QVERIFY2(shown >= before + 4, qPrintable(QString::number(shown - before)));
    f.view.setShownMarks(ShownMarks::None);
    QCOMPARE(inkIn(pictureOf(f), rowOf(f, 0), baseOf(f)), before);
}

void TextViewLooksTest::shownBlanks_betweenWords_areNotMarked()
{
    Fixture f(u" a  b\n\n");
    const QImage before = pictureOf(f);
    f.view.setShownMarks(ShownMarks::Blanks);
    QCOMPARE(pictureOf(f), before);
    f.view.replaceText({4, 1}, Text()); // The spaces before it end the line now.
    const QRect end(f.view.caretRectAt(2).toAlignedRect().adjusted(4, 0, 8, 0));
    QVERIFY(inkIn(pictureOf(f), end, baseOf(f)) >= 4);
}

void TextViewLooksTest::shownBlanks_keepTheirPlaces()
{
    Fixture f(u"a\t\u3000b  \n");
    QList<QRectF> before;
    for (qint64 offset = 0; offset < 7; ++offset)
        before.append(f.view.caretRectAt(offset));
    f.view.setShownMarks(ShownMarks::Blanks);
    for (qint64 offset = 0; offset < 7; ++offset)
        QCOMPARE(f.view.caretRectAt(offset), before[offset]);
}

void TextViewLooksTest::allMarks_areShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("space between words") << u"a b\n\n"_s;
    QTest::newRow("space at the start") << u" a\n\n"_s;
    QTest::newRow("tab") << u"\tx\n\n"_s;
    QTest::newRow("ideographic space") << u"\u3000x\n\n"_s;
    QTest::newRow("LF") << u"x\n"_s;
    QTest::newRow("CR LF") << u"x\r\n"_s;
    QTest::newRow("empty line") << u"\n"_s;
    QTest::newRow("Hebrew") << u"\u05D0\n"_s;
}

void TextViewLooksTest::allMarks_areShown()
{
    QFETCH(const QString, text);
    Fixture f(text);
    const int before = inkIn(pictureOf(f), rowOf(f, 0), baseOf(f));
    f.view.setShownMarks(ShownMarks::All);
    const int shown = inkIn(pictureOf(f), rowOf(f, 0), baseOf(f));
    QVERIFY2(shown >= before + 4, qPrintable(QString::number(shown - before)));
    f.view.setShownMarks(ShownMarks::Blanks);
    f.view.setShownMarks(ShownMarks::None);
    QCOMPARE(inkIn(pictureOf(f), rowOf(f, 0), baseOf(f)), before);
}

void TextViewLooksTest::allMarks_differ()
{
    QList<QImage> pictures;
    for (const QString &end : {u" "_s,
                               u"\t"_s,
                               u"\u3000"_s,
                               u"\n"_s,
                               u"\r\n"_s,
                               u"\r"_s,
                               u"\u0085"_s,
                               u"\u2028"_s,
                               u"\u2029"_s,
                               QString()}) {
        Fixture f(QString(u"x"_s + end));
        f.view.setShownMarks(ShownMarks::All);
        const QImage picture = pictureOf(f).copy(rowOf(f, 0));
        QVERIFY2(!pictures.contains(picture), qPrintable(QString::number(pictures.size())));
        pictures.append(picture);
    }
}

void TextViewLooksTest::allMarks_keepTheirPlaces()
{
    Fixture f(QString(u"word "_s.repeated(60) + u"\r\na\t\u3000b  \nc\r"_s));
    QList<QRectF> before;
    for (qint64 offset = 0; offset <= f.storage.length(); ++offset)
        before.append(f.view.caretRectAt(offset));
    f.view.setShownMarks(ShownMarks::All);
    for (qint64 offset = 0; offset <= f.storage.length(); ++offset)
        QCOMPARE(f.view.caretRectAt(offset), before[offset]);
}

void TextViewLooksTest::lineEndMark_standsBehindTheTextAndInsideTheView()
{
    for (int length = 0; length < 80; ++length) {
        Fixture f(QString(QString(length, u'x') + u"  \n"_s));
        f.view.resize(300, 200);
        QCoreApplication::processEvents();
        f.view.setShownMarks(ShownMarks::Blanks);
        const QImage before = pictureOf(f);
        f.view.setShownMarks(ShownMarks::All);
        const QImage after = pictureOf(f);
        const QRect end = f.view.caretRectAt(length + 2).toAlignedRect();
        const int left = std::min(end.left(), after.width() - 9);
        const QRect place(left, end.top(), after.width() - left, end.height());
        QVERIFY2(inkIn(after, place, baseOf(f)) >= 6, qPrintable(QString::number(length)));
        const QRect text(0, end.top(), left, end.height());
        QCOMPARE(after.copy(text), before.copy(text));
    }
}

void TextViewLooksTest::lineSpacing_leavesTextMarksAndCaretAsTheyAre()
{
    Fixture f(QString(u"a \t\u3000Ａ\u00A0"_s + u'\0' + u"\r\n"_s));
    f.view.setShownMarks(ShownMarks::All);
    const auto picture = [&f] { return f.view.viewport()->grab().toImage().copy(rowOf(f, 0)); };
    const QImage before = picture();
    f.view.setLineSpacing(200);
    const QImage after = picture();
    QCOMPARE(after.height(), 2 * before.height());
    const int above = before.height() / 2;
    QCOMPARE(after.copy(0, above, before.width(), before.height()), before);
    QCOMPARE(inkIn(after, QRect(0, 0, after.width(), above), baseOf(f)), 0);
}

void TextViewLooksTest::controlCharacters_lookDifferent()
{
    Fixture null(QString(u'\0' + u"\n\n"_s));
    Fixture escape(QString(u'\x1B' + u"\n\n"_s));
    QVERIFY(pictureOf(null) != pictureOf(escape));
}

void TextViewLooksTest::ordinaryLineEnds_areNotDrawn_data()
{
    QTest::addColumn<QString>("lineEnd");
    QTest::newRow("LF") << u"\n"_s;
    QTest::newRow("CR LF") << u"\r\n"_s;
}

void TextViewLooksTest::ordinaryLineEnds_areNotDrawn()
{
    QFETCH(QString, lineEnd);
    Fixture f(QString(lineEnd + lineEnd));
    const QImage image = pictureOf(f);
    QCOMPARE(inkIn(image, image.rect(), baseOf(f)), 0);
}

void TextViewLooksTest::labelledCharacters_keepTheirOffsets()
{
    Fixture f(QString(u"a"_s + u'\0' + u'\x1B' + u"b\rc"_s));
    for (const qint64 offset : {0, 1, 2, 3, 4, 5, 6}) {
        const QRectF rect = f.view.caretRectAt(offset);
        QCOMPARE(f.view.offsetAt((rect.center() + QPointF(1, 0)).toPoint()), offset);
    }
    // A label is three columns wide.
    const qreal column = f.view.caretRectAt(1).x() - f.view.caretRectAt(0).x();
    QVERIFY(f.view.caretRectAt(2).x() - f.view.caretRectAt(1).x() > 2.5 * column);
    // A click on the label of a line end does not move the caret past it.
    const QPoint behind = (f.view.caretRectAt(4).center() + QPointF(column, 0)).toPoint();
    QCOMPARE(f.view.offsetAt(behind), 4);
}

void TextViewLooksTest::labelAtTheEndOfAFullRow_isInsideTheView()
{
    for (int length = 20; length < 80; ++length) {
        Fixture f(QString(QString(length, u'x') + u'\r'));
        f.view.resize(300, 200);
        QCoreApplication::processEvents();
        const qreal column = f.view.caretRectAt(1).x() - f.view.caretRectAt(0).x();
        const qreal end = f.view.caretRectAt(length).x();
        QVERIFY(end + invisible::kLabelColumns * column <= f.view.viewport()->width());
    }
}

void TextViewLooksTest::everyControlHasALabel()
{
    for (char16_t unit = 0; unit < 0xA0; ++unit) {
        const bool isControl = unit < 0x20 || unit >= 0x7F;
        const bool isOrdinary = unit == u'\t' || unit == u'\n';
        QCOMPARE(!invisible::label(unit).isEmpty(), isControl && !isOrdinary);
    }
}

void TextViewLooksTest::labels_fitInLegibleSize()
{
    const QFont font = editorFont(14);
    QFont small = font;
    small.setPixelSize(8);
    const qreal width = invisible::kLabelColumns * QFontMetricsF(font).horizontalAdvance(u'0');
    const qreal label = QFontMetricsF(small).horizontalAdvance(invisible::label(0xFDD0).toString());
    QVERIFY2(label <= width - 4, qPrintable(QString::number(label - width)));
}

void TextViewLooksTest::joiners_areLeftAlone()
{
    QVERIFY(!invisible::isMarked(0x200C));
    QVERIFY(!invisible::isMarked(0x200D));
    QVERIFY(!invisible::isMarked(0x3000));
    QVERIFY(!invisible::isMarked(u' '));
}

void TextViewLooksTest::tabStops_areFourColumnsApart()
{
    Fixture f(u"\tx\na\tx\nabc\tx\n0000\tx\n00000000");
    const auto x = [&f](qint64 offset) { return f.view.caretRectAt(offset).x(); };
    const qint64 ruler = f.view.string().size() - 8;
    QCOMPARE(x(1), x(ruler + 4));
    QCOMPARE(x(5), x(ruler + 4));
    QCOMPARE(x(11), x(ruler + 4));
    QCOMPARE(x(18), x(ruler + 8));
}

void TextViewLooksTest::selectionWithoutFocus_isPaler()
{
    Fixture f(u"     ");
    f.view.selectAll();
    const QPoint inside = f.view.caretRectAt(2).center().toPoint();
    const QColor active = f.view.viewport()->grab().toImage().pixelColor(inside);
    QCOMPARE(active, f.view.palette().color(QPalette::Active, QPalette::Highlight));
    f.view.clearFocus();
    const QColor inactive = f.view.viewport()->grab().toImage().pixelColor(inside);
    QVERIFY(inactive != active);
    QVERIFY(inactive != baseOf(f));
    QVERIFY(inactive.lightness() > active.lightness());
}

void TextViewLooksTest::selectionInMixedDirections_coversWhatIsSelected()
{
    // Latin, a blank, five Hebrew letters, a blank, Latin.
    Fixture f(u"ab \u05D0\u05D1\u05D2\u05D3\u05D4 cd");
    const auto middle = [&f](qint64 a, qint64 b) {
        const QRectF left = f.view.caretRectAt(a);
        return QPointF((left.x() + f.view.caretRectAt(b).x()) / 2, left.top() + 2).toPoint();
    };
    const QPoint third = middle(5, 6);
    const QPoint fourth = middle(6, 7);
    const QPoint latin = middle(10, 11);
    const QPoint blank = middle(2, 3);
    f.view.setSelectedRange({2, 4});
    const QImage image = f.view.viewport()->grab().toImage();
    const QColor highlight = f.view.palette().color(QPalette::Active, QPalette::Highlight);
    // The first letter is the rightmost one, left of the blank after the word.
    const QPoint first(static_cast<int>(f.view.caretRectAt(4).x()) + 3,
                       f.view.caretRectAt(4).toRect().top() + 2);
    QCOMPARE(image.pixelColor(blank), highlight);
    QCOMPARE(image.pixelColor(first), highlight);
    QCOMPARE(image.pixelColor(third), highlight);
    QCOMPARE(image.pixelColor(fourth), baseOf(f));
    QCOMPARE(image.pixelColor(latin), baseOf(f));
}

void TextViewLooksTest::selectedLineBreak_leavesNoGap()
{
    QString lines;
    for (int length = 0; length < 10; ++length)
        lines += QString(length, u'.') + u"R\n"_s;
    Fixture f(lines);
    f.view.setFont(QFont(u"DejaVu Sans Mono"_s, 14));
    f.view.setSelectedRange({0, f.storage.length() - 1});
    f.view.clearFocus();
    const QImage image = f.view.viewport()->grab().toImage();
    const auto left = static_cast<int>(TextViewport::kMargin);
    const QColor highlight = image.pixelColor(left + 1, left + 1);
    QVERIFY(highlight != baseOf(f));
    for (qint64 offset = 0; offset < f.storage.length() - 11; ++offset) { // The area above the
                                                                          // text.
        const int top = f.view.caretRectAt(offset).toRect().top() + 1;
        QCOMPARE(inkIn(image, QRect(left, top, image.width() - 2 * left, 2), highlight), 0);
    }
}

void TextViewLooksTest::selectedLabels_showNothingElse()
{
    Fixture f(QString(20, QChar(0x01)));
    const QImage plain = pictureOf(f);
    f.view.selectAll();
    const QImage selected = f.view.viewport()->grab().toImage();
    const QColor highlight = f.view.palette().color(QPalette::Active, QPalette::Highlight);
    const QRect label = QRect(f.view.caretRectAt(4).toRect().topLeft(),
                              f.view.caretRectAt(6).toRect().bottomLeft());
    QCOMPARE(inkIn(selected, label, highlight), inkIn(plain, label, baseOf(f)));
}

void TextViewLooksTest::rightToLeftLine_standsOnTheRight()
{
    Fixture f(u"\u05D0\u05D1\u05D2\nabc");
    QVERIFY(f.view.caretRectAt(0).x() > f.view.viewport()->width() - 20);
    QVERIFY(f.view.caretRectAt(4).x() < 20);
    // A selected line break fills the row to its left edge.
    f.view.setSelectedRange({0, 4});
    const QImage image = f.view.viewport()->grab().toImage();
    QCOMPARE(image.pixelColor(f.view.viewport()->width() / 2, f.view.caretRectAt(0).toRect().top()),
             f.view.palette().color(QPalette::Active, QPalette::Highlight));
}

void TextViewLooksTest::darkPalette_isFollowed()
{
    Fixture f(QString(u"text"_s + u'\0'));
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(20, 20, 20));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    f.view.setPalette(dark);
    const QImage image = pictureOf(f);
    const QRect row = rowOf(f, 0);
    QCOMPARE(image.pixelColor(image.width() - 2, image.height() - 2), QColor(20, 20, 20));
    int light = 0;
    for (int x = row.left(); x <= row.right(); ++x) {
        for (int y = row.top(); y <= row.bottom(); ++y) {
            QVERIFY(image.pixelColor(x, y).lightness() >= 18); // Nothing is drawn in black.
            light += image.pixelColor(x, y).lightness() > 90 ? 1 : 0;
        }
    }
    QVERIFY(light > 50);
}

void TextViewLooksTest::text_hasAMargin()
{
    Fixture f(QString(200, u'M'));
    const QImage image = pictureOf(f);
    const auto margin = static_cast<int>(TextViewport::kMargin) - 2; // Glyphs may extend slightly
                                                                     // into the margin.
    QVERIFY(margin > 0);
    QCOMPARE(inkIn(image, QRect(0, 0, margin, image.height()), baseOf(f)), 0);
    QCOMPARE(inkIn(image, QRect(0, 0, image.width(), margin), baseOf(f)), 0);
    QCOMPARE(inkIn(image, QRect(image.width() - margin, 0, margin, image.height()), baseOf(f)), 0);
}

void TextViewLooksTest::editorFont_isTheSystemsFixedFontWithFallbacks()
{
    DocumentState state;
    TextViewRepresentable representable(&state, nullptr);
    const QFont font = representable.textView()->font();
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    QCOMPARE(QFontInfo(font).family(), QFontInfo(fixed).family());
    QCOMPARE(font.pixelSize(), 14);
    QVERIFY(font.families().size() >= 3);
}

void TextViewLooksTest::emojiPresentation_isInColour_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isColoured");
    QTest::newRow("heart as text") << u"\u2764"_s << false;
    QTest::newRow("heart as emoji") << u"\u2764\uFE0F"_s << true;
    QTest::newRow("keycap") << u"1\uFE0F\u20E3"_s << true;
    QTest::newRow("beyond the first plane") << u"\U0001F336\uFE0F"_s << true;
    QTest::newRow("behind Japanese") << u"漢字\u2764\uFE0F"_s << true;
}

void TextViewLooksTest::emojiPresentation_isInColour()
{
    QFETCH(QString, text);
    QFETCH(bool, isColoured);
    DocumentState state;
    TextViewRepresentable representable(&state, nullptr);
    Fixture f;
    f.view.setFont(representable.textView()->font());
    f.view.setString(Text(text + u"\n"_s));
    const QImage image = pictureOf(f);
    const QRect row = rowOf(f, 0);
    bool hasColour = false;
    for (int y = row.top(); y <= row.bottom(); ++y)
        for (int x = row.left(); x <= row.right(); ++x)
            hasColour = hasColour || image.pixelColor(x, y).hsvSaturation() > 60;
    QCOMPARE(hasColour, isColoured);
}

QTEST_MAIN(TextViewLooksTest)
#include "TextViewLooksTest.moc"
