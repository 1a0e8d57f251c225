#include "macro/engine/LineEdits.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

class LineEditsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lines_inRange_areReplaced_data();
    void lines_inRange_areReplaced();
    void lines_outOfRange_areRefused_data();
    void lines_outOfRange_areRefused();
    void lines_anyRange_equalSplitAndJoin();
    void offset_ofLineAndColumn_countsClusters_data();
    void offset_ofLineAndColumn_countsClusters();
    void offset_anyPlace_equalsTheSumOverLines();
};

void LineEditsTest::lines_inRange_areReplaced_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name,
                        const QString &text,
                        qint64 start,
                        qint64 end,
                        const QStringList &lines,
                        const QString &expected) {
        QTest::newRow(name) << text << start << end << lines << expected;
    };
    row("first", u"a\nb\nc"_s, 0, 1, {u"x"_s}, u"x\nb\nc"_s);
    row("last two", u"a\nb\nc"_s, 1, 3, {u"x"_s}, u"a\nx"_s);
    row("empty last line", u"a\nb\nc\n"_s, 3, 4, {u"x"_s}, u"a\nb\nc\nx"_s);
    row("all", u"a\nb"_s, 0, 2, {u"x"_s, u"y"_s, u"z"_s}, u"x\ny\nz"_s);
    row("all by nothing", u"a\nb"_s, 0, 2, {}, QString());
    row("first by nothing", u"a\nb\nc"_s, 0, 1, {}, u"b\nc"_s);
    row("middle by nothing", u"a\nb\nc"_s, 1, 2, {}, u"a\nc"_s);
    row("last by nothing", u"a\nb\nc"_s, 2, 3, {}, u"a\nb"_s);
    row("first by an empty line", u"a\nb"_s, 0, 1, {QString()}, u"\nb"_s);
    row("empty text", QString(), 0, 1, {u"x"_s}, u"x"_s);
    row("lines that hold line feeds", u"a\nb"_s, 1, 2, {u"x\ny"_s}, u"a\nx\ny"_s);
    row("carriage returns belong to lines", u"a\r\nb\r\nc"_s, 1, 2, {u"x"_s}, u"a\r\nx\nc"_s);
}

void LineEditsTest::lines_inRange_areReplaced()
{
    QFETCH(QString, text);
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    QFETCH(QStringList, lines);
    QFETCH(QString, expected);
    const auto result =
        textWithLinesReplaced(Text(text), {start, end, QList<Text>(lines.begin(), lines.end())});
    QVERIFY(result.has_value());
    QCOMPARE(result->toString(), expected);
}

void LineEditsTest::lines_outOfRange_areRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");

    QTest::newRow("past the last line") << u"a\nb\nc"_s << qint64{1} << qint64{4};
    QTest::newRow("empty range") << u"a\nb\nc"_s << qint64{1} << qint64{1};
    QTest::newRow("empty range at the end") << u"a\nb\nc"_s << qint64{3} << qint64{3};
    QTest::newRow("backwards") << u"a\nb\nc"_s << qint64{2} << qint64{1};
    QTest::newRow("negative") << u"a\nb\nc"_s << qint64{-1} << qint64{1};
    QTest::newRow("far out") << u"a"_s << qint64{0} << std::numeric_limits<qint64>::max();
}

void LineEditsTest::lines_outOfRange_areRefused()
{
    QFETCH(QString, text);
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    QVERIFY(!textWithLinesReplaced(Text(text), {start, end, {Text(u"x")}}).has_value());
}

void LineEditsTest::lines_anyRange_equalSplitAndJoin()
{
    const QString text = u"\nab\r\n\n日本😀\nz\n"_s;
    const QStringList all = text.split(u'\n');
    const QString large = u"本a\n"_s.repeated(40000); // Shared, not copied.
    const QList<QStringList> insertions{
        {}, {QString()}, {u"x"_s}, {u"x"_s, QString(), u"y"_s}, {large, u"\r"_s, large}};
    for (qsizetype start = 0; start < all.size(); ++start) {
        for (qsizetype end = start + 1; end <= all.size(); ++end) {
            for (const QStringList &lines : insertions) {
                const QStringList model = all.sliced(0, start) + lines + all.sliced(end);
                const auto result = textWithLinesReplaced(
                    Text(text), {start, end, QList<Text>(lines.begin(), lines.end())});
                QVERIFY(result.has_value());
                QCOMPARE(result->toString(), model.join(u'\n'));
            }
        }
    }
}

void LineEditsTest::offset_ofLineAndColumn_countsClusters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");
    QTest::addColumn<qint64>("offset");

    const auto row =
        [](const char *name, const QString &text, qint64 line, qint64 column, qint64 offset) {
            QTest::newRow(name) << text << line << column << offset;
        };
    row("start", u"a\nbc"_s, 0, 0, 0);
    row("second line", u"a\nbc"_s, 1, 1, 3);
    row("column past the end", u"a\nbc"_s, 1, 99, 4);
    row("line past the end", u"a\nbc"_s, 7, 0, 4);
    row("negative line", u"a\nbc"_s, -1, 0, 4);
    row("negative column", u"a\nbc"_s, 1, -5, 2);
    row("empty last line", u"ab\n"_s, 1, 0, 3);
    row("empty text", QString(), 0, 0, 0);
    row("clusters, not units", u"😀😀\ne\u0301x"_s, 1, 2, 5);
    row("carriage returns count", u"a\r\nb\r\nc"_s, 2, 1, 7);
    row("the whole text has them joined", u"a\r\nb\r\nc"_s, 9, 0, 5);
}

void LineEditsTest::offset_ofLineAndColumn_countsClusters()
{
    QFETCH(QString, text);
    QFETCH(qint64, line);
    QFETCH(qint64, column);
    QFETCH(qint64, offset);
    QCOMPARE(offsetForLineColumn(line, column, Text(text)), offset);
}

void LineEditsTest::offset_anyPlace_equalsTheSumOverLines()
{
    const QString text = u"ab\r\n\r\n\u0301x\n👨‍👩‍👧日\r\rz\n\n"_s;
    const QStringList lines = text.split(u'\n');
    qint64 before = 0;
    for (qsizetype line = 0; line < lines.size(); ++line) {
        const qint64 inLine = Text(lines.at(line)).metrics().clusters;
        for (qint64 column = 0; column <= inLine + 1; ++column)
            QCOMPARE(offsetForLineColumn(line, column, Text(text)),
                     before + std::min(column, inLine));
        before += inLine + 1;
    }
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::LineEditsTest)
#include "LineEditsTest.moc"
