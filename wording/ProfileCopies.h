#pragma once

#include "platform/Timestamp.h"
#include "platform/Uuid.h"
#include "wording/UIWordingProfile.h"

#include <QList>

namespace penwick {

/// The user's own copy of a profile, with a new id, a name that tells them apart in the active
/// wording, and the present time.
[[nodiscard]] UIWordingProfile
duplicateOf(const UIWordingProfile &profile, const Clock &clock, const IdSource &ids);

/// What is kept of a profile that came from elsewhere: it is the user's and dates from now. Its id
/// and its name give way, each for itself, where one of `present` has them already.
[[nodiscard]] UIWordingProfile importedProfile(UIWordingProfile profile,
                                               const QList<UIWordingProfile> &present,
                                               const Clock &clock,
                                               const IdSource &ids);

} // namespace penwick
