#include "find/FindBar.h"

#include "find/FindTestBase.h"
#include "platform/settings/NotificationCenter.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QMenu>
#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of how the bar of a shown editor opens, looks and replaces, driven by keys.
class FindBarTest final : public QObject, private test::FindTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup();
    void ctrlF_opensTheBarAndEscapeReturns();
    void ctrlF_takesTheSelectionAsPattern();
    void ctrlF_withSelectionOfLines_keepsThePattern();
    void ctrlF_asExpression_escapesTheSelection();
    void ctrlH_showsTheReplaceRow();
    void escape_inTheText_closesTheBarBeforeTheMessage();
    void replace_replacesTheMatchAndFindsTheNext();
    void replaceAll_isOneUndoStep();
    void replaceAll_manyMatches_isOneUndoStep();
    void replaceAll_editedMeanwhile_isDropped();
    void wording_changed_relabels();
    void toolTips_nameTheKeys();
    void contextMenu_opensTheBar_data();
    void contextMenu_opensTheBar();
    void longWordings_leaveRoomForTheField();
    void bar_narrow_keepsItsParts();
    void bar_darkPalette_isLegible();
    void tab_walksThroughTheBar();
    void keys_ofAPartOfTheWindow_workInItOnly();
};

void FindBarTest::cleanup()
{
    end();
    wording::setActiveValues(std::nullopt);
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
    QTRY_COMPARE_WITH_TIMEOUT(
        label("replaceCount")->text(), u"200000 件を置換しました"_s, test::kLongWait);
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
    QTRY_COMPARE_WITH_TIMEOUT(count(), u"– / 3000000"_s, test::kLongWait);
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
                                {u"editor.find.error.openGroup"_s, u"open"_s},
                                {u"editor.find.invalidExpression"_s, u"At %1: %2"_s}});
    NotificationCenter::defaultCenter().post(UIWordingProfileDidChange);
    QCOMPARE(field()->placeholderText(), u"Find"_s);
    QCOMPARE(field()->accessibleName(), u"Find"_s);
    QCOMPARE(field("replaceField")->placeholderText(), u"Replace"_s);
    QCOMPARE(button("replaceOne")->text(), u"Replace"_s);
    QCOMPARE(button("replaceAll")->text(), u"Replace All"_s);
    QCOMPARE(button("findNext")->toolTip(), u"Next (F3)"_s);
    QCOMPARE(button("findNext")->accessibleName(), u"Next"_s);
    QCOMPARE(button("findWholeWord")->text(), u"W"_s);
    QCOMPARE(label("findError")->text(), u"At 2: open"_s);
}

void FindBarTest::toolTips_nameTheKeys()
{
    open(u"x"_s, Qt::Key_H);
    QCOMPARE(field()->toolTip(), u"検索 (Ctrl+F)"_s);
    QCOMPARE(field("replaceField")->toolTip(), u"置換 (Ctrl+H)"_s);
    QCOMPARE(button("findNext")->toolTip(), u"次を検索 (F3)"_s);
    QCOMPARE(button("findPrevious")->toolTip(), u"前を検索 (Shift+F3)"_s);
    QCOMPARE(button("findClose")->toolTip(), u"検索を閉じる (Esc)"_s);
    QCOMPARE(button("replaceOne")->toolTip(), u"置換 (Enter)"_s);
    QCOMPARE(button("findMatchCase")->toolTip(), u"大文字と小文字を区別"_s);
}

void FindBarTest::contextMenu_opensTheBar_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("showsReplacement");
    QTest::newRow("find") << u"検索\tCtrl+F"_s << false;
    QTest::newRow("replace") << u"置換\tCtrl+H"_s << true;
}

void FindBarTest::contextMenu_opensTheBar()
{
    QFETCH(const QString, entry);
    QFETCH(const bool, showsReplacement);
    setText(u"one two"_s);
    view()->setSelectedRange({4, 3});
    key(Qt::Key_F10, Qt::ShiftModifier);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu != nullptr);
    const QList<QAction *> actions = menu->actions();
    const auto place = std::find_if(actions.begin(), actions.end(), [&](const QAction *action) {
        return action->text() == entry;
    });
    QVERIFY(place != actions.end());
    (*place)->trigger();
    menu->close();
    QVERIFY(bar()->isVisible());
    QCOMPARE(field()->text(), u"two"_s);
    QCOMPARE(field("replaceField")->isVisible(), showsReplacement);
    QTRY_VERIFY(field()->hasFocus());
}

void FindBarTest::longWordings_leaveRoomForTheField()
{
    const QString text = u"とても長い文言 & とても長い文言 とても長い文言"_s;
    QHash<QString, QString> values;
    for (const QString &name : {u"matchCaseFace"_s,
                                u"wholeWordFace"_s,
                                u"regularExpressionFace"_s,
                                u"wrapAroundFace"_s,
                                u"replaceAll"_s})
        values.insert(u"editor.find."_s + name, text);
    values.insert(u"menu.edit.replace"_s, text);
    wording::setActiveValues(values);
    open(u"x"_s, Qt::Key_H);
    QVERIFY(bar()->minimumSizeHint().width() <= 520);
    m_view->resize(520, 360);
    QTRY_COMPARE(bar()->width(), 520);
    QVERIFY2(field()->width() >= 100, qPrintable(QString::number(field()->width())));
    QVERIFY(bar()->rect().contains(
        button("findClose")->geometry().translated(button("findClose")->parentWidget()->pos())));
    QCOMPARE(button("replaceAll")->toolTip(), text);
    m_view->resize(900, 360);
    QTRY_COMPARE(bar()->width(), 900);
    QVERIFY2(field()->width() >= 250, qPrintable(QString::number(field()->width())));
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
