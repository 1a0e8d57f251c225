#include "wording/ProfileImport.h"

#include "wording/EnglishProfile.h"
#include "wording/ProfileCopies.h"

#include <utility>

namespace penwick {

tl::expected<UIWordingProfile, FileError> importProfile(UIWordingProfile profile,
                                                        UIWordingProfileManager &manager,
                                                        const Clock &clock,
                                                        const IdSource &ids)
{
    const auto lock = manager.beginChange(); // Another process may have taken the id.
    if (!lock)
        return tl::unexpected(lock.error());
    if (!manager.canStore(profile.id))
        profile.id = ids();
    UIWordingProfile imported = importedProfile(std::move(profile), manager.profiles(), clock, ids);
    if (auto saved = manager.saveProfile(imported); !saved)
        return tl::unexpected(saved.error());
    return imported;
}

tl::expected<void, FileError>
useEnglishProfile(UIWordingProfileManager &manager, const Clock &clock, const IdSource &ids)
{
    manager.reloadIfChanged();
    auto english = manager.profileWithId(kEnglishProfileId);
    if (!english) {
        auto added = importProfile(englishProfile(), manager, clock, ids);
        if (!added)
            return tl::unexpected(added.error());
        english = *std::move(added);
    }
    manager.applyProfile(*english);
    return {};
}

} // namespace penwick
