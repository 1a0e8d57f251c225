#include "find/TextFinder.h"

#include "find/FindCount.h"
#include "find/FindReplacement.h"
#include "support/Finding.h"

#include <QRandomGenerator>
#include <QTest>

using namespace penwick;
using namespace penwick::finding;
using namespace Qt::StringLiterals;

namespace {

FindPattern plain(const QString &string, bool matchesCase = true)
{
    return {string, matchesCase, false, false};
}

FindPattern word(const QString &string)
{
    return {string, true, true, false};
}

/// The matches of repeated QString::indexOf, without overlaps.
Ranges slowMatches(const QString &text, const QString &pattern, Qt::CaseSensitivity sensitivity)
{
    Ranges ranges;
    qsizetype at = text.indexOf(pattern, 0, sensitivity);
    while (at >= 0) {
        ranges.append({at, at + pattern.size()});
        at = text.indexOf(pattern, at + pattern.size(), sensitivity);
    }
    return ranges;
}

QString randomLetters(QRandomGenerator &random, int length)
{
    return randomString(random, length, u"aAbßſKkK\n\rあア漢😀𐐀𐐨"_s);
}

} // namespace

class TextFinderTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plain_randomTexts_areFoundAsByQString();
    void plain_acrossChunksAndSteps_isFound();
    void plain_ofSpecialCharacters_isTakenLiterally();
    void case_ignored_followsSimpleFolding();
    void pattern_withLoneSurrogate_matchesNoHalfPair();
    void wholeWord_data();
    void wholeWord();
    void wholeWord_japanese_followsTheDictionary();
    void next_fromPlaces_findsAheadAndWraps();
    void previous_fromPlaces_findsBehindAndWraps();
    void previous_farAway_isFoundBlockByBlock();
    void step_anyText_looksAtBoundedStretch();
    void step_costlyPattern_isCutShort_data();
    void step_costlyPattern_isCutShort();
    void search_runawayExpression_isGivenUp();
    void replacement_groups_areExpanded();
    void replacement_ofPlainPattern_isLiteral();
    void replaceAll_caret_keepsItsPlace();
    void replaceAll_farMatches_keepsEverythingBetween();
    void replaceAll_emptyMatches_insertsOnce();
    void count_steps_numbersEachMatch();
    void count_beforeItCameThere_doesNotKnow();
    void count_matchesIn_givesThoseOfTheRange();
};

void TextFinderTest::plain_randomTexts_areFoundAsByQString()
{
    QRandomGenerator random(20'240'601);
    for (int round = 0; round < 300; ++round) {
        const QString text = randomLetters(random, random.bounded(1, 2'000));
        const QString pattern = randomLetters(random, random.bounded(1, 4));
        QCOMPARE(matches(text, plain(pattern)), slowMatches(text, pattern, Qt::CaseSensitive));
        QCOMPARE(matches(text, plain(pattern, false)),
                 slowMatches(text, pattern, Qt::CaseInsensitive));
    }
}

void TextFinderTest::plain_acrossChunksAndSteps_isFound()
{
    const QString needle = u"needle針"_s;
    for (const qint64 distance : {-7, -6, -4, -1, 0, 1}) {
        for (const qint64 edge : {qint64{4'096}, TextFinder::kStepUnits, qint64{131'072}}) {
            const qint64 at = edge + distance;
            const QString text = QString(at, u'x') + needle + QString(5'000, u'y');
            QCOMPARE(matches(text, plain(needle)), (Ranges{{at, at + needle.size()}}));
        }
    }
    // In a long run, matches stay aligned across step boundaries.
    const Ranges pairs = matches(QString(200'001, u'a'), plain(u"aa"_s));
    QCOMPARE(pairs.size(), 100'000);
    QCOMPARE(pairs.last(), (std::pair<qint64, qint64>(199'998, 200'000)));
}

void TextFinderTest::plain_ofSpecialCharacters_isTakenLiterally()
{
    QCOMPARE(matches(u"a.b a*b"_s, plain(u"a.b"_s)), (Ranges{{0, 3}}));
    QCOMPARE(matches(u"x\r\ny\u2028z\r"_s, plain(u"\r\n"_s)), (Ranges{{1, 3}}));
    QCOMPARE(matches(u"x\r\ny\u2028z\r"_s, plain(u"\r"_s)), (Ranges{{1, 2}, {6, 7}}));
    QCOMPARE(matches(u"x\r\ny\u2028z\r"_s, plain(u"\u2028"_s)), (Ranges{{4, 5}}));
    QCOMPARE(matches(QString(u'a') + QChar(u'\0') + u'b', plain(QString(QChar(u'\0')))),
             (Ranges{{1, 2}}));
    QVERIFY(!TextFinder::compile(plain({})));
    QVERIFY(matches(QString(), plain(u"a"_s)).isEmpty());
}

void TextFinderTest::case_ignored_followsSimpleFolding()
{
    QCOMPARE(matches(u"Straße STRASSE Ärger ärger"_s, plain(u"ÄRGER"_s, false)),
             (Ranges{{15, 20}, {21, 26}}));
    QVERIFY(matches(u"Straße"_s, plain(u"STRASSE"_s, false)).isEmpty());
    QCOMPARE(matches(u"\U00010400 \U00010428"_s, plain(u"\U00010428"_s, false)),
             (Ranges{{0, 2}, {3, 5}}));
    QCOMPARE(matches(u"Abc abc"_s, plain(u"abc"_s)), (Ranges{{4, 7}}));
}

void TextFinderTest::pattern_withLoneSurrogate_matchesNoHalfPair()
{
    QVERIFY(matches(u"😀"_s, plain(QString(QChar(0xD83D)))).isEmpty());
    QVERIFY(matches(u"😀"_s, plain(QString(QChar(0xDE00)))).isEmpty());
    QCOMPARE(matches(u"😀"_s, expression(u"."_s)), (Ranges{{0, 2}}));
}

void TextFinderTest::wholeWord_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("count");
    QTest::newRow("inside") << u"category scat"_s << u"cat"_s << 0;
    QTest::newRow("alone") << u"cat, (cat) cat"_s << u"cat"_s << 3;
    QTest::newRow("underscore") << u"my_cat cat_"_s << u"cat"_s << 0;
    QTest::newRow("accent") << u"café caf"_s << u"caf"_s << 1;
    QTest::newRow("combining") << u"cafe\u0301 cafe"_s << u"cafe"_s << 1;
    QTest::newRow("phrase") << u"the cat sat; the cats"_s << u"the cat"_s << 1;
    QTest::newRow("sign") << u"a+b a +b"_s << u"+"_s << 2;
    QTest::newRow("overlapping") << u"aa aaa"_s << u"aa"_s << 1;
    QTest::newRow("later in the word") << u"xab ab"_s << u"ab"_s << 1;
}

void TextFinderTest::wholeWord()
{
    QFETCH(const QString, text);
    QFETCH(const QString, pattern);
    QFETCH(const int, count);
    QCOMPARE(matches(text, word(pattern)).size(), count);
    FindPattern asExpression = word(QRegularExpression::escape(pattern));
    asExpression.isRegularExpression = true;
    QCOMPARE(matches(text, asExpression).size(), count);
}

void TextFinderTest::wholeWord_japanese_followsTheDictionary()
{
    QCOMPARE(matches(u"東京へ行く"_s, word(u"東京"_s)), (Ranges{{0, 2}}));
    QVERIFY(matches(u"東京へ行く"_s, word(u"京"_s)).isEmpty());
    QCOMPARE(matches(u"これはQtで書く"_s, word(u"Qt"_s)), (Ranges{{3, 5}}));
    QVERIFY(matches(u"これはQtで書く"_s, word(u"Q"_s)).isEmpty());
    QVERIFY(matches(u"データベース"_s, word(u"デー"_s)).isEmpty());
    QCOMPARE(matches(u"「辞書」"_s, word(u"辞書"_s)), (Ranges{{1, 3}}));
}

void TextFinderTest::next_fromPlaces_findsAheadAndWraps()
{
    const Text text(u"ab ab ab");
    const TextFinder finder = finderOf(plain(u"ab"_s));
    QCOMPARE(findNext(finder, text, {0, false}, false).match, (TextRange::between(0, 2)));
    QCOMPARE(findNext(finder, text, {1, false}, false).match, (TextRange::between(3, 5)));
    QVERIFY(!findNext(finder, text, {7, false}, false).match);
    const FindResult wrapped = findNext(finder, text, {7, false}, true);
    QCOMPARE(wrapped.match, (TextRange::between(0, 2)));
    QVERIFY(wrapped.isWrapped);
    QVERIFY(!findNext(finder, text, {3, false}, true).isWrapped);
    QVERIFY(!findNext(finderOf(plain(u"no"_s)), text, {3, false}, true).match);
}

void TextFinderTest::previous_fromPlaces_findsBehindAndWraps()
{
    const Text text(u"ab ab ab");
    const TextFinder finder = finderOf(plain(u"ab"_s));
    QCOMPARE(findPrevious(finder, text, 8, false).match, (TextRange::between(6, 8)));
    QCOMPARE(findPrevious(finder, text, 7, false).match, (TextRange::between(3, 5)));
    QCOMPARE(findPrevious(finder, text, 3, false).match, (TextRange::between(0, 2)));
    QVERIFY(!findPrevious(finder, text, 0, false).match);
    const FindResult wrapped = findPrevious(finder, text, 0, true);
    QCOMPARE(wrapped.match, (TextRange::between(6, 8)));
    QVERIFY(wrapped.isWrapped);
    const TextFinder ends = finderOf(expression(u"$"_s));
    QCOMPARE(findPrevious(ends, Text(u"a\nb"), 0, true).match, (TextRange::between(3, 3)));
    QCOMPARE(findPrevious(ends, Text(u"a\nb"), 3, true).match, (TextRange::between(1, 1)));
    QVERIFY(!findPrevious(finder, Text(), 0, true).match);
}

void TextFinderTest::previous_farAway_isFoundBlockByBlock()
{
    const Text text(u"needle"_s + QString(300'000, u'x') + u"end"_s);
    QCOMPARE(findPrevious(finderOf(plain(u"needle"_s)), text, text.size(), false).match,
             (TextRange::between(0, 6)));
    QCOMPARE(findPrevious(finderOf(expression(u"ne+dle"_s)), text, text.size(), false).match,
             (TextRange::between(0, 6)));
    // The match starts before a block and ends in it.
    const qint64 start = 100'000 - 32'768 - 3;
    const Text straddling(QString(start, u'x') + u"needle"_s + QString(100'000 - start - 6, u'y'));
    QCOMPARE(findPrevious(finderOf(plain(u"needle"_s)), straddling, 100'000, false).match,
             (TextRange::between(start, start + 6)));
}

void TextFinderTest::step_anyText_looksAtBoundedStretch()
{
    const Text line(QString(1'000'000, u'a'));
    const Text lines(
        QString(1'000'000, u'a').replace(u"aaaaaaaaaaaaaaaa"_s, u"aaaaaaaaaaaaaaa\n"_s));
    for (const Text &text : {line, lines}) {
        for (const FindPattern &pattern :
             {plain(u"b"_s), plain(u"a"_s), expression(u"b"_s), expression(u"a"_s)}) {
            const TextFinder finder = finderOf(pattern);
            TextFinder::Step step;
            int steps = 0;
            while (!step.isAtEnd) {
                const qint64 before = step.next.offset;
                step = finder.step(
                    text, step.next, [](const TextRange &, const QRegularExpressionMatch *) {
                        return true;
                    });
                QVERIFY(step.next.offset > before);
                QVERIFY(step.next.offset - before <= TextFinder::kStepUnits);
                ++steps;
            }
            QVERIFY(steps >= 1'000'000 / TextFinder::kStepUnits);
            QCOMPARE(step.next.offset >= text.size(), true);
        }
    }
}

void TextFinderTest::step_costlyPattern_isCutShort_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<FindPattern>("pattern");
    const QString prose =
        u"The quick brown fox jumps over the lazy dog and runs away\n"_s.repeated(20'000);
    const QString line = QString(prose).replace(u'\n', u' ');
    const QString letters(2'000'000, u'a');
    QTest::newRow("alternatives") << prose << expression(u"(.|\\n)*zzz"_s);
    QTest::newRow("words") << prose << expression(u"(\\w|\\s)+zzz"_s);
    QTest::newRow("lazy") << prose << expression(u"(?s)The.*?zzz"_s);
    QTest::newRow("one line") << line << expression(u"x.*y.*z.*!"_s);
    QTest::newRow("nested") << prose << expression(u"(\\w+\\s*)+;"_s);
    QTest::newRow("long pattern") << letters << plain(u'b' + QString(20'000, u'a'));
    QTest::newRow("ignoring case") << letters << plain(u'b' + QString(20'000, u'a'), false);
    QTest::newRow("words of kana") << QString(1'000'000, u'あ') << word(u"あ"_s);
}

/// The benchmark `costlySteps` measures how long the steps take.
void TextFinderTest::step_costlyPattern_isCutShort()
{
    QFETCH(const QString, text);
    QFETCH(const FindPattern, pattern);
    const TextFinder finder = finderOf(pattern);
    const Text value(text);
    TextFinder::Step step;
    for (int i = 0; i < 4 && !step.isAtEnd && !step.isTooComplex; ++i) {
        const qint64 before = step.next.offset;
        step = finder.step(value,
                           step.next,
                           [](const TextRange &, const QRegularExpressionMatch *) { return true; });
        const qint64 way = step.next.offset - before;
        QVERIFY2(way < TextFinder::kStepUnits / 2, qPrintable(QString::number(way)));
        QVERIFY(way > 0 || step.isTooComplex);
    }
}

void TextFinderTest::search_runawayExpression_isGivenUp()
{
    const Text text(u"The quick brown fox jumps over the lazy dog\n"_s.repeated(30'000));
    const TextFinder finder = finderOf(expression(u"(?s)[a-z].*?zzz"_s));
    QVERIFY(findNext(finder, text, {}, true).isTooComplex);
    FindCount count(finder, text);
    while (count.countStep())
        ;
    QVERIFY(count.progress().isTooComplex);
    bool isAsked = false;
    const auto isCancelled = [&isAsked] { return std::exchange(isAsked, true); };
    QVERIFY(!findNext(finder, text, {}, true, isCancelled).isTooComplex);
}

void TextFinderTest::replacement_groups_areExpanded()
{
    QCOMPARE(replaced(u"k=v a=b"_s, expression(u"(\\w)=(\\w)"_s), u"$2:$1"_s), u"v:k b:a"_s);
    QCOMPARE(replaced(u"ab"_s, expression(u"b"_s), u"[$0$&]"_s), u"a[bb]"_s);
    QCOMPARE(replaced(u"ab"_s, expression(u"b"_s), u"\\n\\t\\r\\\\$$1$7$"_s), u"a\n\t\r\\$1$7$"_s);
    QCOMPARE(replaced(u"b"_s, expression(u"(a)?b"_s), u"<$1>"_s), u"<>"_s);
}

void TextFinderTest::replacement_ofPlainPattern_isLiteral()
{
    QCOMPARE(replaced(u"a.b"_s, plain(u"."_s), u"$0\\n"_s), u"a$0\\nb"_s);
    QCOMPARE(replaced(u"aXa"_s, plain(u"X"_s), {}), u"aa"_s);
}

void TextFinderTest::replaceAll_caret_keepsItsPlace()
{
    const Text text(u"aa bb aa cc");
    const TextFinder finder = finderOf(plain(u"aa"_s));
    const FindReplacement longer(u"xyz"_s, finder);
    const auto caretAfter = [&](qint64 caret) {
        return replaceAllMatches(finder, longer, text, caret).caret;
    };
    QCOMPARE(caretAfter(0), 0);
    QCOMPARE(caretAfter(1), 3);  // Inside a match: after its replacement.
    QCOMPARE(caretAfter(3), 4);  // Before "bb".
    QCOMPARE(caretAfter(6), 7);  // Before the second match.
    QCOMPARE(caretAfter(9), 11); // Before "cc".
    QCOMPARE(caretAfter(11), 13);
}

void TextFinderTest::replaceAll_farMatches_keepsEverythingBetween()
{
    QString string;
    for (int i = 0; i < 20'000; ++i)
        string += u"行%1\r\n"_s.arg(i);
    const QString text = u"針"_s + string + u"針"_s + string + u"針針"_s;
    QString expected = text;
    expected.replace(u"針"_s, u"needle"_s);
    QCOMPARE(replaced(text, plain(u"針"_s), u"needle"_s), expected);
    expected.replace(u"\r\n"_s, u"\n"_s);
    QCOMPARE(replaced(replaced(text, plain(u"針"_s), u"needle"_s), plain(u"\r\n"_s), u"\n"_s),
             expected);
}

void TextFinderTest::replaceAll_emptyMatches_insertsOnce()
{
    QCOMPARE(replaced(u"a\nb"_s, expression(u"^"_s), u"> "_s), u"> a\n> b"_s);
    QCOMPARE(replaced(u"ab"_s, expression(u"x*"_s), u"-"_s), u"-a-b-"_s);
}

void TextFinderTest::count_steps_numbersEachMatch()
{
    QString string;
    for (int i = 0; i < 30'000; ++i)
        string += u"ab漢 "_s;
    FindCount count(finderOf(plain(u"漢"_s)), Text(string));
    int steps = 0;
    while (count.countStep())
        ++steps;
    QVERIFY(steps > 1);
    QVERIFY(count.progress().isComplete);
    QCOMPARE(count.progress().count, 30'000);
    QCOMPARE(count.numberOf({2, 1}), 1);
    QCOMPARE(count.numberOf({4 * 29'999 + 2, 1}), 30'000);
    QCOMPARE(count.numberOf({4 * 20'000 + 2, 1}), 20'001);
    QCOMPARE(count.numberOf({3, 1}), 0);
    QCOMPARE(count.numberOf({2, 2}), 0);
}

void TextFinderTest::count_beforeItCameThere_doesNotKnow()
{
    FindCount count(finderOf(plain(u"a"_s)), Text(QString(200'000, u'a')));
    QVERIFY(!count.numberOf({150'000, 1}).has_value());
    QVERIFY(count.countStep());
    QVERIFY(!count.progress().isComplete);
    QVERIFY(count.progress().count > 10);
    QVERIFY(count.progress().count <= TextFinder::kStepUnits);
    QCOMPARE(count.numberOf({10, 1}), 11);
    QVERIFY(!count.numberOf({150'000, 1}).has_value());
}

void TextFinderTest::count_matchesIn_givesThoseOfTheRange()
{
    QString string;
    for (int i = 0; i < 100'000; ++i)
        string += u"key\n"_s;
    FindCount count(finderOf(expression(u"^k.y"_s)), Text(string));
    const auto check = [&count] {
        const auto marks = count.matchesIn(200'001, 200'015, 100);
        QCOMPARE(marks.front(), (TextRange::between(200'000, 200'003)));
        QCOMPARE(marks.back(), (TextRange::between(200'012, 200'015)));
        QCOMPARE(marks.size(), 4U);
    };
    check(); // No checkpoint is near.
    while (count.countStep()) {
    }
    check();
    QCOMPARE(count.matchesIn(0, 200'000, 100).size(), 100U);
}

QTEST_GUILESS_MAIN(TextFinderTest)
#include "TextFinderTest.moc"
