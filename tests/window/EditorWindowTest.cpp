#include "window/EditorWindow.h"

#include "find/FindController.h"
#include "macro/engine/EditorWindowTestBase.h"
#include "platform/settings/NotificationCenter.h"
#include "support/CutStart.h"
#include "support/PlainToolTip.h"
#include "text/CutText.h"
#include "view/TextView.h"
#include "window/EditorTabBar.h"
#include "window/EditorWindowController.h"
#include "window/MainEditorView.h"
#include "window/TabCloseButton.h"
#include "window/TabListButton.h"
#include "window/TextViewRepresentable.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <functional>

using namespace Qt::StringLiterals;

namespace penwick {

/// Tests of a window with tabs: what they show, and how they are switched and closed.
class EditorWindowTest final : public QObject, private test::EditorWindowTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void tabBar_shows_fromTheSecondTabOn();
    void tabBar_thatStays_showsWithOneTab();
    void keys_stepThroughTheTabs_goRound();
    void tab_added_comesBehindTheOneInFront();
    void switching_keepsCaretScrollAndUndo();
    void switching_focusStaysWithTheTab();
    void switching_whileComposing_leavesTheOtherTextAlone();
    void content_ofATabBehind_leavesTheKeyboardAlone();
    void reordering_showsTheSamePages();
    void label_isShownVerbatimOnTabAndTitle();
    void label_withControlCharacters_isOneHarmlessLine();
    void label_huge_isCut();
    void label_edited_isMarkedAndSpoken();
    void labels_equal_showFoldersWhileTheyAre();
    void names_long_areElidedAndTabsStayReadable();
    void names_equalAndLong_keepWhatDiffers();
    void names_longAndSimilar_showWhereTheyDiffer();
    void tabList_shows_onlyWhileTabsDoNotFit();
    void tabList_opened_listsAllTabs_data();
    void tabList_opened_listsAllTabs();
    void middleClick_onATab_asksToCloseIt();
    void middleClick_releasedElsewhere_doesNothing();
    void closeButton_clicked_asksToCloseItsTab();
    void tabMenu_ofATab_requestsItsItems();
    void tabMenu_ofTheOnlyTab_offersToCloseIt();
    void buttons_afterAWordingChange_showIt();
    void controller_gone_leavesTheOthers();

private:
    /// Records the controllers that the user asks to close from now on.
    [[nodiscard]] std::shared_ptr<Controllers> closeRequests() const
    {
        auto requests = std::make_shared<Controllers>();
        connect(m_window.get(),
                &EditorWindow::closeRequested,
                m_window.get(),
                [requests](EditorWindowController *controller) { *requests << controller; });
        return requests;
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers) const
    {
        QTest::keyClick(m_window->windowHandle(), key, modifiers);
    }

    [[nodiscard]] QMenu *openTabMenu(int index) const
    {
        const QPoint place = middleOf(index);
        QContextMenuEvent event(
            QContextMenuEvent::Mouse, place, m_window->tabBar()->mapToGlobal(place));
        QCoreApplication::sendEvent(m_window->tabBar(), &event);
        return m_window->findChild<QMenu *>();
    }
};

void EditorWindowTest::tabBar_shows_fromTheSecondTabOn()
{
    add(u"one"_s);
    show();
    QVERIFY(!m_window->tabBar()->isVisible());
    add(u"two"_s);
    QVERIFY(m_window->tabBar()->isVisible());
    QCOMPARE(m_window->tabBar()->count(), 2);
    m_editors.pop_back();
    QVERIFY(!m_window->tabBar()->isVisible());
    QVERIFY(m_editors.front()->view()->isVisible());
}

void EditorWindowTest::tabBar_thatStays_showsWithOneTab()
{
    add(u"one"_s);
    m_window->setTabBarAlwaysVisible(true);
    show();
    QVERIFY(m_window->tabBar()->isVisible());
}

void EditorWindowTest::keys_stepThroughTheTabs_goRound()
{
    for (const QString &text : {u"one"_s, u"two"_s, u"three"_s})
        m_window->setCurrentController(add(text).controller.get());
    show();
    const auto front = [this] {
        return m_window->currentController()->textView()->string().toString();
    };
    QCOMPARE(front(), u"three"_s);
    press(Qt::Key_Tab, Qt::ControlModifier);
    QCOMPARE(front(), u"one"_s);
    press(Qt::Key_PageDown, Qt::ControlModifier);
    QCOMPARE(front(), u"two"_s);
    press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(front(), u"one"_s);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    QCOMPARE(front(), u"three"_s);
    QCOMPARE(order(), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
}

void EditorWindowTest::tab_added_comesBehindTheOneInFront()
{
    const Editor &one = add(u"one"_s);
    m_window->setCurrentController(add(u"two"_s).controller.get());
    m_window->setCurrentController(one.controller.get());
    add(u"three"_s);
    QCOMPARE(order(), (QStringList{u"one"_s, u"three"_s, u"two"_s}));
    QCOMPARE(m_window->currentController(), one.controller.get());
}

void EditorWindowTest::switching_keepsCaretScrollAndUndo()
{
    const Editor &one = add(u"line\n"_s.repeated(1000));
    const Editor &two = add(u"two"_s);
    show();
    QTest::keyClicks(one.view(), u"!"_s);
    one.view()->setSelectedRange({2000, 3});
    one.view()->verticalScrollBar()->setValue(300);
    const int scrolled = one.view()->verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    const TextView *view = one.view();
    m_window->setCurrentController(two.controller.get());
    QVERIFY(!one.view()->isVisible() && two.view()->isVisible());
    two.view()->undo(); // Must not undo an edit of the other document.
    m_window->setCurrentController(one.controller.get());
    QCOMPARE(one.view(), view); // The same view, so nothing is laid out again.
    QCOMPARE(one.view()->selectedRange(), (TextRange{2000, 3}));
    QCOMPARE(one.view()->verticalScrollBar()->value(), scrolled);
    QVERIFY(one.view()->string().toString().startsWith(u'!'));
    one.view()->undo();
    QCOMPARE(one.view()->string().size(), 5000);
}

void EditorWindowTest::switching_focusStaysWithTheTab()
{
    const Editor &one = add(u"one"_s);
    const Editor &two = add(u"two"_s);
    show();
    one.controller->content()->textViewRepresentable()->findController()->showFind();
    const QWidget *field = QApplication::focusWidget();
    QVERIFY(qobject_cast<const QLineEdit *>(field) != nullptr);
    m_window->setCurrentController(two.controller.get());
    QCOMPARE(QApplication::focusWidget(), two.view());
    m_window->setCurrentController(one.controller.get());
    QCOMPARE(QApplication::focusWidget(), field);
    QVERIFY(field->isVisible());
    // Switching tabs by keyboard in the bar keeps the focus in the bar.
    m_window->tabBar()->setFocus();
    QTest::keyClick(m_window->tabBar(), Qt::Key_Right);
    QCOMPARE(m_window->currentController(), two.controller.get());
    QVERIFY(m_window->tabBar()->hasFocus());
}

void EditorWindowTest::switching_whileComposing_leavesTheOtherTextAlone()
{
    const Editor &one = add(u"one"_s);
    const Editor &two = add(u"two"_s);
    show();
    QInputMethodEvent compose(u"か"_s, {});
    QCoreApplication::sendEvent(one.view(), &compose);
    QVERIFY(one.view()->hasMarkedText());
    m_window->setCurrentController(two.controller.get());
    QVERIFY(!two.view()->hasMarkedText());
    QCOMPARE(two.view()->string().toString(), u"two"_s);
}

void EditorWindowTest::content_ofATabBehind_leavesTheKeyboardAlone()
{
    const Editor &one = add(u"one"_s);
    Editor &two = add(u"two"_s);
    show();
    QTRY_COMPARE(QApplication::focusWidget(), one.view());
    two.controller->showLoading(&two.document);
    QCoreApplication::processEvents();
    QCOMPARE(QApplication::focusWidget(), one.view());
    two.controller->setDocument(&two.document);
    QCoreApplication::processEvents();
    QCOMPARE(QApplication::focusWidget(), one.view());
    m_window->setCurrentController(two.controller.get());
    QCOMPARE(QApplication::focusWidget(), two.view());
}

void EditorWindowTest::reordering_showsTheSamePages()
{
    add(u"one"_s);
    const Editor &two = add(u"two"_s);
    add(u"three"_s);
    show();
    m_window->setCurrentController(two.controller.get());
    QSignalSpy changed(m_window.get(), &EditorWindow::currentTabChanged);
    const QStringList before = order();
    m_window->tabBar()->moveTab(0, 2);
    QCOMPARE(order(), (QStringList{before[1], before[2], before[0]}));
    QVERIFY(two.controller->isInFront() && two.view()->isVisible());
    QVERIFY(changed.isEmpty());
    for (int i = 0; i < 3; ++i) {
        m_window->tabBar()->setCurrentIndex(i);
        QCOMPARE(m_window->currentController(), m_window->controllers().at(i));
        QVERIFY(m_window->currentController()->textView()->isVisible());
        QCOMPARE(m_window->tabBar()->tabText(i), order().at(i));
    }
}

void EditorWindowTest::label_isShownVerbatimOnTabAndTitle()
{
    const Editor &one = add(u"one"_s);
    one.controller->setTabLabel({u"R&D [*] <b>x</b>.txt"_s, u"/tmp/R&D [*] <b>x</b>.txt"_s, false});
    const EditorTabBar *bar = m_window->tabBar();
    QCOMPARE(bar->tabText(0), u"R&&D [*] <b>x</b>.txt"_s); // Displayed with a single ampersand.
    QCOMPARE(bar->accessibleTabName(0), u"R&D [*] <b>x</b>.txt"_s);
    QVERIFY(bar->tabToolTip(0).contains(u"/tmp/R&amp;D [*] &lt;b&gt;x&lt;/b&gt;.txt"_s));
    QCOMPARE(m_window->windowTitle(), u"R&D [*][*] <b>x</b>.txt[*] — penwick"_s);
    QCOMPARE(m_window->windowFilePath(), u"/tmp/R&D [*] <b>x</b>.txt"_s);
    one.controller->setTabLabel({u"plain"_s, {}, false});
    QCOMPARE(bar->tabToolTip(0), u"plain"_s);
}

void EditorWindowTest::label_withControlCharacters_isOneHarmlessLine()
{
    const Editor &one = add(u"one"_s);
    one.controller->setTabLabel({u"a\nb\u202Etxt.\u2028c\td"_s, u"/tmp/a\nb"_s, false});
    QCOMPARE(m_window->tabBar()->tabText(0), u"a\uFFFDb\uFFFDtxt.\uFFFDc\uFFFDd"_s);
    QCOMPARE(m_window->tabBar()->tabToolTip(0), u"/tmp/a\uFFFDb"_s);
    QCOMPARE(m_window->windowTitle(), u"a\uFFFDb\uFFFDtxt.\uFFFDc\uFFFDd[*] — penwick"_s);
}

void EditorWindowTest::label_huge_isCut()
{
    const QString name = test::hugeText();
    add(u"one"_s).controller->setTabLabel({name, {}, true});
    const EditorTabBar *bar = m_window->tabBar();
    QVERIFY(test::isCutStart(bar->tabText(0), name, kLongestName));
    QVERIFY(test::isCutStart(test::plainToolTip(bar->tabToolTip(0)), name, kLongestToolTip));
    const QString told = bar->accessibleTabName(0);
    QVERIFY(told.startsWith(u"名名"_s) && told.size() < kLongestShown);
    QVERIFY(test::isCutStart(
        m_window->windowTitle().chopped(u"[*] — penwick"_s.size()), name, kLongestName));
}

void EditorWindowTest::label_edited_isMarkedAndSpoken()
{
    const Editor &one = add(u"one"_s);
    const Editor &two = add(u"two"_s);
    const auto button = [this](int index) {
        return qobject_cast<TabCloseButton *>(
            m_window->tabBar()->tabButton(index, QTabBar::RightSide));
    };
    const int width = m_window->tabBar()->tabRect(1).width();
    two.controller->setTabLabel({u"two"_s, {}, true});
    QVERIFY(button(1)->isEdited() && !button(0)->isEdited());
    QCOMPARE(m_window->tabBar()->accessibleTabName(1), u"two（未保存の変更あり）"_s);
    QCOMPARE(m_window->tabBar()->tabRect(1).width(), width); // The first key moves no tab.
    QVERIFY(one.controller->isInFront() && !m_window->isWindowModified());
    m_window->setCurrentController(two.controller.get());
    QVERIFY(m_window->isWindowModified());
}

void EditorWindowTest::labels_equal_showFoldersWhileTheyAre()
{
    const Editor &one = add(u"one"_s);
    const TabLabel label{u"a.txt"_s, u"/p/&one/a.txt"_s, false};
    one.controller->setTabLabel(label);
    const EditorTabBar *bar = m_window->tabBar();
    QCOMPARE(bar->tabText(0), u"a.txt"_s);
    add(u"two"_s).controller->setTabLabel({u"a.txt"_s, u"/p/two/a.txt"_s, true});
    QCOMPARE(bar->tabText(0), u"a.txt — &&one"_s);
    QCOMPARE(bar->tabText(1), u"a.txt — two"_s);
    QCOMPARE(bar->accessibleTabName(1), u"a.txt — two（未保存の変更あり）"_s);
    QCOMPARE(m_window->windowTitle(), u"a.txt[*] — penwick"_s);

    const auto other = std::make_shared<EditorWindow>();
    m_editors.back()->controller->moveTo(other, -1);
    QCOMPARE(bar->tabText(0), u"a.txt"_s);
    QCOMPARE(other->tabBar()->tabText(0), u"a.txt"_s);
    m_editors.back()->controller->moveTo(m_window, 0);
    QCOMPARE(bar->tabText(0), u"a.txt — two"_s);
    m_editors.back()->controller->setTabLabel({u"b.txt"_s, u"/p/two/b.txt"_s, false});
    QCOMPARE(bar->tabText(0), u"b.txt"_s);
    QCOMPARE(bar->tabText(1), u"a.txt"_s);
}

void EditorWindowTest::names_long_areElidedAndTabsStayReadable()
{
    const Editor &one = add(u"one"_s);
    one.controller->setTabLabel({u"name"_s.repeated(50), {}, false});
    for (int i = 0; i < 30; ++i)
        add(u"file %1"_s.arg(i));
    m_window->resize(m_window->minimumSize());
    show();
    const EditorTabBar *bar = m_window->tabBar();
    QCOMPARE(m_window->width(), 520);
    const int em = bar->fontMetrics().averageCharWidth();
    for (int i = 0; i < bar->count(); ++i) {
        QVERIFY(bar->tabRect(i).width() <= 40 * em);
        QVERIFY(bar->tabRect(i).width() >= 10 * em);
    }
    for (const int index : {30, 0, 17}) {
        m_window->setCurrentController(m_window->controllers().at(index));
        QTRY_VERIFY(bar->rect().contains(bar->tabRect(index).center()));
    }
}

void EditorWindowTest::names_equalAndLong_keepWhatDiffers()
{
    for (const QString &folder : {u"one"_s, u"two"_s}) {
        const QString path =
            u"/home/project/"_s + folder + u"/src/main/resources/application.yml"_s;
        add(folder).controller->setTabLabel({u"application.yml"_s, path, false});
    }
    const EditorTabBar *bar = m_window->tabBar();
    QCOMPARE(bar->tabText(0), u"application.yml — one/…"_s);
    show();
    // The tab is wide enough for its whole text.
    QVERIFY(bar->tabRect(0).width() > bar->fontMetrics().horizontalAdvance(bar->tabText(0)));
}

void EditorWindowTest::names_longAndSimilar_showWhereTheyDiffer()
{
    const QString name = u"2026年度第一四半期営業報告書%1支店・確定版・社外秘.txt"_s;
    const QStringList places{u"東京"_s, u"大阪"_s};
    for (const QString &place : places)
        add(place).controller->setTabLabel({name.arg(place), {}, false});
    show();
    EditorTabBar *bar = m_window->tabBar();
    // Two pictures are equal if and only if the tabs show the same text.
    QVERIFY(bar->picture(0).toImage() != bar->picture(1).toImage());
    for (int i = 0; i < 2; ++i) {
        const QString shown = bar->shownName(i);
        QVERIFY2(shown.contains(places.at(i)) && shown.startsWith(u"2026"_s) &&
                     shown.endsWith(u".txt"_s) && shown.count(u'…') == 2,
                 qPrintable(shown));
        QCOMPARE(bar->tabText(i), name.arg(places.at(i)));
    }
}

void EditorWindowTest::tabList_shows_onlyWhileTabsDoNotFit()
{
    for (int i = 0; i < 3; ++i)
        add(u"file %1"_s.arg(i));
    m_window->resize(m_window->minimumSize());
    show();
    const auto *button = m_window->findChild<TabListButton *>();
    const auto *scroll = m_window->tabBar()->findChild<QToolButton *>(u"ScrollRightButton"_s);
    QVERIFY(!button->isVisible());
    for (int i = 3; i < 12; ++i)
        add(u"file %1"_s.arg(i));
    QTRY_VERIFY(button->isVisible() && scroll->isVisible());
    QVERIFY(!m_window->tabBar()->geometry().intersects(button->geometry()));
    QCOMPARE(button->mapTo(m_window.get(), QPoint(button->width(), 0)).x(), m_window->width());
    QCOMPARE(button->accessibleName(), u"タブの一覧"_s);
    while (m_editors.size() > 3)
        m_editors.pop_back();
    QTRY_VERIFY(!button->isVisible());
    QVERIFY(!scroll->isVisible());
}

void EditorWindowTest::tabList_opened_listsAllTabs_data()
{
    using Open = std::function<void(EditorWindow &, TabListButton &)>;
    QTest::addColumn<Open>("open");
    QTest::newRow("click") << Open(
        [](EditorWindow &, TabListButton &button) { QTest::mouseClick(&button, Qt::LeftButton); });
    QTest::newRow("shortcut") << Open([](EditorWindow &window, TabListButton &) {
        QTest::keyClick(window.windowHandle(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
    });
    QTest::newRow("focus and Return") << Open([](EditorWindow &window, TabListButton &button) {
        window.tabBar()->setFocus();
        for (int i = 0; i < 3 && !button.hasFocus(); ++i)
            QTest::keyClick(&window, Qt::Key_Tab); // Past the buttons that scroll.
        if (button.hasFocus())
            QTest::keyClick(&button, Qt::Key_Return);
    });
}

void EditorWindowTest::tabList_opened_listsAllTabs()
{
    using Open = std::function<void(EditorWindow &, TabListButton &)>;
    QFETCH(const Open, open);
    for (int i = 0; i < 12; ++i)
        add(QString::number(i));
    for (int i = 0; i < 12; ++i)
        m_window->controllers().at(i)->setTabLabel(
            {u"f & %1"_s.arg(i), u"/tmp/f & %1"_s.arg(i), i == 2});
    m_window->setCurrentController(m_window->controllers().at(4));
    m_window->resize(m_window->minimumSize());
    show();
    open(*m_window, *m_window->findChild<TabListButton *>());
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu != nullptr);
    const QList<QAction *> actions = menu->actions();
    QCOMPARE(actions.size(), 12);
    for (int i = 0; i < 12; ++i) {
        QCOMPARE(actions.at(i)->isChecked(), i == 4);
        QCOMPARE(actions.at(i)->toolTip(), u"/tmp/f & %1"_s.arg(i));
        QCOMPARE(actions.at(i)->text(), u"f && %1"_s.arg(i) + (i == 2 ? u"\t●"_s : QString()));
    }
    QCOMPARE(menu->activeAction(), actions.at(4));
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Return);
    QCOMPARE(m_window->currentController(), m_window->controllers().at(5));
    QVERIFY(m_window->tabBar()->rect().contains(middleOf(5)));
}

void EditorWindowTest::middleClick_onATab_asksToCloseIt()
{
    add(u"one"_s);
    const Editor &two = add(u"two"_s);
    show();
    const auto requests = closeRequests();
    QTest::mouseClick(m_window->tabBar(), Qt::MiddleButton, {}, middleOf(1));
    QCOMPARE(*requests, Controllers{two.controller.get()});
    QVERIFY(!two.controller->isInFront());
}

void EditorWindowTest::middleClick_releasedElsewhere_doesNothing()
{
    add(u"one"_s);
    add(u"two"_s);
    show();
    const auto requests = closeRequests();
    QTest::mousePress(m_window->tabBar(), Qt::MiddleButton, {}, middleOf(1));
    QTest::mouseRelease(m_window->tabBar(), Qt::MiddleButton, {}, middleOf(0));
    QTest::mouseClick(m_window->tabBar(),
                      Qt::MiddleButton,
                      {},
                      {m_window->tabBar()->width() - 2, middleOf(0).y()});
    QVERIFY(requests->isEmpty());
}

void EditorWindowTest::closeButton_clicked_asksToCloseItsTab()
{
    add(u"one"_s);
    const Editor &two = add(u"two"_s);
    show();
    m_window->tabBar()->moveTab(1, 0);
    const auto requests = closeRequests();
    QWidget *button = m_window->tabBar()->tabButton(0, QTabBar::RightSide);
    QVERIFY(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(*requests, Controllers{two.controller.get()});
}

void EditorWindowTest::tabMenu_ofATab_requestsItsItems()
{
    add(u"one"_s);
    const Editor &two = add(u"two"_s);
    show();
    Controllers asked;
    const auto note = [&asked](EditorWindowController *controller) { asked << controller; };
    connect(m_window.get(), &EditorWindow::closeRequested, this, note);
    connect(m_window.get(), &EditorWindow::closeOthersRequested, this, note);
    connect(m_window.get(), &EditorWindow::moveToNewWindowRequested, this, note);
    const QStringList titles{
        u"タブを閉じる"_s, u"ほかのタブを閉じる"_s, u""_s, u"新しいウインドウに移動"_s};
    for (const int item : {0, 1, 3}) {
        const QMenu *menu = openTabMenu(1);
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->actions().size(), titles.size());
        QCOMPARE(menu->actions().at(item)->text(), titles.at(item));
        menu->actions().at(item)->trigger();
        QVERIFY(asked == Controllers{two.controller.get()});
        asked.clear();
        delete menu;
    }
    QVERIFY(!two.controller->isInFront());
}

void EditorWindowTest::tabMenu_ofTheOnlyTab_offersToCloseIt()
{
    add(u"one"_s);
    m_window->setTabBarAlwaysVisible(true);
    show();
    const QMenu *menu = openTabMenu(0);
    QVERIFY(menu->actions().at(0)->isEnabled());
    QVERIFY(!menu->actions().at(1)->isEnabled());
    QVERIFY(!menu->actions().at(3)->isEnabled());
}

void EditorWindowTest::buttons_afterAWordingChange_showIt()
{
    add(u"one"_s);
    const QWidget *button = m_window->tabBar()->tabButton(0, QTabBar::RightSide);
    QCOMPARE(button->accessibleName(), u"タブを閉じる"_s);
    wording::setActiveValues(QHash<QString, QString>{{u"editor.tab.close"_s, u"Close <Tab>"_s},
                                                     {u"app.name"_s, u"Pen"_s}});
    NotificationCenter::defaultCenter().post(UIWordingProfileDidChange);
    QCOMPARE(button->accessibleName(), u"Close <Tab>"_s);
    QCOMPARE(m_window->windowTitle(), u"one[*] — Pen"_s);
    wording::setActiveValues(std::nullopt);
}

void EditorWindowTest::controller_gone_leavesTheOthers()
{
    const Editor &one = add(u"one"_s);
    m_window->setCurrentController(add(u"two"_s).controller.get());
    show();
    QSignalSpy changed(m_window.get(), &EditorWindow::currentTabChanged);
    m_editors.pop_back();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(m_window->currentController(), one.controller.get());
    QCOMPARE(QApplication::focusWidget(), one.view());
    QCOMPARE(m_window->windowTitle(), u"one[*] — penwick"_s);
}

} // namespace penwick

QTEST_MAIN(penwick::EditorWindowTest)
#include "EditorWindowTest.moc"
