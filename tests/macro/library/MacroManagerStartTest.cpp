#include "macro/library/BuiltInMacroProvider.h"
#include "macro/library/MacroManager.h"
#include "macro/library/StoredMacros.h"
#include "support/CapturedOutput.h"
#include "support/Macros.h"
#include "wording/WordingLookup.h"
#include "wording/WordingTables.h"

#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kInitializedKey = u"hasInitializedBuiltInMacros"_s;
const QString kStart = u"2025-03-01T09:15:00Z"_s; // The fake clock's time.

QStringList builtInIds()
{
    QStringList ids;
    for (const auto &definition : BuiltInMacroProvider::definitions())
        ids.append(definition.id);
    return ids;
}

} // namespace

/// Tests of the initial list of macros: from the file and from the built-in macros.
class MacroManagerStartTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void start_firstLaunch_createsTheFolderAndAnEmptyList()
    {
        StoredMacros world;
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.take(), QByteArray());
        QVERIFY(QFileInfo(world.folder()).isDir());
        QVERIFY(manager->macros().isEmpty());
        QVERIFY(!QFileInfo::exists(world.folder() + u"/macros.json"_s));
        QCOMPARE(manager->supportDirectoryURL(), QUrl::fromLocalFile(world.folder()));
        QCOMPARE(manager->macrosFileURL(), QUrl::fromLocalFile(world.folder() + u"/macros.json"_s));
        manager->installBuiltInMacros();
        QCOMPARE(sortOrdersOf(*manager), (QList<qint64>{1, 2, 3, 4, 5, 6, 7}));
    }

    void load_anyOrder_isSortedAndEqualOnesKeepTheirs()
    {
        StoredMacros world;
        world.writeFile({sampleMacro(u"five first"_s, 5),
                         sampleMacro(u"one"_s, 1),
                         sampleMacro(u"five second"_s, 5),
                         sampleMacro(u"negative"_s, -3)});
        const QByteArray before = world.file();
        const auto manager = world.start();
        QCOMPARE(idsOf(*manager),
                 (QStringList{u"negative"_s, u"one"_s, u"five first"_s, u"five second"_s}));
        QVERIFY(manager->macros()[1] == sampleMacro(u"one"_s, 1));
        QCOMPARE(world.file(), before);
    }

    void load_oneMacroLacksAMember_failsAsAWhole()
    {
        StoredMacros world;
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
        StoredMacros world;
        world.writeFile({sampleMacro()});
        const auto manager = world.start();
        world.writeFile(text);
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        CapturedOutput output;
        manager->loadMacros();
        const QByteArrayList lines = output.takeLines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines[0].startsWith("Failed to load macros.json: "));
        QCOMPARE(idsOf(*manager), QStringList{u"A"_s});
        QCOMPARE(spy.count(), 0);
        QCOMPARE(world.file(), text);
    }

    void load_folderInTheFilesPlace_logs()
    {
        StoredMacros world;
        QVERIFY(QDir().mkpath(world.folder() + u"/macros.json"_s));
        CapturedOutput output;
        const auto manager = world.start();
        manager->addMacro(sampleMacro());
        QCOMPARE(output.takeLines(),
                 (QByteArrayList{"Failed to load macros.json: Is a directory",
                                 "Failed to save macros.json: Is a directory"}));
        QCOMPARE(idsOf(*manager), QStringList{u"A"_s});
    }

    void start_brokenFile_isReplacedByTheBuiltIns()
    {
        StoredMacros world;
        world.writeFile("[");
        CapturedOutput output;
        const auto manager = world.start();
        manager->installBuiltInMacros();
        output.take();
        QCOMPARE(idsOf(*manager), builtInIds());
        QVERIFY(MacroJson::read(world.file()).value() == manager->macros());
    }

    void start_fileInTheFoldersPlace_savesFailWithALine()
    {
        StoredMacros world;
        world.home.write(u"data/penwick"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        manager->installBuiltInMacros();
        QCOMPARE(output.takeLines(), QByteArrayList{"Failed to save macros.json: Not a directory"});
        QCOMPARE(idsOf(*manager), builtInIds());
        QCOMPARE(world.home.read(u"data/penwick"_s), "a file"_ba);
    }

    void start_folderCannotBeCreated_logsAndGoesOn()
    {
        StoredMacros world;
        world.home.write(u"data"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        manager->addMacro(sampleMacro());
        const QByteArrayList lines = output.takeLines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith("Failed to create Application Support directory: "));
        QVERIFY(lines[1].startsWith("Failed to save macros.json: "));
        QCOMPARE(idsOf(*manager), QStringList{u"A"_s});
    }

    void install_firstLaunch_addsTheSeven()
    {
        StoredMacros world;
        const auto manager = world.start();
        QVERIFY(!world.defaults.string(kInitializedKey));
        manager->installBuiltInMacros();
        QCOMPARE(idsOf(*manager), builtInIds());
        QCOMPARE(sortOrdersOf(*manager), (QList<qint64>{1, 2, 3, 4, 5, 6, 7}));
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
        QCOMPARE(world.defaults.string(kInitializedKey), u"true"_s);
        QVERIFY(world.start()->macros() == manager->macros());
    }

    void install_activeWording_namesThem()
    {
        StoredMacros world;
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
        StoredMacros world;
        world.writeFile({sampleMacro(u"A"_s, 3), sampleMacro(u"B"_s, 12)});
        const auto manager = world.start();
        manager->installBuiltInMacros();
        QCOMPARE(idsOf(*manager), (QStringList{u"A"_s, u"B"_s} + builtInIds()));
        QCOMPARE(sortOrdersOf(*manager), (QList<qint64>{3, 12, 13, 14, 15, 16, 17, 18, 19}));
    }

    void install_deletedAndEdited_bringsBackOnlyTheDeleted()
    {
        StoredMacros world;
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
        StoredMacros world;
        world.start()->installBuiltInMacros();
        QVERIFY(world.defaults.setBoolean(kInitializedKey, false));
        world.writeFile(world.file() + '\n'); // A save would remove this.
        const QByteArray before = world.file();
        const auto manager = world.start();
        QSignalSpy spy(manager.get(), &MacroManager::macrosChanged);
        manager->installBuiltInMacros();
        QCOMPARE(world.file(), before);
        QCOMPARE(spy.count(), 0);
        QCOMPARE(world.defaults.string(kInitializedKey), u"false"_s);
    }

    void install_unwritableFolder_keepsThemInMemory()
    {
        StoredMacros world;
        const auto manager = world.start();
        QVERIFY(QDir(world.folder()).removeRecursively());
        CapturedOutput output;
        manager->installBuiltInMacros();
        QCOMPARE(output.takeLines(),
                 QByteArrayList{"Failed to save macros.json: No such file or directory"});
        QCOMPARE(idsOf(*manager), builtInIds());
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

QTEST_APPLESS_MAIN(MacroManagerStartTest)
#include "MacroManagerStartTest.moc"
