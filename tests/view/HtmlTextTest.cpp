#include "view/HtmlText.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class HtmlTextTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void html_any_givesItsText_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QString &html, const QString &text) {
            QTest::newRow(name) << html << text;
        };
        row("nothing", {}, {});
        row("text", u"日本語 text"_s, u"日本語 text"_s);
        row("styles", u"<b>bold</b> and <i style='x>y'>slanted</i>"_s, u"bold and slanted"_s);
        row("page",
            u"<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>T</title>\n<style>p { }"
            "</style><script>if (a < b) x();</SCRIPT></head>\n<body>\n<!--StartFragment-->"
            "<p>one</p>\n<p>two</p><!-- > --></body></html>"_s,
            u"one\ntwo"_s);
        row("breaks", u"a<br>b<br/>\n c<BR><br>d"_s, u"a\nb\nc\n\nd"_s);
        row("blocks", u"a<div><div>b</div></div><ul><li>c<li>d</ul>e"_s, u"a\nb\nc\nd\ne"_s);
        row("table",
            u"<table>\n<tr>\n<td>1</td>\n<td> 2 </td></tr><tr><td></td><th>4</th></tr></table>"_s,
            u"1\t2\n\t4"_s);
        row("white space", u"  a \n\t b  <b> c</b> <p>  d "_s, u"a b c\nd"_s);
        row("preformatted", u"x<pre>a\r\n  b\tc\n</pre>y  z"_s, u"x\na\n  b\tc\ny z"_s);
        row("references",
            u"&lt;b&gt; &amp;amp; &#12354;&#x1F600; &hearts;&yen; &unheardof; a&b"_s,
            u"<b> &amp; あ😀 ♥¥ &unheardof; a&b"_s);
        row("no-break blanks", u"a&nbsp;&nbsp;b"_s, u"a  b"_s);
        row("no tags", u"a < b, 1<2 <"_s, u"a < b, 1<2 <"_s);
        row("image", u"a<img src='file:///etc/passwd' alt=\"x\">b"_s, u"ab"_s);
        row("open at the end", u"a<b title='x"_s, u"a"_s);
        row("comment without end", u"a<!-- b"_s, u"a"_s);
        row("bars", u"|a|"_s, u"|a|"_s);
    }

    void html_any_givesItsText()
    {
        QFETCH(QString, html);
        QFETCH(QString, text);
        QCOMPARE(textOfHtml(html), text);
    }

    void html_hostile_endsSoon_data()
    {
        QTest::addColumn<QString>("part");
        for (const char *part : {"<b>",
                                 "<div>",
                                 "<table><tr><td>",
                                 "<",
                                 "<!--",
                                 "&",
                                 "&#",
                                 "<p ",
                                 "<pre>",
                                 "\n",
                                 "<script>",
                                 "<a b='",
                                 "</td>",
                                 "\uFDD0",
                                 "&#xFDD1;"})
            QTest::newRow(part) << QString::fromUtf8(part);
    }

    // A conversion in quadratic time would take minutes.
    void html_hostile_endsSoon()
    {
        QFETCH(QString, part);
        QVERIFY(textOfHtml(u"a"_s + part.repeated(300'000)).startsWith(u'a'));
        QVERIFY(textOfHtml(u"<pre>a"_s + part.repeated(300'000)).startsWith(u'a'));
    }
};

QTEST_MAIN(HtmlTextTest)
#include "HtmlTextTest.moc"
