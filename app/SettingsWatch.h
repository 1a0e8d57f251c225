#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

namespace penwick {

/// Reads `Preferences::standard()` again when their file changes: in a tab of penwick, or by
/// another program.
class SettingsWatch final : public QObject
{
    Q_OBJECT

public:
    /// \param path absolute path of the file, which need not exist. Its folder is watched if it
    ///        exists.
    explicit SettingsWatch(QString path);

private:
    void reload();

    const QString m_path;
    QFileSystemWatcher m_watcher;
};

} // namespace penwick
