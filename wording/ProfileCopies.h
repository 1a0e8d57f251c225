#pragma once

#include "platform/settings/Timestamp.h"
#include "platform/settings/Uuid.h"
#include "wording/UIWordingProfile.h"

#include <QList>

namespace penwick {

/// Returns a copy of a profile as a user profile. It has a new id, the name with a suffix in the
/// active wording, and the current time as its dates.
[[nodiscard]] UIWordingProfile
duplicateOf(const UIWordingProfile &profile, const Clock &clock, const IdSource &ids);

/// Returns a copy as `duplicateOf` does, with a text for every wording key: where the profile has
/// none, the one that is shown under it. For users to translate and import.
[[nodiscard]] UIWordingProfile
templateOf(const UIWordingProfile &profile, const Clock &clock, const IdSource &ids);

/// Returns an imported profile as a user profile with the current time as its dates. If one of
/// `present` has the same id, the id is replaced by a new one; if one has the same name, the name
/// gets a suffix.
[[nodiscard]] UIWordingProfile importedProfile(UIWordingProfile profile,
                                               const QList<UIWordingProfile> &present,
                                               const Clock &clock,
                                               const IdSource &ids);

} // namespace penwick
