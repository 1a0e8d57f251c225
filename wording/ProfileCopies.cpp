#include "wording/ProfileCopies.h"

#include "wording/WordingLookup.h"

#include <algorithm>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString copyName(const QString &name)
{
    return name + u' ' + wording::text(u"profile.manage.copySuffix"_s);
}

void markAsUserProfile(UIWordingProfile &profile, const Clock &clock)
{
    profile.isBuiltIn = false;
    profile.createdAt = nowTimestamp(clock);
    profile.updatedAt = profile.createdAt;
}

} // namespace

UIWordingProfile
duplicateOf(const UIWordingProfile &profile, const Clock &clock, const IdSource &ids)
{
    UIWordingProfile copy = profile;
    copy.id = ids();
    copy.name = copyName(profile.name);
    markAsUserProfile(copy, clock);
    return copy;
}

UIWordingProfile
templateOf(const UIWordingProfile &profile, const Clock &clock, const IdSource &ids)
{
    UIWordingProfile copy = duplicateOf(profile, clock, ids);
    copy.values = wording::defaultTexts(profile.locale);
    copy.values.insert(profile.values);
    return copy;
}

UIWordingProfile importedProfile(UIWordingProfile profile,
                                 const QList<UIWordingProfile> &present,
                                 const Clock &clock,
                                 const IdSource &ids)
{
    const auto isTaken = [&](auto field) {
        return std::any_of(present.cbegin(), present.cend(), [&](const UIWordingProfile &other) {
            return other.*field == profile.*field;
        });
    };
    if (isTaken(&UIWordingProfile::id))
        profile.id = ids();
    if (isTaken(&UIWordingProfile::name))
        profile.name = copyName(profile.name);
    markAsUserProfile(profile, clock);
    return profile;
}

} // namespace penwick
