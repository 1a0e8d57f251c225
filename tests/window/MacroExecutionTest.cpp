#include "window/MacroExecution.h"

#include "editor/TextDocument.h"
#include "macro/engine/ResultExecution.h"
#include "support/TextModel.h"
#include "view/TextView.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Code = MacroResultError::Code;
using Outcome = tl::expected<void, MacroResultError>;

MacroResult ofEdits(const QList<TextEditInstruction> &edits)
{
    MacroResult result;
    result.textEdits = edits;
    return result;
}

MacroResult randomResult(QRandomGenerator &random)
{
    const auto offset = [&random] { return qint64(random.bounded(40)) - 5; };
    const auto words = [&random] { return test::randomText(random, random.bounded(6)); };
    MacroResult result;
    for (int i = random.bounded(4); i > 0; --i) {
        const qint64 line = random.bounded(3);
        const TextEditInstruction edits[] = {
            ReplaceAll{Text(words())},
            ReplaceSelection{Text(words())},
            InsertAtCursor{Text(words())},
            ReplaceLines{line, line + random.bounded(3), {Text(words()), Text(words())}}};
        result.textEdits << edits[random.bounded(4)];
    }
    if (random.bounded(3) == 0)
        result.cursor = random.bounded(2) == 0
                            ? MacroCursorResult{offset(), std::nullopt, std::nullopt}
                            : MacroCursorResult{std::nullopt, offset(), offset()};
    if (random.bounded(3) == 0)
        result.selection = random.bounded(4) == 0
                               ? MacroSelectionResult(MacroDeselect())
                               : MacroSelectionResult(MacroSelect{offset(), offset()});
    return result;
}

MacroCursorResult cursorAt(qint64 offset)
{
    return {offset, std::nullopt, std::nullopt};
}

} // namespace

class MacroExecutionTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void replaceAll_ofAnyText_replacesItWhole();
    void replaceAll_thenInsert_usesTheSelectionAfterIt();
    void replaceSelection_selected_isReplaced();
    void replaceSelection_goneMeanwhile_failsAndKeepsWhatWasDone();
    void insertAtCursor_withSelection_insertsAfterIt();
    void insertAtCursor_withCaret_insertsThere();
    void replaceLines_inRange_areReplaced_data();
    void replaceLines_inRange_areReplaced();
    void replaceLines_outOfRange_failAndKeepWhatWasDone_data();
    void replaceLines_outOfRange_failAndKeepWhatWasDone();
    void document_afterEachEdit_hasTheText();
    void document_absent_isNoNeed();
    void undo_afterThreeEdits_takesAllBack();
    void undo_afterAFailedEdit_takesTheOthersBack();
    void undo_afterTyping_leavesTheTyping();
    void redo_afterUndo_bringsTextAndCaretBack();
    void cursor_withoutEdits_staysWhereItWas();
    void cursor_request_putsTheCaret_data();
    void cursor_request_putsTheCaret();
    void cursor_withoutOffsetAndPlace_isIgnored();
    void selection_wholeTextReplaced_returnsToItsPlace_data();
    void selection_wholeTextReplaced_returnsToItsPlace();
    void selection_backwards_keepsItsDirection();
    void view_wholeTextReplaced_staysWhereItWas();
    void selection_request_selects_data();
    void selection_request_selects();
    void selection_withCursor_wins();
    void deselect_afterASelection_goesToItsStart();
    void edits_announce_eachChangeOnce();
    void randomResults_inTheViewAndOnAValue_areTheSame();

private:
    void start(const QString &text, TextRange selection = {});
    Outcome apply(const MacroResult &result);

    [[nodiscard]] QString text() const { return m_view->string().toString(); }

    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<TextView> m_view;
};

void MacroExecutionTest::init()
{
    m_document = std::make_unique<TextDocument>();
    m_view = std::make_unique<TextView>(m_document->textStorage());
}

void MacroExecutionTest::cleanup()
{
    m_view.reset();
    m_document.reset();
}

void MacroExecutionTest::start(const QString &text, TextRange selection)
{
    m_view->setString(Text(text));
    m_view->setSelectedRange(selection);
}

Outcome MacroExecutionTest::apply(const MacroResult &result)
{
    return applyMacroResult(result, m_view.get(), m_document.get());
}

void MacroExecutionTest::replaceAll_ofAnyText_replacesItWhole()
{
    start(u"abc"_s, {1, 1});
    QVERIFY(apply(ofEdits({ReplaceAll{Text(u"日本😀"_s)}})).has_value());
    QCOMPARE(text(), u"日本😀"_s);
    QVERIFY(apply(ofEdits({ReplaceAll{Text(QString())}})).has_value());
    QCOMPARE(text(), QString());
}

void MacroExecutionTest::replaceAll_thenInsert_usesTheSelectionAfterIt()
{
    start(u"abc"_s, {1, 1});
    QVERIFY(apply(ofEdits({ReplaceAll{Text(u"xy"_s)}, InsertAtCursor{Text(u"z"_s)}})).has_value());
    QCOMPARE(text(), u"xyz"_s); // Replacing a range that contains the selection moves the caret to
                                // its end.
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 1})); // Where it was at the start.
}

void MacroExecutionTest::replaceSelection_selected_isReplaced()
{
    start(u"abcd"_s, {1, 2});
    QVERIFY(apply(ofEdits({ReplaceSelection{Text(u"XYZ"_s)}})).has_value());
    QCOMPARE(text(), u"aXYZd"_s);
    QCOMPARE(m_view->selectedRange(), (TextRange{4, 0}));
}

void MacroExecutionTest::replaceSelection_goneMeanwhile_failsAndKeepsWhatWasDone()
{
    start(u"abcd"_s, {1, 2});
    const auto outcome = apply(ofEdits({ReplaceSelection{Text(u"X"_s)},
                                        ReplaceSelection{Text(u"Y"_s)},
                                        ReplaceAll{Text(u"Z"_s)}}));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().code, Code::NoSelectionForReplaceSelection);
    QCOMPARE(text(), u"aXd"_s);
    QCOMPARE(m_document->contentString().toString(), u"aXd"_s);
    QVERIFY(!m_document->textStorage()->isGrouping());
}

void MacroExecutionTest::insertAtCursor_withSelection_insertsAfterIt()
{
    start(u"abcd"_s, {1, 2});
    QVERIFY(apply(ofEdits({InsertAtCursor{Text(u"X"_s)}})).has_value());
    QCOMPARE(text(), u"abcXd"_s);
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
}

void MacroExecutionTest::insertAtCursor_withCaret_insertsThere()
{
    start(u"abcd"_s, {2, 0});
    QVERIFY(
        apply(ofEdits({InsertAtCursor{Text(u"X"_s)}, InsertAtCursor{Text(u"Y"_s)}})).has_value());
    QCOMPARE(text(), u"abXYcd"_s);
    QCOMPARE(m_view->selectedRange(), (TextRange{4, 0}));
}

void MacroExecutionTest::replaceLines_inRange_areReplaced_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<qint64>("startLine");
    QTest::addColumn<qint64>("endLine");
    QTest::addColumn<QString>("after");

    QTest::newRow("first") << u"a\nb\nc"_s << qint64{0} << qint64{1} << u"x\nb\nc"_s;
    QTest::newRow("last two") << u"a\nb\nc"_s << qint64{1} << qint64{3} << u"a\nx"_s;
    QTest::newRow("empty last line") << u"a\nb\nc\n"_s << qint64{3} << qint64{4} << u"a\nb\nc\nx"_s;
}

void MacroExecutionTest::replaceLines_inRange_areReplaced()
{
    QFETCH(QString, before);
    QFETCH(qint64, startLine);
    QFETCH(qint64, endLine);
    QFETCH(QString, after);
    start(before, {1, 0});
    QVERIFY(apply(ofEdits({ReplaceLines{startLine, endLine, {Text(u"x")}}})).has_value());
    QCOMPARE(text(), after);
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 0}));
}

void MacroExecutionTest::replaceLines_outOfRange_failAndKeepWhatWasDone_data()
{
    QTest::addColumn<qint64>("startLine");
    QTest::addColumn<qint64>("endLine");

    QTest::newRow("past the end") << qint64{1} << qint64{4};
    QTest::newRow("empty range") << qint64{1} << qint64{1};
}

void MacroExecutionTest::replaceLines_outOfRange_failAndKeepWhatWasDone()
{
    QFETCH(qint64, startLine);
    QFETCH(qint64, endLine);
    start(u"-"_s);
    const auto outcome = apply(
        ofEdits({ReplaceAll{Text(u"a\nb\nc"_s)}, ReplaceLines{startLine, endLine, {Text(u"x")}}}));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error().code, Code::InvalidReplaceLines);
    QCOMPARE(text(), u"a\nb\nc"_s);
    QCOMPARE(m_document->contentString().toString(), u"a\nb\nc"_s);
}

void MacroExecutionTest::document_afterEachEdit_hasTheText()
{
    start(u"a"_s, {1, 0});
    QStringList contents;
    connect(m_document.get(), &TextDocument::contentStringChanged, this, [this, &contents] {
        contents.append(m_document->contentString().toString());
    });
    QVERIFY(
        apply(ofEdits({InsertAtCursor{Text(u"b"_s)}, InsertAtCursor{Text(u"c"_s)}})).has_value());
    QCOMPARE(contents, (QStringList{u"ab"_s, u"abc"_s}));
}

void MacroExecutionTest::document_absent_isNoNeed()
{
    start(u"a"_s);
    QVERIFY(applyMacroResult(ofEdits({ReplaceAll{Text(u"b"_s)}}), m_view.get(), nullptr));
    QCOMPARE(text(), u"b"_s);
}

void MacroExecutionTest::undo_afterThreeEdits_takesAllBack()
{
    start(u"one\ntwo"_s, {1, 2});
    QVERIFY(apply(ofEdits({ReplaceSelection{Text(u"X"_s)},
                           ReplaceLines{1, 2, {Text(u"Y")}},
                           InsertAtCursor{Text(u"Z"_s)}}))
                .has_value());
    QCOMPARE(text(), u"oX\nYZ"_s);
    m_view->undo();
    QCOMPARE(text(), u"one\ntwo"_s);
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
    QVERIFY(!m_document->textStorage()->canUndo());
}

void MacroExecutionTest::undo_afterAFailedEdit_takesTheOthersBack()
{
    start(u"abc"_s);
    QVERIFY(!apply(ofEdits({InsertAtCursor{Text(u"1"_s)},
                            InsertAtCursor{Text(u"2"_s)},
                            ReplaceSelection{Text(u"3"_s)}}))
                 .has_value());
    QCOMPARE(text(), u"12abc"_s);
    m_view->undo();
    QCOMPARE(text(), u"abc"_s);
}

void MacroExecutionTest::undo_afterTyping_leavesTheTyping()
{
    start(u"abc"_s, {3, 0});
    QTest::keyClicks(m_view.get(), u"de"_s);
    QVERIFY(apply(ofEdits({InsertAtCursor{Text(u"!"_s)}})).has_value());
    QTest::keyClicks(m_view.get(), u"f"_s);
    QCOMPARE(text(), u"abcde!f"_s);
    m_view->undo();
    QCOMPARE(text(), u"abcde!"_s);
    m_view->undo();
    QCOMPARE(text(), u"abcde"_s);
    m_view->undo();
    QCOMPARE(text(), u"abc"_s);
}

void MacroExecutionTest::redo_afterUndo_bringsTextAndCaretBack()
{
    start(u"abc"_s, {1, 1});
    MacroResult result = ofEdits({ReplaceAll{Text(u"0123456789"_s)}});
    result.cursor = cursorAt(4);
    QVERIFY(apply(result).has_value());
    m_view->undo();
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 1}));
    m_view->redo();
    QCOMPARE(text(), u"0123456789"_s);
    QCOMPARE(m_view->selectedRange(), (TextRange{4, 0}));
}

void MacroExecutionTest::cursor_withoutEdits_staysWhereItWas()
{
    start(u"abc"_s, {1, 1});
    MacroResult result;
    result.cursor = cursorAt(0);
    result.selection = MacroSelect{0, 3};
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 1}));
    QVERIFY(!m_document->textStorage()->canUndo());
}

void MacroExecutionTest::cursor_request_putsTheCaret_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("offset"); // -9 means none.
    QTest::addColumn<qint64>("line");
    QTest::addColumn<qint64>("column");
    QTest::addColumn<qint64>("caret");

    const auto row = [](const char *name,
                        const QString &text,
                        qint64 offset,
                        qint64 line,
                        qint64 column,
                        qint64 caret) {
        QTest::newRow(name) << text << offset << line << column << caret;
    };
    row("offset", u"0123456789"_s, 4, -9, -9, 4);
    row("offset past the end", u"0123456789"_s, 999, -9, -9, 10);
    row("negative offset", u"0123456789"_s, -3, -9, -9, 0);
    row("offset before line and column", u"a\nbc"_s, 1, 1, 1, 1);
    row("line and column", u"a\nbc"_s, -9, 1, 1, 3);
    row("column past the end", u"a\nbc"_s, -9, 1, 99, 4);
    row("line past the end", u"a\nbc"_s, -9, 7, 0, 4);
    row("negative column", u"a\nbc"_s, -9, 1, -2, 2);
    row("clusters taken for units", u"😀x"_s, -9, 0, 2, 2);
}

void MacroExecutionTest::cursor_request_putsTheCaret()
{
    QFETCH(QString, text);
    QFETCH(qint64, offset);
    QFETCH(qint64, line);
    QFETCH(qint64, column);
    QFETCH(qint64, caret);
    const auto given = [](qint64 value) {
        return value == -9 ? std::nullopt : std::optional(value);
    };
    start(u"-"_s);
    MacroResult result = ofEdits({ReplaceAll{Text(text)}});
    result.cursor = MacroCursorResult{given(offset), given(line), given(column)};
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{caret, 0}));
}

void MacroExecutionTest::cursor_withoutOffsetAndPlace_isIgnored()
{
    start(u"abcd"_s, {1, 2});
    MacroResult result = ofEdits({InsertAtCursor{Text(u"X"_s)}});
    result.cursor = MacroCursorResult{std::nullopt, 0, std::nullopt};
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
}

void MacroExecutionTest::selection_wholeTextReplaced_returnsToItsPlace_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TextRange>("selection");
    QTest::addColumn<QList<TextEditInstruction>>("edits");
    QTest::addColumn<TextRange>("expected");
    const auto row = [](const char *name,
                        const QString &text,
                        TextRange selection,
                        const QList<TextEditInstruction> &edits,
                        TextRange expected) {
        QTest::newRow(name) << text << selection << edits << expected;
    };
    const QString text = u"abcd\nefgh\nijkl"_s;
    row("caret", text, {7, 0}, {ReplaceAll{Text(u"12\n345\n6"_s)}}, {5, 0});
    row("shorter line", text, {9, 0}, {ReplaceAll{Text(u"12\n345\n6"_s)}}, {6, 0});
    row("line missing", text, {12, 0}, {ReplaceAll{Text(u"12\n345"_s)}}, {6, 0});
    row("empty", text, {12, 2}, {ReplaceAll{Text(QString())}}, {0, 0});
    row("selection", text, {2, 5}, {ReplaceAll{Text(u"12345\n6789\n"_s)}}, {2, 6});
    row("lines", text, {11, 2}, {ReplaceLines{0, 1, {Text(u"0"), Text(u"1")}}}, {5, 2});
    row("cluster", u"ab"_s, {1, 0}, {ReplaceAll{Text(u"😀"_s)}}, {0, 0});
    row("edit after it",
        text,
        {7, 0},
        {ReplaceAll{Text(u"1\n234"_s)}, InsertAtCursor{Text(u"5"_s)}},
        {4, 0});
    row("a later edit fails",
        text,
        {7, 0},
        {ReplaceAll{Text(u"1\n234"_s)}, ReplaceSelection{}},
        {4, 0});
}

void MacroExecutionTest::selection_wholeTextReplaced_returnsToItsPlace()
{
    QFETCH(QString, text);
    QFETCH(TextRange, selection);
    QFETCH(QList<TextEditInstruction>, edits);
    start(text, selection);
    const Outcome outcome = apply(ofEdits(edits));
    QTEST(m_view->selectedRange(), "expected");
    Q_UNUSED(outcome);
    m_view->undo();
    QCOMPARE(m_view->selectedRange(), selection);
    m_view->redo();
    QTEST(m_view->selectedRange(), "expected");
}

void MacroExecutionTest::selection_backwards_keepsItsDirection()
{
    start(u"abcd\nefgh"_s);
    m_view->setSelectedRange({7, 0});
    QTest::keyClick(m_view.get(), Qt::Key_Up, Qt::ShiftModifier);
    QVERIFY(apply(ofEdits({ReplaceAll{Text(u"12345\n6789"_s)}})).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{2, 6}));
    QCOMPARE(m_view->caretOffset(), 2);
}

void MacroExecutionTest::view_wholeTextReplaced_staysWhereItWas()
{
    QString lines;
    for (int i = 0; i < 500; ++i)
        lines += u"line %1  \n"_s.arg(i);
    start(lines);
    m_view->resize(400, 300);
    m_view->show();
    const qint64 middle = m_view->string().offsetAfterLineBreak(250);
    m_view->setSelectedRange({middle, 0});
    const std::vector<TextView::VisibleLine> before = m_view->visibleLines();
    QVERIFY(apply(ofEdits({ReplaceAll{Text(lines.remove(u"  "_s))}})).has_value());
    QCOMPARE(m_view->visibleLines().front().number, before.front().number);
    QCOMPARE(m_view->visibleLines().front().top, before.front().top);
    QTest::keyClick(m_view.get(), Qt::Key_X);
    QVERIFY(text().contains(u"\nxline 250\n"_s));
    QCOMPARE(m_view->visibleLines().front().number, before.front().number);
}

void MacroExecutionTest::selection_request_selects_data()
{
    QTest::addColumn<qint64>("startOffset");
    QTest::addColumn<qint64>("endOffset");
    QTest::addColumn<qint64>("location");
    QTest::addColumn<qint64>("length");

    const auto row =
        [](const char *name, qint64 start, qint64 end, qint64 location, qint64 length) {
            QTest::newRow(name) << start << end << location << length;
        };
    // Before the edit, the caret is at the end of ten code units.
    row("inside", 2, 5, 2, 3);
    row("backwards changes nothing", 5, 2, 10, 0);
    row("past the end", 2, 999, 2, 8);
    row("both past the end", 50, 60, 10, 0);
    row("start past the end only", 50, 20, 10, 0);
    row("negative start", -4, 3, 0, 3);
    row("both negative change nothing", -4, -2, 10, 0);
    row("empty", 3, 3, 3, 0);
}

void MacroExecutionTest::selection_request_selects()
{
    QFETCH(qint64, startOffset);
    QFETCH(qint64, endOffset);
    QFETCH(qint64, location);
    QFETCH(qint64, length);
    start(u"-"_s);
    MacroResult result = ofEdits({ReplaceAll{Text(u"0123456789"_s)}});
    result.selection = MacroSelect{startOffset, endOffset};
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{location, length}));
}

void MacroExecutionTest::selection_withCursor_wins()
{
    start(u"-"_s);
    MacroResult result = ofEdits({ReplaceAll{Text(u"0123456789"_s)}});
    result.cursor = cursorAt(7);
    result.selection = MacroSelect{1, 3};
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 2}));
}

void MacroExecutionTest::deselect_afterASelection_goesToItsStart()
{
    start(u"abcd"_s, {1, 2});
    MacroResult result = ofEdits({InsertAtCursor{Text(u"X"_s)}});
    result.selection = MacroDeselect();
    QVERIFY(apply(result).has_value());
    QCOMPARE(m_view->selectedRange(), (TextRange{1, 0}));
}

void MacroExecutionTest::edits_announce_eachChangeOnce()
{
    start(u"abcd"_s);
    const QSignalSpy changes(m_view.get(), &TextView::textDidChange);
    QVERIFY(apply(ofEdits({ReplaceAll{Text(u"x"_s)}, InsertAtCursor{Text(u"y"_s)}})).has_value());
    QCOMPARE(changes.count(), 2);
}

void MacroExecutionTest::randomResults_inTheViewAndOnAValue_areTheSame()
{
    QRandomGenerator random(20'261'122);
    int failed = 0;
    for (int i = 0; i < 2000; ++i) {
        const QString before = test::randomText(random, random.bounded(20));
        const qint64 location = random.bounded(before.size() + 1);
        start(before, {location, random.bounded(before.size() - location + 1)});
        const MacroResult result = randomResult(random);
        const ExecutedResult executed = executeMacroResult(
            result, {m_view->string(), m_view->anchorOffset(), m_view->caretOffset()});
        const Outcome applied = apply(result);
        QCOMPARE(text(), executed.state.text.toString());
        QCOMPARE(m_view->selectedRange(), executed.state.selection());
        QCOMPARE(m_view->caretOffset(), executed.state.caret);
        QCOMPARE(!applied, executed.error.has_value());
        failed += applied ? 0 : 1;
    }
    QVERIFY(failed > 100 && failed < 1900);
}

} // namespace penwick

QTEST_MAIN(penwick::MacroExecutionTest)
#include "MacroExecutionTest.moc"
