#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>
#include <vector>

namespace penwick {

/// The folder that holds the copies of one process. A lock in it shows other processes that its
/// owner is alive: the system releases the lock however the process ends, and the folder is then
/// abandoned. All folders are in one root folder. Only the user can access them.
///
/// Use it from one thread at a time.
class RecoverySession final
{
public:
    /// Makes and locks a folder, and the root folder if it is missing.
    /// \param root absolute path.
    [[nodiscard]] static tl::expected<RecoverySession, FileError> create(const QString &root);

    /// Locks the abandoned folders that hold copies, and removes those that do not.
    /// Others do not get them while these objects exist. Empty if the root folder does not exist.
    /// Links, and folders with names that `create` does not give, are left alone.
    [[nodiscard]] static std::vector<RecoverySession> takeAbandoned(const QString &root);

    RecoverySession(RecoverySession &&) noexcept = default;
    RecoverySession &operator=(RecoverySession &&) noexcept = default;
    RecoverySession(const RecoverySession &) = delete;
    RecoverySession &operator=(const RecoverySession &) = delete;
    ~RecoverySession() = default;

    /// Absolute path for the copy with this number.
    [[nodiscard]] QString copyPath(int number) const;

    /// Absolute paths of the copies.
    [[nodiscard]] QStringList copies() const;

    /// Removes the folder if it holds no copy, and then the root folder and its parent if they are
    /// empty. A file that is not penwick's stays, and its folder. Returns false if there are
    /// copies.
    bool removeIfEmpty();

private:
    RecoverySession(QString root, const QString &name);
    [[nodiscard]] static tl::expected<RecoverySession, FileError> tryToCreate(const QString &root);

    QString m_root;
    QString m_folder;
    FileDescriptor m_lock;
};

} // namespace penwick
