#include "app/MenuBar.h"

#include "editor/TextStorage.h"
#include "view/TextView.h"
#include "wording/UIWordingProfile.h"
#include "wording/WordingLookup.h"

#include <QAction>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSet>
#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

class MenuBarTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void titles_japanese_areTheWholeTable();
    void titles_english_coverItsKeysOnly();
    void titles_profileWithAmpersand_areVerbatim();
    void shortcuts_all_areUnique();
    void rebuild_replacesTheBar();
    void impossibleCommand_isDisabled();
    void item_triggered_performsItsCommand();
    void shortcut_afterRebuild_performsOnce();
    void menu_longerThanTheScreen_staysOneColumn();
    void altKey_highlightsTheBar();
    void f10Key_opensTheFirstMenu();
    void editItem_triggered_reachesTheFocusWidget();
    void editMenu_open_showsWhatIsPossible();
    void editMenu_openedByKeyboard_servesTheWidgetFocusedBefore();

private:
    [[nodiscard]] QStringList items(int menuIndex) const;

    [[nodiscard]] QMenu *menu(int index) const
    {
        return m_window->menuBar()->actions()[index]->menu();
    }

    /// Shows the window with a focused field that holds "abc".
    void showField();

    std::unique_ptr<QMainWindow> m_window;
    QLineEdit *m_field = nullptr; // Owned by the window.
    QList<CommandId> m_performed;
    MenuHandlers m_handlers;
};

void MenuBarTest::init()
{
    m_performed.clear();
    m_handlers = {[this](CommandId command) { m_performed << command; },
                  [](CommandId command) { return command != CommandId::CheckForUpdates; }};
    m_window = std::make_unique<QMainWindow>();
    buildMenuBar(m_window.get(), m_handlers);
}

void MenuBarTest::cleanup()
{
    m_window.reset();
    wording::setActiveValues(std::nullopt);
}

void MenuBarTest::showField()
{
    m_field = new QLineEdit(u"abc"_s);
    m_window->setCentralWidget(m_field);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_field->setFocus();
}

/// The text and shortcut of each item.
QStringList MenuBarTest::items(int menuIndex) const
{
    QStringList result;
    for (const QAction *action : menu(menuIndex)->actions()) {
        result << (action->isSeparator() ? u"-"_s
                                         : action->text() + u"|"_s + action->shortcut().toString());
    }
    return result;
}

void MenuBarTest::titles_japanese_areTheWholeTable()
{
    QStringList titles;
    for (const QAction *action : m_window->menuBar()->actions())
        titles << action->text();
    QCOMPARE(
        titles,
        (QStringList{
            u"penwick"_s, u"ファイル"_s, u"編集"_s, u"マクロ"_s, u"プロファイル"_s, u"ヘルプ"_s}));
    QCOMPARE(items(0), (QStringList{u"penwick について|"_s, u"-"_s, u"penwick を終了|Ctrl+Q"_s}));
    QCOMPARE(items(1),
             (QStringList{u"新規作成|Ctrl+N"_s,
                          u"開く…|Ctrl+O"_s,
                          u"-"_s,
                          u"閉じる|Ctrl+W"_s,
                          u"保存|Ctrl+S"_s,
                          u"別名で保存…|Ctrl+Shift+S"_s}));
    QCOMPARE(items(2),
             (QStringList{u"元に戻す|Ctrl+Z"_s,
                          u"やり直す|Ctrl+Shift+Z"_s,
                          u"-"_s,
                          u"切り取り|Ctrl+X"_s,
                          u"コピー|Ctrl+C"_s,
                          u"貼り付け|Ctrl+V"_s}));
    QCOMPARE(items(3), QStringList());
    QCOMPARE(items(4), QStringList{u"UI文言プロファイル管理…|"_s});
    QCOMPARE(items(5), QStringList{u"アップデートを確認…|"_s});
    QCOMPARE(macroMenu(m_window.get()), menu(3));
}

void MenuBarTest::titles_english_coverItsKeysOnly()
{
    wording::setActiveValues(builtInEnglishProfile().values);
    buildMenuBar(m_window.get(), m_handlers);
    QCOMPARE(m_window->menuBar()->actions()[1]->text(), u"File"_s);
    QCOMPARE(items(1).first(), u"新規作成|Ctrl+N"_s);
    QCOMPARE(items(4), QStringList{u"Manage UI Wording Profiles...|"_s});
}

void MenuBarTest::titles_profileWithAmpersand_areVerbatim()
{
    wording::setActiveValues(QHash<QString, QString>{{u"menu.file"_s, u"A & B"_s},
                                                     {u"app.name"_s, u"Pen"_s},
                                                     {u"menu.file.new"_s, u"New\tFile"_s}});
    buildMenuBar(m_window.get(), m_handlers);
    QCOMPARE(m_window->menuBar()->actions()[1]->text(), u"A && B"_s);
    QCOMPARE(m_window->menuBar()->actions()[0]->text(), u"Pen"_s);
    QCOMPARE(items(0).first(), u"Pen について|"_s);
    QCOMPARE(items(1).first(), u"New File|Ctrl+N"_s);
}

void MenuBarTest::shortcuts_all_areUnique()
{
    QSet<QString> seen;
    for (const QAction *action : m_window->menuBar()->findChildren<QAction *>()) {
        const QString key = action->shortcut().toString();
        if (!key.isEmpty()) {
            QVERIFY2(!seen.contains(key), qPrintable(key));
            seen << key;
        }
    }
    QCOMPARE(seen.size(), 11);
}

void MenuBarTest::rebuild_replacesTheBar()
{
    const QPointer<QMenuBar> before = m_window->menuBar();
    buildMenuBar(m_window.get(), m_handlers);
    QVERIFY(m_window->menuBar() != before.data());
    QTRY_VERIFY(before.isNull());
    QCOMPARE(m_window->findChildren<QMenuBar *>().size(), 1);
}

void MenuBarTest::impossibleCommand_isDisabled()
{
    QVERIFY(!menu(5)->actions()[0]->isEnabled());
    QVERIFY(menu(4)->actions()[0]->isEnabled());
}

void MenuBarTest::item_triggered_performsItsCommand()
{
    for (const int menuIndex : {0, 1, 4})
        for (QAction *action : menu(menuIndex)->actions())
            action->trigger();
    QCOMPARE(m_performed,
             (QList<CommandId>{CommandId::About,
                               CommandId::Quit,
                               CommandId::NewDocument,
                               CommandId::OpenDocument,
                               CommandId::PerformClose,
                               CommandId::SaveDocument,
                               CommandId::SaveDocumentAs,
                               CommandId::ShowProfileManager}));
}

void MenuBarTest::shortcut_afterRebuild_performsOnce()
{
    m_window->setCentralWidget(new QWidget);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    buildMenuBar(m_window.get(), m_handlers);
    QTRY_VERIFY(m_window->menuBar()->isVisible());
    QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(m_performed, QList<CommandId>{CommandId::SaveDocument});
    QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(m_performed.last(), CommandId::SaveDocumentAs);
    QCOMPARE(m_performed.size(), 2);
}

void MenuBarTest::menu_longerThanTheScreen_staysOneColumn()
{
    m_window->show();
    QMenu *macros = macroMenu(m_window.get());
    for (int i = 0; i < 200; ++i)
        macros->addAction(QString::number(i));
    macros->popup({0, 0});
    QVERIFY(QTest::qWaitForWindowExposed(macros));
    QVERIFY(macros->height() <= macros->screen()->availableGeometry().height());
    const QList<QAction *> items = macros->actions();
    QCOMPARE(macros->actionGeometry(items.last()).x(), macros->actionGeometry(items.first()).x());
    macros->close();
}

void MenuBarTest::altKey_highlightsTheBar()
{
    showField();
    const QImage before = m_window->menuBar()->grab().toImage();
    QTest::keyPress(m_field, Qt::Key_Alt, Qt::AltModifier);
    QTest::keyRelease(m_field, Qt::Key_Alt);
    QVERIFY(m_window->menuBar()->hasFocus());
    QVERIFY(m_window->menuBar()->grab().toImage() != before);
}

void MenuBarTest::f10Key_opensTheFirstMenu()
{
    showField();
    QTest::keyClick(m_window.get(), Qt::Key_F10);
    QVERIFY(menu(0)->isVisible());
    menu(0)->close();
}

void MenuBarTest::editItem_triggered_reachesTheFocusWidget()
{
    showField();
    m_field->selectAll();
    menu(2)->actions()[3]->trigger(); // Cut
    QCOMPARE(m_field->text(), QString());
    menu(2)->actions()[5]->trigger(); // Paste
    QCOMPARE(m_field->text(), u"abc"_s);
    menu(2)->actions()[0]->trigger(); // Undo
    QCOMPARE(m_field->text(), QString());
    QVERIFY(m_performed.isEmpty());
}

void MenuBarTest::editMenu_open_showsWhatIsPossible()
{
    showField();
    const QMenu *edit = menu(2);
    Q_EMIT menu(2)->aboutToShow();
    QVERIFY(!edit->actions()[0]->isEnabled()); // Undo
    QVERIFY(!edit->actions()[4]->isEnabled()); // Copy
    m_field->selectAll();
    Q_EMIT menu(2)->aboutToShow();
    QVERIFY(edit->actions()[4]->isEnabled());
    Q_EMIT menu(2)->aboutToHide();
    QVERIFY(edit->actions()[0]->isEnabled());
}

// Opening a menu by keyboard takes the focus from the widget that the commands act on.
void MenuBarTest::editMenu_openedByKeyboard_servesTheWidgetFocusedBefore()
{
    TextStorage storage;
    auto *view = new TextView(&storage);
    m_window->setCentralWidget(view);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    view->setFocus();
    QTest::keyClicks(view, u"abc"_s);
    view->setSelectedRange({0, 3});
    m_window->menuBar()->setFocus(Qt::MenuBarFocusReason);
    QVERIFY(m_window->menuBar()->hasFocus());
    Q_EMIT menu(2)->aboutToShow();
    const QList<QAction *> edit = menu(2)->actions();
    QVERIFY(edit[0]->isEnabled());  // Undo
    QVERIFY(!edit[1]->isEnabled()); // Redo
    QVERIFY(edit[3]->isEnabled());
    edit[3]->trigger(); // Cut
    QCOMPARE(view->string().toString(), QString());
    delete m_window->takeCentralWidget(); // Must be destroyed before its storage.
}

QTEST_MAIN(MenuBarTest)
#include "MenuBarTest.moc"
