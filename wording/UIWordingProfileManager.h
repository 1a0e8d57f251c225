#pragma once

#include "platform/files/AtomicFile.h"
#include "platform/files/FileVersion.h"
#include "platform/files/StoreLock.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "wording/UIWordingProfile.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Posted after a profile was applied. Observers look up all texts that they show again.
inline const QString UIWordingProfileDidChange = // NOLINT(readability-identifier-naming): its value
    QStringLiteral("UIWordingProfileDidChange");

/// Owns the wording profiles: the list, the files and the choice of the active one. Use it from the
/// main thread. Failures to create or read the folder or its files are printed to standard output;
/// the manager continues with the profiles that it could read.
class UIWordingProfileManager final : public QObject
{
    Q_OBJECT

public:
    /// Creates the folder if it is missing, loads the profiles and applies the one that was active
    /// last.
    /// \param profileFolder absolute path.
    /// \param defaults, center not owned; must outlive the manager.
    UIWordingProfileManager(QString profileFolder,
                            UserDefaults &defaults,
                            NotificationCenter &center,
                            QObject *parent = nullptr);

    /// Returns the application's manager, for the folder `ui-wording-profiles` of the data folder.
    /// It is created on first use and lives until the process ends.
    [[nodiscard]] static UIWordingProfileManager &shared();

    /// All profiles, in the order of `sortedProfiles`.
    [[nodiscard]] const QList<UIWordingProfile> &profiles() const { return m_profiles; }

    /// Id of the applied profile; `nullopt` only during construction.
    [[nodiscard]] const std::optional<QString> &activeProfileId() const
    {
        return m_activeProfileId;
    }

    /// Returns the first profile of the list with this id.
    [[nodiscard]] std::optional<UIWordingProfile> profileWithId(const QString &id) const;

    [[nodiscard]] QUrl profileDirectoryURL() const;

    /// Creates the profile folder unless something exists at its path. Logs a failure.
    void ensureProfileDirectory();
    /// Reloads the list: the built-in profiles and every readable file of the folder.
    void loadProfiles();
    /// Reloads the list if another program has changed the folder's files since this object last
    /// read or wrote them. Applies the active profile again if it has changed; if it is gone, calls
    /// `restoreActiveProfile`.
    void reloadIfChanged();
    /// Sorts the list, and removes some profiles of it, as `sortedProfiles` documents.
    void sortProfiles();
    /// Applies the profile whose id is in the user defaults, else the built-in Japanese one.
    void restoreActiveProfile();

    /// Makes the profile's values the active ones for lookups, stores its id in the user defaults,
    /// emits `activeProfileIdChanged` and posts `UIWordingProfileDidChange`.
    void applyProfile(const UIWordingProfile &profile);

    /// Locks the folder's files against other processes of penwick while the returned holder lives,
    /// and reloads the list if they have changed them. Call this before reading the list in order
    /// to change it.
    [[nodiscard]] tl::expected<StoreLock::Holder, FileError> beginChange();

    /// False for an id that a new profile must not have: an empty one, or one that the folder has a
    /// file for, whatever profile that file holds.
    [[nodiscard]] bool canStore(const QString &id) const;

    /// Writes the profile's file and adds the profile to the list or replaces the one with its id.
    /// Applies it again if it is the active one. Fails with `InvalidPath` for an id that is empty
    /// or not a file name. After an error, neither the file nor the list has changed.
    [[nodiscard]] tl::expected<void, FileError> saveProfile(const UIWordingProfile &profile);

    /// Removes the files that hold the profile, whatever their names, and its entries in the list.
    /// Applies the built-in Japanese profile if the removed one was active. Does nothing for the
    /// ids of the built-in profiles. After an error, neither the list nor the file that is named
    /// after the id has changed.
    [[nodiscard]] tl::expected<void, FileError> deleteProfile(const QString &id);

Q_SIGNALS:
    void profilesChanged();
    void activeProfileIdChanged();

private:
    [[nodiscard]] QString filePath(const QString &id) const;
    [[nodiscard]] QStringList fileNamesOf(const QString &id) const;
    [[nodiscard]] QMap<QString, FileVersion> fileVersions() const;
    void setProfiles(QList<UIWordingProfile> profiles);

    const QString m_profileFolder;
    UserDefaults &m_defaults;
    NotificationCenter &m_center;
    StoreLock m_lock;
    QMap<QString, FileVersion> m_fileVersions; // By file name; the versions last read or written.
    QList<UIWordingProfile> m_profiles;
    std::optional<QString> m_activeProfileId;
};

} // namespace penwick
