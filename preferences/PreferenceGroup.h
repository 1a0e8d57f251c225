#pragma once

#include "preferences/Preference.h"

#include <QList>

namespace penwick {

/// Consecutive rows of `allPreferences` that a list shows under one title.
struct PreferenceGroup
{
    QStringView titleKey; ///< A wording key.
    std::span<const Preference> rows;
};

/// Every setting, in the order of the table.
[[nodiscard]] QList<PreferenceGroup> preferenceGroups();

} // namespace penwick
