#pragma once

#include "platform/settings/Timestamp.h"
#include "platform/settings/Uuid.h"
#include "wording/UIWordingProfileManager.h"

#include <tl/expected.hpp>

namespace penwick {

/// Adds a profile to the user's as `importedProfile` describes, under another id if its own cannot
/// be stored. Returns the added one. After an error, nothing has changed.
[[nodiscard]] tl::expected<UIWordingProfile, FileError>
importProfile(UIWordingProfile profile,
              UIWordingProfileManager &manager,
              const Clock &clock,
              const IdSource &ids);

/// Applies `englishProfile`, which is first added to the user's profiles unless it is among them.
/// A user's changes of it are kept. After an error, nothing has changed.
[[nodiscard]] tl::expected<void, FileError>
useEnglishProfile(UIWordingProfileManager &manager, const Clock &clock, const IdSource &ids);

} // namespace penwick
