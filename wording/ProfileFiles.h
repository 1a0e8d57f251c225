#pragma once

#include "platform/files/FileError.h"
#include "wording/UIWordingProfile.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

namespace penwick {

/// Returns the folder of the user's profiles. It need not exist.
[[nodiscard]] QString profileFolderPath();

/// Returns the names of the profile files in a folder, in ascending byte order: those that end with
/// `.json`. The name `.json` itself has no such extension.
[[nodiscard]] tl::expected<QStringList, FileError> profileFileNames(const QString &folder);

/// Returns the profile of one file, or a description of the error for the log.
[[nodiscard]] tl::expected<UIWordingProfile, QString> readProfileFile(const QString &path);

/// Returns the profiles in the order in which they are listed and searched: the built-in ones, then
/// the user's from the oldest to the newest, then those without a date. Profiles with the same date
/// are sorted by name. Those that are marked as built in but have no such id are left out.
[[nodiscard]] QList<UIWordingProfile> sortedProfiles(const QList<UIWordingProfile> &profiles);

} // namespace penwick
