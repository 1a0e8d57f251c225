#include "macro/library/MacroJson.h"
#include "macro/library/MacroManager.h"
#include "support/CapturedOutput.h"
#include "support/ChildProcess.h"
#include "support/Macros.h"
#include "support/TemporaryHome.h"
#include "wording/UIWordingProfileManager.h"

#include <QSet>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <thread>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int kRounds = 40;

/// What a process of penwick does to the macros at `folder`: it adds its own, changes each of them,
/// and takes every second away again.
int change(const QString &folder, const QString &name)
{
    UserDefaults defaults(folder + u"/../d.conf"_s);
    MacroManager manager(folder, defaults);
    manager.installBuiltInMacros();
    for (int i = 0; i < kRounds; ++i) {
        const QString id = name + QString::number(i);
        manager.addMacro(sampleMacro(id));
        auto macro = manager.macroWithId(id).value_or(Macro()); // With its place in the list.
        macro.name = u"changed"_s;
        manager.updateMacro(macro);
        if (i % 2 == 1)
            manager.deleteMacro(id);
    }
    return 0;
}

/// Adds profiles, as the import does.
int addProfiles(const QString &folder, const QString &name)
{
    UserDefaults defaults(folder + u"/../d.conf"_s);
    NotificationCenter center;
    UIWordingProfileManager manager(folder, defaults, center);
    for (int i = 0; i < kRounds; ++i) {
        const auto lock = manager.beginChange();
        UIWordingProfile profile;
        // The first process takes the id; the second one needs another.
        const QString id = QString::number(i);
        profile.id = manager.profileWithId(id) ? id + name : id;
        profile.name = name;
        if (!lock || !manager.saveProfile(profile))
            return 1;
    }
    return 0;
}

int hold(const QString &folder)
{
    StoreLock lock(folder);
    const auto held = lock.take();
    std::puts(held ? "held" : "failed");
    std::fflush(stdout);
    while (true)
        ::pause();
}

/// Takes the lock again as soon as it has released it.
int saveRepeatedly(const QString &folder)
{
    StoreLock lock(folder);
    std::puts("begun");
    std::fflush(stdout);
    while (true) {
        constexpr std::chrono::milliseconds kTimeOfASave{20};
        const auto held = lock.take();
        std::this_thread::sleep_for(kTimeOfASave);
    }
}

int runChild(const QStringList &arguments)
{
    const QString &task = arguments.at(1);
    if (task == u"change"_s)
        return change(arguments.at(2), arguments.at(3));
    if (task == u"profiles"_s)
        return addProfiles(arguments.at(2), arguments.at(3));
    return task == u"saveRepeatedly"_s ? saveRepeatedly(arguments.at(2)) : hold(arguments.at(2));
}

} // namespace

/// Several processes over one folder, as on two displays.
class MacroProcessesTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void twoProcesses_changingMacros_loseNothing()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"data/penwick"_s);
        {
            ChildProcess first({u"change"_s, folder, u"first"_s});
            ChildProcess second({u"change"_s, folder, u"second"_s});
            QVERIFY(first.succeeds());
            QVERIFY(second.succeeds());
        }
        const auto stored = MacroJson::read(home.read(u"data/penwick/macros.json"_s));
        QVERIFY(stored);
        QSet<QString> ids;
        QSet<qint64> orders;
        int changed = 0;
        for (const Macro &macro : *stored) {
            ids << macro.id;
            orders << macro.sortOrder;
            changed += macro.name == u"changed"_s ? 1 : 0;
        }
        constexpr int kBuiltIn = 7;
        QCOMPARE(changed, kRounds); // Half of each process's.
        QCOMPARE(stored->size(), kRounds + kBuiltIn);
        QCOMPARE(ids.size(), stored->size());
        QCOMPARE(orders.size(), stored->size()); // No process computed one from an old list.
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"macros.json"_s});
    }

    void twoProcesses_addingProfiles_replaceNone()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"data/penwick/profiles"_s);
        {
            ChildProcess first({u"profiles"_s, folder, u"first"_s});
            ChildProcess second({u"profiles"_s, folder, u"second"_s});
            QVERIFY(first.succeeds());
            QVERIFY(second.succeeds());
        }
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 2 * kRounds);
    }

    void take_whileAnotherProcessSavesWithoutAPause_succeeds()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"data/penwick"_s);
        QVERIFY(QDir().mkpath(folder));
        ChildProcess child({u"saveRepeatedly"_s, folder});
        QCOMPARE(child.readLine(), "begun");
        StoreLock lock(folder);
        for (int i = 0; i < 10; ++i)
            QVERIFY(lock.take(std::chrono::seconds(10))); // Longer than a user would wait.
    }

    void change_heldUpByAHungProcess_isLoggedAndLeavesTheFile()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"data/penwick"_s);
        UserDefaults defaults(home.file(u"d.conf"_s));
        MacroManager manager(folder, defaults);
        manager.addMacro(sampleMacro(u"A"_s));
        const QByteArray before = home.read(u"data/penwick/macros.json"_s);
        ChildProcess child({u"hold"_s, folder});
        QCOMPARE(child.readLine(), "held");
        child.sendSignal(SIGSTOP);
        CapturedOutput output;
        manager.addMacro(sampleMacro(u"B"_s));
        QCOMPARE(output.takeLines(),
                 QByteArrayList{"Failed to save macros.json: Locked by another process"});
        QCOMPARE(home.read(u"data/penwick/macros.json"_s), before);
        QCOMPARE(manager.macros().size(), 2);

        child.kill();
        manager.addMacro(sampleMacro(u"C"_s));
        QCOMPARE(MacroJson::read(home.read(u"data/penwick/macros.json"_s))->size(), 3);
    }

    void saveProfile_heldUpByAHungProcess_fails()
    {
        const TemporaryHome home;
        const QString folder = home.file(u"data/penwick/profiles"_s);
        UserDefaults defaults(home.file(u"d.conf"_s));
        NotificationCenter center;
        UIWordingProfileManager manager(folder, defaults, center);
        ChildProcess child({u"hold"_s, folder});
        QCOMPARE(child.readLine(), "held");
        UIWordingProfile profile;
        profile.id = u"mine"_s;
        QCOMPARE(manager.saveProfile(profile).error().kind, FileError::Kind::Locked);
        QCOMPARE(manager.deleteProfile(profile.id).error().kind, FileError::Kind::Locked);
        QVERIFY(!manager.profileWithId(profile.id));
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (QStringList{u"change"_s, u"profiles"_s, u"saveRepeatedly"_s, u"hold"_s}.contains(
            arguments.value(1)))
        return runChild(arguments);
    MacroProcessesTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "MacroProcessesTest.moc"
