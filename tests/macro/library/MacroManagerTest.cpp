#include "macro/library/MacroManager.h"

#include "macro/library/MacroFile.h"
#include "macro/library/StoredMacros.h"
#include "platform/files/FileSystem.h"
#include "platform/json/JsonText.h"
#include "support/CapturedOutput.h"
#include "support/Macros.h"

#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <functional>
#include <limits>
#include <sys/wait.h>
#include <unistd.h>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kStart = u"2025-03-01T09:15:00Z"_s; // The fake clock's time.

/// True when `action`, run in a child process, ends that process abnormally.
bool isFatal(const std::function<void()> &action)
{
    const pid_t child = ::fork();
    if (child == 0) {
        // The test framework would report the message as a failure of this test.
        qInstallMessageHandler(nullptr);
        std::signal(SIGABRT, SIG_DFL);
        ::close(STDERR_FILENO);
        action();
        ::_exit(0);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFSIGNALED(status) &&
           WTERMSIG(status) == SIGABRT;
}

} // namespace

/// Tests of the list of macros and of its changes.
class MacroManagerTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void macroWithId_sameIdTwice_isTheFirst()
    {
        StoredMacros world;
        Macro second = sampleMacro(u"A"_s, 2);
        second.name = u"second"_s;
        world.writeFile({sampleMacro(u"A"_s, 1), second});
        const auto manager = world.start();
        QVERIFY(manager->macroWithId(u"A"_s) == sampleMacro(u"A"_s, 1));
        QVERIFY(!manager->macroWithId(u"a"_s).has_value());
    }

    void add_macro_hasNewTimesAndTheNextSortOrder()
    {
        StoredMacros world;
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"first"_s, 99));
        world.time.advanceSeconds(60);
        manager->addMacro(sampleMacro(u"second"_s, -99));
        Macro first = sampleMacro(u"first"_s, 1);
        first.createdAt = first.updatedAt = kStart;
        Macro second = sampleMacro(u"second"_s, 2);
        second.createdAt = second.updatedAt = u"2025-03-01T09:16:00Z"_s;
        QVERIFY(manager->macros() == (QList{first, second}));
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
    }

    void add_macro_followsTheLargestSortOrder()
    {
        StoredMacros world;
        world.writeFile({sampleMacro(u"a"_s, -7), sampleMacro(u"b"_s, -5)});
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"c"_s));
        QCOMPARE(sortOrdersOf(*manager), (QList<qint64>{-7, -5, -4}));
    }

    void add_noSortOrderLeft_endsTheProcess()
    {
        StoredMacros world;
        world.writeFile({sampleMacro(u"last"_s, std::numeric_limits<qint64>::max())});
        const QByteArray before = world.file();
        const auto manager = world.start();
        QVERIFY(isFatal([&] { manager->addMacro(sampleMacro(u"one more"_s)); }));
        QVERIFY(!isFatal([&] { manager->updateMacro(sampleMacro(u"missing"_s)); }));
        QCOMPARE(world.file(), before);
    }

    void update_macro_replacesTheFirstInPlace()
    {
        StoredMacros world;
        world.writeFile({sampleMacro(u"A"_s, 1), sampleMacro(u"B"_s, 2), sampleMacro(u"B"_s, 3)});
        const auto manager = world.start();
        Macro changed = sampleMacro(u"B"_s, -50);
        changed.name = u"changed"_s;
        changed.createdAt = u"whenever"_s;
        manager->updateMacro(changed);
        changed.updatedAt = kStart;
        QVERIFY(manager->macros() ==
                (QList{sampleMacro(u"A"_s, 1), changed, sampleMacro(u"B"_s, 3)}));
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
    }

    void update_unknownId_changesAndSavesNothing()
    {
        StoredMacros world;
        const auto manager = world.start();
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        manager->updateMacro(sampleMacro(u"unknown"_s));
        QVERIFY(manager->macros().isEmpty());
        QCOMPARE(spy.count(), 0);
        QVERIFY(!QFileInfo::exists(world.folder() + u"/macros.json"_s));
    }

    void delete_idThatOccursTwice_removesBoth()
    {
        StoredMacros world;
        world.writeFile({sampleMacro(u"A"_s, 1), sampleMacro(u"B"_s, 2), sampleMacro(u"A"_s, 3)});
        const auto manager = world.start();
        manager->deleteMacro(u"A"_s);
        QCOMPARE(idsOf(*manager), QStringList{u"B"_s});
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
        // The id may be a reference into the list itself.
        manager->deleteMacro(manager->macros().constFirst().id);
        QVERIFY(manager->macros().isEmpty());
        QCOMPARE(world.file(), "[]"_ba);
    }

    void changes_fileChangedElsewhere_areMadeToWhatIsThere()
    {
        StoredMacros world;
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"A"_s));
        const auto writeElsewhere = [&](const QString &id) {
            QList<Macro> macros = MacroJson::read(world.file()).value();
            macros.append(sampleMacro(id, 90));
            world.writeFile(macros);
        };
        writeElsewhere(u"B"_s);
        manager->addMacro(sampleMacro(u"C"_s));
        writeElsewhere(u"D"_s);
        manager->updateMacro(sampleMacro(u"A"_s));
        writeElsewhere(u"E"_s);
        manager->deleteMacro(manager->macros().constFirst().id);
        writeElsewhere(u"F"_s);
        manager->duplicateMacro(sampleMacro(u"C"_s));
        writeElsewhere(u"G"_s);
        QVERIFY(manager->importMacro(MacroFile::write(sampleMacro(u"H"_s))).has_value());
        for (const auto &id : {u"B"_s, u"C"_s, u"D"_s, u"E"_s, u"F"_s, u"G"_s, u"H"_s})
            QVERIFY2(idsOf(*manager).contains(id), qPrintable(id));
        QVERIFY(!idsOf(*manager).contains(u"A"_s));
        QCOMPARE(MacroJson::read(world.file()), manager->macros());
    }

    void changesFromElsewhere_unreadableOrRemoved_keepTheList()
    {
        StoredMacros world;
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"A"_s));
        const QList<Macro> macros = manager->macros();
        {
            CapturedOutput output;
            world.writeFile(QByteArray("half"));
            manager->reloadIfChanged();
            manager->reloadIfChanged();
            QCOMPARE(output.take().count("Failed to load macros.json: "), 1);
        }
        QCOMPARE(manager->macros(), macros);
        QVERIFY(QFile::remove(world.folder() + u"/macros.json"_s));
        manager->reloadIfChanged();
        QCOMPARE(manager->macros(), macros);
        manager->duplicateMacro(sampleMacro(u"A"_s));
        QCOMPARE(MacroJson::read(world.file()), manager->macros());
    }

    void importMacro_exportedOne_isAppendedAsANewOne()
    {
        StoredMacros world;
        world.writeFile(QList{sampleMacro(u"B"_s, 41)});
        const auto manager = world.start();
        Macro macro = sampleMacro(u"A"_s, 7);
        macro.source = u"builtin"_s;
        QCOMPARE(manager->importMacro(MacroFile::write(macro)), u"A"_s);
        macro.source = u"imported"_s;
        macro.isEnabled = true;
        macro.createdAt = kStart;
        macro.updatedAt = kStart;
        macro.sortOrder = 42;
        QCOMPARE(manager->macros().value(1), macro);
        QCOMPARE(MacroJson::read(world.file()), manager->macros());
    }

    void importMacro_idAndNameTaken_getsNewOnes()
    {
        StoredMacros world;
        const auto manager = world.start();
        const QByteArray file = MacroFile::write(sampleMacro());
        QCOMPARE(manager->importMacro(file), u"A"_s);
        QCOMPARE(manager->importMacro(file), FakeIds::id(1));
        QCOMPARE(manager->importMacro(file), FakeIds::id(2));
        QCOMPARE(namesOf(*manager),
                 (QStringList{u"name of A"_s, u"name of A のコピー"_s, u"name of A のコピー"_s}));
        Macro other = sampleMacro(u"B"_s);
        other.code = u"// penwick:macro\n// name: name of A\n\nx"_s;
        QCOMPARE(manager->importMacro(JsonText::write(MacroJson::encode(other))), u"B"_s);
        QCOMPARE(manager->macros().constLast().name, u"name of A のコピー"_s);
        QCOMPARE(manager->macros().constLast().code, u"x"_s);
    }

    void importMacro_otherJson_changesNothing()
    {
        StoredMacros world;
        world.writeFile(QList{sampleMacro()});
        const QByteArray before = world.file();
        const auto manager = world.start();
        QVERIFY(!manager->importMacro(before));
        QVERIFY(!manager->importMacro("{}"));
        QCOMPARE(manager->macros(), QList{sampleMacro()});
        QCOMPARE(world.file(), before);
    }

    void duplicate_macro_isTheUsersOwnCopy()
    {
        StoredMacros world;
        Macro original = sampleMacro(u"default_x"_s, 4);
        original.name = u"A"_s;
        original.source = u"builtin"_s;
        world.writeFile(QList{original});
        const auto manager = world.start();
        manager->duplicateMacro(original);
        Macro copy = original;
        copy.id = FakeIds::id(1);
        copy.name = u"A のコピー"_s;
        copy.source = u"user"_s;
        copy.createdAt = copy.updatedAt = kStart;
        copy.sortOrder = 5;
        QVERIFY(manager->macros() == (QList{original, copy}));

        manager->duplicateMacro(copy);
        QCOMPARE(manager->macros().constLast().name, u"A のコピー のコピー"_s);
        QCOMPARE(manager->macros().constLast().id, FakeIds::id(2));
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
    }

    void save_anyChange_writesTheStoredForm()
    {
        StoredMacros world;
        const auto manager = world.start();
        const auto check = [&] {
            QCOMPARE(world.file(), MacroJson::write(manager->macros()));
            QVERIFY(world.file().startsWith("[\n  {\n    \"category\" : "));
            QVERIFY(world.file().contains("https:\\/\\/example.com\\/help"));
            QCOMPARE(folderEntries(world.folder()).value(), QStringList{u"macros.json"_s});
        };
        manager->addMacro(sampleMacro(u"A"_s));
        check();
        manager->duplicateMacro(sampleMacro(u"A"_s));
        check();
        manager->updateMacro(sampleMacro(u"A"_s));
        check();
        manager->deleteMacro(FakeIds::id(1));
        check();
        manager->installBuiltInMacros();
        check();
    }

    void change_observers_areNotified()
    {
        StoredMacros world;
        const auto manager = world.start();
        QList<qsizetype> sizes;
        connect(manager.get(), &MacroManager::macrosChanged, this, [&] {
            sizes.append(manager->macros().size());
        });
        manager->addMacro(sampleMacro(u"A"_s));
        manager->duplicateMacro(sampleMacro(u"A"_s));
        manager->updateMacro(sampleMacro(u"A"_s));
        manager->deleteMacro(u"A"_s);
        manager->installBuiltInMacros();
        manager->loadMacros();
        QCOMPARE(sizes, (QList<qsizetype>{1, 2, 2, 1, 8, 8}));
    }
};

QTEST_APPLESS_MAIN(MacroManagerTest)
#include "MacroManagerTest.moc"
