#include "platform/files/ApplicationSupport.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// QDir::homePath() returns "/" when $HOME is not set: the user's data would go to the root folder.
QString homePath()
{
    const QByteArray home = qgetenv("HOME");
    if (home.startsWith('/'))
        return QFile::decodeName(home);
    const passwd *entry = getpwuid(getuid());
    if (entry != nullptr && entry->pw_dir != nullptr && *entry->pw_dir == '/')
        return QFile::decodeName(QByteArray(entry->pw_dir));
    qFatal("There is no home folder to keep files in.");
}

QString baseFolder(const char *variable, const QString &underHome)
{
    const QByteArray path = qgetenv(variable);
    return path.startsWith('/') ? QFile::decodeName(path) : homePath() + u'/' + underHome;
}

} // namespace

QString ApplicationSupport::folderPath()
{
    return baseFolder("XDG_DATA_HOME", u".local/share"_s) + u"/penwick"_s;
}

QString ApplicationSupport::configurationFilePath()
{
    return baseFolder("XDG_CONFIG_HOME", u".config"_s) + u"/penwick/penwick.conf"_s;
}

} // namespace penwick
