#include "platform/files/ApplicationSupport.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// QDir::homePath() returns "/" when $HOME is not set: the user's data would go to the root folder.
// An empty path stands for none.
QByteArray homePath()
{
    QByteArray home = qgetenv("HOME");
    if (home.startsWith('/'))
        return home;
    const passwd *entry = getpwuid(getuid());
    if (entry != nullptr && entry->pw_dir != nullptr && *entry->pw_dir == '/')
        return entry->pw_dir;
    return {};
}

QString baseFolder(const char *variable, const QString &underHome)
{
    const QByteArray path = qgetenv(variable);
    if (path.startsWith('/'))
        return QFile::decodeName(path);
    const QByteArray home = homePath();
    if (home.isEmpty())
        qFatal("There is no home folder to keep files in.");
    return QFile::decodeName(home) + u'/' + underHome;
}

QString configurationFolderPath()
{
    return baseFolder("XDG_CONFIG_HOME", u".config"_s) + u"/penwick"_s;
}

} // namespace

bool ApplicationSupport::hasHome()
{
    return !homePath().isEmpty();
}

QString ApplicationSupport::folderPath()
{
    return baseFolder("XDG_DATA_HOME", u".local/share"_s) + u"/penwick"_s;
}

QString ApplicationSupport::stateFolderPath()
{
    return baseFolder("XDG_STATE_HOME", u".local/state"_s) + u"/penwick"_s;
}

QString ApplicationSupport::configurationFilePath()
{
    return configurationFolderPath() + u"/penwick.conf"_s;
}

QString ApplicationSupport::usageFilePath()
{
    return configurationFolderPath() + u"/usage.conf"_s;
}

} // namespace penwick
