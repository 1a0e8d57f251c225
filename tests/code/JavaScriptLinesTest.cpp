#include "code/JavaScriptLines.h"

#include <QTest>

#include <algorithm>
#include <random>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// Editable lines, and the cached states of them.
struct Script
{
    QStringList lines;
    JavaScriptLines states{[this](qint64 line) { return lines[line]; }};

    /// Replaces `count` lines from `first` by `inserted`.
    void replace(qsizetype first, qsizetype count, const QStringList &inserted)
    {
        lines = lines.mid(0, first) + inserted + lines.mid(first + count);
        states.linesChanged(first, count, inserted.size());
    }

    /// The state at the start of a line, computed from the first line.
    [[nodiscard]] JavaScriptState fromTheStart(qsizetype line) const
    {
        JavaScriptState state;
        for (qsizetype i = 0; i < line; ++i)
            static_cast<void>(tokenizeJavaScript(lines[i], state));
        return state;
    }
};

QStringList manyLines(qsizetype count)
{
    return QStringList(count, u"const a = f(`b ${c} d`, /e/);\n"_s);
}

} // namespace

class JavaScriptLinesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomEdits_agreeWithReadingFromTheStart();
    void equalStates_haveOneNumber();
    void keystroke_readsItsLineOnly();
    void openedComment_isReadAsFarAsAskedOnly();
    void closedComment_endsWhereTheStateAgrees();
    void newLine_leavesTheLinesBelowAlone();
    void reset_startsAnew();
};

void JavaScriptLinesTest::randomEdits_agreeWithReadingFromTheStart()
{
    const QStringList pieces{u"a\n"_s,
                             u"/*\n"_s,
                             u"*/\n"_s,
                             u"`\n"_s,
                             u"${\n"_s,
                             u"}\n"_s,
                             u"{\n"_s,
                             u"'b\\\n"_s,
                             u"c'\n"_s,
                             u"if (\n"_s,
                             u")\n"_s,
                             u"// d\n"_s,
                             u"/ e /\n"_s,
                             u"\n"_s,
                             u"return\n"_s};
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](qsizetype limit) {
            return static_cast<qsizetype>(random() % static_cast<unsigned>(limit));
        };
        Script script;
        for (int i = 0; i < 30; ++i)
            script.lines.append(pieces[below(pieces.size())]);
        for (int step = 0; step < 60; ++step) {
            const qsizetype first = below(script.lines.size());
            const qsizetype most = std::min<qsizetype>(4, script.lines.size() - first);
            QStringList inserted;
            for (qsizetype i = below(4); i >= 0; --i)
                inserted.append(pieces[below(pieces.size())]);
            script.replace(first, 1 + below(most), inserted);
            // Queries do not follow every edit, so that several edits are pending.
            for (qsizetype asked = below(3); asked > 0; --asked) {
                const qsizetype line = below(script.lines.size());
                QVERIFY2(script.states.stateAt(line) == script.fromTheStart(line),
                         qPrintable(u"seed %1 step %2 line %3"_s.arg(seed).arg(step).arg(line)));
            }
        }
    }
}

void JavaScriptLinesTest::equalStates_haveOneNumber()
{
    Script script{{u"a;\n"_s, u"b;\n"_s, u"/*\n"_s, u"*/;\n"_s, u"c"_s}};
    const auto number = [&script](qint64 line) { return script.states.stateNumberAt(line); };
    QCOMPARE(number(1), number(2));
    QVERIFY(number(3) != number(2));
    QCOMPARE(number(4), number(0));
}

void JavaScriptLinesTest::keystroke_readsItsLineOnly()
{
    Script script{manyLines(10'000)};
    static_cast<void>(script.states.stateNumberAt(9'999));
    const qint64 before = script.states.linesRead();
    QCOMPARE(before, 9'999);
    script.replace(50, 1, {u"const ab = f();\n"_s});
    static_cast<void>(script.states.stateNumberAt(9'999));
    QCOMPARE(script.states.linesRead() - before, 1);
}

void JavaScriptLinesTest::openedComment_isReadAsFarAsAskedOnly()
{
    Script script{manyLines(10'000)};
    static_cast<void>(script.states.stateNumberAt(9'999));
    const qint64 before = script.states.linesRead();
    script.replace(50, 1, {u"/*\n"_s});
    QCOMPARE(script.states.stateAt(80).inside, JavaScriptState::Inside::BlockComment);
    QCOMPARE(script.states.linesRead() - before, 30);
}

void JavaScriptLinesTest::closedComment_endsWhereTheStateAgrees()
{
    Script script{manyLines(10'000)};
    static_cast<void>(script.states.stateNumberAt(9'999));
    script.replace(50, 1, {u"/*\n"_s});
    static_cast<void>(script.states.stateNumberAt(80));
    script.replace(50, 1, {u"a;\n"_s});
    const qint64 before = script.states.linesRead();
    QCOMPARE(script.states.stateAt(9'999).inside, JavaScriptState::Inside::Code);
    QVERIFY(script.states.linesRead() - before <= 31);
}

void JavaScriptLinesTest::newLine_leavesTheLinesBelowAlone()
{
    Script script{manyLines(10'000)};
    static_cast<void>(script.states.stateNumberAt(9'999));
    const qint64 before = script.states.linesRead();
    script.replace(50, 1, {u"const a = f(\n"_s, u"/e/);\n"_s});
    static_cast<void>(script.states.stateNumberAt(10'000));
    QCOMPARE(script.states.linesRead() - before, 2);
    script.replace(50, 2, {u"g();\n"_s});
    static_cast<void>(script.states.stateNumberAt(9'999));
    QCOMPARE(script.states.linesRead() - before, 3);
}

void JavaScriptLinesTest::reset_startsAnew()
{
    Script script{{u"/*\n"_s, u"a\n"_s}};
    QCOMPARE(script.states.stateAt(1).inside, JavaScriptState::Inside::BlockComment);
    script.lines = {u"a\n"_s, u"b\n"_s};
    script.states.reset();
    QCOMPARE(script.states.stateAt(1).inside, JavaScriptState::Inside::Code);
}

QTEST_APPLESS_MAIN(JavaScriptLinesTest)

#include "JavaScriptLinesTest.moc"
