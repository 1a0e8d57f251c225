#include "find/ExpressionReason.h"
#include "find/FindTestBase.h"

#include <QInputMethodEvent>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of what the bar finds in a shown editor, and of what it displays.
class FindBarSearchTest final : public QObject, private test::FindTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void typing_findsFromTheCaret();
    void typing_withoutMatch_returnsToTheCaret();
    void returnKeys_stepBothWaysAndWrap();
    void wrap_off_staysAtTheEnd();
    void keys_ofTheText_findNextAndPrevious();
    void f3_withBarClosed_repeatsTheSearch();
    void f3_manyAtOnce_takesEveryStep();
    void emptyMatches_areSteppedThrough();
    void switches_changeWhatMatches();
    void count_showsNumberAndTotal();
    void count_followsEdits();
    void count_ofLongText_comesInSlices();
    void error_ofACommonKind_isInTheWording_data();
    void error_ofACommonKind_isInTheWording();
    void error_ofAnotherKind_isThatOfTheLibrary();
    void error_isShownInTheBar();
    void expression_catastrophic_keepsTheWindowAlive();
    void inputMethod_searchesForCommittedText();
    void marks_visibleMatches_areDrawn();
    void closed_whileSearching_isHarmless();
};

void FindBarSearchTest::typing_findsFromTheCaret()
{
    setText(u"cat car cat car"_s);
    view()->setSelectedRange({3, 0});
    open(u"c"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{4, 1}));
    QTest::keyClicks(field(), u"at"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{8, 3}));
    QTest::keyClick(field(), Qt::Key_Backspace);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{4, 2}));
}

void FindBarSearchTest::typing_withoutMatch_returnsToTheCaret()
{
    setText(u"cat car"_s);
    view()->setSelectedRange({2, 0});
    open(u"c"_s);
    QTRY_COMPARE(selected(), u"c"_s);
    QTest::keyClicks(field(), u"x"_s);
    QTRY_COMPARE(count(), u"0 / 0"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{2, 0}));
}

void FindBarSearchTest::returnKeys_stepBothWaysAndWrap()
{
    setText(u"a1 a2 a3"_s);
    open(u"a"_s);
    QTRY_COMPARE(selectionStart(), 0);
    key(Qt::Key_Return);
    QTRY_COMPARE(selectionStart(), 3);
    key(Qt::Key_Enter, Qt::KeypadModifier);
    QTRY_COMPARE(selectionStart(), 6);
    key(Qt::Key_Return);
    QTRY_COMPARE(selectionStart(), 0);
    QTRY_VERIFY(count().startsWith(u'↻'));
    key(Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE(selectionStart(), 6);
    key(Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE(selectionStart(), 3);
    QTRY_COMPARE(count(), u"2 / 3"_s);
    QVERIFY(field()->hasFocus());
}

void FindBarSearchTest::wrap_off_staysAtTheEnd()
{
    setText(u"a1 a2"_s);
    open(u"a"_s);
    click("findWrapAround");
    key(Qt::Key_Return);
    QTRY_COMPARE(selectionStart(), 3);
    key(Qt::Key_Return);
    QTRY_VERIFY(!m_view->textViewRepresentable()->findController()->session()->isSearching());
    QCOMPARE(view()->selectedRange(), (TextRange{3, 1}));
}

void FindBarSearchTest::keys_ofTheText_findNextAndPrevious()
{
    setText(u"a1 a2 a3"_s);
    open(u"a"_s);
    QTRY_COMPARE(selected(), u"a"_s);
    view()->setFocus();
    key(Qt::Key_F3);
    QTRY_COMPARE(selectionStart(), 3);
    key(Qt::Key_G, Qt::ControlModifier);
    QTRY_COMPARE(selectionStart(), 6);
    key(Qt::Key_F3, Qt::ShiftModifier);
    QTRY_COMPARE(selectionStart(), 3);
    key(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_COMPARE(selectionStart(), 0);
    QVERIFY(view()->hasFocus());
}

void FindBarSearchTest::f3_withBarClosed_repeatsTheSearch()
{
    setText(u"a1 a2 a3"_s);
    key(Qt::Key_F3);
    QVERIFY(bar()->isVisible()); // There is no search to repeat.
    open(u"a"_s);
    QTRY_COMPARE(selected(), u"a"_s);
    key(Qt::Key_Escape);
    key(Qt::Key_F3);
    QTRY_COMPARE(selectionStart(), 3);
    QVERIFY(!bar()->isVisible());
}

void FindBarSearchTest::f3_manyAtOnce_takesEveryStep()
{
    const QString gap(300'000, u'x');
    setText(u"a"_s + gap + u"a"_s + gap + u"a"_s + gap + u"a"_s);
    open(u"a"_s);
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_F3);
    QTRY_COMPARE_WITH_TIMEOUT(selectionStart(), 3 * 300'001, test::kLongWait);
}

void FindBarSearchTest::emptyMatches_areSteppedThrough()
{
    setText(u"a\nb\nc"_s);
    open({});
    click("findRegularExpression");
    QTest::keyClicks(field(), u"^"_s);
    QTRY_COMPARE(count(), u"1 / 3"_s);
    key(Qt::Key_Return);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{2, 0}));
    key(Qt::Key_Return);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{4, 0}));
    QTRY_COMPARE(count(), u"3 / 3"_s);
    key(Qt::Key_Return);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{0, 0}));
    key(Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{4, 0}));
}

void FindBarSearchTest::switches_changeWhatMatches()
{
    setText(u"Cat cat category c.t"_s);
    open(u"cat"_s);
    QTRY_COMPARE(count(), u"1 / 3"_s);
    click("findMatchCase");
    QTRY_COMPARE(count(), u"1 / 2"_s);
    click("findWholeWord");
    QTRY_COMPARE(count(), u"1 / 1"_s);
    field()->setText(u"c.t"_s);
    QTRY_COMPARE(selectionStart(), 17);
    click("findRegularExpression");
    QTRY_COMPARE(count(), u"1 / 2"_s);
    QVERIFY(field()->hasFocus());
}

void FindBarSearchTest::count_showsNumberAndTotal()
{
    setText(u"aXaXa"_s);
    open(u""_s);
    QVERIFY(count().isEmpty());
    open(u"a"_s);
    QTRY_COMPARE(count(), u"1 / 3"_s);
    view()->setSelectedRange({1, 0});
    QTRY_COMPARE(count(), u"– / 3"_s);
    view()->setSelectedRange({4, 1});
    QTRY_COMPARE(count(), u"3 / 3"_s);
    field()->clear();
    QVERIFY(count().isEmpty());
}

void FindBarSearchTest::count_followsEdits()
{
    setText(u"a a"_s);
    open(u"a"_s);
    QTRY_COMPARE(count(), u"1 / 2"_s);
    view()->setSelectedRange({3, 0});
    QTest::keyClicks(view(), u"aa"_s);
    QTRY_COMPARE(count(), u"– / 4"_s);
    view()->undo();
    QTRY_COMPARE(count(), u"– / 2"_s);
}

void FindBarSearchTest::count_ofLongText_comesInSlices()
{
    setText(Text(QString(6'000'000, u'a')));
    key(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(), u"aa"_s);
    // Counting does not block: the bar shows the number so far.
    QVERIFY2(!count().endsWith(u" / 3000000"_s), qPrintable(count()));
    QTRY_COMPARE_WITH_TIMEOUT(count(), u"1 / 3000000"_s, test::kLongWait);
    key(Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE_WITH_TIMEOUT(selectionStart(), 5'999'998, test::kLongWait);
    QTRY_COMPARE_WITH_TIMEOUT(count(), u"↻ 3000000 / 3000000"_s, test::kLongWait);
}

void FindBarSearchTest::error_ofACommonKind_isInTheWording_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *pattern, const QString &reason) {
        QTest::newRow(pattern) << QString::fromLatin1(pattern) << reason;
    };
    row("(a", u"( に対応する ) がありません"_s);
    row("(?#a", u"( に対応する ) がありません"_s);
    row("a)", u") に対応する ( がありません"_s);
    row("[a", u"[ に対応する ] がありません"_s);
    row("[b-a]", u"[ ] の範囲の順序が逆です"_s);
    row("[a-\\d]", u"[ ] の範囲が正しくありません"_s);
    row("[[:foo:]]", u"[: :] の使い方が正しくありません"_s);
    row("*a", u"繰り返す対象がありません"_s);
    row("a{2,1}", u"{ } の回数の大小が逆です"_s);
    row("a{99999}", u"{ } の回数が大きすぎます"_s);
    row("a\\", u"\\ の後に文字がありません"_s);
    row("\\j", u"\\ の後の文字が正しくありません"_s);
    row("\\p{Foo}", u"\\p の指定が正しくありません"_s);
    row("\\x{110000}", u"文字コードが正しくありません"_s);
    row("(?<=a*)b", u"後読みの長さが決まらないか、長すぎます"_s);
    row("(?Z)", u"( の後の文字が正しくありません"_s);
    row("(?<1>a)", u"グループの名前が正しくありません"_s);
    row("(?<a>b)(?<a>c)", u"同じ名前のグループがあります"_s);
    row("(?<a>b)\\k<c>", u"その番号や名前のグループはありません"_s);
    row("\\1", u"その番号や名前のグループはありません"_s);
}

void FindBarSearchTest::error_ofACommonKind_isInTheWording()
{
    QFETCH(QString, pattern);
    QFETCH(QString, reason);
    setText(u"a"_s);
    open(u"a"_s);
    click("findRegularExpression");
    field()->setText(pattern);
    const QString shown = label("findError")->text();
    QVERIFY2(shown.endsWith(u": "_s + reason), qPrintable(shown));
}

void FindBarSearchTest::error_ofAnotherKind_isThatOfTheLibrary()
{
    QCOMPARE(textOfExpressionReason(u"an error of a later version"_s),
             u"an error of a later version"_s);
}

void FindBarSearchTest::error_isShownInTheBar()
{
    setText(u"a(b"_s);
    open(u"a("_s);
    QTRY_COMPARE(count(), u"1 / 1"_s);
    QVERIFY(!label("findError")->isVisible());
    click("findRegularExpression");
    QVERIFY(label("findError")->isVisible());
    QCOMPARE(label("findError")->text(),
             u"正規表現の 3 文字目に誤りがあります: ( に対応する ) がありません"_s);
    QVERIFY(count().isEmpty());
    key(Qt::Key_Return); // Nothing can be found; this must not crash.
    QTest::keyClicks(field(), u")"_s);
    QVERIFY(!label("findError")->isVisible());
    QTRY_COMPARE(count(), u"1 / 1"_s);
}

void FindBarSearchTest::expression_catastrophic_keepsTheWindowAlive()
{
    setText(QString(50'000, u'a') + u"!b"_s);
    open({});
    click("findRegularExpression");
    QTest::keyClicks(field(), u"(a+)+[^ab!]"_s);
    QTRY_COMPARE_WITH_TIMEOUT(label("findError")->text(),
                              u"正規表現が複雑すぎるため、検索を中止しました"_s,
                              test::kLongWait);
    field()->setText(u"!b"_s);
    QTRY_COMPARE(count(), u"1 / 1"_s);
    QVERIFY(!label("findError")->isVisible());
}

void FindBarSearchTest::inputMethod_searchesForCommittedText()
{
    setText(u"吾輩は猫である"_s);
    open({});
    QInputMethodEvent composing(u"ねこ"_s, {});
    QCoreApplication::sendEvent(field(), &composing);
    QVERIFY(count().isEmpty());
    QCOMPARE(view()->selectedRange(), (TextRange{0, 0}));
    QInputMethodEvent committing;
    committing.setCommitString(u"猫"_s);
    QCoreApplication::sendEvent(field(), &committing);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{3, 1}));
    QTRY_COMPARE(count(), u"1 / 1"_s);
}

void FindBarSearchTest::marks_visibleMatches_areDrawn()
{
    setText(u"xx cat xx\ncat"_s);
    view()->setSelectedRange({8, 0});
    const auto colorAt = [this](qint64 offset) {
        const QPoint place = view()->caretRectAt(offset).topLeft().toPoint() + QPoint(3, 3);
        return view()->viewport()->grab().toImage().pixelColor(place);
    };
    const QColor plain = colorAt(3);
    QCOMPARE(plain, colorAt(0));
    open(u"cat"_s);
    QTRY_COMPARE(selectionStart(), 10);
    QTRY_VERIFY(colorAt(3) != plain);
    QVERIFY(colorAt(10) != plain);
    QVERIFY(colorAt(10) != colorAt(3)); // Selected and not only marked.
    QCOMPARE(colorAt(0), plain);
    key(Qt::Key_Escape);
    QTRY_COMPARE(colorAt(3), plain);
}

void FindBarSearchTest::closed_whileSearching_isHarmless()
{
    setText(Text(QString(3'000'000, u'a')));
    open(u"ab"_s, Qt::Key_H);
    m_view.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_document->contentString().size(), 3'000'000);
}

QTEST_MAIN(FindBarSearchTest)
#include "FindBarSearchTest.moc"
