#include "view/LineWidths.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

constexpr qreal kColumn = 8;

/// The true width of a segment in these tests: each unit is 10 wide.
qreal trueWidth(const TextSegment &segment)
{
    return static_cast<qreal>(segment.length()) * 10;
}

} // namespace

class LineWidthsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { m_widths.reset(kColumn); }

    void unmeasured_isEstimatedByUnits();
    void measured_movesOnlyWhatFollows();
    void segmentAt_findsTheSegment();
    void typing_keepsWhatIsBeforeIt();
    void otherLines_areKept();
    void randomEdits_leaveNothingStale();

private:
    LineWidths m_widths;
};

void LineWidthsTest::unmeasured_isEstimatedByUnits()
{
    const Text ascii(u"x"_s.repeated(10 * segments::kUnits));
    QCOMPARE(m_widths.left(ascii, segments::at(ascii, 4 * segments::kUnits)),
             4 * segments::kUnits * kColumn);
    m_widths.reset(kColumn);
    const Text wide(u"字"_s.repeated(10 * segments::kUnits));
    QCOMPARE(m_widths.width(wide, segments::lineAt(wide, 0)), 20 * segments::kUnits * kColumn);
}

void LineWidthsTest::measured_movesOnlyWhatFollows()
{
    const Text text(u"x"_s.repeated(10 * segments::kUnits));
    const auto left = [&](qint64 index) {
        return m_widths.left(text, segments::at(text, index * segments::kUnits));
    };
    const TextSegment segment = segments::at(text, 4 * segments::kUnits);
    const qreal before = left(4);
    m_widths.setWidth(text, segment, trueWidth(segment));
    QCOMPARE(left(4), before);
    QCOMPARE(left(5), before + trueWidth(segment));
    QCOMPARE(m_widths.width(text, segments::lineAt(text, 0)),
             (9 * kColumn + 10) * segments::kUnits);
}

void LineWidthsTest::segmentAt_findsTheSegment()
{
    const Text text(u"word "_s.repeated(10'000) + u"\nnext"_s);
    const TextSegment first = segments::at(text, 0);
    for (TextSegment segment = first; segment.breakLength == 0;
         segment = segments::next(text, segment))
        m_widths.setWidth(text, segment, trueWidth(segment));
    for (TextSegment segment = first; segment.lineStart == 0;
         segment = segments::next(text, segment)) {
        const qreal left = static_cast<qreal>(segment.start) * 10;
        QCOMPARE(m_widths.left(text, segment), left);
        QCOMPARE(m_widths.segmentAt(text, first, left), segment);
        QCOMPARE(m_widths.segmentAt(text, first, left + trueWidth(segment) - 1), segment);
    }
    QCOMPARE(m_widths.segmentAt(text, first, -5), first);
    QVERIFY(m_widths.segmentAt(text, first, 1e9).breakLength > 0);
}

void LineWidthsTest::typing_keepsWhatIsBeforeIt()
{
    Text text(u"字"_s.repeated(20 * segments::kUnits));
    for (qint64 i = 0; i < 20; ++i) {
        const TextSegment segment = segments::at(text, i * segments::kUnits);
        m_widths.setWidth(text, segment, trueWidth(segment));
    }
    const qint64 offset = 10 * segments::kUnits + 100;
    const TextSegment here = segments::at(text, offset);
    const qreal left = m_widths.left(text, here);
    for (int i = 0; i < 100; ++i) {
        text = text.replaced(offset + i, 0, Text(u"a"));
        m_widths.textChanged(text, offset + i, 0, 1);
        QCOMPARE(m_widths.left(text, segments::at(text, here.start)), left);
    }
}

void LineWidthsTest::otherLines_areKept()
{
    const QString huge = u"x"_s.repeated(4 * segments::kUnits);
    Text text(u"short\n"_s + huge + u'\n' + huge);
    const qint64 line = segments::lineAt(text, text.size()).start;
    const TextSegment first = segments::at(text, line);
    m_widths.setWidth(text, first, trueWidth(first));
    text = text.replaced(0, 5, Text(u"much longer"));
    m_widths.textChanged(text, 0, 5, 11);
    QCOMPARE(m_widths.left(text, segments::next(text, segments::at(text, line + 6))),
             trueWidth(first));
}

/// Any sequence of edits must leave the places that the true widths give, once all that is visible
/// was measured again: here, the whole line.
void LineWidthsTest::randomEdits_leaveNothingStale()
{
    QRandomGenerator random(7);
    Text text(u"some 漢字 words "_s.repeated(2000));
    for (int step = 0; step < 300; ++step) {
        const qint64 offset = random.bounded(text.size());
        const qint64 length = random.bounded(std::min<qint64>(300, text.size() - offset));
        constexpr QStringView kInserted[] = {u"x", u" ", u"\n", u"漢字 かな", u""};
        const QString inserted =
            kInserted[random.bounded(5)].toString().repeated(random.bounded(80));
        text = text.replaced(offset, length, Text(inserted));
        m_widths.textChanged(text, offset, length, inserted.size());
        if (text.size() < 10'000)
            text = Text(u"some 漢字 words "_s.repeated(2000)), m_widths.reset(kColumn);
        const TextLineBounds line = segments::lineAt(text, random.bounded(text.size()));
        qreal left = 0;
        for (TextSegment segment = segments::at(text, line.start); segment.start < line.end;
             segment = segments::next(text, segment)) {
            m_widths.setWidth(text, segment, trueWidth(segment));
            QVERIFY(std::abs(m_widths.left(text, segment) - left) < 0.01);
            left += trueWidth(segment);
            if (segments::isLast(text, segment))
                break;
        }
    }
}

QTEST_GUILESS_MAIN(LineWidthsTest)
#include "LineWidthsTest.moc"
