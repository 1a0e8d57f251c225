#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace penwick {

/// Asks for the path of a JSON file to read or write. Both panels are modal and return an absolute
/// path, or std::nullopt when the user cancels, or when a panel is already open over `parent`,
/// which is then brought to the front. Tests pass their own answers.
struct FilePanels
{
    using Open = std::function<std::optional<QString>(QWidget *parent, const QString &title)>;
    /// \param name suggested, without its extension; characters that a file name cannot have are
    ///        replaced.
    using Save = std::function<std::optional<QString>(
        QWidget *parent, const QString &title, const QString &name)>;

    /// \param folder where the panel starts; if it is empty or missing, where `open` does.
    using OpenIn = std::function<std::optional<QString>(
        QWidget *parent, const QString &title, const QString &folder)>;

    Open open;
    /// The user has agreed to replace an existing file. The path ends in `.json` unless the user
    /// gave another extension.
    Save save;
    OpenIn openIn;

    /// The panels that show a dialog. Each starts in the folder of the last accepted one, except
    /// where a panel was told to start.
    [[nodiscard]] static FilePanels onScreen();
};

} // namespace penwick
