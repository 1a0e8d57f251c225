#include "app/AppDelegate.h"
#include "app/AppDelegateTestBase.h"
#include "macro/library/MacroJson.h"
#include "macro/library/MacroManager.h"

#include <QTest>

using namespace penwick;
using namespace Qt::StringLiterals;

namespace {

/// What a window has at the moment it is made.
struct FirstWindow
{
    QStringList storedMacros; ///< Names in the file.
    QStringList barTitles;
    QStringList macroTitles; ///< The macro menu's items before its first separator.
};

QString titleOf(const QAction *item)
{
    return item->text().remove(u'&');
}

} // namespace

/// A test of the order of the start-up: each step uses the results of those before it. The stores
/// of a process are read once, so this is the only launch of its process.
class LaunchTest final : public QObject, private test::AppDelegateTestBase
{
    Q_OBJECT

private Q_SLOTS:

    void init() { begin(); }

    void cleanup() { end(); }

    void launch_firstEver_readsProfileInstallsMacrosBuildsMenusThenOpens();
};

void LaunchTest::launch_firstEver_readsProfileInstallsMacrosBuildsMenusThenOpens()
{
    UIWordingProfile profile;
    profile.id = u"own"_s;
    profile.name = u"Own"_s;
    profile.values = {{u"macro.default.trimTrailingSpaces.name"_s, u"Own trim"_s},
                      {u"menu.file"_s, u"Own file"_s}};
    m_home.write(u"data/penwick/ui-wording-profiles/own.json"_s, profile.toJson());
    m_home.write(u"config/penwick/penwick.conf"_s, "activeUIWordingProfileId=own\n");

    QList<FirstWindow> made;
    QObject::connect(&m_app->documentController(),
                     &DocumentController::windowMade,
                     this,
                     [&made, this](const EditorWindow *window) {
                         FirstWindow first;
                         const auto stored =
                             MacroJson::read(m_home.read(u"data/penwick/macros.json"_s));
                         for (const Macro &macro : stored.value_or(QList<Macro>()))
                             first.storedMacros << macro.name;
                         for (const QAction *bar : window->menuBar()->actions())
                             first.barTitles << titleOf(bar);
                         for (const QAction *item : macroMenu(window)->actions()) {
                             if (item->isSeparator())
                                 break;
                             first.macroTitles << titleOf(item);
                         }
                         made << first;
                     });
    launch();

    // The macros take their names from the active profile when they are installed.
    const QStringList names{u"Own trim"_s,
                            u"空行を削除"_s,
                            u"行頭に文字を追加"_s,
                            u"行末に文字を追加"_s,
                            u"日付・時刻を挿入"_s,
                            u"URLを抽出"_s,
                            u"HTMLタグを除去"_s};
    QCOMPARE(made.size(), 1);
    QCOMPARE(made.first().storedMacros, names);
    QCOMPARE(made.first().barTitles.at(1), u"Own file"_s);
    QCOMPARE(made.first().macroTitles, names);
    QVERIFY(UserDefaults::standard().string(u"hasInitializedBuiltInMacros"_s) == u"true"_s);

    QCOMPARE(m_app->documentController().windowControllers().size(), 1);
    QVERIFY(controller()->window()->isVisible());
    QVERIFY(QTest::qWaitForWindowActive(controller()->window()));
    QCOMPARE(m_app->lastActiveEditorWindowController().get(), controller());
    UIWordingProfileManager::shared().applyProfile(
        UIWordingProfileManager::shared().profiles().first());
    QCOMPARE(titleOf(menu(1)->menuAction()), u"ファイル"_s);
    QCOMPARE(macroItem(u"default_trimTrailingSpaces"_s)->text(), u"Own trim"_s);
}

QTEST_MAIN(LaunchTest)
#include "LaunchTest.moc"
