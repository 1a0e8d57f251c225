#include "macro/library/MacroManager.h"

#include "macro/library/BuiltInMacroProvider.h"
#include "macro/library/MacroFile.h"
#include "macro/library/MacroJson.h"
#include "platform/FileSystem.h"
#include "platform/JsonText.h"
#include "support/CapturedOutput.h"
#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "support/Macros.h"
#include "support/TemporaryHome.h"
#include "wording/WordingLookup.h"
#include "wording/WordingTables.h"

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

const QString kInitializedKey = u"hasInitializedBuiltInMacros"_s;
const QString kStart = u"2025-03-01T09:15:00Z"_s; // Of the fake clock.

/// Whether `action`, run in a process of its own, ends that process abnormally.
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

class MacroManagerTest final : public QObject
{
    Q_OBJECT

private:
    /// What the manager needs, over a folder that may hold a file.
    struct World
    {
        TemporaryHome home;
        UserDefaults defaults{home.file(u"config.conf"_s)};
        FakeClock time;
        FakeIds ids;

        [[nodiscard]] QString folder() const { return home.file(u"data/penwick"_s); }

        void writeFile(const QByteArray &content) const
        {
            home.write(u"data/penwick/macros.json"_s, content);
        }

        void writeFile(const QList<Macro> &macros) const { writeFile(MacroJson::write(macros)); }

        [[nodiscard]] QByteArray file() const { return home.read(u"data/penwick/macros.json"_s); }

        std::unique_ptr<MacroManager> start()
        {
            return std::make_unique<MacroManager>(folder(), defaults, time.clock(), ids.source());
        }
    };

    static QStringList ids(const MacroManager &manager)
    {
        QStringList ids;
        for (const Macro &macro : manager.macros())
            ids.append(macro.id);
        return ids;
    }

    static QStringList names(const MacroManager &manager)
    {
        QStringList names;
        for (const Macro &macro : manager.macros())
            names.append(macro.name);
        return names;
    }

    static QStringList builtInIds()
    {
        QStringList ids;
        for (const auto &definition : BuiltInMacroProvider::definitions())
            ids.append(definition.id);
        return ids;
    }

    static QList<qint64> sortOrders(const MacroManager &manager)
    {
        QList<qint64> orders;
        for (const Macro &macro : manager.macros())
            orders.append(macro.sortOrder);
        return orders;
    }

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void start_firstLaunch_createsTheFolderAndAnEmptyList()
    {
        World world;
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.take(), QByteArray());
        QVERIFY(QFileInfo(world.folder()).isDir());
        QVERIFY(manager->macros().isEmpty());
        QVERIFY(!QFileInfo::exists(world.folder() + u"/macros.json"_s));
        QCOMPARE(manager->supportDirectoryURL(), QUrl::fromLocalFile(world.folder()));
        QCOMPARE(manager->macrosFileURL(), QUrl::fromLocalFile(world.folder() + u"/macros.json"_s));
        manager->installBuiltInMacros();
        QCOMPARE(sortOrders(*manager), (QList<qint64>{1, 2, 3, 4, 5, 6, 7}));
    }

    void load_anyOrder_isSortedAndEqualOnesKeepTheirs()
    {
        World world;
        world.writeFile({sampleMacro(u"five first"_s, 5),
                         sampleMacro(u"one"_s, 1),
                         sampleMacro(u"five second"_s, 5),
                         sampleMacro(u"negative"_s, -3)});
        const QByteArray before = world.file();
        const auto manager = world.start();
        QCOMPARE(ids(*manager),
                 (QStringList{u"negative"_s, u"one"_s, u"five first"_s, u"five second"_s}));
        QVERIFY(manager->macros()[1] == sampleMacro(u"one"_s, 1));
        QCOMPARE(world.file(), before);
    }

    void load_oneMacroLacksAMember_failsAsAWhole()
    {
        World world;
        QByteArray text = MacroJson::write({sampleMacro(u"A"_s), sampleMacro(u"B"_s)});
        text.replace(text.lastIndexOf("\"helpURL\""), 9, "\"otherURL\"");
        world.writeFile(text);
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.takeLines(),
                 QByteArrayList{"Failed to load macros.json: The member \"helpURL\" is missing"});
        QVERIFY(manager->macros().isEmpty());
        QCOMPARE(world.file(), text);
    }

    void load_unreadableFile_logsAndKeepsTheList_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("cut off") << MacroJson::write({sampleMacro()}).chopped(2);
        QTest::newRow("no array") << "{}"_ba;
        QTest::newRow("not UTF-8") << "[\"\xFF\"]"_ba;
        QTest::newRow("more behind it") << "[] []"_ba;
    }

    void load_unreadableFile_logsAndKeepsTheList()
    {
        QFETCH(QByteArray, text);
        World world;
        world.writeFile({sampleMacro()});
        const auto manager = world.start();
        world.writeFile(text);
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        CapturedOutput output;
        manager->loadMacros();
        const QByteArrayList lines = output.takeLines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].startsWith("Failed to load macros.json: "));
        QCOMPARE(ids(*manager), QStringList{u"A"_s});
        QCOMPARE(spy.count(), 0);
        QCOMPARE(world.file(), text);
    }

    void load_folderInTheFilesPlace_logs()
    {
        World world;
        QVERIFY(QDir().mkpath(world.folder() + u"/macros.json"_s));
        CapturedOutput output;
        const auto manager = world.start();
        manager->addMacro(sampleMacro());
        QCOMPARE(output.takeLines(),
                 (QByteArrayList{"Failed to load macros.json: Is a directory",
                                 "Failed to save macros.json: Is a directory"}));
        QCOMPARE(ids(*manager), QStringList{u"A"_s});
    }

    void start_brokenFile_isReplacedByTheBuiltIns()
    {
        World world;
        world.writeFile("[");
        CapturedOutput output;
        const auto manager = world.start();
        manager->installBuiltInMacros();
        output.take();
        QCOMPARE(ids(*manager), builtInIds());
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
    }

    void start_fileInTheFoldersPlace_savesFailWithALine()
    {
        World world;
        world.home.write(u"data/penwick"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        manager->installBuiltInMacros();
        QCOMPARE(output.takeLines(), QByteArrayList{"Failed to save macros.json: Not a directory"});
        QCOMPARE(ids(*manager), builtInIds());
        QCOMPARE(world.home.read(u"data/penwick"_s), "a file"_ba);
    }

    void start_folderCannotBeCreated_logsAndGoesOn()
    {
        World world;
        world.home.write(u"data"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        manager->addMacro(sampleMacro());
        const QByteArrayList lines = output.takeLines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith("Failed to create Application Support directory: "));
        QVERIFY(lines[1].startsWith("Failed to save macros.json: "));
        QCOMPARE(ids(*manager), QStringList{u"A"_s});
    }

    void macroWithId_sameIdTwice_isTheFirst()
    {
        World world;
        Macro second = sampleMacro(u"A"_s, 2);
        second.name = u"second"_s;
        world.writeFile({sampleMacro(u"A"_s, 1), second});
        const auto manager = world.start();
        QVERIFY(manager->macroWithId(u"A"_s) == sampleMacro(u"A"_s, 1));
        QVERIFY(!manager->macroWithId(u"a"_s).has_value());
    }

    void add_macro_hasNewTimesAndTheNextSortOrder()
    {
        World world;
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
        World world;
        world.writeFile({sampleMacro(u"a"_s, -7), sampleMacro(u"b"_s, -5)});
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"c"_s));
        QCOMPARE(sortOrders(*manager), (QList<qint64>{-7, -5, -4}));
    }

    void add_noSortOrderLeft_endsTheProcess()
    {
        World world;
        world.writeFile({sampleMacro(u"last"_s, std::numeric_limits<qint64>::max())});
        const QByteArray before = world.file();
        const auto manager = world.start();
        QVERIFY(isFatal([&] { manager->addMacro(sampleMacro(u"one more"_s)); }));
        QVERIFY(!isFatal([&] { manager->updateMacro(sampleMacro(u"nobody"_s)); }));
        QCOMPARE(world.file(), before);
    }

    void update_macro_replacesTheFirstInPlace()
    {
        World world;
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
        World world;
        const auto manager = world.start();
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        manager->updateMacro(sampleMacro(u"unknown"_s));
        QVERIFY(manager->macros().isEmpty());
        QCOMPARE(spy.count(), 0);
        QVERIFY(!QFileInfo::exists(world.folder() + u"/macros.json"_s));
    }

    void delete_idThatOccursTwice_removesBoth()
    {
        World world;
        world.writeFile({sampleMacro(u"A"_s, 1), sampleMacro(u"B"_s, 2), sampleMacro(u"A"_s, 3)});
        const auto manager = world.start();
        manager->deleteMacro(u"A"_s);
        QCOMPARE(ids(*manager), QStringList{u"B"_s});
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
        // The id may belong to the list itself.
        manager->deleteMacro(manager->macros().constFirst().id);
        QVERIFY(manager->macros().isEmpty());
        QCOMPARE(world.file(), "[]"_ba);
    }

    void changes_fileChangedElsewhere_areMadeToWhatIsThere()
    {
        World world;
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
            QVERIFY2(ids(*manager).contains(id), qPrintable(id));
        QVERIFY(!ids(*manager).contains(u"A"_s));
        QCOMPARE(MacroJson::read(world.file()), manager->macros());
    }

    void changesFromElsewhere_unreadableOrRemoved_keepTheList()
    {
        World world;
        const auto manager = world.start();
        manager->addMacro(sampleMacro(u"A"_s));
        const QList<Macro> macros = manager->macros();
        {
            CapturedOutput output;
            world.writeFile(QByteArray("half"));
            manager->takeInChangesFromElsewhere();
            manager->takeInChangesFromElsewhere();
            QCOMPARE(output.take().count("Failed to load macros.json: "), 1);
        }
        QCOMPARE(manager->macros(), macros);
        QVERIFY(QFile::remove(world.folder() + u"/macros.json"_s));
        manager->takeInChangesFromElsewhere();
        QCOMPARE(manager->macros(), macros);
        manager->duplicateMacro(sampleMacro(u"A"_s));
        QCOMPARE(MacroJson::read(world.file()), manager->macros());
    }

    void importMacro_exportedOne_isAppendedAsANewOne()
    {
        World world;
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
        World world;
        const auto manager = world.start();
        const QByteArray file = MacroFile::write(sampleMacro());
        QCOMPARE(manager->importMacro(file), u"A"_s);
        QCOMPARE(manager->importMacro(file), FakeIds::id(1));
        QCOMPARE(manager->importMacro(file), FakeIds::id(2));
        QCOMPARE(names(*manager),
                 (QStringList{u"name of A"_s, u"name of A のコピー"_s, u"name of A のコピー"_s}));
        Macro other = sampleMacro(u"B"_s);
        other.code = u"// penwick:macro\n// name: name of A\n\nx"_s;
        QCOMPARE(manager->importMacro(JsonText::write(MacroJson::encode(other))), u"B"_s);
        QCOMPARE(manager->macros().constLast().name, u"name of A のコピー"_s);
        QCOMPARE(manager->macros().constLast().code, u"x"_s);
    }

    void importMacro_otherJson_changesNothing()
    {
        World world;
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
        World world;
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
        World world;
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

    void change_observers_areToldBeforeAndAfter()
    {
        World world;
        const auto manager = world.start();
        QList<qsizetype> before;
        QList<qsizetype> after;
        connect(manager.get(), &MacroManager::macrosWillChange, this, [&] {
            before.append(manager->macros().size());
        });
        connect(manager.get(), &MacroManager::macrosChanged, this, [&] {
            after.append(manager->macros().size());
        });
        manager->addMacro(sampleMacro(u"A"_s));
        manager->duplicateMacro(sampleMacro(u"A"_s));
        manager->updateMacro(sampleMacro(u"A"_s));
        manager->deleteMacro(u"A"_s);
        manager->installBuiltInMacros();
        manager->loadMacros();
        QCOMPARE(before, (QList<qsizetype>{0, 1, 2, 2, 1, 8}));
        QCOMPARE(after, (QList<qsizetype>{1, 2, 2, 1, 8, 8}));
    }

    void install_firstLaunch_addsTheSeven()
    {
        World world;
        const auto manager = world.start();
        QVERIFY(!world.defaults.contains(kInitializedKey));
        manager->installBuiltInMacros();
        QCOMPARE(ids(*manager), builtInIds());
        QCOMPARE(sortOrders(*manager), (QList<qint64>{1, 2, 3, 4, 5, 6, 7}));
        for (qsizetype i = 0; i < manager->macros().size(); ++i) {
            const Macro &macro = manager->macros()[i];
            const auto &definition = BuiltInMacroProvider::definitions()[i];
            Macro expected;
            expected.id = definition.id;
            expected.name =
                wording::fallbackTable().value(BuiltInMacroProvider::nameKey(definition.macro));
            expected.description = definition.description;
            expected.code = BuiltInMacroProvider::script(definition.macro);
            expected.isEnabled = true;
            expected.source = u"builtin"_s;
            expected.version = u"1.0.0"_s;
            expected.createdAt = expected.updatedAt = kStart;
            expected.sortOrder = i + 1;
            expected.category = u"general"_s;
            QVERIFY(macro == expected);
        }
        QVERIFY(world.defaults.boolean(kInitializedKey));
        QVERIFY(world.start()->macros() == manager->macros());
    }

    void install_activeWording_namesThem()
    {
        World world;
        wording::setActiveValues(
            QHash<QString, QString>{{u"macro.default.extractUrls.name"_s, u"Extract URLs"_s}});
        const auto manager = world.start();
        manager->installBuiltInMacros();
        wording::setActiveValues(std::nullopt);
        manager->installBuiltInMacros();
        QCOMPARE(manager->macroWithId(u"default_extractUrls"_s)->name, u"Extract URLs"_s);
        QCOMPARE(manager->macroWithId(u"default_stripHtmlTags"_s)->name, u"HTMLタグを除去"_s);
    }

    void install_userMacros_areFollowed()
    {
        World world;
        world.writeFile({sampleMacro(u"A"_s, 3), sampleMacro(u"B"_s, 12)});
        const auto manager = world.start();
        manager->installBuiltInMacros();
        QCOMPARE(ids(*manager), (QStringList{u"A"_s, u"B"_s} + builtInIds()));
        QCOMPARE(sortOrders(*manager), (QList<qint64>{3, 12, 13, 14, 15, 16, 17, 18, 19}));
    }

    void install_deletedAndEdited_bringsBackOnlyTheDeleted()
    {
        World world;
        {
            const auto manager = world.start();
            manager->installBuiltInMacros();
            manager->deleteMacro(u"default_extractUrls"_s);
            Macro edited = *manager->macroWithId(u"default_removeEmptyLines"_s);
            edited.code = u"return {};"_s;
            edited.name = u"mine"_s;
            manager->updateMacro(edited);
        }
        world.time.advanceSeconds(3600);
        const auto manager = world.start();
        const QList<Macro> before = manager->macros();
        manager->installBuiltInMacros();
        QCOMPARE(manager->macros().size(), 7);
        QVERIFY(manager->macros().first(6) == before);
        const Macro &restored = manager->macros().constLast();
        QCOMPARE(restored.id, u"default_extractUrls"_s);
        QCOMPARE(restored.sortOrder, 8);
        QCOMPARE(restored.createdAt, u"2025-03-01T10:15:00Z"_s);
        QCOMPARE(manager->macroWithId(u"default_removeEmptyLines"_s)->code, u"return {};"_s);
    }

    void install_allPresent_savesNothing()
    {
        World world;
        world.start()->installBuiltInMacros();
        QVERIFY(world.defaults.remove(kInitializedKey));
        world.writeFile(world.file() + '\n'); // What a save would take away.
        const QByteArray before = world.file();
        const auto manager = world.start();
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        manager->installBuiltInMacros();
        QCOMPARE(world.file(), before);
        QCOMPARE(spy.count(), 0);
        QVERIFY(!world.defaults.contains(kInitializedKey));
    }

    void install_unwritableFolder_keepsThemInMemory()
    {
        World world;
        const auto manager = world.start();
        QVERIFY(QDir(world.folder()).removeRecursively());
        CapturedOutput output;
        manager->installBuiltInMacros();
        QCOMPARE(output.takeLines(),
                 QByteArrayList{"Failed to save macros.json: No such file or directory"});
        QCOMPARE(ids(*manager), builtInIds());
    }

    void shared_usesTheDataFolder()
    {
        const TemporaryHome home;
        MacroManager &manager = MacroManager::shared();
        QCOMPARE(&MacroManager::shared(), &manager);
        manager.addMacro(sampleMacro());
        QVERIFY(home.read(u"data/penwick/macros.json"_s).contains("\"A\""));
    }
};

QTEST_APPLESS_MAIN(MacroManagerTest)
#include "MacroManagerTest.moc"
