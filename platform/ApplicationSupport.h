#pragma once

#include <QString>

namespace penwick {

/// Where penwick keeps its files, by the XDG base directory rules. The environment is read on
/// every call and nothing is created here.
class ApplicationSupport final
{
public:
    ApplicationSupport() = delete;

    /// Absolute path of the data folder: `penwick` below $XDG_DATA_HOME, by default below
    /// ~/.local/share. A relative $XDG_DATA_HOME is ignored. Ends the process where the user has no
    /// home folder, for there is nowhere else to keep the user's macros.
    [[nodiscard]] static QString folderPath();

    /// Absolute path of the file of `UserDefaults::standard()`: `penwick/penwick.conf` below
    /// $XDG_CONFIG_HOME, by default below ~/.config, by the same rules.
    [[nodiscard]] static QString configurationFilePath();
};

} // namespace penwick
