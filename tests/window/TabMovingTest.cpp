#include "find/FindController.h"
#include "macro/engine/EditorWindowTestBase.h"
#include "view/TextView.h"
#include "window/EditorTabBar.h"
#include "window/EditorWindow.h"
#include "window/EditorWindowController.h"
#include "window/MainEditorView.h"
#include "window/TabMimeData.h"
#include "window/TextViewRepresentable.h"

#include <QDropEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

/// Tests of moving tabs within a window and to another window.
class TabMovingTest final : public QObject, private test::EditorWindowTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void moveTo_anotherWindow_keepsEverything();
    void moveTo_withTheKeyboardInTheFindBar_keepsItThere();
    void moveTo_fromTheLastTab_takesTheWindowAway();
    void moveTo_whileComposing_commitsFirst();
    void moveTo_itsOwnWindow_reorders();
    void pulledOut_givesTheOrderBack();
    void pulledOut_afterAnotherCameForward_doesNothing();
    void drop_onTheBar_namesThePlace();
    void drop_elsewhereInAnotherWindow_goesBehindAll();
    void drop_ofItsOwnTabBesideTheBar_isNotTaken();
    void drop_ofSomethingElse_isNotTaken();

private:
    /// Shows tabs named "one", "two" and "three".
    static void showThreeTabs(EditorTabBar &bar)
    {
        for (const QString &name : {u"one"_s, u"two"_s, u"three"_s})
            bar.insert(bar.count(), {name, {}, false});
        bar.resize(600, bar.sizeHint().height());
        bar.show();
    }

    /// Moves the pointer, with the left button pressed, to a point in or beside the bar.
    static void dragTo(EditorTabBar &bar, const QPoint &place)
    {
        QMouseEvent event(QEvent::MouseMove,
                          place,
                          bar.mapToGlobal(place),
                          Qt::NoButton,
                          Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&bar, &event);
    }

    /// True when `receiver` accepts the event: QDragEnterEvent or QDropEvent.
    template <typename Event>
    static bool accepts(QWidget *receiver, const QPoint &place, const QMimeData &mime)
    {
        Event event(place, Qt::MoveAction, &mime, Qt::LeftButton, {});
        event.ignore();
        QCoreApplication::sendEvent(receiver, &event);
        return event.isAccepted();
    }
};

void TabMovingTest::moveTo_anotherWindow_keepsEverything()
{
    const Editor &one = add(u"line\n"_s.repeated(1000));
    const Editor &two = add(u"two"_s);
    show();
    // The windows have the same size, because the scroll bar's value depends on it.
    const QSize size = m_window->size();
    QTest::keyClicks(one.view(), u"!"_s);
    one.view()->setSelectedRange({2000, 3});
    one.controller->content()->textViewRepresentable()->findController()->showFind();
    one.view()->verticalScrollBar()->setValue(300);
    const TextView::VisibleLine top = one.view()->visibleLines().front();
    const TextView *view = one.view();

    const auto other = std::make_shared<EditorWindow>(m_defaults.get());
    const Editor &three = add(other, u"three"_s);
    other->resize(size);
    other->show();
    one.controller->moveTo(other, 0);
    QCOMPARE(one.controller->window(), other.get());
    QCOMPARE(other->controllers(), (Controllers{one.controller.get(), three.controller.get()}));
    QCOMPARE(m_window->controllers(), Controllers{two.controller.get()});
    QVERIFY(two.view()->isVisible());
    QCOMPARE(m_window->windowTitle(), u"two[*] — penwick"_s);

    other->setCurrentController(one.controller.get());
    QVERIFY(one.view()->isVisible());
    QCOMPARE(one.view(), view);
    QCOMPARE(one.view()->selectedRange(), (TextRange{2000, 3}));
    QCOMPARE(one.view()->visibleLines().front().number, top.number);
    QCOMPARE(one.view()->visibleLines().front().top, top.top);
    QVERIFY(one.controller->content()->findChild<QLineEdit *>()->isVisible());
    QCOMPARE(other->windowTitle(), u"line\uFFFD[*] — penwick"_s);
    one.view()->undo();
    QCOMPARE(one.view()->string().size(), 5000);
    m_editors.clear();
}

void TabMovingTest::moveTo_withTheKeyboardInTheFindBar_keepsItThere()
{
    const Editor &one = add(u"one"_s);
    add(u"two"_s);
    show();
    m_window->setCurrentController(one.controller.get());
    one.controller->content()->textViewRepresentable()->findController()->showFind();
    const QWidget *field = QApplication::focusWidget();
    QVERIFY(qobject_cast<const QLineEdit *>(field) != nullptr);
    const auto moveTo = [&one](const std::shared_ptr<EditorWindow> &window) {
        one.controller->moveTo(window);
        window->setCurrentController(one.controller.get());
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    };
    // With the focus in the text, further typing would replace the selected match.
    moveTo(std::make_shared<EditorWindow>(m_defaults.get()));
    QTRY_COMPARE(QApplication::focusWidget(), field);
    moveTo(m_window);
    QTRY_COMPARE(QApplication::focusWidget(), field);
}

void TabMovingTest::moveTo_fromTheLastTab_takesTheWindowAway()
{
    const Editor &one = add(u"one"_s);
    show();
    const std::weak_ptr<EditorWindow> former = m_window;
    const auto other = std::make_shared<EditorWindow>(m_defaults.get());
    m_window.reset();
    one.controller->moveTo(other);
    QVERIFY(!former.expired() && !former.lock()->isVisible()); // It may be on the call stack.
    QCoreApplication::processEvents();
    QVERIFY(former.expired());
    QCOMPARE(other->count(), 1);
    m_editors.clear();
}

void TabMovingTest::moveTo_whileComposing_commitsFirst()
{
    const Editor &one = add(u"one"_s);
    add(u"two"_s);
    show();
    QInputMethodEvent compose(u"か"_s, {});
    QCoreApplication::sendEvent(one.view(), &compose);
    const auto other = std::make_shared<EditorWindow>(m_defaults.get());
    one.controller->moveTo(other);
    QInputMethodEvent commit;
    commit.setCommitString(u"蚊"_s);
    QCoreApplication::sendEvent(one.view(), &commit);
    QCOMPARE(one.view()->string().toString(), u"蚊one"_s);
    m_editors.clear();
}

void TabMovingTest::moveTo_itsOwnWindow_reorders()
{
    const Editor &one = add(u"one"_s);
    m_window->setCurrentController(one.controller.get());
    const Editor &two = add(u"two"_s);
    two.controller->moveTo(m_window, 0);
    QCOMPARE(order(), (QStringList{u"two"_s, u"one"_s}));
    two.controller->moveTo(m_window);
    QCOMPARE(order(), (QStringList{u"one"_s, u"two"_s}));
    QVERIFY(one.controller->isInFront());
}

void TabMovingTest::pulledOut_givesTheOrderBack()
{
    EditorTabBar bar;
    showThreeTabs(bar);
    QSignalSpy pulled(&bar, &EditorTabBar::tabDraggedOut);
    const QPoint start = bar.tabRect(0).center();
    QTest::mousePress(&bar, Qt::LeftButton, {}, start);
    dragTo(bar, start + QPoint(30, 0));
    dragTo(bar, bar.tabRect(1).center() + QPoint(30, 0));
    QVERIFY(bar.tabText(0) != u"one"_s); // Tabs move during the drag within the bar.
    QVERIFY(pulled.isEmpty());
    dragTo(bar, start + QPoint(60, 200));
    QCOMPARE(pulled.size(), 1);
    QCOMPARE(pulled[0][0].toInt(), 0);
    QCOMPARE(pulled[0][1].toPoint(), start - bar.tabRect(0).topLeft());
    QCOMPARE(bar.tabText(0), u"one"_s);
    QVERIFY(!bar.picture(0).isNull());
    dragTo(bar, start + QPoint(60, 300));
    QCOMPARE(pulled.size(), 1);
}

void TabMovingTest::pulledOut_afterAnotherCameForward_doesNothing()
{
    EditorTabBar bar;
    showThreeTabs(bar);
    QSignalSpy pulled(&bar, &EditorTabBar::tabDraggedOut);
    const QPoint first = bar.tabRect(0).center();
    QTest::mousePress(&bar, Qt::LeftButton, {}, first);
    bar.setCurrentIndex(1);
    dragTo(bar, first + QPoint(60, 200));
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, first);
    QTest::mousePress(&bar, Qt::LeftButton, {}, first);
    bar.removeTab(0);
    dragTo(bar, first + QPoint(60, 200));
    QVERIFY(pulled.isEmpty());
    QCOMPARE(bar.count(), 2);
}

void TabMovingTest::drop_onTheBar_namesThePlace()
{
    add(u"one"_s);
    add(u"two"_s);
    show();
    const auto other = std::make_shared<EditorWindow>(m_defaults.get());
    const Editor &three = add(other, u"three"_s);
    EditorTabBar *bar = m_window->tabBar();
    for (int place = 0; place <= 2; ++place) {
        const TabMimeData mime(three.controller.get());
        const QPoint position =
            place < 2 ? middleOf(place) - QPoint(5, 0) : middleOf(1) + QPoint(5, 0);
        QVERIFY(accepts<QDragEnterEvent>(bar, position, mime));
        QVERIFY(accepts<QDropEvent>(bar, position, mime));
        QCOMPARE(mime.target(), m_window.get());
        QCOMPARE(mime.targetIndex(), place);
        QCOMPARE(three.controller->window(), other.get()); // The tab moves when the drag ends.
    }
    m_editors.clear();
}

void TabMovingTest::drop_elsewhereInAnotherWindow_goesBehindAll()
{
    add(u"one"_s);
    show();
    const auto other = std::make_shared<EditorWindow>(m_defaults.get());
    const TabMimeData mime(add(other, u"three"_s).controller.get());
    QVERIFY(accepts<QDragEnterEvent>(m_window.get(), {200, 300}, mime));
    QVERIFY(accepts<QDropEvent>(m_window.get(), {200, 300}, mime));
    QCOMPARE(mime.target(), m_window.get());
    QCOMPARE(mime.targetIndex(), -1);
    m_editors.clear();
}

// The tab becomes a window of its own instead, for which a maximized window leaves no other place.
void TabMovingTest::drop_ofItsOwnTabBesideTheBar_isNotTaken()
{
    const TabMimeData mime(add(u"one"_s).controller.get());
    add(u"two"_s);
    show();
    QVERIFY(!accepts<QDragEnterEvent>(m_window.get(), {200, 300}, mime));
    accepts<QDropEvent>(m_window.get(), {200, 300}, mime);
    QVERIFY(mime.target() == nullptr);
}

// This includes data of the same format from another process.
void TabMovingTest::drop_ofSomethingElse_isNotTaken()
{
    add(u"one"_s);
    add(u"two"_s);
    show();
    QMimeData mime;
    mime.setData(u"application/x-penwick-tab"_s, "x");
    QVERIFY(!accepts<QDragEnterEvent>(m_window.get(), {200, 300}, mime));
    accepts<QDropEvent>(m_window->tabBar(), middleOf(0), mime);
    QCOMPARE(order(), (QStringList{u"one"_s, u"two"_s}));
}

} // namespace penwick

QTEST_MAIN(penwick::TabMovingTest)
#include "TabMovingTest.moc"
