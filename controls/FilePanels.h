#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace penwick {

/// Asks where to read or write a JSON file. Both panels are modal and answer an absolute path, or
/// nothing when the person cancelled. Tests hand in their own answers.
struct FilePanels
{
    using Open = std::function<std::optional<QString>(QWidget *parent, const QString &title)>;
    /// \param name of the file, suggested; what cannot stand in a file name is replaced.
    using Save = std::function<std::optional<QString>(
        QWidget *parent, const QString &title, const QString &name)>;

    Open open;
    /// Replacing an existing file was agreed to. The path ends in `.json` unless the person gave
    /// another ending.
    Save save;

    /// The panels on the screen. Each begins in the folder that the one before was left in.
    [[nodiscard]] static FilePanels onScreen();
};

} // namespace penwick
