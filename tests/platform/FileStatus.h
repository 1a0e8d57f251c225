#pragma once

#include "platform/FileSystem.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <sys/stat.h>

namespace penwick::test {

/// What the system says of a file, or of a link itself.
inline struct stat statusOf(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        qFatal("A test file has no status.");
    return status;
}

/// The permissions, with the bits for the user's and the group's id and the sticky one.
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
