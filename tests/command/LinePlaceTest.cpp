#include "command/LinePlace.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace penwick;
using namespace Qt::StringLiterals;

class LinePlaceTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typed_isRead_data();
    void typed_isRead();
    void typed_notAPlace_isNone_data();
    void typed_notAPlace_isNone();
    void place_inText_isFound_data();
    void place_inText_isFound();
    void place_ofAnyOffset_leadsBack();
};

void LinePlaceTest::typed_isRead_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");
    QTest::newRow("line") << u"12"_s << qint64(12) << qint64(1);
    QTest::newRow("column") << u" 12:5 "_s << qint64(12) << qint64(5);
    QTest::newRow("unfinished") << u"12:"_s << qint64(12) << qint64(1);
    QTest::newRow("wide") << u"１２：５"_s << qint64(12) << qint64(5);
    QTest::newRow("zero") << u"0:0"_s << qint64(1) << qint64(1);
    QTest::newRow("huge") << QString(40, u'9') << std::numeric_limits<qint64>::max() << qint64(1);
}

void LinePlaceTest::typed_isRead()
{
    QFETCH(const QString, typed);
    QFETCH(const qint64, line);
    QFETCH(const qint64, column);
    const LinePlace expected{line, column};
    QCOMPARE(parseLinePlace(typed), std::optional(expected));
}

void LinePlaceTest::typed_notAPlace_isNone_data()
{
    QTest::addColumn<QString>("typed");
    for (const char *typed : {"", " ", ":", ":5", "a", "1a", "-1", "1:2:3", "1 2"})
        QTest::newRow(typed) << QString::fromLatin1(typed);
}

void LinePlaceTest::typed_notAPlace_isNone()
{
    QFETCH(const QString, typed);
    QVERIFY(!parseLinePlace(typed));
}

void LinePlaceTest::place_inText_isFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<bool>("hasLine");
    QTest::addColumn<bool>("hasColumn");
    const auto add = [](const char *name, const QString &text, LinePlace place, FoundPlace found) {
        QTest::newRow(name) << text << place.line << place.column << found.offset << found.hasLine
                            << found.hasColumn;
    };
    add("start", u"ab\ncd"_s, {1, 1}, {0, true, true});
    add("second line", u"ab\ncd"_s, {2, 2}, {4, true, true});
    add("after the last character", u"ab\ncd"_s, {1, 3}, {2, true, true});
    add("past the line", u"ab\ncd"_s, {1, 4}, {2, true, false});
    add("past the text", u"ab\ncd"_s, {3, 1}, {5, false, true});
    add("last empty line", u"ab\n"_s, {2, 1}, {3, true, true});
    add("empty text", QString(), {1, 1}, {0, true, true});
    add("past the empty text", QString(), {2, 1}, {0, false, true});
    add("clusters", u"か\u3099🎌x"_s, {1, 3}, {4, true, true});
    add("before CR LF", u"ab\r\ncd"_s, {1, 3}, {2, true, true});
    add("within CR LF", u"ab\r\ncd"_s, {1, 4}, {2, true, false});
    add("after CR LF", u"ab\r\ncd"_s, {2, 2}, {5, true, true});
    add("past CR LF", u"ab\r\n"_s, {3, 1}, {4, false, true});
    add("LF CR is two line ends", u"ab\n\rcd"_s, {3, 1}, {4, true, true});
    add("other separators", u"a\u2028b\u0085c"_s, {3, 1}, {4, true, true});
}

void LinePlaceTest::place_inText_isFound()
{
    QFETCH(const QString, text);
    QFETCH(const qint64, line);
    QFETCH(const qint64, column);
    const FoundPlace found = findPlace({line, column}, Text(text));
    QTEST(found.offset, "offset");
    QTEST(found.hasLine, "hasLine");
    QTEST(found.hasColumn, "hasColumn");
}

void LinePlaceTest::place_ofAnyOffset_leadsBack()
{
    const QString pieces[] = {u"a"_s, u"漢"_s, u"🎌"_s, u"か\u3099"_s, u"\n"_s, u"\r\n"_s, u"\r"_s};
    QRandomGenerator random(7);
    QString content;
    for (int i = 0; i < 3000; ++i)
        content += pieces[random.bounded(7)];
    const Text text(content);
    for (qint64 offset = 0; offset <= text.size(); offset = text.nextClusterBoundary(offset)) {
        const qint64 line = text.lineBreaksBefore(offset) + 1;
        const Text rest = text.mid(text.offsetAfterLineBreak(line - 1), text.size());
        const qint64 column = text.metricsBefore(offset).clusters + rest.metrics().clusters -
                              text.metrics().clusters + 1;
        const FoundPlace found = findPlace({line, column}, text);
        QCOMPARE(found.offset, offset);
        QVERIFY(found.hasLine && found.hasColumn);
        if (offset == text.size())
            break;
    }
}

QTEST_APPLESS_MAIN(LinePlaceTest)
#include "LinePlaceTest.moc"
