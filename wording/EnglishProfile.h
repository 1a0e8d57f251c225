#pragma once

#include "wording/UIWordingProfile.h"

namespace penwick {

/// Id of the profile that `englishProfile` returns.
inline const QString kEnglishProfileId = QStringLiteral("english");

/// Returns the English profile that comes with penwick as a file to import. It has a text for every
/// wording key, unlike `builtInEnglishProfile`. It is read on first use and never changes.
/// `tools/check-wording-keys.py` checks that it is complete.
[[nodiscard]] const UIWordingProfile &englishProfile();

} // namespace penwick
