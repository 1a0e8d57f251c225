#include "wording/UIWordingProfileManager.h"

#include "support/CapturedOutput.h"
#include "support/TemporaryHome.h"
#include "wording/WordingLookup.h"

#include <QSignalSpy>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

UIWordingProfile userProfile(const QString &id,
                             const QString &createdAt = u"2024-05-01T09:30:00Z"_s,
                             const QString &name = u"Mine"_s)
{
    UIWordingProfile profile;
    profile.id = id;
    profile.name = name;
    profile.locale = u"ja"_s;
    profile.createdAt = createdAt;
    profile.updatedAt = createdAt;
    profile.values = {{u"menu.file"_s, id + u" file"_s}};
    return profile;
}

} // namespace

class UIWordingProfileManagerTest final : public QObject
{
    Q_OBJECT

private:
    /// One start of the application: the manager's dependencies, over a folder that may hold files.
    struct World
    {
        TemporaryHome home;
        UserDefaults defaults{home.file(u"config.conf"_s)};
        NotificationCenter center;
        QObject listener;
        int posts = 0;

        World()
        {
            center.addObserver(UIWordingProfileDidChange, &listener, [this] { ++posts; });
        }

        [[nodiscard]] QString folder() const { return home.file(u"data/penwick/profiles"_s); }

        void writeFile(const QString &name, const QByteArray &content) const
        {
            home.write(u"data/penwick/profiles/"_s + name, content);
        }

        void writeFile(const UIWordingProfile &profile) const
        {
            writeFile(profile.id + u".json"_s, profile.toJson());
        }

        [[nodiscard]] QByteArray readFile(const QString &name) const
        {
            return home.read(u"data/penwick/profiles/"_s + name);
        }

        std::unique_ptr<UIWordingProfileManager> start()
        {
            return std::make_unique<UIWordingProfileManager>(folder(), defaults, center);
        }
    };

    static QStringList ids(const UIWordingProfileManager &manager)
    {
        QStringList ids;
        for (const UIWordingProfile &profile : manager.profiles())
            ids.append(profile.id);
        return ids;
    }

    static QStringList withBuiltIns(const QStringList &userIds)
    {
        return QStringList{u"default-ja"_s, u"default-en"_s} + userIds;
    }

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void start_noFolder_createsItAndHasTheBuiltIns()
    {
        World world;
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.take(), QByteArray());
        QVERIFY(QFileInfo(world.folder()).isDir());
        QCOMPARE(manager->profileDirectoryURL(), QUrl::fromLocalFile(world.folder()));
        QVERIFY(manager->profiles() == (QList{builtInJapaneseProfile(), builtInEnglishProfile()}));
        QCOMPARE(manager->activeProfileId(), std::optional(u"default-ja"_s));
        QCOMPARE(world.defaults.string(kActiveProfileKey), std::optional(u"default-ja"_s));
        QCOMPARE(world.posts, 1);
        QVERIFY(folderEntries(world.folder())->isEmpty());
    }

    void start_fileInTheFoldersPlace_logsAndHasTheBuiltIns()
    {
        World world;
        world.home.write(u"data/penwick/profiles"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        const QByteArrayList lines = output.takeLines();
        // The path exists, so no folder is created.
        QCOMPARE(lines,
                 QByteArrayList{"Error reading contents of ui-wording-profiles directory: "
                                "Not a directory"});
        QCOMPARE(ids(*manager), withBuiltIns({}));
        QCOMPARE(manager->activeProfileId(), std::optional(u"default-ja"_s));
    }

    void start_folderCannotBeCreated_logsAndHasTheBuiltIns()
    {
        World world;
        world.home.write(u"data/penwick"_s, "a file");
        CapturedOutput output;
        const auto manager = world.start();
        const QByteArrayList lines = output.takeLines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith("Error creating ui-wording-profiles directory: "));
        QVERIFY(lines[1].startsWith("Error reading contents of ui-wording-profiles directory: "));
        QCOMPARE(ids(*manager), withBuiltIns({}));
    }

    void start_otherExtensions_areIgnored()
    {
        World world;
        const QByteArray good = userProfile(u"x"_s).toJson();
        for (const auto &name :
             {u"a.JSON"_s, u"b.Json"_s, u"c.json~"_s, u"json"_s, u".json"_s, u"d.txt"_s})
            world.writeFile(name, good);
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.take(), QByteArray());
        QCOMPARE(ids(*manager), withBuiltIns({}));
    }

    void start_hiddenFile_isRead()
    {
        World world;
        world.writeFile(u".hidden.json"_s, userProfile(u"hidden"_s).toJson());
        QCOMPARE(ids(*world.start()), withBuiltIns({u"hidden"_s}));
    }

    void start_undecodableFile_isLoggedAndSkipped()
    {
        World world;
        world.writeFile(u"bad one.json"_s, "{");
        world.writeFile(userProfile(u"good"_s));
        QVERIFY(QDir().mkdir(world.folder() + u"/folder.json"_s));
        CapturedOutput output;
        const auto manager = world.start();
        const QByteArrayList lines = output.takeLines();
        const QByteArray url = "file://" + QFile::encodeName(world.folder());
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith("Error loading UI Wording Profile at " + url +
                                    "/bad%20one.json: The text is not valid JSON"));
        QCOMPARE(lines[1],
                 "Error loading UI Wording Profile at " + url + "/folder.json: Is a directory");
        QCOMPARE(ids(*manager), withBuiltIns({u"good"_s}));
        QCOMPARE(world.readFile(u"bad one.json"_s), "{"_ba);
    }

    void start_fileThatClaimsToBeBuiltIn_isDropped()
    {
        World world;
        UIWordingProfile profile = userProfile(u"liar"_s);
        profile.isBuiltIn = true;
        world.writeFile(profile);
        CapturedOutput output;
        const auto manager = world.start();
        QCOMPARE(output.take(), QByteArray());
        QCOMPARE(ids(*manager), withBuiltIns({}));
    }

    void start_fileWithTheIdOfABuiltIn_staysBehindIt()
    {
        World world;
        world.writeFile(userProfile(u"default-ja"_s));
        const auto manager = world.start();
        QCOMPARE(ids(*manager), withBuiltIns({u"default-ja"_s}));
        QVERIFY(manager->profileWithId(u"default-ja"_s)->isBuiltIn);
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
    }

    void profiles_ofUsers_areOldestFirstThenByNameThenUndated()
    {
        World world;
        world.writeFile(userProfile(u"undated b"_s, u""_s, u"B"_s));
        world.writeFile(userProfile(u"undated a"_s, u""_s, u"A"_s));
        world.writeFile(userProfile(u"a new"_s, u"2025-01-01T00:00:00Z"_s, u"A"_s));
        world.writeFile(userProfile(u"same b"_s, u"2024-01-01T00:00:00Z"_s, u"B"_s));
        world.writeFile(userProfile(u"same c"_s, u"2024-01-01T00:00:00Z"_s, u"A"_s));
        world.writeFile(userProfile(u"z old"_s, u"2023-01-01T00:00:00Z"_s, u"Z"_s));
        QCOMPARE(ids(*world.start()),
                 withBuiltIns({u"z old"_s,
                               u"same c"_s,
                               u"same b"_s,
                               u"a new"_s,
                               u"undated a"_s,
                               u"undated b"_s}));
    }

    void start_rememberedProfile_isApplied()
    {
        World world;
        world.writeFile(userProfile(u"mine"_s));
        world.defaults.setString(kActiveProfileKey, u"mine"_s);
        const auto manager = world.start();
        QCOMPARE(manager->activeProfileId(), std::optional(u"mine"_s));
        QCOMPARE(wording::text(u"menu.file"_s), u"mine file"_s);
        QCOMPARE(world.posts, 1);
    }

    void start_rememberedIdNoLongerExists_appliesJapanese()
    {
        World world;
        world.defaults.setString(kActiveProfileKey, u"gone"_s);
        const auto manager = world.start();
        QCOMPARE(manager->activeProfileId(), std::optional(u"default-ja"_s));
        QCOMPARE(world.defaults.string(kActiveProfileKey), std::optional(u"default-ja"_s));
    }

    void apply_japanese_givesTheTableTexts()
    {
        World world;
        const auto manager = world.start();
        manager->applyProfile(builtInEnglishProfile());
        QCOMPARE(wording::text(u"dialog.no"_s), u"No"_s); // By its locale.
        manager->applyProfile(builtInJapaneseProfile());
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
    }

    void apply_english_givesItsNineTexts()
    {
        World world;
        const auto manager = world.start();
        manager->applyProfile(*manager->profileWithId(kBuiltInEnglishProfileId));
        QCOMPARE(wording::text(u"menu.file"_s), u"File"_s);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"新規作成"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"Window"_s);
    }

    void apply_profileWithoutValues_isAsJapanese()
    {
        World world;
        UIWordingProfile profile = userProfile(u"empty"_s);
        profile.values.clear();
        world.start()->applyProfile(profile);
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
        QCOMPARE(wording::text(u"menu.window"_s), u"menu.window"_s);
        QCOMPARE(wording::text(u"menu.window"_s, u"default"_s), u"default"_s);
    }

    void apply_emptyText_isShownAsEmpty()
    {
        World world;
        UIWordingProfile profile = userProfile(u"mine"_s);
        profile.values = {{u"menu.file"_s, u""_s}};
        world.start()->applyProfile(profile);
        QCOMPARE(wording::text(u"menu.file"_s), QString());
    }

    void apply_anyProfile_isStoredAndPosted()
    {
        World world;
        const auto manager = world.start();
        QSignalSpy idSpy(manager.get(), &UIWordingProfileManager::activeProfileIdChanged);
        QString seenText;
        QString seenId;
        world.center.addObserver(UIWordingProfileDidChange, &world.listener, [&] {
            seenText = wording::text(u"menu.file"_s);
            seenId = manager->activeProfileId().value_or(QString());
        });
        world.posts = 0;
        manager->applyProfile(builtInEnglishProfile());
        QCOMPARE(world.posts, 1);
        QCOMPARE(idSpy.count(), 1);
        QCOMPARE(seenText, u"File"_s);
        QCOMPARE(seenId, u"default-en"_s);
        QVERIFY(world.home.read(u"config.conf"_s).contains("activeUIWordingProfileId=default-en"));
        manager->applyProfile(builtInEnglishProfile());
        QCOMPARE(world.posts, 2);
    }

    void save_newProfile_isWrittenListedAndNotApplied()
    {
        World world;
        const auto manager = world.start();
        QVERIFY(manager->saveProfile(userProfile(u"b"_s, u"2024-02-01T00:00:00Z"_s)).has_value());
        QVERIFY(manager->saveProfile(userProfile(u"a"_s, u"2024-01-01T00:00:00Z"_s)).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({u"a"_s, u"b"_s}));
        QCOMPARE(world.readFile(u"a.json"_s),
                 userProfile(u"a"_s, u"2024-01-01T00:00:00Z"_s).toJson());
        QCOMPARE(world.posts, 1);
        QVERIFY(world.start()->profiles() == manager->profiles());
    }

    void save_activeProfile_isAppliedAgain()
    {
        World world;
        const auto manager = world.start();
        UIWordingProfile profile = userProfile(u"mine"_s);
        QVERIFY(manager->saveProfile(profile).has_value());
        manager->applyProfile(profile);
        world.posts = 0;
        profile.values = {{u"menu.file"_s, u"edited"_s}};
        QVERIFY(manager->saveProfile(profile).has_value());
        QCOMPARE(world.posts, 1);
        QCOMPARE(wording::text(u"menu.file"_s), u"edited"_s);
        QVERIFY(manager->profileWithId(u"mine"_s) == profile);
        QCOMPARE(ids(*manager), withBuiltIns({u"mine"_s}));
    }

    void save_vanishedFolder_isCreatedAgain()
    {
        World world;
        const auto manager = world.start();
        QVERIFY(QDir(world.folder()).removeRecursively());
        QVERIFY(manager->saveProfile(userProfile(u"a"_s)).has_value());
        QVERIFY(!world.readFile(u"a.json"_s).isEmpty());
    }

    void save_cannotBeWritten_changesNothing_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("folder in the file's place") << u"folder"_s;
        QTest::newRow("folder that is missing") << u"gone/x"_s;
        QTest::newRow("file of the folder around it") << u"../macros"_s;
        QTest::newRow("NUL") << u"x"_s + QChar(u'\0') + u"y"_s;
        QTest::newRow("too long") << QString(300, u'x');
        QTest::newRow("empty") << QString();
    }

    void save_cannotBeWritten_changesNothing()
    {
        QFETCH(QString, id);
        World world;
        const auto manager = world.start();
        QVERIFY(QDir().mkdir(world.folder() + u"/folder.json"_s));
        QSignalSpy spy(manager.get(), &UIWordingProfileManager::profilesChanged);
        QVERIFY(!manager->saveProfile(userProfile(id)).has_value());
        QCOMPARE(spy.count(), 0);
        QCOMPARE(ids(*manager), withBuiltIns({}));
        QCOMPARE(folderEntries(world.folder()).value(), QStringList{u"folder.json"_s});
        QVERIFY(!QFileInfo::exists(world.home.file(u"data/penwick/macros.json"_s)));
    }

    void changesFromElsewhere_takenIn_areListedAndApplied()
    {
        World world;
        world.writeFile(userProfile(u"a"_s));
        const auto manager = world.start();
        manager->applyProfile(userProfile(u"a"_s));
        const int posts = world.posts;
        QSignalSpy spy(manager.get(), &UIWordingProfileManager::profilesChanged);
        manager->reloadIfChanged();
        QCOMPARE(spy.count(), 0);
        UIWordingProfile changed = userProfile(u"a"_s);
        changed.values = {{u"menu.file"_s, u"changed"_s}};
        world.writeFile(changed);
        world.writeFile(userProfile(u"b"_s));
        manager->reloadIfChanged();
        QCOMPARE(ids(*manager), withBuiltIns({u"a"_s, u"b"_s}));
        QCOMPARE(wording::text(u"menu.file"_s), u"changed"_s);
        QCOMPARE(world.posts, posts + 1);
        QVERIFY(QFile::remove(world.folder() + u"/a.json"_s));
        manager->reloadIfChanged();
        QCOMPARE(ids(*manager), withBuiltIns({u"b"_s}));
        QCOMPARE(manager->activeProfileId(), kBuiltInProfileId);
        // The manager's own writes do not count as changes from elsewhere.
        QVERIFY(manager->saveProfile(userProfile(u"c"_s)).has_value());
        QVERIFY(manager->deleteProfile(u"b"_s).has_value());
        spy.clear();
        manager->reloadIfChanged();
        QCOMPARE(spy.count(), 0);
        // They do not hide such a change either.
        world.writeFile(userProfile(u"d"_s));
        QVERIFY(manager->saveProfile(userProfile(u"e"_s)).has_value());
        manager->reloadIfChanged();
        QVERIFY(manager->profileWithId(u"d"_s).has_value());
    }

    void delete_userProfile_removesFileAndEntries()
    {
        World world;
        world.writeFile(userProfile(u"a"_s));
        world.writeFile(userProfile(u"b"_s));
        world.writeFile(u"also a.json"_s, userProfile(u"a"_s).toJson());
        const auto manager = world.start();
        world.posts = 0;
        QVERIFY(manager->deleteProfile(u"a"_s).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({u"b"_s}));
        QVERIFY(!QFileInfo::exists(world.folder() + u"/a.json"_s));
        QCOMPARE(world.posts, 0);
    }

    void delete_filesOfOtherNames_leavesOtherProfilesOnly()
    {
        World world;
        world.writeFile(u"a.json"_s, userProfile(u"b"_s).toJson());
        world.writeFile(u"b.json"_s, userProfile(u"a"_s).toJson());
        world.writeFile(u"copy of a.json"_s, userProfile(u"a"_s).toJson());
        const auto manager = world.start();
        QVERIFY(manager->deleteProfile(u"a"_s).has_value());
        QCOMPARE(folderEntries(world.folder()).value(), QStringList{u"a.json"_s});
        QCOMPARE(ids(*world.start()), withBuiltIns({u"b"_s}));
        manager->reloadIfChanged();
        QCOMPARE(ids(*manager), withBuiltIns({u"b"_s}));
    }

    void canStore_idsOfNoFile_only()
    {
        World world;
        world.writeFile(u"a.json"_s, userProfile(u"b"_s).toJson());
        world.writeFile(u"broken.json"_s, "{");
        const auto manager = world.start();
        QVERIFY(manager->canStore(u"b"_s));
        QVERIFY(!manager->canStore(u"a"_s));
        QVERIFY(!manager->canStore(u"broken"_s));
        QVERIFY(!manager->canStore(QString()));
    }

    void delete_activeUserProfile_appliesJapanese()
    {
        World world;
        world.writeFile(userProfile(u"mine"_s));
        world.defaults.setString(kActiveProfileKey, u"mine"_s);
        const auto manager = world.start();
        world.posts = 0;
        QVERIFY(manager->deleteProfile(*manager->activeProfileId()).has_value());
        QCOMPARE(manager->activeProfileId(), std::optional(u"default-ja"_s));
        QCOMPARE(world.defaults.string(kActiveProfileKey), std::optional(u"default-ja"_s));
        QCOMPARE(world.posts, 1);
        QCOMPARE(wording::text(u"menu.file"_s), u"ファイル"_s);
    }

    void changes_argumentsFromTheOwnList_areSafe()
    {
        World world;
        world.writeFile(userProfile(u"mine"_s));
        world.defaults.setString(kActiveProfileKey, u"mine"_s);
        const auto manager = world.start();
        world.posts = 0;
        QVERIFY(manager->saveProfile(manager->profiles().constLast()).has_value());
        QCOMPARE(world.posts, 1);
        QCOMPARE(wording::text(u"menu.file"_s), u"mine file"_s);
        QVERIFY(manager->deleteProfile(manager->profiles().constLast().id).has_value());
        QCOMPARE(world.posts, 2);
        QCOMPARE(ids(*manager), withBuiltIns({}));
    }

    void delete_builtIn_doesNothing()
    {
        World world;
        world.writeFile(userProfile(u"default-en"_s));
        const auto manager = world.start();
        manager->applyProfile(builtInEnglishProfile());
        world.posts = 0;
        for (const auto &id : {kBuiltInEnglishProfileId, kBuiltInProfileId})
            QVERIFY(manager->deleteProfile(id).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({u"default-en"_s}));
        QCOMPARE(manager->activeProfileId(), std::optional(u"default-en"_s));
        QCOMPARE(world.posts, 0);
        QVERIFY(!world.readFile(u"default-en.json"_s).isEmpty());
    }

    void delete_withoutFile_removesTheEntry()
    {
        World world;
        world.writeFile(u"other name.json"_s, userProfile(u"a"_s).toJson());
        world.writeFile(u"nul.json"_s, userProfile(u"x"_s + QChar(u'\0') + u"y"_s).toJson());
        const auto manager = world.start();
        QVERIFY(manager->deleteProfile(u"a"_s).has_value());
        QVERIFY(manager->deleteProfile(u"x"_s + QChar(u'\0') + u"y"_s).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({}));
    }

    void delete_idThatLeadsOutOfTheFolder_removesTheEntryOnly()
    {
        World world;
        world.home.write(u"data/penwick/macros.json"_s, "[]");
        world.writeFile(u"strange.json"_s, userProfile(u"../macros"_s).toJson());
        const auto manager = world.start();
        QVERIFY(manager->deleteProfile(u"../macros"_s).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({}));
        QCOMPARE(world.home.read(u"data/penwick/macros.json"_s), "[]");
    }

    void delete_cannotBeRemoved_changesNothing()
    {
        World world;
        world.writeFile(u"other name.json"_s, userProfile(u"a"_s).toJson());
        QVERIFY(QDir().mkdir(world.folder() + u"/a.json"_s));
        CapturedOutput output;
        const auto manager = world.start();
        output.take();
        QVERIFY(!manager->deleteProfile(u"a"_s).has_value());
        QCOMPARE(ids(*manager), withBuiltIns({u"a"_s}));
    }

    void shared_usesTheDataFolder()
    {
        const TemporaryHome home;
        UIWordingProfileManager &manager = UIWordingProfileManager::shared();
        QCOMPARE(&UIWordingProfileManager::shared(), &manager);
        QVERIFY(QFileInfo(home.file(u"data/penwick/ui-wording-profiles"_s)).isDir());
        QVERIFY(home.read(u"config/penwick/penwick.conf"_s).contains("default-ja"));
    }
};

QTEST_APPLESS_MAIN(UIWordingProfileManagerTest)
#include "UIWordingProfileManagerTest.moc"
