#include "wording/EnglishProfile.h"

#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryHome.h"
#include "wording/ProfileImport.h"
#include "wording/WordingLookup.h"
#include "wording/WordingTables.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

class EnglishProfileTest final : public QObject
{
    Q_OBJECT

private:
    struct World
    {
        TemporaryHome home;
        UserDefaults defaults{home.file(u"defaults.conf"_s)};
        NotificationCenter center;
        UIWordingProfileManager manager{home.file(u"profiles"_s), defaults, center};
        FakeClock time;
        FakeIds ids;

        [[nodiscard]] bool useEnglish()
        {
            return useEnglishProfile(manager, time.clock(), ids.source()).has_value();
        }
    };

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void profile_always_hasATextForEveryKey()
    {
        const UIWordingProfile &profile = englishProfile();
        QCOMPARE(profile.id, kEnglishProfileId);
        QCOMPARE(profile.locale, u"en"_s);
        QVERIFY(!profile.isBuiltIn);
        QHash<QString, QString> all = wording::defaultTexts({});
        all.insert(wording::englishValues());
        QStringList expected = all.keys();
        QStringList keys = profile.values.keys();
        expected.sort();
        keys.sort();
        QCOMPARE(keys, expected);
        for (const QString &text : profile.values) {
            QVERIFY(!text.isEmpty());
            for (const QChar unit : text)
                QVERIFY2(unit.script() != QChar::Script_Han &&
                             unit.script() != QChar::Script_Hiragana &&
                             unit.script() != QChar::Script_Katakana,
                         qPrintable(text));
        }
    }

    void use_first_addsAndAppliesIt()
    {
        World world;
        QVERIFY(world.useEnglish());
        QCOMPARE(world.manager.activeProfileId(), kEnglishProfileId);
        const auto stored = UIWordingProfile::fromJson(world.home.read(u"profiles/english.json"_s));
        QVERIFY(stored.has_value());
        QCOMPARE(stored->values, englishProfile().values);
        QVERIFY(!stored->createdAt.isEmpty());
        QCOMPARE(wording::text(u"menu.file.new"_s), u"New"_s);
        QCOMPARE(wording::text(u"dialog.inputTitle"_s), u"Input"_s);
    }

    void use_again_keepsTheUsersChanges()
    {
        World world;
        QVERIFY(world.useEnglish());
        UIWordingProfile changed = *world.manager.profileWithId(kEnglishProfileId);
        changed.values.insert(u"menu.file.new"_s, u"Fresh"_s);
        QVERIFY(world.manager.saveProfile(changed));
        world.manager.applyProfile(builtInJapaneseProfile());
        QVERIFY(world.useEnglish());
        QCOMPARE(world.manager.profiles().size(), 3);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"Fresh"_s);
    }

    void use_notSaved_changesNothing()
    {
        World world;
        {
            const FileSizeLimit full(16);
            QVERIFY(!world.useEnglish());
        }
        QCOMPARE(world.manager.activeProfileId(), kBuiltInProfileId);
        QCOMPARE(world.manager.profiles().size(), 2);
    }
};

QTEST_APPLESS_MAIN(EnglishProfileTest)
#include "EnglishProfileTest.moc"
