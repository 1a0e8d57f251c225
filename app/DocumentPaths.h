#pragma once

#include <QString>

namespace penwick::paths {

/// Where the file dialogs start: the person's documents, or the home folder.
[[nodiscard]] QString startFolder();

/// One name for one file, whatever links lead to it; also for a file that does not exist.
[[nodiscard]] QString identityOf(const QString &path);

/// The path as the person gave it, made absolute. Behind a link ".." is not the folder that its
/// name suggests, so there the links have to go.
[[nodiscard]] QString absolutePathOf(const QString &path);

} // namespace penwick::paths
