#include "preferences/PreferenceGroup.h"

namespace penwick {

namespace {

struct Start
{
    PreferenceId first; ///< In the order of the table. A group ends where the next one starts.
    QStringView titleKey;
};

constexpr Start kStarts[] = {
    {PreferenceId::FontFamily, u"preference.group.view"},
    {PreferenceId::TabWidth, u"preference.group.editing"},
    {PreferenceId::KeepsRecoveryCopies, u"preference.group.files"},
    {PreferenceId::MacroMemory, u"preference.group.macros"},
};

QStringView titleStartingAt(PreferenceId id)
{
    for (const Start &start : kStarts)
        if (start.first == id)
            return start.titleKey;
    return {};
}

} // namespace

QList<PreferenceGroup> preferenceGroups()
{
    QList<PreferenceGroup> groups;
    const auto all = allPreferences();
    std::size_t start = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const QStringView title = titleStartingAt(all[i].id);
        if (!title.isEmpty() || groups.isEmpty()) {
            groups.append({title, {}});
            start = i;
        }
        groups.back().rows = all.subspan(start, i + 1 - start);
    }
    return groups;
}

} // namespace penwick
