#include "app/SettingsWatch.h"

#include "preferences/Preferences.h"

#include <QFileInfo>

#include <utility>

namespace penwick {

SettingsWatch::SettingsWatch(QString path)
    : m_path(std::move(path))
{
    // The folder too: most programs replace the file, which ends the watch on it.
    const QString folder = QFileInfo(m_path).path();
    if (QFileInfo::exists(folder))
        m_watcher.addPath(folder);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &SettingsWatch::reload);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &SettingsWatch::reload);
    reload();
}

void SettingsWatch::reload()
{
    if (!m_watcher.files().contains(m_path) && QFileInfo::exists(m_path))
        m_watcher.addPath(m_path);
    Preferences::standard().reload();
}

} // namespace penwick
