#include "wording/RememberedProfile.h"

#include "support/CapturedOutput.h"
#include "support/TemporaryHome.h"
#include "wording/UIWordingProfile.h"
#include "wording/WordingLookup.h"

#include <QDirIterator>
#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

UIWordingProfile profileNamed(const QString &id, const QString &help)
{
    UIWordingProfile profile;
    profile.id = id;
    profile.values = {{u"cli.help"_s, help}};
    return profile;
}

} // namespace

class RememberedProfileTest final : public QObject
{
    Q_OBJECT

private:
    struct World
    {
        TemporaryHome home;

        void remember(const QByteArray &id) const
        {
            home.write(u"config/penwick/penwick.conf"_s,
                       "[General]\nactiveUIWordingProfileId=" + id + '\n');
        }

        void write(const QString &fileName, const QByteArray &content) const
        {
            home.write(u"data/penwick/ui-wording-profiles/"_s + fileName, content);
        }

        /// All files and folders with their times.
        [[nodiscard]] QStringList entries() const
        {
            QStringList entries;
            QDirIterator all(home.path(),
                             QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
            while (all.hasNext()) {
                const QFileInfo entry(all.next());
                entries << entry.filePath() +
                               QString::number(entry.lastModified().toMSecsSinceEpoch());
            }
            entries.sort();
            return entries;
        }
    };

    const QString m_builtIn = u"この説明を表示して終わります"_s;

private Q_SLOTS:

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void use_firstEver_leavesEverything()
    {
        const World world;
        CapturedOutput output;
        useRememberedProfile();
        QCOMPARE(output.take(), QByteArray());
        QCOMPARE(wording::text(u"cli.help"_s), m_builtIn);
        QCOMPARE(world.entries(), QStringList());
    }

    void use_remembered_givesItsTextsAndWritesNothing()
    {
        const World world;
        world.remember("mine");
        world.write(u"another name.json"_s, profileNamed(u"mine"_s, u"Help"_s).toJson());
        world.write(u"mine.json"_s, profileNamed(u"other"_s, u"Other"_s).toJson());
        world.write(u"broken.json"_s, "{");
        const QStringList before = world.entries();
        CapturedOutput output;
        useRememberedProfile();
        QCOMPARE(output.take(), QByteArray());
        QCOMPARE(wording::text(u"cli.help"_s), u"Help"_s);
        QCOMPARE(world.entries(), before);
    }

    void use_builtIn_hasItsTexts()
    {
        const World world;
        world.write(u"default-en.json"_s, profileNamed(u"default-en"_s, u"Help"_s).toJson());
        world.remember("default-en");
        useRememberedProfile();
        QCOMPARE(wording::text(u"menu.file"_s), u"File"_s);
        QCOMPARE(wording::text(u"menu.file.new"_s), u"新規作成"_s);
        QCOMPARE(wording::text(u"cli.help"_s), u"show this help and exit"_s);
    }

    void use_goneOrJapanese_givesTheBuiltInTexts()
    {
        const World world;
        world.write(u"a.json"_s, profileNamed(u"a"_s, u"Help"_s).toJson());
        world.write(u"default-ja.json"_s, profileNamed(u"default-ja"_s, u"Help"_s).toJson());
        for (const char *id : {"gone", "default-ja"}) {
            world.remember(id);
            useRememberedProfile();
            QCOMPARE(wording::text(u"cli.help"_s), m_builtIn);
        }
    }
};

QTEST_APPLESS_MAIN(RememberedProfileTest)
#include "RememberedProfileTest.moc"
