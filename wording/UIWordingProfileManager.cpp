#include "wording/UIWordingProfileManager.h"

#include "platform/files/ApplicationSupport.h"
#include "platform/process/StandardOutput.h"
#include "wording/WordingLookup.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

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

/// True for names that end with the extension `.json`; the name `.json` itself has no extension.
bool isProfileFile(const QString &name)
{
    constexpr auto kExtension = ".json"_L1;
    return name.endsWith(kExtension) && name.size() > kExtension.size();
}

/// True when an id can be the name of a file in the profile folder. An id comes from a file of
/// unknown origin; it must not lead to the user's other files outside the folder.
bool isFileName(const QString &id)
{
    return !id.contains(u'/');
}

auto hasId(const QString &id)
{
    return [id](const UIWordingProfile &profile) { return profile.id == id; };
}

/// Returns the profile of one file, or a description of the error for the log.
tl::expected<UIWordingProfile, QString> profileOfFile(const QString &path)
{
    const auto content = readFile(path);
    if (!content)
        return tl::unexpected(content.error().description());
    return UIWordingProfile::fromJson(*content).map_error(
        [](const JsonRecordError &error) { return error.description(); });
}

} // namespace

UIWordingProfileManager::UIWordingProfileManager(QString profileFolder,
                                                 UserDefaults &defaults,
                                                 NotificationCenter &center,
                                                 QObject *parent)
    : QObject(parent)
    , m_profileFolder(std::move(profileFolder))
    , m_defaults(defaults)
    , m_center(center)
    , m_lock(m_profileFolder)
{
    ensureProfileDirectory();
    loadProfiles();
    restoreActiveProfile();
}

UIWordingProfileManager &UIWordingProfileManager::shared()
{
    static auto *const manager =
        new UIWordingProfileManager(ApplicationSupport::folderPath() + u"/ui-wording-profiles"_s,
                                    UserDefaults::standard(),
                                    NotificationCenter::defaultCenter());
    return *manager;
}

std::optional<UIWordingProfile> UIWordingProfileManager::profileWithId(const QString &id) const
{
    const auto found = std::find_if(m_profiles.cbegin(), m_profiles.cend(), hasId(id));
    return found != m_profiles.cend() ? std::optional(*found) : std::nullopt;
}

QUrl UIWordingProfileManager::profileDirectoryURL() const
{
    return QUrl::fromLocalFile(m_profileFolder);
}

void UIWordingProfileManager::ensureProfileDirectory()
{
    if (QFileInfo::exists(m_profileFolder))
        return;
    const auto created = createFolder(m_profileFolder);
    if (!created)
        printLine(u"Error creating ui-wording-profiles directory: "_s +
                  created.error().description());
}

QMap<QString, FileVersion> UIWordingProfileManager::fileVersions() const
{
    QMap<QString, FileVersion> versions;
    for (const QString &name : folderEntries(m_profileFolder).value_or(QStringList())) {
        const auto version =
            isProfileFile(name) ? FileVersion::of(m_profileFolder + u'/' + name) : std::nullopt;
        if (version)
            versions.insert(name, *version);
    }
    return versions;
}

void UIWordingProfileManager::reloadIfChanged()
{
    if (fileVersions() == m_fileVersions)
        return;
    const QString activeId = m_activeProfileId.value_or(kBuiltInProfileId);
    const auto before = profileWithId(activeId);
    loadProfiles();
    const auto now = profileWithId(activeId);
    if (!now)
        restoreActiveProfile();
    else if (now != before)
        applyProfile(*now);
}

void UIWordingProfileManager::loadProfiles()
{
    // Read the versions first, so that a change during the read is detected later.
    m_fileVersions = fileVersions();
    QList<UIWordingProfile> profiles{builtInJapaneseProfile(), builtInEnglishProfile()};
    const auto entries = folderEntries(m_profileFolder);
    if (!entries)
        printLine(u"Error reading contents of ui-wording-profiles directory: "_s +
                  entries.error().description());
    for (const QString &name : entries.value_or(QStringList())) {
        if (!isProfileFile(name))
            continue;
        const QString path = m_profileFolder + u'/' + name;
        auto profile = profileOfFile(path);
        if (profile)
            profiles.append(*std::move(profile));
        else
            printLine(u"Error loading UI Wording Profile at "_s +
                      QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded) + u": "_s +
                      profile.error());
    }
    setProfiles(std::move(profiles));
    sortProfiles();
}

void UIWordingProfileManager::sortProfiles()
{
    QList<UIWordingProfile> sorted;
    for (const QString &id : {kBuiltInProfileId, kBuiltInEnglishProfileId})
        if (auto profile = profileWithId(id))
            sorted.append(*std::move(profile));
    const auto headLength = sorted.size();
    std::copy_if(m_profiles.cbegin(),
                 m_profiles.cend(),
                 std::back_inserter(sorted),
                 [](const UIWordingProfile &profile) { return !profile.isBuiltIn; });
    std::stable_sort(sorted.begin() + headLength, sorted.end(), isListedBefore);
    setProfiles(std::move(sorted));
}

void UIWordingProfileManager::restoreActiveProfile()
{
    if (const auto remembered = m_defaults.string(kActiveProfileKey)) {
        if (const auto profile = profileWithId(*remembered)) {
            applyProfile(*profile);
            return;
        }
    }
    if (const auto profile = profileWithId(kBuiltInProfileId))
        applyProfile(*profile);
}

void UIWordingProfileManager::applyProfile(const UIWordingProfile &profile)
{
    // `profile` may be an element of `m_profiles`, which a listener may change.
    const QString id = profile.id;
    m_activeProfileId = id;
    m_defaults.setString(kActiveProfileKey, id);
    if (id == kBuiltInProfileId)
        wording::setActiveValues(std::nullopt);
    else
        wording::setActiveValues(profile.values);
    // Emit this only after the values are set: receivers may look texts up at once.
    Q_EMIT activeProfileIdChanged();
    m_center.post(UIWordingProfileDidChange);
}

tl::expected<StoreLock::Holder, FileError> UIWordingProfileManager::beginChange()
{
    ensureProfileDirectory();
    auto lock = m_lock.take();
    reloadIfChanged();
    return lock;
}

tl::expected<void, FileError> UIWordingProfileManager::saveProfile(const UIWordingProfile &profile)
{
    ensureProfileDirectory();
    if (!isFileName(profile.id))
        return tl::unexpected(FileError{FileError::Kind::InvalidPath, 0});
    const auto lock = m_lock.take();
    if (!lock)
        return tl::unexpected(lock.error());
    if (auto written = replaceFile(filePath(profile.id), profile.toJson()); !written)
        return written;
    if (const auto version = FileVersion::of(filePath(profile.id)))
        m_fileVersions.insert(profile.id + u".json"_s, *version);
    // Copy it: `profile` may be an element of the list that is replaced below.
    const auto active = m_activeProfileId == profile.id ? std::optional(profile) : std::nullopt;
    QList<UIWordingProfile> profiles = m_profiles;
    const auto place = std::find_if(profiles.begin(), profiles.end(), hasId(profile.id));
    if (place != profiles.end())
        *place = profile;
    else
        profiles.append(profile);
    setProfiles(std::move(profiles));
    sortProfiles();
    if (active)
        applyProfile(*active);
    return {};
}

tl::expected<void, FileError> UIWordingProfileManager::deleteProfile(const QString &id)
{
    if (id == kBuiltInProfileId || id == kBuiltInEnglishProfileId)
        return {};
    const auto lock = m_lock.take();
    // If the folder is gone, the file is gone too.
    if (!lock && lock.error().kind != FileError::Kind::NotFound)
        return tl::unexpected(lock.error());
    if (isFileName(id)) {
        auto removed = removeFile(filePath(id));
        // A missing file is no error: the profile may be stored in a file named after another id.
        if (!removed && removed.error().kind != FileError::Kind::NotFound &&
            removed.error().kind != FileError::Kind::InvalidPath)
            return removed;
    }
    m_fileVersions.remove(id + u".json"_s);
    // Compare now: `id` may belong to an element of the list that is replaced below.
    const bool wasActive = m_activeProfileId == id;
    QList<UIWordingProfile> profiles = m_profiles;
    profiles.removeIf(hasId(id));
    setProfiles(std::move(profiles));
    if (wasActive) {
        if (const auto japanese = profileWithId(kBuiltInProfileId))
            applyProfile(*japanese);
    }
    return {};
}

QString UIWordingProfileManager::filePath(const QString &id) const
{
    return m_profileFolder + u'/' + id + u".json"_s;
}

void UIWordingProfileManager::setProfiles(QList<UIWordingProfile> profiles)
{
    m_profiles = std::move(profiles);
    Q_EMIT profilesChanged();
}

} // namespace penwick
