#include "view/TextViewMenu.h"

#include "support/ShownTextView.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QTest>

#include <memory>

using namespace penwick;
using namespace Qt::StringLiterals;
using Fixture = test::ShownTextView;

namespace {

QStringList titlesOf(const QMenu &menu)
{
    QStringList titles;
    for (const QAction *action : menu.actions())
        titles << action->text().section(u'\t', 0, 0);
    return titles;
}

QStringList enabledIn(const QMenu &menu)
{
    QStringList titles;
    for (const QAction *action : menu.actions())
        if (action->isEnabled() && !action->isSeparator())
            titles << action->text().section(u'\t', 0, 0);
    return titles;
}

/// The open menu; null when there is none.
QMenu *openMenu()
{
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

void rightClick(Fixture &f, QPoint point)
{
    QTest::mousePress(f.view.viewport(), Qt::RightButton, {}, point);
    QContextMenuEvent event(
        QContextMenuEvent::Mouse, point, f.view.viewport()->mapToGlobal(point), {});
    QCoreApplication::sendEvent(f.view.viewport(), &event);
}

void choose(const QString &title)
{
    QMenu *menu = openMenu();
    QVERIFY(menu);
    for (QAction *action : menu->actions())
        if (action->text().section(u'\t', 0, 0) == title)
            action->trigger();
    menu->close();
}

} // namespace

class TextViewMenuTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void init() { QGuiApplication::clipboard()->clear(); }

    void cleanup();
    void entries_areThoseOfANativeView();
    void entries_areOnWhenTheyCanDoSomething();
    void rightClickOutsideTheSelection_movesTheCaret();
    void rightClickOnTheSelection_keepsIt();
    void keys_openTheMenuAtTheCaret_data();
    void keys_openTheMenuAtTheCaret();
    void entries_doWhatTheySay();
    void menuDuringAComposition_endsIt();
};

void TextViewMenuTest::cleanup()
{
    if (QMenu *menu = openMenu())
        menu->close();
}

void TextViewMenuTest::entries_areThoseOfANativeView()
{
    Fixture f(u"text");
    const std::unique_ptr<QMenu> menu(makeTextViewMenu(&f.view));
    QCOMPARE(titlesOf(*menu),
             (QStringList{u"元に戻す"_s,
                          u"やり直す"_s,
                          QString(),
                          u"切り取り"_s,
                          u"コピー"_s,
                          u"貼り付け"_s,
                          u"削除"_s,
                          QString(),
                          u"すべてを選択"_s}));
}

void TextViewMenuTest::entries_areOnWhenTheyCanDoSomething()
{
    Fixture f;
    const auto enabled = [&f] {
        const std::unique_ptr<QMenu> menu(makeTextViewMenu(&f.view));
        return enabledIn(*menu);
    };
    QCOMPARE(enabled(), QStringList());
    QTest::keyClicks(&f.view, u"ab"_s);
    QCOMPARE(enabled(), (QStringList{u"元に戻す"_s, u"すべてを選択"_s}));
    f.view.setSelectedRange({0, 1});
    f.view.copy();
    QCOMPARE(enabled(),
             (QStringList{u"元に戻す"_s,
                          u"切り取り"_s,
                          u"コピー"_s,
                          u"貼り付け"_s,
                          u"削除"_s,
                          u"すべてを選択"_s}));
    f.view.undo();
    QCOMPARE(enabled(), (QStringList{u"やり直す"_s, u"貼り付け"_s}));
}

void TextViewMenuTest::rightClickOutsideTheSelection_movesTheCaret()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({0, 3});
    rightClick(f, f.pointOf(8));
    QVERIFY(openMenu());
    QCOMPARE(f.view.selectedRange(), (TextRange{8, 0}));
}

void TextViewMenuTest::rightClickOnTheSelection_keepsIt()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({4, 3});
    rightClick(f, f.pointOf(5));
    QVERIFY(openMenu());
    QCOMPARE(f.view.selectedRange(), (TextRange{4, 3}));
}

void TextViewMenuTest::keys_openTheMenuAtTheCaret_data()
{
    QTest::addColumn<bool>("isMenuKey");
    QTest::newRow("Menu") << true;
    QTest::newRow("Shift+F10") << false;
}

void TextViewMenuTest::keys_openTheMenuAtTheCaret()
{
    QFETCH(bool, isMenuKey);
    Fixture f(u"line\n"_s.repeated(300));
    f.caret(1000);
    f.view.verticalScrollBar()->setValue(0);
    if (isMenuKey) { // The platform sends a context menu event.
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {}, {});
        QCoreApplication::sendEvent(&f.view, &event);
    } else {
        f.key(Qt::Key_F10, Qt::ShiftModifier);
    }
    QMenu *menu = openMenu();
    QVERIFY(menu);
    const QRectF caret = f.view.caretRectAt(1000);
    QVERIFY(f.view.viewport()->rect().contains(caret.center().toPoint()));
    const QPoint corner = f.view.viewport()->mapToGlobal(caret.bottomLeft().toPoint());
    QCOMPARE(menu->pos().x(), corner.x());
    // The menu opens upwards if there is no room below.
    QVERIFY(menu->pos().y() == corner.y() || menu->geometry().bottom() <= corner.y());
    QCOMPARE(f.view.selectedRange(), (TextRange{1000, 0}));
}

void TextViewMenuTest::entries_doWhatTheySay()
{
    Fixture f(u"one two three");
    f.view.setSelectedRange({3, 4});
    rightClick(f, f.pointOf(5));
    choose(u"切り取り"_s);
    QCOMPARE(f.text(), u"one three"_s);
    rightClick(f, f.pointOf(9));
    choose(u"貼り付け"_s);
    QCOMPARE(f.text(), u"one three two"_s);
    rightClick(f, f.pointOf(0));
    choose(u"すべてを選択"_s);
    QCOMPARE(f.view.selectedRange(), (TextRange{0, 13}));
    rightClick(f, f.pointOf(1));
    choose(u"削除"_s);
    QCOMPARE(f.text(), QString());
    rightClick(f, QPoint(50, 50));
    choose(u"元に戻す"_s);
    QCOMPARE(f.text(), u"one three two"_s);
}

void TextViewMenuTest::menuDuringAComposition_endsIt()
{
    Fixture f(u"ab");
    f.compose(u"に"_s);
    rightClick(f, QPoint(50, 50));
    QVERIFY(!f.view.hasMarkedText());
    QCOMPARE(f.text(), u"ab"_s);
}

QTEST_MAIN(TextViewMenuTest)
#include "TextViewMenuTest.moc"
