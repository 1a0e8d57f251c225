#include "wording/ProfileCopies.h"

#include "support/FakeClock.h"
#include "support/FakeIds.h"
#include "wording/WordingLookup.h"

#include <QTest>

using namespace penwick;
using namespace penwick::test;
using namespace Qt::StringLiterals;

namespace {

const QString kNow = u"2025-03-01T09:15:00Z"_s; // The fake clock's time.

UIWordingProfile sampleProfile()
{
    UIWordingProfile profile;
    profile.id = u"A"_s;
    profile.name = u"Mine"_s;
    profile.description = u"説明"_s;
    profile.locale = u"fr"_s;
    profile.isBuiltIn = true;
    profile.createdAt = u"2020-01-01T00:00:00Z"_s;
    profile.updatedAt = u"2020-01-02T00:00:00Z"_s;
    profile.values = {{u"menu.file"_s, u"Fichier"_s}, {u"menu.edit"_s, QString()}};
    return profile;
}

/// The profile with the fields that every copy sets anew.
UIWordingProfile ofTheUser(UIWordingProfile profile)
{
    profile.isBuiltIn = false;
    profile.createdAt = kNow;
    profile.updatedAt = kNow;
    return profile;
}

} // namespace

class ProfileCopiesTest final : public QObject
{
    Q_OBJECT

private:
    FakeClock m_time;
    FakeIds m_ids;

    UIWordingProfile imported(const UIWordingProfile &profile,
                              const QList<UIWordingProfile> &present)
    {
        return importedProfile(profile, present, m_time.clock(), m_ids.source());
    }

private Q_SLOTS:

    void init() { m_ids = FakeIds(); }

    void cleanup() { wording::setActiveValues(std::nullopt); }

    void duplicate_profile_isTheUsersWithANewIdAndName()
    {
        UIWordingProfile expected = ofTheUser(sampleProfile());
        expected.id = FakeIds::id(1);
        expected.name = u"Mine のコピー"_s;
        QCOMPARE(duplicateOf(sampleProfile(), m_time.clock(), m_ids.source()), expected);
        QCOMPARE(duplicateOf(builtInJapaneseProfile(), m_time.clock(), m_ids.source()).name,
                 u"標準日本語 のコピー"_s);
    }

    void duplicate_wordingWithAnotherSuffix_usesIt()
    {
        wording::setActiveValues(
            QHash<QString, QString>{{u"profile.manage.copySuffix"_s, u"copy"_s}});
        QCOMPARE(duplicateOf(sampleProfile(), m_time.clock(), m_ids.source()).name, u"Mine copy"_s);
    }

    void import_nothingTaken_keepsIdAndName()
    {
        QCOMPARE(imported(sampleProfile(), {builtInJapaneseProfile()}), ofTheUser(sampleProfile()));
    }

    void import_idOrNameTaken_replacesEachForItself()
    {
        UIWordingProfile sameId = sampleProfile();
        sameId.name = u"Other"_s;
        UIWordingProfile expected = ofTheUser(sampleProfile());
        expected.id = FakeIds::id(1);
        QCOMPARE(imported(sampleProfile(), {sameId}), expected);

        UIWordingProfile sameName = sampleProfile();
        sameName.id = u"B"_s;
        expected.id = u"A"_s;
        expected.name = u"Mine のコピー"_s;
        QCOMPARE(imported(sampleProfile(), {sameName}), expected);

        expected.id = FakeIds::id(2);
        QCOMPARE(imported(sampleProfile(), {sameId, sameName, expected}), expected);
    }
};

QTEST_APPLESS_MAIN(ProfileCopiesTest)
#include "ProfileCopiesTest.moc"
