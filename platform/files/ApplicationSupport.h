#pragma once

#include <QString>

namespace penwick {

/// The paths of penwick's files, by the XDG base directory rules. Each call reads the environment
/// and creates nothing.
class ApplicationSupport final
{
public:
    ApplicationSupport() = delete;

    /// True if the user has a home folder. Then none of the other functions ends the process.
    [[nodiscard]] static bool hasHome();

    /// Absolute path of the data folder: `penwick` in $XDG_DATA_HOME, by default in ~/.local/share.
    /// A relative $XDG_DATA_HOME is ignored. Ends the process if the default is needed and the user
    /// has no home folder, since there is no other place for the user's macros.
    [[nodiscard]] static QString folderPath();

    /// Absolute path of the folder for what outlives a sudden end only: `penwick` in
    /// $XDG_STATE_HOME, by default in ~/.local/state, by the same rules.
    [[nodiscard]] static QString stateFolderPath();

    /// Absolute path of the file of `UserDefaults::standard()`: `penwick/penwick.conf` in
    /// $XDG_CONFIG_HOME, by default in ~/.config, by the same rules.
    [[nodiscard]] static QString configurationFilePath();

    /// Absolute path of the file of `UserDefaults::usage()`: `usage.conf` in the same folder.
    [[nodiscard]] static QString usageFilePath();
};

} // namespace penwick
