#pragma once

#include <QString>

namespace penwick::paths {

/// The start folder of file dialogs: the user's documents folder, or else the home folder.
[[nodiscard]] QString startFolder();

/// One name for one file, whichever links lead to it. Works for a file that does not exist, too.
[[nodiscard]] QString identityOf(const QString &path);

/// The path as the user gave it, made absolute. Links in its folder are resolved only when it
/// contains "..", because ".." after a link is not the folder that the path suggests.
[[nodiscard]] QString absolutePathOf(const QString &path);

} // namespace penwick::paths
