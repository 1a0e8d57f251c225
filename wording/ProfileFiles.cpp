#include "wording/ProfileFiles.h"

#include "platform/files/ApplicationSupport.h"
#include "platform/files/FileSystem.h"

#include <algorithm>
#include <iterator>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

bool isListedBefore(const UIWordingProfile &a, const UIWordingProfile &b)
{
    if (a.createdAt.isEmpty() != b.createdAt.isEmpty())
        return b.createdAt.isEmpty();
    if (a.createdAt != b.createdAt)
        return a.createdAt < b.createdAt;
    return a.name < b.name;
}

bool isProfileFile(const QString &name)
{
    constexpr auto kExtension = ".json"_L1;
    return name.endsWith(kExtension) && name.size() > kExtension.size();
}

} // namespace

QString profileFolderPath()
{
    return ApplicationSupport::folderPath() + u"/ui-wording-profiles"_s;
}

tl::expected<QStringList, FileError> profileFileNames(const QString &folder)
{
    auto names = folderEntries(folder);
    if (names)
        names->removeIf([](const QString &name) { return !isProfileFile(name); });
    return names;
}

tl::expected<UIWordingProfile, QString> readProfileFile(const QString &path)
{
    const auto content = readFile(path);
    if (!content)
        return tl::unexpected(content.error().description());
    return UIWordingProfile::fromJson(*content).map_error(
        [](const JsonRecordError &error) { return error.description(); });
}

QList<UIWordingProfile> sortedProfiles(const QList<UIWordingProfile> &profiles)
{
    QList<UIWordingProfile> sorted;
    for (const QString &id : {kBuiltInProfileId, kBuiltInEnglishProfileId}) {
        const auto found = std::find_if(profiles.cbegin(), profiles.cend(), hasProfileId(id));
        if (found != profiles.cend())
            sorted.append(*found);
    }
    const auto headLength = sorted.size();
    std::copy_if(profiles.cbegin(),
                 profiles.cend(),
                 std::back_inserter(sorted),
                 [](const UIWordingProfile &profile) { return !profile.isBuiltIn; });
    std::stable_sort(sorted.begin() + headLength, sorted.end(), isListedBefore);
    return sorted;
}

} // namespace penwick
