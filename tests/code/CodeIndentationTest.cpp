#include "code/CodeIndentation.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

struct Marked
{
    Text text;
    TextRange selection;
};

/// Parses a text in which one `|` marks the caret, or two mark the selection.
Marked parsed(QString marked)
{
    const qsizetype start = marked.indexOf(u'|');
    marked.remove(start, 1);
    const qsizetype end = marked.indexOf(u'|');
    if (end >= 0)
        marked.remove(end, 1);
    return {Text(marked), {start, end < 0 ? 0 : end - start}};
}

QString shown(const Text &text, const std::optional<indentation::Edit> &edit)
{
    if (!edit)
        return u"nothing"_s;
    QString result =
        text.replaced(edit->range.location, edit->range.length, Text(edit->replacement)).toString();
    if (edit->selection.length > 0)
        result.insert(edit->selection.end(), u'|');
    return result.insert(edit->selection.location, u'|');
}

void addRow(const char *name, const QString &before, const QString &after)
{
    QTest::newRow(name) << before << after;
}

void addColumns()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
}

} // namespace

class CodeIndentationTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineBreak_keepsTheIndentation_data();
    void lineBreak_keepsTheIndentation();
    void lineBreak_behindABracketOfNoCode_isNotDeeper();
    void closingBrace_onABlankLine_takesALevelAway_data();
    void closingBrace_onABlankLine_takesALevelAway();
    void tab_insertsALevel_data();
    void tab_insertsALevel();
    void indent_movesTheLines_data();
    void indent_movesTheLines();
    void unindent_movesTheLines_data();
    void unindent_movesTheLines();
};

void CodeIndentationTest::lineBreak_keepsTheIndentation_data()
{
    addColumns();
    addRow("empty text", u"|"_s, u"\n|"_s);
    addRow("no indentation", u"a|"_s, u"a\n|"_s);
    addRow("blanks", u"  a|"_s, u"  a\n  |"_s);
    addRow("tabs", u"\t a|\nb"_s, u"\t a\n\t |\nb"_s);
    addRow("later line", u"a\n    b|"_s, u"a\n    b\n    |"_s);
    addRow("line before is not asked", u"    a\nb|"_s, u"    a\nb\n|"_s);
    addRow("amid a line", u"  a|b"_s, u"  a\n  |b"_s);
    addRow("blanks behind the caret", u"  a,|  b"_s, u"  a,\n  |b"_s);
    addRow("start of a line", u"|  a"_s, u"\n|  a"_s);
    addRow("amid the indentation", u"  |  a"_s, u"  \n  |  a"_s);
    addRow("behind the indentation", u"    |a"_s, u"    \n    |a"_s);
    addRow("selection", u"  a|bc|d"_s, u"  a\n  |d"_s);
    addRow("selection over lines", u"  a|b\nc|d"_s, u"  a\n  |d"_s);
    addRow("brace", u"  a {|"_s, u"  a {\n      |"_s);
    addRow("bracket", u"[|"_s, u"[\n    |"_s);
    addRow("parenthesis", u"f(|"_s, u"f(\n    |"_s);
    addRow("blanks behind the brace", u"a { |"_s, u"a { \n    |"_s);
    addRow("amid braces", u"  a {|}"_s, u"  a {\n      |\n  }"_s);
    addRow("amid brackets", u"[|];"_s, u"[\n    |\n];"_s);
    addRow("amid parentheses", u"f(|)"_s, u"f(\n    |\n)"_s);
    addRow("other closer", u"f(|}"_s, u"f(\n    |}"_s);
    addRow("something before the closer", u"{|a}"_s, u"{\n    |a}"_s);
    addRow("closed before", u"{}|"_s, u"{}\n|"_s);
    addRow("CR LF", u"  a|\r\nb"_s, u"  a\n  |\r\nb"_s);
    addRow("Japanese blank", u"\u3000a|"_s, u"\u3000a\n|"_s);
}

void CodeIndentationTest::lineBreak_keepsTheIndentation()
{
    QFETCH(QString, before);
    const Marked m = parsed(before);
    QTEST(shown(m.text, indentation::lineBreak(m.text, m.selection, [](qint64) { return true; })),
          "after");
}

void CodeIndentationTest::lineBreak_behindABracketOfNoCode_isNotDeeper()
{
    const Marked m = parsed(u"  // a {|}"_s);
    qint64 asked = -1;
    const auto edit = indentation::lineBreak(m.text, m.selection, [&asked](qint64 offset) {
        asked = offset;
        return false;
    });
    QCOMPARE(asked, 7);
    QCOMPARE(shown(m.text, edit), u"  // a {\n  |}"_s);
}

void CodeIndentationTest::closingBrace_onABlankLine_takesALevelAway_data()
{
    addColumns();
    addRow("one level", u"a {\n    |"_s, u"a {\n}|"_s);
    addRow("two levels", u"        |\nb"_s, u"    }|\nb"_s);
    addRow("odd blanks", u"  |"_s, u"}|"_s);
    addRow("six blanks", u"      |"_s, u"  }|"_s);
    addRow("tab", u"\t\t|"_s, u"\t}|"_s);
    addRow("blanks behind a tab", u"\t  |"_s, u"\t}|"_s);
    addRow("caret amid the blanks", u"    |    "_s, u"    }|"_s);
    addRow("CR LF", u"    |\r\n"_s, u"}|\r\n"_s);
    addRow("no blanks", u"a\n|"_s, u"nothing"_s);
    addRow("code", u"    a|"_s, u"nothing"_s);
    addRow("code behind", u"    |a"_s, u"nothing"_s);
    addRow("selection", u"  |  |"_s, u"nothing"_s);
}

void CodeIndentationTest::closingBrace_onABlankLine_takesALevelAway()
{
    QFETCH(QString, before);
    const Marked m = parsed(before);
    QTEST(shown(m.text, indentation::closingBrace(m.text, m.selection)), "after");
}

void CodeIndentationTest::tab_insertsALevel_data()
{
    addColumns();
    addRow("caret", u"a|b"_s, u"a    |b"_s);
    addRow("selection in a line", u"a|bc|d"_s, u"a    |d"_s);
    addRow("selection over lines", u"a|b\n\nc|d"_s, u"|    ab\n\n    cd|"_s);
}

void CodeIndentationTest::tab_insertsALevel()
{
    QFETCH(QString, before);
    const Marked m = parsed(before);
    QTEST(shown(m.text, indentation::tab(m.text, m.selection)), "after");
}

void CodeIndentationTest::indent_movesTheLines_data()
{
    addColumns();
    addRow("caret", u"  a|b\nc"_s, u"      a|b\nc"_s);
    addRow("selection in a line", u"a|b|"_s, u"    a|b|"_s);
    addRow("two lines", u"x\n|a\nb|\ny"_s, u"x\n|    a\n    b|\ny"_s);
    addRow("whole lines", u"|a\nb\n|c"_s, u"|    a\n    b|\nc"_s);
    addRow("empty line", u"|a\n\r\n\nb|"_s, u"|    a\n\r\n\n    b|"_s);
}

void CodeIndentationTest::indent_movesTheLines()
{
    QFETCH(QString, before);
    const Marked m = parsed(before);
    QTEST(shown(m.text, indentation::indent(m.text, m.selection)), "after");
}

void CodeIndentationTest::unindent_movesTheLines_data()
{
    addColumns();
    addRow("caret", u"      a|b\nc"_s, u"  a|b\nc"_s);
    addRow("caret in the indentation", u"x\n |   a"_s, u"x\n|a"_s);
    addRow("fewer blanks", u"  a|"_s, u"a|"_s);
    addRow("tab", u"\t\ta|"_s, u"\ta|"_s);
    addRow("lines", u"|    a\n  b\nc\n\td|"_s, u"|a\nb\nc\nd|"_s);
    addRow("nothing to take", u"a|"_s, u"nothing"_s);
    addRow("nothing but breaks", u"|\n\n|"_s, u"nothing"_s);
}

void CodeIndentationTest::unindent_movesTheLines()
{
    QFETCH(QString, before);
    const Marked m = parsed(before);
    QTEST(shown(m.text, indentation::unindent(m.text, m.selection)), "after");
}

QTEST_APPLESS_MAIN(CodeIndentationTest)

#include "CodeIndentationTest.moc"
