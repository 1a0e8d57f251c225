#include "wording/UIWordingProfileManager.h"

#include "platform/process/StandardOutput.h"
#include "wording/ProfileFiles.h"
#include "wording/WordingLookup.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

/// True when an id can be the name of a profile's file. An id comes from a file of unknown origin;
/// it must not lead to the user's other files outside the folder. A file named after an empty one
/// would have no extension, and never be read.
bool isFileName(const QString &id)
{
    return !id.isEmpty() && !id.contains(u'/');
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
    static auto *const manager = new UIWordingProfileManager(
        profileFolderPath(), UserDefaults::standard(), NotificationCenter::defaultCenter());
    return *manager;
}

std::optional<UIWordingProfile> UIWordingProfileManager::profileWithId(const QString &id) const
{
    const auto found = std::find_if(m_profiles.cbegin(), m_profiles.cend(), hasProfileId(id));
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
    const auto names = profileFileNames(m_profileFolder);
    for (const QString &name : names.value_or(QStringList()))
        if (const auto version = FileVersion::of(m_profileFolder + u'/' + name))
            versions.insert(name, *version);
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
    const auto names = profileFileNames(m_profileFolder);
    if (!names)
        printLine(u"Error reading contents of ui-wording-profiles directory: "_s +
                  names.error().description());
    for (const QString &name : names.value_or(QStringList())) {
        const QString path = m_profileFolder + u'/' + name;
        auto profile = readProfileFile(path);
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
    setProfiles(sortedProfiles(m_profiles));
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
        wording::setActiveValues(profile.values, profile.locale);
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

bool UIWordingProfileManager::canStore(const QString &id) const
{
    return !id.isEmpty() && !(isFileName(id) && QFileInfo::exists(filePath(id)));
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
    const auto place = std::find_if(profiles.begin(), profiles.end(), hasProfileId(profile.id));
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
    for (const QString &name : fileNamesOf(id)) {
        auto removed = removeFile(m_profileFolder + u'/' + name);
        // A missing file is no error: the profile may be stored in a file named after another id.
        if (!removed && removed.error().kind != FileError::Kind::NotFound &&
            removed.error().kind != FileError::Kind::InvalidPath)
            return removed;
        m_fileVersions.remove(name);
    }
    // Compare now: `id` may belong to an element of the list that is replaced below.
    const bool wasActive = m_activeProfileId == id;
    QList<UIWordingProfile> profiles = m_profiles;
    profiles.removeIf(hasProfileId(id));
    setProfiles(std::move(profiles));
    if (wasActive) {
        if (const auto japanese = profileWithId(kBuiltInProfileId))
            applyProfile(*japanese);
    }
    return {};
}

/// The names of the files to remove with a profile: the one named after its id, unless it holds
/// another profile, then the others that hold this one.
QStringList UIWordingProfileManager::fileNamesOf(const QString &id) const
{
    const auto holds = [this](const QString &name) {
        const auto profile = readProfileFile(m_profileFolder + u'/' + name);
        return profile ? std::optional(profile->id) : std::nullopt;
    };
    const QString own = id + u".json"_s;
    QStringList names;
    if (isFileName(id) && holds(own).value_or(id) == id)
        names << own;
    const auto all = profileFileNames(m_profileFolder);
    for (const QString &name : all.value_or(QStringList()))
        if (name != own && holds(name) == id)
            names << name;
    return names;
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
