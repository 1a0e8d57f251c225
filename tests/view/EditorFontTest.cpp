#include "view/EditorFont.h"

#include "platform/desktop/SystemFonts.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QTest>
#include <QTextLayout>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// The families that draw a text, in the order of their first glyphs.
QStringList familiesOf(const QString &text, const QFont &font)
{
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    QStringList families;
    for (const QGlyphRun &run : layout.glyphRuns())
        families << run.rawFont().familyName();
    return families;
}

} // namespace

/// Tests of the editor's font on a desktop that prefers Chinese glyph shapes.
class EditorFontTest final : public QObject
{
    Q_OBJECT

public:
    static void initMain() { qputenv("FC_LANG", "zh-cn"); }

private Q_SLOTS:
    void ideographs_onAChineseDesktop_haveJapaneseShapes_data();
    void ideographs_onAChineseDesktop_haveJapaneseShapes();
    void family_chosen_drawsWhatItCan();
    void family_ofTwoWidths_keepsOneToTwo_data();
    void family_ofTwoWidths_keepsOneToTwo();
};

void EditorFontTest::ideographs_onAChineseDesktop_haveJapaneseShapes_data()
{
    QTest::addColumn<QString>("family");
    QTest::newRow("none") << QString();
    QTest::newRow("Latin") << u"DejaVu Serif"_s;
    QTest::newRow("missing") << u"No Such Font"_s;
    QTest::newRow("Japanese") << u"Noto Serif CJK JP"_s;
}

void EditorFontTest::ideographs_onAChineseDesktop_haveJapaneseShapes()
{
    QFETCH(const QString, family);
    // Otherwise the test would prove nothing.
    QVERIFY(resolvedFontFamily(u"monospace"_s).endsWith(u" CJK SC"_s));
    // The shapes of these differ between the regions.
    const QStringList families = familiesOf(u"骨直曜"_s, editorFont(14, family));
    QVERIFY(!families.isEmpty());
    for (const QString &drawn : families)
        QVERIFY2(drawn.endsWith(u" CJK JP"_s), qPrintable(drawn));
}

void EditorFontTest::family_chosen_drawsWhatItCan()
{
    const QFont font = editorFont(14, u"DejaVu Serif"_s);
    QCOMPARE(familiesOf(u"abc"_s, font), QStringList(u"DejaVu Serif"_s));
    QCOMPARE(QFontInfo(font).pixelSize(), 14);
    QCOMPARE(QFontInfo(editorFont(14, u"No Such Font"_s)).family(),
             QFontInfo(editorFont(14)).family());
}

void EditorFontTest::family_ofTwoWidths_keepsOneToTwo_data()
{
    QTest::addColumn<int>("pixels");
    for (const int pixels : {7, 10, 13, 14, 17, 21, 42})
        QTest::addRow("%d pixels", pixels) << pixels;
}

void EditorFontTest::family_ofTwoWidths_keepsOneToTwo()
{
    QFETCH(const int, pixels);
    const QFontMetricsF metrics(editorFont(pixels, u"Noto Sans Mono CJK JP"_s));
    const qreal ascii = metrics.horizontalAdvance(QString(80, u'0'));
    const qreal ideographs = metrics.horizontalAdvance(QString(40, u'漢'));
    // The widths of glyphs are multiples of 1/64 pixel.
    QVERIFY2(qAbs(ascii - ideographs) <= 40 * 2 / 64.0, qPrintable(QString::number(ascii)));
}

QTEST_MAIN(EditorFontTest)
#include "EditorFontTest.moc"
