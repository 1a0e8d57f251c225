#include "platform/desktop/WindowFrame.h"

#include "support/TemporaryHome.h"

#include <QScreen>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// The screen of the offscreen platform measures 800 by 800.
const QRect kPlace(40, 60, 300, 200);
const QRect kOtherPlace(90, 120, 410, 320);

std::unique_ptr<QWidget> windowAt(const QRect &place)
{
    auto window = std::make_unique<QWidget>();
    window->setGeometry(place);
    return window;
}

} // namespace

class WindowFrameTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void name_neverUsed_leavesTheWindow();
    void name_usedBefore_bringsTheFrameBack();
    void name_usedInAnEarlierProcess_bringsTheFrameBack();
    void window_closedOnTheFullScreen_comesBackWithItsFormerSize();
    void name_ofAnOpenWindow_isRefused();
    void name_ofAWindowThatWasNeverShown_isFreeOnceItIsGone();
    void name_ofAClosedWindow_isFree();
    void frame_changedWhileShown_isSavedWithoutClosing();
    void frame_changedAfterClosing_isNotSaved();
    void frame_unreadable_leavesTheWindow();
    void center_ofAScreen_isTheMiddle();
    void fit_largerThanTheScreen_isCutWithItsFrame();
    void fit_smallerThanTheScreen_keepsTheSize();
    void fit_rememberedFrameOutside_isBroughtBackWhenShown();

private:
    test::TemporaryHome m_home;
    std::unique_ptr<UserDefaults> m_defaults;
    int m_count = 0;
};

void WindowFrameTest::init()
{
    m_defaults = std::make_unique<UserDefaults>(m_home.file(u"%1.ini"_s.arg(++m_count)));
}

void WindowFrameTest::name_neverUsed_leavesTheWindow()
{
    const auto window = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, *m_defaults));
    QCOMPARE(window->geometry(), kPlace);
}

void WindowFrameTest::name_usedBefore_bringsTheFrameBack()
{
    auto first = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(first.get(), u"W"_s, *m_defaults));
    first->show();
    first->setGeometry(kOtherPlace);
    first->close();

    const auto second = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
    QCOMPARE(second->geometry(), kOtherPlace);

    const auto stranger = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(stranger.get(), u"V"_s, *m_defaults));
    QCOMPARE(stranger->geometry(), kPlace);
}

void WindowFrameTest::name_usedInAnEarlierProcess_bringsTheFrameBack()
{
    const QString file = m_home.file(u"earlier.ini"_s);
    {
        UserDefaults defaults(file);
        const auto window = windowAt(kOtherPlace);
        QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, defaults));
        window->show();
        window->close();
    }
    UserDefaults defaults(file);
    const auto window = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, defaults));
    QCOMPARE(window->geometry(), kOtherPlace);
}

void WindowFrameTest::window_closedOnTheFullScreen_comesBackWithItsFormerSize()
{
    const QRect former(40, 50, 400, 300);
    {
        QWidget window;
        QVERIFY(setFrameAutosaveName(&window, u"full"_s, *m_defaults));
        window.setGeometry(former);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.showFullScreen();
        QTRY_VERIFY(window.width() > former.width());
        window.close();
    }
    QWidget next;
    QVERIFY(setFrameAutosaveName(&next, u"full"_s, *m_defaults));
    next.show();
    QVERIFY(QTest::qWaitForWindowExposed(&next));
    QVERIFY(!next.isFullScreen());
    QCOMPARE(next.size(), former.size());
}

void WindowFrameTest::name_ofAnOpenWindow_isRefused()
{
    const auto first = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(first.get(), u"W"_s, *m_defaults));
    first->show();
    const auto second = windowAt(kOtherPlace);
    QVERIFY(!setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
    QCOMPARE(second->geometry(), kOtherPlace);
    second->show();
    second->close();
    QVERIFY(!setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
}

void WindowFrameTest::name_ofAWindowThatWasNeverShown_isFreeOnceItIsGone()
{
    auto first = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(first.get(), u"W"_s, *m_defaults));
    const auto second = windowAt(kPlace);
    QVERIFY(!setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
    first.reset();
    QVERIFY(setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
}

void WindowFrameTest::name_ofAClosedWindow_isFree()
{
    const auto first = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(first.get(), u"W"_s, *m_defaults));
    first->show();
    first->close();
    const auto second = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
}

void WindowFrameTest::frame_changedWhileShown_isSavedWithoutClosing()
{
    const auto window = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, *m_defaults));
    window->show();
    window->setGeometry(kOtherPlace);
    QTRY_COMPARE(m_defaults->bytes(u"windowFrame.W"_s), window->saveGeometry());
}

void WindowFrameTest::frame_changedAfterClosing_isNotSaved()
{
    const auto window = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, *m_defaults));
    window->show();
    window->close();
    const QByteArray saved = m_defaults->bytes(u"windowFrame.W"_s);
    QVERIFY(!saved.isEmpty());
    window->show();
    window->setGeometry(kOtherPlace);
    window->close();
    QCOMPARE(m_defaults->bytes(u"windowFrame.W"_s), saved);
}

void WindowFrameTest::frame_unreadable_leavesTheWindow()
{
    QVERIFY(m_defaults->setBytes(u"windowFrame.W"_s, "not a frame"));
    const auto window = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(window.get(), u"W"_s, *m_defaults));
    QCOMPARE(window->geometry(), kPlace);
}

void WindowFrameTest::center_ofAScreen_isTheMiddle()
{
    const auto window = windowAt(kPlace);
    centerWindow(window.get());
    const QPoint distance =
        window->frameGeometry().center() - window->screen()->availableGeometry().center();
    QVERIFY(distance.manhattanLength() <= 2);
    QCOMPARE(window->size(), kPlace.size());
}

void WindowFrameTest::fit_largerThanTheScreen_isCutWithItsFrame()
{
    const auto window = windowAt(QRect(10, 10, 1000, 900));
    window->setMinimumSize(900, 850);
    fitToScreen(window.get());
    const QRect available = window->screen()->availableGeometry();
    QVERIFY(window->width() <= available.width() && window->height() < available.height());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QVERIFY(window->frameGeometry() != window->geometry()); // The frame takes room, too.
    QVERIFY(available.contains(window->frameGeometry()));
}

void WindowFrameTest::fit_smallerThanTheScreen_keepsTheSize()
{
    const auto window = windowAt(kPlace);
    window->setMinimumSize(100, 50);
    fitToScreen(window.get());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QCOMPARE(window->geometry(), kPlace);
    QCOMPARE(window->minimumSize(), QSize(100, 50));
}

void WindowFrameTest::fit_rememberedFrameOutside_isBroughtBackWhenShown()
{
    const auto first = windowAt(kPlace);
    QVERIFY(setFrameAutosaveName(first.get(), u"W"_s, *m_defaults));
    first->show();
    first->setGeometry(750, 780, 1200, 900);
    first->close();

    const auto second = windowAt(kPlace);
    second->setMinimumSize(850, 100);
    fitToScreen(second.get());
    QVERIFY(setFrameAutosaveName(second.get(), u"W"_s, *m_defaults));
    second->show();
    QVERIFY(QTest::qWaitForWindowExposed(second.get()));
    QVERIFY(second->screen()->availableGeometry().contains(second->frameGeometry()));
}

} // namespace penwick

QTEST_MAIN(penwick::WindowFrameTest)
#include "WindowFrameTest.moc"
