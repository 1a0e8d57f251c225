#include "find/FindExpression.h"

#include "support/Finding.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;
using namespace penwick::finding;
using namespace Qt::StringLiterals;

namespace {

/// The matches of QRegularExpression in the whole text, without empty matches at the end of the
/// match before.
Ranges wholeMatches(const QString &text, const QString &pattern)
{
    const QRegularExpression expression(u"(*ANY)"_s + pattern,
                                        QRegularExpression::MultilineOption |
                                            QRegularExpression::UseUnicodePropertiesOption);
    Ranges ranges;
    qint64 end = -1;
    for (auto it = expression.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        if (match.capturedLength() == 0 && match.capturedStart() == end)
            continue;
        ranges.append({match.capturedStart(), match.capturedEnd()});
        end = match.capturedLength() > 0 ? match.capturedEnd() : -1;
    }
    return ranges;
}

/// As `wholeMatches`, but with one `match` call on the whole text per match, starting at the end of
/// the match before, or at the next character after an empty one.
Ranges steppedMatches(const QString &text, const QString &pattern)
{
    const QRegularExpression expression(u"(*ANY)"_s + pattern,
                                        QRegularExpression::MultilineOption |
                                            QRegularExpression::UseUnicodePropertiesOption);
    const Text value(text);
    Ranges ranges;
    qint64 offset = 0;
    bool isAfterMatch = false;
    while (offset <= text.size()) {
        const QRegularExpressionMatch match = expression.match(text, offset);
        if (!match.hasMatch())
            break;
        const qint64 start = match.capturedStart();
        const bool isEmpty = match.capturedLength() == 0;
        const bool isRepeated = isEmpty && isAfterMatch && start == offset;
        if (!isRepeated)
            ranges.append({start, match.capturedEnd()});
        isAfterMatch = !isEmpty;
        offset = isEmpty ? findOffsetAfter(value, start) : match.capturedEnd();
    }
    return ranges;
}

/// A random expression of the given depth, without one that takes exponential time.
QString randomExpression(QRandomGenerator &random, int depth)
{
    static const QStringList leaves{
        u"a"_s,    u"b"_s,      u"漢"_s,      u" "_s,   u"."_s,   u"\\w"_s, u"\\s"_s,    u"[^a]"_s,
        u"[ab]"_s, u"\\b"_s,    u"\\B"_s,     u"^"_s,   u"$"_s,   u"\\R"_s, u"(?=a)"_s,  u"(?!b)"_s,
        u"\\v"_s,  u"(?<=a)"_s, u"(?<!ab)"_s, u"\\z"_s, u"\\Z"_s, u"\\X"_s, u"(?s:.)"_s, u"\\h"_s};
    if (depth == 0)
        return leaves[random.bounded(static_cast<int>(leaves.size()))];
    static const QStringList repeats{
        u"*"_s, u"+"_s, u"?"_s, u"*?"_s, u"+?"_s, u"{2,3}"_s, u"++"_s, u"??"_s};
    const auto inner = [&] { return randomExpression(random, depth - 1); };
    const auto leaf = [&] { return randomExpression(random, 0); };
    switch (random.bounded(7)) {
    case 0:
        return inner() + inner();
    case 1:
        return u"(?:"_s + inner() + u"|"_s + inner() + u")"_s;
    case 2:
        return u"(?:"_s + leaf() + u")"_s +
               repeats[random.bounded(static_cast<int>(repeats.size()))] + inner();
    case 3:
        return u"(?="_s + inner() + u")"_s + inner();
    case 4:
        return inner() + u"(?!"_s + inner() + u")"_s;
    case 5:
        return u"(?>"_s + inner() + u")"_s + leaf();
    default:
        return inner() + leaf();
    }
}

/// So small that a text of a few hundred code units has block edges everywhere.
constexpr FindSizes kTiny{4, 16, 8, 8, 1'000'000};

} // namespace

class FindExpressionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void expression_lineBounds_areThoseOfTheEditor();
    void expression_acrossLines_matches();
    void expression_emptyMatches_endAndCountOnce();
    void expression_atWindowEdges_isFoundOnce();
    void expression_lookingBehind_seesAcrossSteps();
    void expression_unicode_matchesJapaneseAndPairs();
    void expression_invalid_reportsPlaceAndReason();
    void expression_longLinesAndMatches_areFoundWhole_data();
    void expression_longLinesAndMatches_areFoundWhole();
    void expression_randomTexts_isFoundAsInTheWholeText_data();
    void expression_randomTexts_isFoundAsInTheWholeText();
    void expression_random_isFoundAsInTheWholeText();
    void expression_missingInLongLine_costsNoSquare();
    void expression_needingMoreThanTheMost_isGivenUp();
    void expression_overLongMatches_isReplacedWhole();
    void expression_catastrophic_isGivenUpSoon();
    void expression_deepButHarmless_matches();
};

void FindExpressionTest::expression_lineBounds_areThoseOfTheEditor()
{
    const QString text = u"a\r\nb\rc\nd\u2028e\u0085f"_s;
    QCOMPARE(matches(text, expression(u"^."_s)),
             (Ranges{{0, 1}, {3, 4}, {5, 6}, {7, 8}, {9, 10}, {11, 12}}));
    QCOMPARE(matches(text, expression(u".$"_s)), matches(text, expression(u"^."_s)));
    QCOMPARE(matches(text, expression(u"\\n"_s)), (Ranges{{2, 3}, {6, 7}}));
    QCOMPARE(matches(text, expression(u"\\A.|.\\z"_s)), (Ranges{{0, 1}, {11, 12}}));
}

void FindExpressionTest::expression_acrossLines_matches()
{
    QCOMPARE(matches(u"one\ntwo\nthree"_s, expression(u"e\\nt\\w"_s)), (Ranges{{2, 6}}));
    QCOMPARE(matches(u"/* a\r\n b */ c"_s, expression(u"/\\*[\\s\\S]*?\\*/"_s)), (Ranges{{0, 11}}));
}

void FindExpressionTest::expression_emptyMatches_endAndCountOnce()
{
    QCOMPARE(matches(u"a\nb\n"_s, expression(u"^"_s)), (Ranges{{0, 0}, {2, 2}}));
    QCOMPARE(matches(u"a\r\nb"_s, expression(u"$"_s)), (Ranges{{1, 1}, {4, 4}}));
    QCOMPARE(matches(u"ab\n\ncd"_s, expression(u".*"_s)), (Ranges{{0, 2}, {3, 3}, {4, 6}}));
    QCOMPARE(matches(u"baac"_s, expression(u"a*"_s)), (Ranges{{0, 0}, {1, 3}, {4, 4}}));
    QCOMPARE(matches(QString(), expression(u"^"_s)), (Ranges{{0, 0}}));
    QCOMPARE(matches(u"😀"_s, expression(u"x*"_s)), (Ranges{{0, 0}, {2, 2}}));
    QCOMPARE(matches(QString(100'000, u'\n'), expression(u"^"_s)).size(), 100'000);
}

void FindExpressionTest::expression_atWindowEdges_isFoundOnce()
{
    QString text;
    for (int i = 0; i < 40'000; ++i)
        text += u"key"_s + QString::number(i % 10) + u"\r\n"_s;
    QCOMPARE(matches(text, expression(u"key\\d$"_s)).size(), 40'000);
    QCOMPARE(matches(text, expression(u"^key"_s)).size(), 40'000);
    QCOMPARE(matches(text, expression(u"\\R"_s)).size(), 40'000);
    const QString line = text.remove(u"\r\n"_s);
    QCOMPARE(matches(line, expression(u"k.y\\d"_s)).size(), 40'000);
    QCOMPARE(matches(line, expression(u"^"_s)).size(), 1);
}

void FindExpressionTest::expression_lookingBehind_seesAcrossSteps()
{
    const qint64 edge = FindSizes().largest;
    const QString text = QString(edge - 1, u'x') + u"ab"_s + QString(20'000, u'y');
    QCOMPARE(matches(text, expression(u"(?<=a)b"_s)), (Ranges{{edge, edge + 1}}));
    QCOMPARE(matches(text, expression(u"\\bx"_s)), (Ranges{{0, 1}}));
}

void FindExpressionTest::expression_unicode_matchesJapaneseAndPairs()
{
    QCOMPARE(matches(u"日本 😀x"_s, expression(u"\\w+"_s)), (Ranges{{0, 2}, {5, 6}}));
    QCOMPARE(matches(u"あア漢"_s, expression(u"\\p{Katakana}"_s)), (Ranges{{1, 2}}));
    FindPattern ignoring = expression(u"é"_s);
    ignoring.matchesCase = false;
    QCOMPARE(matches(u"É"_s, ignoring).size(), 1);
}

void FindExpressionTest::expression_invalid_reportsPlaceAndReason()
{
    const auto finder = TextFinder::compile(expression(u"ab(c"_s));
    QVERIFY(!finder);
    QCOMPARE(finder.error().code, FindPatternError::Code::InvalidExpression);
    QCOMPARE(finder.error().offset, 4);
    QVERIFY(!finder.error().reason.isEmpty());
}

void FindExpressionTest::expression_longLinesAndMatches_areFoundWhole_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("pattern");
    const QString line(20'000, u'x');
    const QString letters(20'000, u'a');
    QTest::newRow("line") << line << u"^.*$"_s;
    QTest::newRow("end of line") << u"abc foo"_s + line + u"\nzz"_s << u"foo.*$"_s;
    QTest::newRow("run") << letters << u"a+"_s;
    QTest::newRow("runs") << letters + u" "_s + letters << u"a+"_s;
    QTest::newRow("pairs") << letters << u"aa"_s;
    QTest::newRow("string") << u"{\"k\": \""_s + letters + u"\", \"b\": \"c\"}"_s
                            << u"\"[^\"]*\""_s;
    QTest::newRow("lazy") << u"{\"k\": \""_s + letters + u"\", \"b\": \"c\"}"_s << u"\".*?\""_s;
    const QString rows = u"<p>some text</p>\n"_s.repeated(6'400);
    QTest::newRow("comment") << u"/*\n"_s + rows + u"*/ x /* b */\n"_s << u"(?s)/\\*.*?\\*/"_s;
    QTest::newRow("far end") << line + u"b"_s + line << u"x(?=x{9}b)"_s;
    QTest::newRow("far behind") << u"b"_s + line << u"(?<=bx{5000})x"_s;
    QTest::newRow("lines") << u"ab\r\n"_s.repeated(30'000) << u"^.*$"_s;
    QTest::newRow("to the end") << rows << u"(?s)text.*"_s;
    QTest::newRow("across the text") << u"b"_s + line + line + u"b"_s << u"\\Ab|b\\z"_s;
}

void FindExpressionTest::expression_longLinesAndMatches_areFoundWhole()
{
    QFETCH(const QString, text);
    QFETCH(const QString, pattern);
    const Ranges whole = wholeMatches(text, pattern);
    QVERIFY(!whole.isEmpty());
    QCOMPARE(matches(text, expression(pattern)), whole);
}

void FindExpressionTest::expression_randomTexts_isFoundAsInTheWholeText_data()
{
    QTest::addColumn<QString>("pattern");
    for (const QStringView pattern : std::initializer_list<QStringView>{u"ab",
                                                                        u"^a",
                                                                        u"[a-c]+$",
                                                                        u"\\w+",
                                                                        u"(?<=a)b",
                                                                        u"(?<!a)b",
                                                                        u"\\bb",
                                                                        u"a\\b",
                                                                        u"a\\B",
                                                                        u"漢|漢字",
                                                                        u"(\\w)\\1",
                                                                        u".+",
                                                                        u".*",
                                                                        u"\\s+",
                                                                        u"a\\Rb?",
                                                                        u"[^\\n]+",
                                                                        u"(?s)a.*?b",
                                                                        u"(?s)a.*b",
                                                                        u"(?s)b.*",
                                                                        u"\\p{Han}+",
                                                                        u"^\\s*$\\R?",
                                                                        u"\\X",
                                                                        u"^",
                                                                        u"$",
                                                                        u"(?!a)",
                                                                        u"(?=b)",
                                                                        u"\\r",
                                                                        u"\\n",
                                                                        u"a(?!b)",
                                                                        u"a(?=.*b)",
                                                                        u"a++",
                                                                        u"(?>a+)b",
                                                                        u"\"[^\"]*\"",
                                                                        u"(a|b)*c",
                                                                        u"a\\Kb",
                                                                        u"\\w+\\K\\s",
                                                                        u"(?<=\\s)\\w+",
                                                                        u"(?<=^|b)a",
                                                                        u"(?<=ab)\\n",
                                                                        u"\\R",
                                                                        u"\\z",
                                                                        u"\\Z",
                                                                        u"\\A.",
                                                                        u"a$",
                                                                        u"^$",
                                                                        u"(?s).\\z",
                                                                        u"^.*$",
                                                                        u"(?:a|ab)(?:c|$)",
                                                                        u"x?",
                                                                        u"(?i)A+B",
                                                                        u"a{2,5}",
                                                                        u"a{3}",
                                                                        u"(?s:.{7})",
                                                                        u"(?s).{0,9}?b",
                                                                        u"a(*SKIP)(*F)|b",
                                                                        u"\\Ga",
                                                                        u"(?:(?=a)a|b)+",
                                                                        u"\\h+$",
                                                                        u"[\\r\\n]+",
                                                                        u"(?<![\\s\\S]).",
                                                                        u"[ab]{4,}\\b|c",
                                                                        u"😀+",
                                                                        u"[^a]",
                                                                        u"(?s)a(?!.*b)",
                                                                        u"\\Ba",
                                                                        u"\\s(?!^[ab])",
                                                                        u"\\n^a",
                                                                        u"^\\s+",
                                                                        u".*b",
                                                                        u"(.*)b",
                                                                        u"(.*)?b",
                                                                        u".*?c$",
                                                                        u".*+",
                                                                        u".*b\\K.",
                                                                        u"(.*)b\\1",
                                                                        u".*b|c"})
        QTest::newRow(pattern.toUtf8().constData()) << pattern.toString();
}

void FindExpressionTest::expression_randomTexts_isFoundAsInTheWholeText()
{
    QFETCH(const QString, pattern);
    const TextFinder finder = *TextFinder::compile(expression(pattern), kTiny);
    QRandomGenerator random(20'261'121);
    const QStringList alphabets{
        u"ab"_s, u"aab\n"_s, u"aabbc \"\r\n"_s, u"abc漢字 😀x\n"_s, u"a \t\r\n\u2028\u0085"_s};
    for (int round = 0; round < 200; ++round) {
        const QString &alphabet = alphabets[round % alphabets.size()];
        const QString text = randomString(random, random.bounded(0, 160), alphabet);
        const Ranges whole = wholeMatches(text, pattern);
        if (matches(Text(text), finder) != whole)
            qWarning() << "in" << text;
        QCOMPARE(matches(Text(text), finder), whole);
    }
}

void FindExpressionTest::expression_random_isFoundAsInTheWholeText()
{
    QRandomGenerator random(7);
    int foundCount = 0;
    for (int round = 0; round < 1'500; ++round) {
        const QString pattern = randomExpression(random, 3);
        const TextFinder finder = *TextFinder::compile(expression(pattern), kTiny);
        for (int i = 0; i < 4; ++i) {
            const QString text = randomString(random, random.bounded(0, 120), u"aaab \r\n漢"_s);
            const Ranges whole = steppedMatches(text, pattern);
            if (matches(Text(text), finder) != whole)
                qWarning() << pattern << "in" << text;
            QCOMPARE(matches(Text(text), finder), whole);
            foundCount += static_cast<int>(whole.size());
        }
    }
    QVERIFY(foundCount > 10'000);
}

void FindExpressionTest::expression_missingInLongLine_costsNoSquare()
{
    const QString line(1'000'000, u'x');
    for (const QString &pattern : {u".*zzz"_s, u"(.*)zzz.*foo"_s, u"^.*zzz"_s, u"zzz.*"_s}) {
        const TextFinder finder = finderOf(expression(pattern));
        const FindResult result =
            findNext(finder, Text(line + u"\r\n"_s + line + u"\nyzzz foo"_s), {}, false);
        QVERIFY2(!result.isTooComplex, qPrintable(pattern));
        QVERIFY(result.match.value_or(TextRange()).location >= 2'000'003);
    }
}

void FindExpressionTest::expression_needingMoreThanTheMost_isGivenUp()
{
    const TextFinder finder =
        *TextFinder::compile(expression(u"\"[^\"]*\""_s), FindSizes{4, 16, 8, 8, 100});
    const auto count = [&finder](const QString &string) {
        const auto result =
            replaceAllMatches(finder, FindReplacement(u"S"_s, finder), Text(string), 0);
        return result.isTooComplex ? -1 : result.count;
    };
    QCOMPARE(count(u"\""_s + QString(90, u'a') + u"\" b"_s), 1);
    QCOMPARE(count(u"\""_s + QString(200, u'a') + u"\" b"_s), -1);
    const TextFinder searching =
        *TextFinder::compile(expression(u"\\Ga"_s), FindSizes{4, 16, 8, 8, 100});
    QVERIFY(findNext(searching, Text(QString(200, u'a')), {}, false).isTooComplex);
    QVERIFY(!findNext(searching, Text(QString(100, u'a')), {}, false).isTooComplex);
}

void FindExpressionTest::expression_overLongMatches_isReplacedWhole()
{
    const QString data(20'000, u'A');
    QCOMPARE(replaced(u"{\"image\": \""_s + data + u"\",\n \"b\": \"c\"}\n"_s,
                      expression(u"\"[^\"]*\""_s),
                      u"S"_s),
             u"{S: S,\n S: S}\n"_s);
    // An expression that exhausts the stack of the just-in-time compiler.
    const QString rows = u"<p>some text</p>\n"_s.repeated(6'400);
    QCOMPARE(replaced(u"/*\n"_s + rows + u"*/ x /* b */\n"_s,
                      expression(u"/\\*(?:.|\\n)*?\\*/"_s),
                      u"C"_s),
             u"C x C\n"_s);
    QCOMPARE(replaced(u"key="_s + data + u";"_s, expression(u"(\\w+)=(\\w+)"_s), u"$2=$1"_s),
             data + u"=key;"_s);
}

void FindExpressionTest::expression_catastrophic_isGivenUpSoon()
{
    const Text text(QString(50'000, u'a') + u"!b"_s);
    const FindResult result =
        findNext(finderOf(expression(u"(a+)+[^ab!]"_s)), text, {0, false}, true);
    QVERIFY(result.isTooComplex);
    QVERIFY(!result.match);
}

void FindExpressionTest::expression_deepButHarmless_matches()
{
    QCOMPARE(matches(QString(8'000, u'a'), expression(u"(a|b)*"_s)), (Ranges{{0, 8'000}}));
}

QTEST_GUILESS_MAIN(FindExpressionTest)
#include "FindExpressionTest.moc"
