#include "wording/RememberedProfile.h"

#include "platform/files/ApplicationSupport.h"
#include "platform/settings/UserDefaults.h"
#include "wording/ProfileFiles.h"
#include "wording/WordingLookup.h"

#include <algorithm>
#include <utility>

namespace penwick {

void useRememberedProfile()
{
    if (!ApplicationSupport::hasHome())
        return;
    const UserDefaults defaults(ApplicationSupport::configurationFilePath());
    const auto id = defaults.string(kActiveProfileKey);
    if (!id || *id == kBuiltInProfileId)
        return;
    QList<UIWordingProfile> profiles{builtInEnglishProfile()};
    const QString folder = profileFolderPath();
    const auto names = profileFileNames(folder);
    for (const QString &name : names.value_or(QStringList()))
        if (auto profile = readProfileFile(folder + u'/' + name))
            profiles.append(*std::move(profile));
    profiles = sortedProfiles(profiles);
    const auto found = std::find_if(profiles.cbegin(), profiles.cend(), hasProfileId(*id));
    if (found != profiles.cend())
        wording::setActiveValues(found->values, found->locale);
}

} // namespace penwick
