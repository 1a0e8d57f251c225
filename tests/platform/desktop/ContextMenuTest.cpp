#include "platform/desktop/ContextMenu.h"

#include <QCursor>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// The screen of the offscreen platform measures 800 by 800.
constexpr QPoint kPlace(200, 100);

/// Sends an event of the right button at the menu's corner, where the mouse is when it opens.
void mouse(QMenu *menu, QEvent::Type type)
{
    const bool isRelease = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type,
                      QPointF(0, 0),
                      QPointF(kPlace),
                      Qt::RightButton,
                      isRelease ? Qt::NoButton : Qt::RightButton,
                      Qt::NoModifier);
    QApplication::sendEvent(menu, &event);
}

} // namespace

class ContextMenuTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void popUp_showsTheMenuThere();
    void restOfADoubleClick_leavesTheMenuOpen();
    void click_onAnItem_choosesIt();
    void doubleClick_afterAPressOfItsOwn_reachesTheMenu();
    void close_deletesTheMenu();

private:
    QPointer<QMenu> m_menu;
    QAction *m_item = nullptr;
};

void ContextMenuTest::init()
{
    // In Qt 6.8 only a pointer that has moved since the menu opened can choose an item.
    QCursor::setPos(kPlace);
    QCoreApplication::processEvents();
    m_menu = new QMenu;
    m_item = m_menu->addAction(u"閉じる"_s);
    popUpContextMenu(m_menu, kPlace);
    QVERIFY(QTest::qWaitForWindowExposed(m_menu));
}

void ContextMenuTest::cleanup()
{
    delete m_menu;
}

void ContextMenuTest::popUp_showsTheMenuThere()
{
    QVERIFY(m_menu->isVisible());
    QCOMPARE(m_menu->pos(), kPlace);
}

void ContextMenuTest::restOfADoubleClick_leavesTheMenuOpen()
{
    mouse(m_menu, QEvent::MouseButtonDblClick);
    mouse(m_menu, QEvent::MouseButtonRelease);
    QVERIFY(m_menu->isVisible());
}

void ContextMenuTest::click_onAnItem_choosesIt()
{
    mouse(m_menu, QEvent::MouseButtonRelease); // The end of the click that opened the menu.
    int chosen = 0;
    connect(m_item, &QAction::triggered, m_menu, [&chosen] { ++chosen; });
    QTest::mouseClick(m_menu, Qt::LeftButton, {}, m_menu->actionGeometry(m_item).center());
    QCOMPARE(chosen, 1);
    QTRY_VERIFY(!m_menu);
}

void ContextMenuTest::doubleClick_afterAPressOfItsOwn_reachesTheMenu()
{
    mouse(m_menu, QEvent::MouseButtonPress);
    mouse(m_menu, QEvent::MouseButtonDblClick);
    mouse(m_menu, QEvent::MouseButtonRelease);
    QVERIFY(!m_menu->isVisible()); // A click outside the items closes the menu.
}

void ContextMenuTest::close_deletesTheMenu()
{
    m_menu->close();
    QTRY_VERIFY(!m_menu);
}

} // namespace penwick

QTEST_MAIN(penwick::ContextMenuTest)
#include "ContextMenuTest.moc"
