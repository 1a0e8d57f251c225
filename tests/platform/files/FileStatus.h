#pragma once

#include "platform/files/FileSystem.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <sys/stat.h>

namespace penwick::test {

/// The status of a file; of a symbolic link itself, not its target.
inline struct stat statusOf(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        qFatal("A test file has no status.");
    return status;
}

/// The permission bits, including set-user-ID, set-group-ID and the sticky bit.
inline unsigned modeOf(const QString &path)
{
    return statusOf(path).st_mode & ALLPERMS;
}

/// The names in a folder, in order.
inline QStringList entriesOf(const QString &folder)
{
    return folderEntries(folder).value();
}

} // namespace penwick::test
