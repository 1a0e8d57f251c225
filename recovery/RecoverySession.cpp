#include "recovery/RecoverySession.h"

#include "platform/files/FileLock.h"
#include "platform/files/FileSystem.h"
#include "platform/files/RuntimeFolder.h"
#include "platform/files/StoreLock.h"
#include "platform/files/TemporaryFile.h"
#include "platform/settings/Uuid.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

const auto kCopySuffix = u".copy"_s;
const auto kComparedSuffix = u".text"_s; // Of a text while it is compared with its file.
const auto kLockFile = u"/lock"_s;

tl::expected<StoreLock::Holder, FileError> lockRoot(StoreLock &lock, const QString &root)
{
    const auto parent = createFolder(QFileInfo(root).path());
    if (!parent)
        return tl::unexpected(parent.error());
    if (!ensurePrivateFolder(root))
        return tl::unexpected(FileError::fromErrno(EACCES));
    return lock.take();
}

} // namespace

RecoverySession::RecoverySession(QString root, const QString &name)
    : m_root(std::move(root))
    , m_folder(m_root + u'/' + name)
{
}

tl::expected<RecoverySession, FileError> RecoverySession::create(const QString &root)
{
    // Another process that ends may remove the empty root folder at any moment.
    constexpr int kAttempts = 5;
    auto session = tryToCreate(root);
    for (int attempt = 1; !session && attempt < kAttempts; ++attempt)
        session = tryToCreate(root);
    return session;
}

tl::expected<RecoverySession, FileError> RecoverySession::tryToCreate(const QString &root)
{
    StoreLock rootLock(root);
    const auto holder = lockRoot(rootLock, root);
    if (!holder)
        return tl::unexpected(holder.error());
    RecoverySession session(root, newUuid());
    if (!ensurePrivateFolder(session.m_folder))
        return tl::unexpected(FileError::fromErrno(EACCES));
    auto lock = openLockFile(session.m_folder + kLockFile);
    if (!lock)
        return tl::unexpected(lock.error());
    // It fails on a file system without locks. Then no process takes abandoned folders either.
    static_cast<void>(lockExclusively(*lock));
    session.m_lock = *std::move(lock);
    // The names of new folders must survive a power failure, too.
    const QString parent = QFileInfo(root).path();
    for (const QString &folder : {root, parent, QFileInfo(parent).path()})
        static_cast<void>(synchroniseFolder(QFile::encodeName(folder) + '/'));
    return session;
}

std::vector<RecoverySession> RecoverySession::takeAbandoned(const QString &root)
{
    std::vector<RecoverySession> sessions;
    StoreLock rootLock(root);
    const auto holder = rootLock.take();
    if (!holder)
        return sessions;
    const QStringList names =
        QDir(root).entryList(QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (QUuid::fromString(name).isNull()) // Not made by penwick.
            continue;
        RecoverySession session(root, name);
        auto lock = openLockFile(session.m_folder + kLockFile);
        if (!lock || !lockExclusively(*lock))
            continue;
        session.m_lock = *std::move(lock);
        if (!session.removeIfEmpty())
            sessions.push_back(std::move(session));
    }
    return sessions;
}

QString RecoverySession::copyPath(int number) const
{
    return m_folder + u'/' + QString::number(number) + kCopySuffix;
}

QStringList RecoverySession::copies() const
{
    QStringList paths;
    for (const QString &name : QDir(m_folder).entryList({u'*' + kCopySuffix}, QDir::Files))
        paths << m_folder + u'/' + name;
    return paths;
}

bool RecoverySession::removeIfEmpty()
{
    if (!copies().isEmpty())
        return false;
    // What a killed process left of a first write or of a comparison goes as well. Other files are
    // not penwick's.
    QDir folder(m_folder);
    const auto own = folder.entryList({u"lock"_s, u".penwick-*"_s, u'*' + kComparedSuffix},
                                      QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : own)
        folder.remove(name);
    QDir().rmdir(m_folder);
    QDir().rmdir(m_root);
    QDir().rmdir(QFileInfo(m_root).path());
    return true;
}

} // namespace penwick
