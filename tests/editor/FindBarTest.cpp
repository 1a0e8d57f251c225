#include "editor/FindBar.h"

#include "editor/FindController.h"
#include "editor/MainEditorView.h"
#include "editor/TextView.h"
#include "editor/TextViewRepresentable.h"
#include "platform/NotificationCenter.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

using namespace penwick;
using namespace Qt::StringLiterals;

/// The bar in a shown editor, driven by the keys of a person.
class FindBarTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void ctrlF_opensTheBarAndEscapeReturns();
    void ctrlF_takesTheSelectionAsPattern();
    void ctrlF_withSelectionOfLines_keepsThePattern();
    void ctrlF_asExpression_escapesTheSelection();
    void ctrlH_showsTheReplaceRow();
    void escape_inTheText_closesTheBarBeforeTheMessage();
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
    void error_isShownInTheBar();
    void expression_catastrophic_keepsTheWindowAlive();
    void inputMethod_searchesForCommittedText();
    void replace_replacesTheMatchAndFindsTheNext();
    void replaceAll_isOneUndoStep();
    void replaceAll_manyMatches_isOneUndoStep();
    void replaceAll_editedMeanwhile_isDropped();
    void wording_changed_relabels();
    void marks_visibleMatches_areDrawn();
    void bar_narrow_keepsItsParts();
    void bar_darkPalette_isLegible();
    void tab_walksThroughTheBar();
    void closed_whileSearching_isHarmless();
    void keys_ofAPartOfTheWindow_workInItOnly();

private:
    void setText(const QString &text);
    void setText(const Text &text);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    void open(const QString &pattern, Qt::Key key = Qt::Key_F);

    [[nodiscard]] TextView *view() const { return m_view->textView(); }

    [[nodiscard]] FindBar *bar() const { return m_view->textViewRepresentable()->findBar(); }

    [[nodiscard]] QString selected() const;

    [[nodiscard]] QString text() const { return view()->string().toString(); }

    [[nodiscard]] qint64 selectionStart() const { return view()->selectedRange().location; }

    [[nodiscard]] QLineEdit *field(const char *name = "findField") const
    {
        return bar()->findChild<QLineEdit *>(QString::fromLatin1(name));
    }

    [[nodiscard]] QLabel *label(const char *name) const
    {
        return bar()->findChild<QLabel *>(QString::fromLatin1(name));
    }

    [[nodiscard]] QToolButton *button(const char *name) const
    {
        return bar()->findChild<QToolButton *>(QString::fromLatin1(name));
    }

    [[nodiscard]] QString count() const { return label("findCount")->text(); }

    void click(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }

    std::unique_ptr<DocumentState> m_state;
    std::unique_ptr<TextDocument> m_document;
    std::unique_ptr<MainEditorView> m_view;
};

void FindBarTest::init()
{
    m_state = std::make_unique<DocumentState>();
    m_document = std::make_unique<TextDocument>();
    m_view = std::make_unique<MainEditorView>(m_state.get(), m_document.get());
    m_view->resize(600, 400);
    m_view->show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    QTRY_VERIFY(view()->hasFocus());
}

void FindBarTest::cleanup()
{
    m_view.reset();
    m_document.reset();
    m_state.reset();
    wording::setActiveValues(std::nullopt);
}

void FindBarTest::setText(const QString &text)
{
    setText(Text(text));
}

void FindBarTest::setText(const Text &text)
{
    m_document->setContentString(text);
    m_state->setText(text);
    QTRY_VERIFY(view()->string() == text);
}

/// To whatever has the keyboard.
void FindBarTest::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_view->window()->windowHandle(), key, modifiers);
}

void FindBarTest::open(const QString &pattern, Qt::Key opening)
{
    key(opening, Qt::ControlModifier);
    QTRY_VERIFY(field()->hasFocus());
    field()->clear();
    QTest::keyClicks(field(), pattern);
}

QString FindBarTest::selected() const
{
    const TextRange range = view()->selectedRange();
    return view()->string().slice(range.location, range.length);
}

void FindBarTest::ctrlF_opensTheBarAndEscapeReturns()
{
    QVERIFY(!bar()->isVisible());
    key(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(bar()->isVisible());
    QVERIFY(field()->hasFocus());
    QVERIFY(!field("replaceField")->isVisible());
    key(Qt::Key_Escape);
    QVERIFY(!bar()->isVisible());
    QVERIFY(view()->hasFocus());
}

void FindBarTest::ctrlF_takesTheSelectionAsPattern()
{
    setText(u"one two one two"_s);
    view()->setSelectedRange({8, 3});
    key(Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(field()->text(), u"one"_s);
    QCOMPARE(field()->selectedText(), u"one"_s);
    QTRY_COMPARE(count(), u"2 / 2"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{8, 3}));
}

void FindBarTest::ctrlF_withSelectionOfLines_keepsThePattern()
{
    setText(u"one\r\ntwo"_s);
    open(u"tw"_s);
    key(Qt::Key_Escape);
    view()->selectAll();
    key(Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(field()->text(), u"tw"_s);
    QCOMPARE(view()->selectedRange(), (TextRange{0, 8}));
}

void FindBarTest::ctrlF_asExpression_escapesTheSelection()
{
    setText(u"axb a.b"_s);
    open({});
    click("findRegularExpression");
    key(Qt::Key_Escape);
    view()->setSelectedRange({4, 3});
    key(Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(field()->text(), u"a\\.b"_s);
    QTRY_COMPARE(count(), u"1 / 1"_s);
}

void FindBarTest::ctrlH_showsTheReplaceRow()
{
    key(Qt::Key_H, Qt::ControlModifier);
    QVERIFY(field()->hasFocus());
    QVERIFY(field("replaceField")->isVisible());
    key(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(!field("replaceField")->isVisible());
    key(Qt::Key_H, Qt::ControlModifier);
    field("replaceField")->setFocus();
    key(Qt::Key_Escape);
    QVERIFY(!bar()->isVisible());
    QVERIFY(view()->hasFocus());
}

void FindBarTest::escape_inTheText_closesTheBarBeforeTheMessage()
{
    m_state->setMacroNotificationMessage(u"完了"_s);
    key(Qt::Key_F, Qt::ControlModifier);
    view()->setFocus();
    key(Qt::Key_Escape);
    QVERIFY(!bar()->isVisible());
    QVERIFY(m_state->macroNotificationMessage().has_value());
    key(Qt::Key_Escape);
    QVERIFY(!m_state->macroNotificationMessage().has_value());
}

void FindBarTest::typing_findsFromTheCaret()
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

void FindBarTest::typing_withoutMatch_returnsToTheCaret()
{
    setText(u"cat car"_s);
    view()->setSelectedRange({2, 0});
    open(u"c"_s);
    QTRY_COMPARE(selected(), u"c"_s);
    QTest::keyClicks(field(), u"x"_s);
    QTRY_COMPARE(count(), u"0 / 0"_s);
    QTRY_COMPARE(view()->selectedRange(), (TextRange{2, 0}));
}

void FindBarTest::returnKeys_stepBothWaysAndWrap()
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

void FindBarTest::wrap_off_staysAtTheEnd()
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

void FindBarTest::keys_ofTheText_findNextAndPrevious()
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

void FindBarTest::f3_withBarClosed_repeatsTheSearch()
{
    setText(u"a1 a2 a3"_s);
    key(Qt::Key_F3);
    QVERIFY(bar()->isVisible()); // There is nothing to repeat.
    open(u"a"_s);
    QTRY_COMPARE(selected(), u"a"_s);
    key(Qt::Key_Escape);
    key(Qt::Key_F3);
    QTRY_COMPARE(selectionStart(), 3);
    QVERIFY(!bar()->isVisible());
}

void FindBarTest::f3_manyAtOnce_takesEveryStep()
{
    const QString gap(300'000, u'x');
    setText(u"a"_s + gap + u"a"_s + gap + u"a"_s + gap + u"a"_s);
    open(u"a"_s);
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_F3);
    QTRY_COMPARE(selectionStart(), 3 * 300'001);
}

void FindBarTest::emptyMatches_areSteppedThrough()
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

void FindBarTest::switches_changeWhatMatches()
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

void FindBarTest::count_showsNumberAndTotal()
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

void FindBarTest::count_followsEdits()
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

void FindBarTest::count_ofLongText_comesInSlices()
{
    setText(Text(QString(6'000'000, u'a')));
    key(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(), u"aa"_s);
    // It has not waited for ten million matches: a part of them is shown.
    QVERIFY2(!count().endsWith(u" / 3000000"_s), qPrintable(count()));
    QTRY_COMPARE_WITH_TIMEOUT(count(), u"1 / 3000000"_s, 60'000);
    key(Qt::Key_Return, Qt::ShiftModifier);
    QTRY_COMPARE(selectionStart(), 5'999'998);
    QTRY_COMPARE(count(), u"↻ 3000000 / 3000000"_s);
}

void FindBarTest::error_isShownInTheBar()
{
    setText(u"a(b"_s);
    open(u"a("_s);
    QTRY_COMPARE(count(), u"1 / 1"_s);
    QVERIFY(!label("findError")->isVisible());
    click("findRegularExpression");
    QVERIFY(label("findError")->isVisible());
    QVERIFY(label("findError")->text().startsWith(u"正規表現の 3 文字目に誤りがあります: "_s));
    QVERIFY(count().isEmpty());
    key(Qt::Key_Return); // Nothing to be found, and nothing breaks.
    QTest::keyClicks(field(), u")"_s);
    QVERIFY(!label("findError")->isVisible());
    QTRY_COMPARE(count(), u"1 / 1"_s);
}

void FindBarTest::expression_catastrophic_keepsTheWindowAlive()
{
    setText(QString(50'000, u'a') + u"!b"_s);
    open({});
    click("findRegularExpression");
    QTest::keyClicks(field(), u"(a+)+[^ab!]"_s);
    QTRY_COMPARE(label("findError")->text(), u"正規表現が複雑すぎるため、検索を中止しました"_s);
    field()->setText(u"!b"_s);
    QTRY_COMPARE(count(), u"1 / 1"_s);
    QVERIFY(!label("findError")->isVisible());
}

void FindBarTest::inputMethod_searchesForCommittedText()
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

void FindBarTest::replace_replacesTheMatchAndFindsTheNext()
{
    setText(u"k1 k2 k3"_s);
    open({}, Qt::Key_H);
    click("findRegularExpression");
    QTest::keyClicks(field(), u"k(\\d)"_s);
    QTRY_COMPARE(selected(), u"k1"_s);
    field("replaceField")->setFocus();
    QTest::keyClicks(field("replaceField"), u"<$1>"_s);
    key(Qt::Key_Return);
    QTRY_COMPARE(text(), u"<1> k2 k3"_s);
    QTRY_COMPARE(selected(), u"k2"_s);
    click("replaceOne");
    QTRY_COMPARE(text(), u"<1> <2> k3"_s);
    // A selection that is no match is not replaced.
    view()->setSelectedRange({0, 3});
    click("replaceOne");
    QTRY_COMPARE(selected(), u"k3"_s);
    QCOMPARE(text(), u"<1> <2> k3"_s);
    view()->undo();
    QCOMPARE(text(), u"<1> k2 k3"_s);
}

void FindBarTest::replaceAll_isOneUndoStep()
{
    setText(u"cat Cat\r\ncat"_s);
    view()->setSelectedRange({4, 0});
    open(u"cat"_s, Qt::Key_H);
    field("replaceField")->setText(u"犬"_s);
    click("replaceAll");
    QTRY_COMPARE(text(), u"犬 犬\r\n犬"_s);
    QCOMPARE(label("replaceCount")->text(), u"3 件を置換しました"_s);
    QTRY_COMPARE(count(), u"0 / 0"_s);
    QTRY_COMPARE(m_document->contentString().toString(), u"犬 犬\r\n犬"_s);
    view()->undo();
    QCOMPARE(text(), u"cat Cat\r\ncat"_s);
    QVERIFY(!view()->textStorage()->canUndo());
    view()->redo();
    QCOMPARE(text(), u"犬 犬\r\n犬"_s);
    click("replaceAll");
    QTRY_COMPARE(label("replaceCount")->text(), u"0 件を置換しました"_s);
}

void FindBarTest::replaceAll_manyMatches_isOneUndoStep()
{
    QString before;
    for (int i = 0; i < 200'000; ++i)
        before += u"key 値\n"_s;
    setText(before);
    open(u"key"_s, Qt::Key_H);
    field("replaceField")->setText(u"name"_s);
    click("replaceAll");
    QTRY_COMPARE_WITH_TIMEOUT(label("replaceCount")->text(), u"200000 件を置換しました"_s, 60'000);
    QVERIFY(text() == QString(before).replace(u"key"_s, u"name"_s));
    view()->undo();
    QVERIFY(text() == before);
    QVERIFY(!view()->textStorage()->canUndo());
}

void FindBarTest::replaceAll_editedMeanwhile_isDropped()
{
    setText(Text(QString(3'000'000, u'a')));
    open(u"a"_s, Qt::Key_H);
    field("replaceField")->setText(u"b"_s);
    click("replaceAll");
    QCOMPARE(label("replaceCount")->text(), u"置換しています…"_s);
    view()->setSelectedRange({0, 0});
    QTest::keyClicks(view(), u"x"_s);
    QVERIFY(label("replaceCount")->text().isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(count(), u"– / 3000000"_s, 60'000);
    QCOMPARE(view()->string().slice(0, 4), u"xaaa"_s);
}

void FindBarTest::wording_changed_relabels()
{
    setText(u"a"_s);
    open(u"("_s, Qt::Key_H);
    click("findRegularExpression");
    QCOMPARE(field()->placeholderText(), u"検索"_s);
    QCOMPARE(button("replaceOne")->text(), u"置換"_s);
    wording::setActiveValues(
        QHash<QString, QString>{{u"menu.edit.find"_s, u"Find"_s},
                                {u"menu.edit.replace"_s, u"Replace"_s},
                                {u"editor.find.replaceAll"_s, u"Replace All"_s},
                                {u"editor.find.next"_s, u"Next"_s},
                                {u"editor.find.wholeWordFace"_s, u"W"_s},
                                {u"editor.find.invalidExpression"_s, u"At %1: %2"_s}});
    NotificationCenter::defaultCenter().post(UIWordingProfileDidChange);
    QCOMPARE(field()->placeholderText(), u"Find"_s);
    QCOMPARE(field()->accessibleName(), u"Find"_s);
    QCOMPARE(field("replaceField")->placeholderText(), u"Replace"_s);
    QCOMPARE(button("replaceOne")->text(), u"Replace"_s);
    QCOMPARE(button("replaceAll")->text(), u"Replace All"_s);
    QCOMPARE(button("findNext")->toolTip(), u"Next"_s);
    QCOMPARE(button("findWholeWord")->text(), u"W"_s);
    QVERIFY(label("findError")->text().startsWith(u"At 2: "_s));
}

void FindBarTest::marks_visibleMatches_areDrawn()
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
    QVERIFY(colorAt(10) != colorAt(3)); // Selected, not only marked.
    QCOMPARE(colorAt(0), plain);
    key(Qt::Key_Escape);
    QTRY_COMPARE(colorAt(3), plain);
}

void FindBarTest::bar_narrow_keepsItsParts()
{
    open(u"x"_s, Qt::Key_H);
    m_view->resize(520, 360);
    QTRY_COMPARE(bar()->width(), 520);
    QVERIFY(bar()->minimumSizeHint().width() <= 520);
    for (const char *name : {"findPrevious", "findNext", "findClose", "replaceAll"}) {
        const QRect place(button(name)->mapTo(bar(), QPoint()), button(name)->size());
        QVERIFY2(bar()->rect().contains(place), name);
    }
    QVERIFY(field()->width() >= 100);
    QCOMPARE(field()->width(), field("replaceField")->width());
}

void FindBarTest::bar_darkPalette_isLegible()
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(30, 30, 30));
    dark.setColor(QPalette::Base, QColor(20, 20, 20));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    m_view->setPalette(dark);
    open(u"x"_s);
    QTRY_COMPARE(count(), u"0 / 0"_s);
    QVERIFY(label("findCount")->palette().color(QPalette::WindowText).lightness() > 128);
    QVERIFY(label("findError")->palette().color(QPalette::WindowText).lightness() > 128);
}

void FindBarTest::tab_walksThroughTheBar()
{
    open(u"x"_s, Qt::Key_H);
    key(Qt::Key_Tab);
    QVERIFY(field("replaceField")->hasFocus());
    key(Qt::Key_Tab, Qt::ShiftModifier);
    QVERIFY(field()->hasFocus());
    for (int i = 0; i < 10; ++i)
        key(Qt::Key_Tab);
    QVERIFY(button("findClose")->hasFocus());
    key(Qt::Key_Escape);
    QVERIFY(view()->hasFocus());
}

void FindBarTest::closed_whileSearching_isHarmless()
{
    setText(Text(QString(3'000'000, u'a')));
    open(u"ab"_s, Qt::Key_H);
    m_view.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_document->contentString().size(), 3'000'000);
}

void FindBarTest::keys_ofAPartOfTheWindow_workInItOnly()
{
    TextStorage storage;
    QWidget window;
    QWidget part(&window);
    QLineEdit field(&window);
    TextView text(&storage, &part);
    FindBar bar(&part);
    bar.hide();
    FindController controller(&text, &bar, &part, Qt::WidgetWithChildrenShortcut);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_F, Qt::ControlModifier);
    QVERIFY(bar.isHidden());
    text.setFocus();
    QTest::keyClick(&text, Qt::Key_F, Qt::ControlModifier);
    QVERIFY(!bar.isHidden());
}

QTEST_MAIN(FindBarTest)
#include "FindBarTest.moc"
