#include "lines/TextRewrite.h"

#include "lines/CharacterForms.h"
#include "lines/LineBlock.h"
#include "support/TextModel.h"

#include <QRegularExpression>
#include <QTest>
#include <QUrl>

using namespace penwick;
using namespace Qt::StringLiterals;

using Kind = TextChangeKind;

Q_DECLARE_METATYPE(penwick::TextChangeKind)

namespace {

/// A text whose selection is written into it: `[` is the anchor and `]` the caret, which may come
/// first; a `|` is both.
SelectedText marked(QString text)
{
    SelectedText result;
    const qsizetype both = text.indexOf(u'|');
    if (both >= 0) {
        text.remove(both, 1);
        result.text = Text(text);
        result.select(both, both);
        return result;
    }
    qsizetype anchor = text.indexOf(u'[');
    qsizetype caret = text.indexOf(u']');
    text.remove(std::max(anchor, caret), 1).remove(std::min(anchor, caret), 1);
    --(anchor < caret ? caret : anchor);
    result.text = Text(text);
    result.select(anchor, caret);
    return result;
}

QString withMarks(const SelectedText &text)
{
    QString result = text.text.toString();
    if (text.anchor == text.caret)
        return result.insert(text.caret, u'|');
    const bool isForward = text.anchor < text.caret;
    result.insert(std::max(text.anchor, text.caret), isForward ? u']' : u'[');
    return result.insert(std::min(text.anchor, text.caret), isForward ? u'[' : u']');
}

SelectedText rewritten(const SelectedText &text, Kind kind, const Indentation &style = {})
{
    const auto change = rewrite(kind, text, style);
    if (!change)
        return text;
    SelectedText result;
    result.text =
        text.text.replaced(change->range.location, change->range.length, change->replacement);
    result.select(change->anchor, change->caret);
    return result;
}

/// A line as the model has it.
struct ModelLine
{
    QString content;
    QString end;
};

QList<ModelLine> modelLines(const QString &text)
{
    static const QRegularExpression lineBreak(u"\r\n|[\n\u000B\u000C\r\u0085\u2028\u2029]"_s);
    QList<ModelLine> lines;
    qsizetype start = 0;
    for (auto matches = lineBreak.globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        lines.append({text.mid(start, match.capturedStart() - start), match.captured()});
        start = match.capturedEnd();
    }
    lines.append({text.mid(start), QString()});
    return lines;
}

QString joined(const QList<ModelLine> &lines)
{
    QString text;
    for (const ModelLine &line : lines) {
        const bool wouldVanish =
            line.content.isEmpty() && line.end == u"\n" && text.endsWith(u'\r');
        text += line.content + (wouldVanish ? u"\r"_s : line.end);
    }
    return text;
}

/// The first and the last selected line.
std::pair<qsizetype, qsizetype> modelSelection(const QList<ModelLine> &lines, TextRange selection)
{
    qsizetype first = 0;
    qsizetype last = 0;
    qint64 start = 0;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (start <= selection.location)
            first = i;
        if (start < selection.end() || i == first)
            last = std::max(first, i);
        start += lines[i].content.size() + lines[i].end.size();
    }
    return {first, last};
}

QString expanded(const QString &blanks)
{
    QString result;
    for (const QChar blank : blanks)
        result += QString(blank == u'\t' ? 4 - result.size() % 4 : 1, u' ');
    return result;
}

QString modelLine(Kind kind, QString line)
{
    static const QRegularExpression trailing(u"[\t\\p{Zs}]+\\z"_s);
    static const QRegularExpression leading(u"\\A[ \t]*"_s);
    static const QRegularExpression level(u"\\A(?: {4}| {0,3}\t| {0,3})"_s);
    const QString blanks = leading.match(line).captured();
    switch (kind) {
    case Kind::Indent:
        return line.isEmpty() ? line : u'\t' + line;
    case Kind::Outdent:
        return line.remove(level);
    case Kind::TrimEnds:
        return line.remove(trailing);
    case Kind::TabsToBlanks:
        return expanded(blanks) + line.mid(blanks.size());
    case Kind::BlanksToTabs:
        return expanded(blanks).replace(u"    "_s, u"\t"_s) + line.mid(blanks.size());
    default:
        return line;
    }
}

/// What a command that changes lines makes of a whole text.
QString model(Kind kind, const QString &text, TextRange selection)
{
    QList<ModelLine> lines = modelLines(text);
    const auto [first, last] = modelSelection(lines, selection);
    const auto moveContent = [&lines](qsizetype from, qsizetype to) {
        QStringList contents;
        for (const ModelLine &line : lines)
            contents << line.content;
        contents.move(from, to);
        for (qsizetype i = 0; i < lines.size(); ++i)
            lines[i].content = contents[i];
    };
    switch (kind) {
    case Kind::MoveUp:
        if (first > 0)
            moveContent(first - 1, last);
        break;
    case Kind::MoveDown:
        if (last + 1 < lines.size())
            moveContent(last + 1, first);
        break;
    case Kind::Sort: {
        QList<QList<uint>> contents;
        for (qsizetype i = first; i <= last; ++i)
            contents << lines[i].content.toUcs4();
        std::sort(contents.begin(), contents.end());
        for (qsizetype i = first; i <= last; ++i) {
            const QList<uint> &content = contents[i - first];
            lines[i].content = QString::fromUcs4(
                reinterpret_cast<const char32_t *>(content.constData()), content.size());
        }
        break;
    }
    default:
        for (qsizetype i = first; i <= last; ++i)
            lines[i].content = modelLine(kind, lines[i].content);
    }
    return joined(lines);
}

QString randomLines(QRandomGenerator &random)
{
    const QStringList pieces{u"\n"_s,     u"\r\n"_s,    u"\r"_s,          u"\u0085"_s,
                             u"\u2028"_s, u" "_s,       u"\t"_s,          u"    "_s,
                             u"\u3000"_s, u"a"_s,       u"B "_s,          u"日本"_s,
                             u"Ａ１"_s,   u"ｶﾞ"_s,      u"👩‍👧"_s, u"\U0001F600"_s,
                             u"\uFF21"_s, u"e\u0301"_s, u"\t "_s,         u"\u2029"_s};
    QString text;
    for (int count = random.bounded(30); count > 0; --count)
        text += pieces[random.bounded(pieces.size())];
    return text;
}

} // namespace

class TextRewriteTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void examples_data();
    void examples();
    void randomTexts_matchTheModel_data();
    void randomTexts_matchTheModel();
    void randomTexts_duplicated_haveTheLinesTwice();
    void randomTexts_characterForms_keepLineBreaks();
    void fullWidth_longTexts_keepsVoicingMarks();
    void indentation_ofTheStyle_isUsed();
    void canRewrite_whereNothingCanChange_isFalse();
    void tabUnits_reachTheNextTabStop();
    void largeText_costsOnlyTheSelection();
};

void TextRewriteTest::examples_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, Kind kind, const QString &text, const QString &expected) {
        QTest::newRow(name) << kind << text << expected;
    };
    row("indent", Kind::Indent, u"a\nb[c\r\nd]\ne"_s, u"a\n\tb[c\r\n\td]\ne"_s);
    row("indent, line starts", Kind::Indent, u"[a\n\nb\n]c"_s, u"[\ta\n\n\tb\n]c"_s);
    row("indent, caret", Kind::Indent, u"ab|c"_s, u"\tab|c"_s);
    row("outdent", Kind::Outdent, u"\ta[\n  \tb\n     ]c"_s, u"a[\nb\n ]c"_s);
    row("outdent nothing", Kind::Outdent, u"a[\n\u3000]b"_s, u"a[\n\u3000]b"_s);
    row("duplicate", Kind::Duplicate, u"a\r\nb|b\r\nc"_s, u"a\r\nbb\r\nb|b\r\nc"_s);
    row("duplicate the last", Kind::Duplicate, u"a\rb|b"_s, u"a\rbb\rb|b"_s);
    row("duplicate lines", Kind::Duplicate, u"]a\nb\n[c"_s, u"a\nb\n]a\nb\n[c"_s);
    row("duplicate nothing", Kind::Duplicate, u"|"_s, u"\n|"_s);
    row("duplicate an empty line after CR", Kind::Duplicate, u"a\r|"_s, u"a\r\r|"_s);
    row("up", Kind::MoveUp, u"a\nb\n[c\nd]d"_s, u"a\n[c\nd]d\nb"_s);
    row("up, other line ends", Kind::MoveUp, u"a\r\nb|\u2028c"_s, u"b|\r\na\u2028c"_s);
    row("up, whole line", Kind::MoveUp, u"a\n[b\n]c"_s, u"[b\n]a\nc"_s);
    row("up, the first", Kind::MoveUp, u"a|\nb"_s, u"a|\nb"_s);
    row("up, equal lines", Kind::MoveUp, u"a\r\na|"_s, u"a|\r\na"_s);
    row("down", Kind::MoveDown, u"a|\nb"_s, u"b\na|"_s);
    row("down, whole line", Kind::MoveDown, u"[a\n]b"_s, u"b\n[a]"_s);
    row("down, the last", Kind::MoveDown, u"a\nb|"_s, u"a\nb|"_s);
    row("down, to the empty last line", Kind::MoveDown, u"|a\n"_s, u"\n|a"_s);
    row("join", Kind::Join, u"on|e\r\n  two\r\nthree"_s, u"one| two\r\nthree"_s);
    row("join Japanese", Kind::Join, u"日本|\n\u3000語"_s, u"日本|語"_s);
    row("join lines", Kind::Join, u"x\n[a\nb \nc\n]d"_s, u"x\n[a b c\n]d"_s);
    row("join the last", Kind::Join, u"a\nb|"_s, u"a\nb|"_s);
    row("sort", Kind::Sort, u"[b\r\nA\na]"_s, u"[A\r\na\nb]"_s);
    row("sort surrogates last",
        Kind::Sort,
        u"[\U0001F600\n\uFF21\nか\n]z"_s,
        u"[か\n\uFF21\n\U0001F600\n]z"_s);
    row("sort, caret first", Kind::Sort, u"]ab\na\n[z"_s, u"]a\nab\n[z"_s);
    row("sort one line", Kind::Sort, u"b|\na"_s, u"b|\na"_s);
    row("trim", Kind::TrimEnds, u"a[ \t\u3000\r\n \nb]b \n"_s, u"a[\r\n\nb]b\n"_s);
    row("trim, caret", Kind::TrimEnds, u"a \u00A0|  \nb "_s, u"a|\nb "_s);
    row("trim between CR and LF", Kind::TrimEnds, u"a\r[ ]\nb"_s, u"a\r|\rb"_s);
    row("to tabs", Kind::BlanksToTabs, u"[     a    b\n  \tc]"_s, u"[\t a    b\n\tc]"_s);
    row("to spaces", Kind::TabsToBlanks, u"  \t\ta\t|b"_s, u"        a\t|b"_s);
    row("upper case", Kind::UpperCase, u"a[straße é]b"_s, u"a[STRASSE É]b"_s);
    row("lower case", Kind::LowerCase, u"]ΟΔΟΣ\nＡ[B"_s, u"]οδος\nａ[B"_s);
    row("full width", Kind::FullWidth, u"[a1 ｶﾞ\r\n]b"_s, u"[ａ１\u3000ガ\r\n]b"_s);
    row("half width", Kind::HalfWidth, u"[ａ１\u3000ガ「亜」\n]"_s, u"[a1 ｶﾞ｢亜｣\n]"_s);
    row("case of nothing", Kind::UpperCase, u"a|b"_s, u"a|b"_s);
}

void TextRewriteTest::examples()
{
    QFETCH(const Kind, kind);
    QFETCH(const QString, text);
    QFETCH(const QString, expected);
    QCOMPARE(withMarks(rewritten(marked(text), kind)), expected);
}

void TextRewriteTest::randomTexts_matchTheModel_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("indent") << Kind::Indent;
    QTest::newRow("outdent") << Kind::Outdent;
    QTest::newRow("up") << Kind::MoveUp;
    QTest::newRow("down") << Kind::MoveDown;
    QTest::newRow("sort") << Kind::Sort;
    QTest::newRow("trim") << Kind::TrimEnds;
    QTest::newRow("to tabs") << Kind::BlanksToTabs;
    QTest::newRow("to spaces") << Kind::TabsToBlanks;
}

void TextRewriteTest::randomTexts_matchTheModel()
{
    QFETCH(const Kind, kind);
    QRandomGenerator random(static_cast<quint32>(kind) + 1);
    for (int i = 0; i < 3000; ++i) {
        const QString units = randomLines(random);
        SelectedText text;
        text.text = Text(units);
        text.select(random.bounded(units.size() + 1), random.bounded(units.size() + 1));
        const SelectedText result = rewritten(text, kind);
        const QString expected = model(kind, units, text.selection());
        QVERIFY2(result.text.toString() == expected,
                 qPrintable(QLatin1String(QUrl::toPercentEncoding(withMarks(text)))));
        // The lines are as many as before, also where blanks between CR and LF are gone.
        QCOMPARE(result.text.metrics().lineBreaks(), text.text.metrics().lineBreaks());
        QVERIFY(!text.selection().isEmpty() || result.selection().isEmpty());
    }
}

void TextRewriteTest::randomTexts_duplicated_haveTheLinesTwice()
{
    QRandomGenerator random(7);
    for (int i = 0; i < 3000; ++i) {
        const QString units = randomLines(random);
        SelectedText text;
        text.text = Text(units);
        const auto place = [&] { // Not between CR and LF.
            return text.text.clusterBoundaryAtOrBefore(random.bounded(units.size() + 1));
        };
        text.select(place(), place());
        const QList<ModelLine> before = modelLines(units);
        const auto [first, last] = modelSelection(before, text.selection());
        const SelectedText result = rewritten(text, Kind::Duplicate);
        const QList<ModelLine> after = modelLines(result.text.toString());
        const qsizetype count = last - first + 1;
        QCOMPARE(after.size(), before.size() + count);
        for (qsizetype line = 0; line < after.size(); ++line)
            QCOMPARE(after[line].content, before[line <= last ? line : line - count].content);
        const auto [firstCopy, lastCopy] = modelSelection(after, result.selection());
        QCOMPARE(firstCopy, first + count);
        QCOMPARE(lastCopy, last + count);
    }
}

void TextRewriteTest::randomTexts_characterForms_keepLineBreaks()
{
    QRandomGenerator random(8);
    for (int i = 0; i < 1000; ++i) {
        const QString units = randomLines(random);
        for (const auto form : {CharacterForm::UpperCase,
                                CharacterForm::LowerCase,
                                CharacterForm::FullWidth,
                                CharacterForm::HalfWidth}) {
            const QList<ModelLine> before = modelLines(units);
            const QList<ModelLine> after = modelLines(withForm(Text(units), form));
            QCOMPARE(after.size(), before.size());
            for (qsizetype line = 0; line < after.size(); ++line) {
                QCOMPARE(after[line].end, before[line].end);
                // Whole texts are converted as their lines are.
                QCOMPARE(after[line].content, withForm(Text(before[line].content), form));
            }
        }
    }
}

void TextRewriteTest::fullWidth_longTexts_keepsVoicingMarks()
{
    const QString half = u"ｶﾞx"_s.repeated(20'000);
    const QString full = u"ガｘ"_s.repeated(20'000);
    QCOMPARE(withForm(Text(half), CharacterForm::FullWidth), full);
    QCOMPARE(withForm(Text(full), CharacterForm::HalfWidth), half);
}

void TextRewriteTest::indentation_ofTheStyle_isUsed()
{
    const Indentation style{3, true, false};
    QCOMPARE(withMarks(rewritten(marked(u"[a\nb]"_s), Kind::Indent, style)), u"[   a\n   b]"_s);
    QCOMPARE(withMarks(rewritten(marked(u"[    a\n\tb]"_s), Kind::Outdent, style)), u"[ a\nb]"_s);
    QCOMPARE(withMarks(rewritten(marked(u"\t|a"_s), Kind::TabsToBlanks, style)), u"   |a"_s);
    QCOMPARE(withMarks(rewritten(marked(u"       |a"_s), Kind::BlanksToTabs, style)), u"\t\t |a"_s);
}

void TextRewriteTest::canRewrite_whereNothingCanChange_isFalse()
{
    QVERIFY(!canRewrite(Kind::MoveUp, marked(u"a|\nb"_s)));
    QVERIFY(canRewrite(Kind::MoveUp, marked(u"a\n|b"_s)));
    QVERIFY(!canRewrite(Kind::MoveDown, marked(u"a\nb|"_s)));
    QVERIFY(canRewrite(Kind::MoveDown, marked(u"a\n|b\n"_s)));
    QVERIFY(!canRewrite(Kind::Join, marked(u"a\nb|"_s)));
    QVERIFY(!canRewrite(Kind::Sort, marked(u"[a\n]b"_s)));
    QVERIFY(canRewrite(Kind::Sort, marked(u"[a\nb]"_s)));
    QVERIFY(!canRewrite(Kind::HalfWidth, marked(u"a|"_s)));
    QVERIFY(canRewrite(Kind::HalfWidth, marked(u"[a]"_s)));
}

void TextRewriteTest::tabUnits_reachTheNextTabStop()
{
    const Text text(u"ab日\tc\n\u3000 x"_s);
    const Indentation spaces{4, true, false};
    QCOMPARE(tabUnits(text, 1, {}), u"\t"_s);
    QCOMPARE(tabUnits(text, 0, spaces), u"    "_s);
    QCOMPARE(tabUnits(text, 1, spaces), u"   "_s);
    QCOMPARE(tabUnits(text, 3, spaces), u"    "_s);
    QCOMPARE(tabUnits(text, 5, spaces), u"   "_s);
    QCOMPARE(tabUnits(text, 8, spaces), u" "_s);
    QCOMPARE(keptIndentation(text, 5), QString());
    QCOMPARE(keptIndentation(text, 7), u"\u3000"_s);
    QCOMPARE(keptIndentation(text, text.size()), u"\u3000 "_s);
}

void TextRewriteTest::largeText_costsOnlyTheSelection()
{
    const Text part(u"b \n\ta\n"_s.repeated(50'000));
    Text whole;
    for (int i = 0; i < 500; ++i)
        whole = whole.appended(part);
    SelectedText text;
    text.text = whole;
    text.select(whole.size() / 2, whole.size() / 2);
    for (int kind = 0; kind <= static_cast<int>(Kind::TabsToBlanks); ++kind)
        if (const auto change = rewrite(static_cast<Kind>(kind), text, {}))
            QVERIFY(change->range.length < 20 && change->replacement.size() < 20);
}

QTEST_APPLESS_MAIN(TextRewriteTest)
#include "TextRewriteTest.moc"
