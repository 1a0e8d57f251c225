#include "app/OpenRequest.h"

#include <QTest>

#include <limits>

using namespace penwick;
using namespace Qt::StringLiterals;

class OpenRequestTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void offsetOf_place_isWhereAReaderCounts_data()
    {
        constexpr qint64 kHuge = std::numeric_limits<qint64>::max();
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("line");
        QTest::addColumn<qint64>("column");
        QTest::addColumn<qint64>("offset");
        const auto row =
            [](const char *name, const QString &text, qint64 line, qint64 column, qint64 offset) {
                QTest::newRow(name) << text << line << column << offset;
            };
        row("empty text", u""_s, 5, 5, 0);
        row("start", u"ab\ncd"_s, 1, 1, 0);
        row("second line", u"ab\ncd"_s, 2, 1, 3);
        row("column", u"ab\ncd"_s, 2, 2, 4);
        row("end of the text", u"ab\ncd"_s, 2, 3, 5);
        row("past the line", u"ab\ncd"_s, 1, 9, 2);
        row("past the text", u"ab\ncd"_s, 9, 1, 3);
        row("far past both", u"ab\ncd"_s, kHuge, kHuge, 5);
        row("before the first line", u"ab\ncd"_s, 0, 0, 0);
        row("after the last line feed", u"ab\n"_s, 2, 1, 3);
        row("CR LF is one line's end", u"ab\r\ncd\r\n"_s, 2, 1, 4);
        row("not into CR LF", u"ab\r\ncd"_s, 1, 9, 2);
        row("empty line of CR LF", u"\r\n\r\nx"_s, 2, 7, 2);
        row("other separators", u"a\rb\u2028c\nd"_s, 3, 1, 4);
        row("outside the plane", u"😀x\n"_s, 1, 2, 2);
        row("cluster of many units", u"👨‍👩‍👧x"_s, 1, 2, 8);
        row("mark that joins", u"e\u0301x"_s, 1, 2, 2);
    }

    void offsetOf_place_isWhereAReaderCounts()
    {
        QFETCH(QString, text);
        QFETCH(qint64, line);
        QFETCH(qint64, column);
        QTEST(offsetOf({line, column}, Text(text)), "offset");
    }

    void offsetOf_longLine_isQuick()
    {
        const Text text(QString(5'000'000, u'x'));
        QCOMPARE(offsetOf({1, 4'000'001}, text), 4'000'000);
        QCOMPARE(offsetOf({1, 9'000'000}, text), 5'000'000);
    }
};

QTEST_GUILESS_MAIN(OpenRequestTest)
#include "OpenRequestTest.moc"
