#include "support/ShownTextView.h"
#include "view/RowBreaks.h"
#include "view/TextSegments.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr QStringView kNotAtTheStart =
    u"。、，．・：；？！）］｝」』】〉》〕〗〙〟’”»ゝゞ々〻ーぁぃぅぇぉっゃゅょゎゕゖァィゥェォッャ"
    u"ュョヮヵヶ"
    u"ㇰㇱㇲㇳㇴㇵㇶㇷㇸㇹㇺㇻㇼㇽㇾㇿヽヾ゛゜〜～‐–゠‼⁇⁈⁉…‥｡､｣･ｰｧｨｩｪｫｬｭｮｯﾞﾟ)]},.!?:;";
constexpr QStringView kNotAtTheEnd = u"（［｛「『【〈《〔〖〘〝‘“«｢([{";
constexpr QStringView kUndivided[] = {u"……", u"‥‥", u"——", u"12", u"￥1", u"1％"};

/// True when a row of the view begins at `offset`.
bool beginsRow(const TextView &view, qint64 offset)
{
    return view.rowAround(offset).location == offset;
}

} // namespace

/// Tests where rows of Japanese text begin: JIS X 4051 forbids it before and after some characters.
class JapaneseRowsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void forbiddenPair_isInOneRow_data();
    void forbiddenPair_isInOneRow();

    void forbiddenPair_isInOneSegment_data() { forbiddenPair_isInOneRow_data(); }

    void forbiddenPair_isInOneSegment();
    void otherPairs_areDivided();
    void rowsOfPunctuationOnly_goOn();
    void longSegments_keepTheirCutElsewhere();

private:
    test::ShownTextView m_shown;
};

void JapaneseRowsTest::initTestCase()
{
    QFont font = m_shown.view.font();
    font.setFamilies({u"Noto Sans CJK JP"_s});
    m_shown.view.setFont(font);
}

void JapaneseRowsTest::forbiddenPair_isInOneRow_data()
{
    QTest::addColumn<QString>("pair");
    const auto add = [](const QString &pair) {
        QTest::addRow("%s U+%04X", qPrintable(pair), pair.back().unicode()) << pair;
    };
    for (const QChar mark : kNotAtTheStart)
        for (const QChar before : QStringView(u"漢かア」"))
            add(QString(before) + mark);
    for (const QChar mark : kNotAtTheEnd)
        for (const QChar after : QStringView(u"漢かアa"))
            add(QString(mark) + after);
    for (const QStringView pair : kUndivided)
        add(pair.toString());
}

void JapaneseRowsTest::forbiddenPair_isInOneRow()
{
    QFETCH(QString, pair);
    TextView &view = m_shown.view;
    for (const auto wrapping : {TextView::Wrapping::Window, TextView::Wrapping::Column}) {
        view.setWrapping(wrapping, 40);
        view.setString(Text(QString(200, u'漢')));
        const qint64 perRow = view.rowAround(0).length;
        QVERIFY(perRow > 4 && perRow < 150);
        bool wasTried = false;
        // Wide and narrow characters: try each place around the end of the row.
        for (qint64 count = perRow - 3; count <= perRow; ++count) {
            view.setString(Text(QString(count, u'漢') + pair + QString(200, u'漢')));
            QVERIFY2(!beginsRow(view, count + 1), qPrintable(QString::number(count)));
            wasTried = wasTried || beginsRow(view, count) || beginsRow(view, count - 1);
        }
        QVERIFY(wasTried); // The pair went to the next row, with what it must not begin.
    }
}

void JapaneseRowsTest::forbiddenPair_isInOneSegment()
{
    QFETCH(QString, pair);
    const qint64 cut = segments::kUnits;
    const Text text(QString(cut - 1, u'漢') + pair + QString(3000, u'漢'));
    QVERIFY(segments::at(text, cut).start != cut);
    QCOMPARE(segments::at(text, 0).end, segments::at(text, cut).start);
    QVERIFY(segments::at(text, cut).start > cut - 40);
}

void JapaneseRowsTest::otherPairs_areDivided()
{
    for (const QStringView pair : {u"漢字", u"。漢", u"」「", u"か漢", u"ー漢", u"ッア"}) {
        const QString units = u"漢漢"_s + pair.toString() + u"漢漢"_s;
        QCOMPARE(row_breaks::lastBreak(units, 3), 3);
    }
    QCOMPARE(row_breaks::lastBreak(u"漢字。", 2), 1);
    QCOMPARE(row_breaks::lastBreak(u"漢「字", 2), 1);
    QCOMPARE(row_breaks::lastBreak(u"漢字～", 2), 1);
    QCOMPARE(row_breaks::lastBreak(u"abcdef", 3), 3);
    QCOMPARE(row_breaks::lastBreak(u"。。。。", 2), 2);
}

void JapaneseRowsTest::rowsOfPunctuationOnly_goOn()
{
    TextView &view = m_shown.view;
    for (const QChar mark : QStringView(u"。～「"))
        for (const int columns : {20, 41}) {
            view.setWrapping(TextView::Wrapping::Column, columns);
            view.setString(Text(QString(500, mark)));
            QVERIFY(view.rowAround(250).length > 0);
            QVERIFY(view.rowAround(250).length <= columns);
        }
}

void JapaneseRowsTest::longSegments_keepTheirCutElsewhere()
{
    const Text ascii(u"abc-def,"_s.repeated(1000));
    QCOMPARE(segments::at(ascii, 0).end, segments::kUnits);
    const Text wide(QString(5000, u'漢'));
    QCOMPARE(segments::at(wide, 0).end, segments::kUnits);
}

QTEST_MAIN(JapaneseRowsTest)
#include "JapaneseRowsTest.moc"
