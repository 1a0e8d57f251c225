#pragma once

#include "platform/AtomicFile.h"
#include "platform/FileVersion.h"
#include "platform/NotificationCenter.h"
#include "platform/StoreLock.h"
#include "platform/UserDefaults.h"
#include "wording/UIWordingProfile.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Posted after every apply of a profile. Listeners read every text that they show again.
inline const QString UIWordingProfileDidChange = // NOLINT(readability-identifier-naming): its value
    QStringLiteral("UIWordingProfileDidChange");

/// Key of the remembered profile in the user defaults.
inline const QString kActiveProfileKey = QStringLiteral("activeUIWordingProfileId");
inline const QString kBuiltInProfileId = QStringLiteral("default-ja");
inline const QString kBuiltInEnglishProfileId = QStringLiteral("default-en");

/// Owns the wording profiles: the list, the files and which of them is active. Use it from the main
/// thread. Failures of its own start are written to standard output and never stop it.
class UIWordingProfileManager final : public QObject
{
    Q_OBJECT

public:
    /// Creates the folder where it is missing, loads the profiles and applies the remembered one.
    /// \param profileFolder absolute path.
    /// \param defaults, center not owned; must outlive the manager.
    UIWordingProfileManager(QString profileFolder,
                            UserDefaults &defaults,
                            NotificationCenter &center,
                            QObject *parent = nullptr);

    /// The application's manager, over the folder `ui-wording-profiles` of the data folder. Created
    /// on first use, lives until the process ends.
    [[nodiscard]] static UIWordingProfileManager &shared();

    /// Built-in profiles first, then the user's: oldest first, undated last, equals by name.
    [[nodiscard]] const QList<UIWordingProfile> &profiles() const { return m_profiles; }

    /// Id of the applied profile. Nothing only while the manager is being created.
    [[nodiscard]] const std::optional<QString> &activeProfileId() const
    {
        return m_activeProfileId;
    }

    /// The first profile of the list with this id.
    [[nodiscard]] std::optional<UIWordingProfile> profileWithId(const QString &id) const;

    [[nodiscard]] QUrl profileDirectoryURL() const;

    /// Creates the profile folder where nothing stands in its place; a failure is logged.
    void ensureProfileDirectory();
    /// Reads the list anew: the built-in profiles and every readable file of the folder.
    void loadProfiles();
    /// As `loadProfiles`, if the folder's files are not those that were last read or written here:
    /// then another program has changed them. Applies the active profile again if its values have
    /// changed, and the built-in Japanese one if it is gone.
    void takeInChangesFromElsewhere();
    /// Puts the list in the order that `profiles` promises. A profile that claims to be built in
    /// but has another id is dropped.
    void sortProfiles();
    /// Applies the profile remembered in the user defaults, else the built-in Japanese one.
    void restoreActiveProfile();

    /// Makes the profile's values the ones that lookups read, remembers its id and posts
    /// `UIWordingProfileDidChange`.
    void applyProfile(const UIWordingProfile &profile);

    /// Keeps other processes of penwick from the folder's files while what it gives lives, and
    /// takes in what they did to them. For whoever reads the list in order to change it.
    [[nodiscard]] tl::expected<StoreLock::Holder, FileError> beginChange();

    /// Writes the profile's file and takes it into the list; applies it again if it is the active
    /// one. Fails with `InvalidPath` for an id that names a file in another folder. After an error
    /// nothing has changed.
    [[nodiscard]] tl::expected<void, FileError> saveProfile(const UIWordingProfile &profile);

    /// Removes the profile's file and its entries in the list; if it was active the built-in
    /// Japanese one is applied. Does nothing for the ids of the built-in profiles. After an error
    /// nothing has changed.
    [[nodiscard]] tl::expected<void, FileError> deleteProfile(const QString &id);

Q_SIGNALS:
    void profilesChanged();
    void activeProfileIdChanged();

private:
    [[nodiscard]] QString filePath(const QString &id) const;
    [[nodiscard]] QMap<QString, FileVersion> fileVersions() const;
    void setProfiles(QList<UIWordingProfile> profiles);

    const QString m_profileFolder;
    UserDefaults &m_defaults;
    NotificationCenter &m_center;
    StoreLock m_lock;
    QMap<QString, FileVersion> m_fileVersions; // By name, last read or written here.
    QList<UIWordingProfile> m_profiles;
    std::optional<QString> m_activeProfileId;
};

} // namespace penwick
