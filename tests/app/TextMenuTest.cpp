#include "app/AppDelegateTestBase.h"
#include "command/Palette.h"
#include "macro/library/MacroManager.h"
#include "support/Waits.h"

#include <QLineEdit>
#include <QTest>

#include <algorithm>

using namespace penwick;
using namespace Qt::StringLiterals;

/// Tests of what the application adds to the context menu of the text.
class TextMenuTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init()
    {
        UserDefaults::usage().remove(u"recentCommands/onSelection"_s);
        begin();
        launch();
        activate(0);
        setText(u"b  \na  \n"_s);
    }

    void cleanup() { end(); }

    void goToLine_isOffered();
    void macros_runOnASelection_areOffered();
    void macros_withoutASelection_areNot();
    void macros_afterAnotherStart_areOffered();
    void macros_deletedOrDisabled_areLeftOut();
    void macros_offered_areFive();
    void macro_chosen_runs();

private:
    void run(const QString &id, TextRange selection) const;

    /// Fills the menu as for a click with the right button.
    void fill(QMenu *menu) const { Q_EMIT view()->contextMenuWillOpen(menu); }

    /// The names of the macros in the menu.
    [[nodiscard]] QStringList macros() const;

    [[nodiscard]] TextView *view() const { return controller()->textView(); }
};

void TextMenuTest::run(const QString &id, TextRange selection) const
{
    view()->setSelectedRange(selection);
    m_app->runDynamicMacro(id);
    QTRY_VERIFY_WITH_TIMEOUT(!controller()->isRunningMacro(), test::kLongWait);
    QCoreApplication::processEvents();
}

QStringList TextMenuTest::macros() const
{
    QMenu menu;
    fill(&menu);
    QStringList names;
    for (const QAction *action : menu.actions())
        if (MacroManager::shared().macroWithId(action->data().toString()))
            names << action->text();
    return names;
}

void TextMenuTest::goToLine_isOffered()
{
    QMenu menu;
    fill(&menu);
    const auto actions = menu.actions();
    const auto found = std::find_if(actions.begin(), actions.end(), [](const QAction *action) {
        return action->text() == u"行へ移動…\tCtrl+L";
    });
    QVERIFY(found != actions.end());
    (*found)->trigger();
    QCOMPARE(Palette::openIn(controller()->window())->typed(), u":"_s);
}

void TextMenuTest::macros_runOnASelection_areOffered()
{
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    run(u"default_removeEmptyLines"_s, {0, 0});
    view()->selectAll();
    QCOMPARE(macros(), QStringList(u"行末スペースを削除"_s));
    run(u"default_removeEmptyLines"_s, {0, 2});
    view()->selectAll();
    QCOMPARE(macros().constFirst(), u"空行を削除"_s);
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    view()->selectAll();
    QCOMPARE(macros().mid(0, 2), (QStringList{u"行末スペースを削除"_s, u"空行を削除"_s}));
}

void TextMenuTest::macros_withoutASelection_areNot()
{
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    view()->setSelectedRange({1, 0});
    QCOMPARE(macros(), QStringList());
}

void TextMenuTest::macros_afterAnotherStart_areOffered()
{
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    end();
    begin();
    launch();
    setText(u"b"_s);
    view()->selectAll();
    QCOMPARE(macros(), QStringList(u"行末スペースを削除"_s));
}

void TextMenuTest::macros_deletedOrDisabled_areLeftOut()
{
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    run(u"default_removeEmptyLines"_s, {0, 2});
    Macro macro = *MacroManager::shared().macroWithId(u"default_removeEmptyLines"_s);
    macro.isEnabled = false;
    MacroManager::shared().updateMacro(macro);
    view()->selectAll();
    QCOMPARE(macros(), QStringList(u"行末スペースを削除"_s));
    macro.isEnabled = true;
    MacroManager::shared().updateMacro(macro);
}

void TextMenuTest::macros_offered_areFive()
{
    QStringList ids;
    for (int i = 0; i < 6; ++i) {
        Macro macro = *MacroManager::shared().macroWithId(u"default_removeEmptyLines"_s);
        macro.id = u"own %1"_s.arg(i);
        macro.name = macro.id;
        MacroManager::shared().addMacro(macro);
        ids << macro.id;
        run(macro.id, {0, 2});
    }
    view()->selectAll();
    QCOMPARE(macros(), (QStringList{ids[5], ids[4], ids[3], ids[2], ids[1]}));
    for (const QString &id : ids)
        MacroManager::shared().deleteMacro(id);
    QCOMPARE(macros(), QStringList());
}

void TextMenuTest::macro_chosen_runs()
{
    run(u"default_trimTrailingSpaces"_s, {0, 2});
    setText(u"c  \n"_s);
    view()->selectAll();
    QMenu menu;
    fill(&menu);
    menu.actions().constLast()->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(text(), u"c\n"_s, test::kLongWait);
}

QTEST_MAIN(TextMenuTest)
#include "TextMenuTest.moc"
