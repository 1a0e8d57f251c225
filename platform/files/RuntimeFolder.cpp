#include "platform/files/RuntimeFolder.h"

#include <QFile>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

// Links are not followed: another user could redirect a link to the user's folder.
bool isOwnPrivateFolder(const QByteArray &path)
{
    struct stat status = {};
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    return ::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & kOthers) == 0;
}

bool makePrivate(const QByteArray &path)
{
    static_cast<void>(::mkdir(path.constData(), S_IRWXU));
    return isOwnPrivateFolder(path);
}

} // namespace

bool ensurePrivateFolder(const QString &path)
{
    return makePrivate(QFile::encodeName(path));
}

tl::expected<QString, FileError> privateRuntimeFolder()
{
    const QByteArray given = qgetenv("XDG_RUNTIME_DIR");
    if (given.startsWith('/')) {
        // Creates the folder if it is missing. Qt would create it later, and the next process would
        // then use another folder than this one.
        if (makePrivate(given))
            return QFile::decodeName(given);
    }
    const QByteArray own = "/tmp/penwick-" + QByteArray::number(::geteuid());
    if (::mkdir(own.constData(), S_IRWXU) != 0 && errno != EEXIST)
        return systemError();
    if (!isOwnPrivateFolder(own))
        return tl::unexpected(FileError::fromErrno(EACCES));
    return QFile::decodeName(own);
}

} // namespace penwick
