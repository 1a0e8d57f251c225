#include "window/BlankSwitch.h"

#include "support/ShownTextView.h"
#include "support/TemporaryHome.h"

#include <QApplication>
#include <QMenu>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class BlankSwitchTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void key_showsBlanksInAllViewsAndIsRemembered();
    void contextMenu_showsTheStateAndSwitches();
    void allMarks_switchedOn_areShownInAllViews();
};

namespace {

/// A view with a switch. Its text starts with a tab.
struct Switched
{
    explicit Switched(Preferences &preferences)
        : blanks(&shown.view, &shown.view, preferences)
    {
    }

    void pressKey()
    {
        shown.view.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&shown.view));
        shown.key(Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier);
    }

    [[nodiscard]] bool showsBlanks()
    {
        const QImage image = shown.view.viewport()->grab().toImage();
        const QColor background = shown.view.palette().color(QPalette::Active, QPalette::Base);
        const QRect tab(shown.view.caretRectAt(0).toAlignedRect().adjusted(4, 0, 20, 0));
        for (int y = tab.top(); y <= tab.bottom(); ++y)
            for (int x = tab.left(); x <= tab.right(); ++x)
                if (image.pixelColor(x, y) != background)
                    return true;
        return false;
    }

    test::ShownTextView shown{u"\tx y\nz"};
    BlankSwitch blanks;
};

} // namespace

void BlankSwitchTest::key_showsBlanksInAllViewsAndIsRemembered()
{
    const test::TemporaryHome home;
    UserDefaults defaults(home.file(u"penwick.conf"_s));
    Preferences preferences(defaults);
    Switched first(preferences);
    Switched second(preferences);
    QVERIFY(!first.showsBlanks());
    second.pressKey();
    QVERIFY(first.showsBlanks());
    QVERIFY(second.showsBlanks());
    UserDefaults later(home.file(u"penwick.conf"_s));
    Preferences laterPreferences(later);
    Switched third(laterPreferences);
    QVERIFY(third.showsBlanks());
    third.pressKey();
    QVERIFY(!third.showsBlanks());
    QCOMPARE(later.string(u"showsBlanks"_s), u"false"_s);
}

void BlankSwitchTest::contextMenu_showsTheStateAndSwitches()
{
    const test::TemporaryHome home;
    UserDefaults defaults(home.file(u"penwick.conf"_s));
    Preferences preferences(defaults);
    Switched view(preferences);
    for (const bool isOn : {false, true}) {
        view.shown.key(Qt::Key_F10, Qt::ShiftModifier);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu != nullptr);
        QAction *action = menu->actions().last();
        QCOMPARE(action->text(), u"タブ・全角空白・行末の空白を表示\tCtrl+Shift+B"_s);
        QCOMPARE(action->isChecked(), isOn);
        action->trigger();
        menu->close();
        QCOMPARE(view.showsBlanks(), !isOn);
    }
}

void BlankSwitchTest::allMarks_switchedOn_areShownInAllViews()
{
    const test::TemporaryHome home;
    UserDefaults defaults(home.file(u"penwick.conf"_s));
    Preferences preferences(defaults);
    Switched first(preferences);
    Switched second(preferences);
    const auto picture = [&] { return second.shown.view.viewport()->grab().toImage(); };
    const QImage none = picture();
    first.blanks.toggle();
    const QImage blanks = picture();
    first.blanks.toggle();
    QVERIFY(!first.blanks.showsAll());
    first.blanks.toggleAll(); // Also shows the blanks, which are hidden.
    QVERIFY(second.blanks.showsAll() && second.blanks.isOn());
    QCOMPARE(defaults.string(u"shownMarks"_s), u"all"_s);
    QVERIFY(picture() != blanks && picture() != none);
    second.blanks.toggle();
    QCOMPARE(picture(), none);
    QVERIFY(!second.blanks.showsAll());
    second.blanks.toggle();
    QVERIFY(second.blanks.showsAll());
    second.blanks.toggleAll();
    QCOMPARE(picture(), blanks);
    QVERIFY(first.blanks.isOn());
}

QTEST_MAIN(BlankSwitchTest)
#include "BlankSwitchTest.moc"
