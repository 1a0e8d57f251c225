#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QByteArray>

#include <sys/types.h>
#include <tl/expected.hpp>

namespace penwick {

/// A file that is written completely before it is moved to its place. It is removed with this
/// object if it never gets there.
///
/// If the file system supports it, the file has no name while it is written, so that even a killed
/// process leaves nothing behind. Otherwise, and between `takeName` and the move, its name is one
/// of a few that belong to its target. A lock on the file shows other processes that its writer is
/// alive; they remove files without one.
class TemporaryFile final
{
public:
    /// \param target absolute path, without links, of the file to create or replace. The temporary
    ///        file is created in the same folder.
    explicit TemporaryFile(QByteArray target);
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile();

    enum class Name { None, FromTheStart };

    /// Creates the file, open for reading and writing.
    /// \param mode as for open(): reduced by the umask.
    /// \param name `None` creates a file without a name if the file system supports that, else one
    ///        with a name.
    [[nodiscard]] tl::expected<void, FileError> create(mode_t mode, Name name = Name::None);

    [[nodiscard]] int descriptor() const { return m_file.get(); }

    /// False while the file has no name.
    [[nodiscard]] bool hasName() const { return !m_path.isEmpty(); }

    /// Gives the file its name if it has none. Fails on systems that cannot name an open file;
    /// there it must be created with `Name::FromTheStart`.
    [[nodiscard]] tl::expected<void, FileError> takeName();

    /// Moves the file, which must have a name, to its target and replaces what is there. The file
    /// is no longer temporary then.
    [[nodiscard]] tl::expected<void, FileError> replaceTarget();
    /// Moves the file, which must have a name, to `path`. Fails with EEXIST if something exists
    /// there, even a symbolic link that leads nowhere.
    [[nodiscard]] tl::expected<void, FileError> moveToFreePlace(const QByteArray &path);

    /// Removes the temporary files of this target that killed processes left. Files of running
    /// writers stay.
    static void removeLeftovers(const QByteArray &target);

private:
    [[nodiscard]] bool createUnnamed(mode_t mode);
    [[nodiscard]] bool createNamed(mode_t mode, int slot);

    QByteArray m_target;
    QByteArray m_path; // Empty when there is nothing to remove.
    FileDescriptor m_file;
};

/// The folder that contains `path`, with a trailing slash.
[[nodiscard]] QByteArray folderOf(const QByteArray &path);

/// Returns a digest of the text and the machine's name, as 2 * `bytes` hexadecimal digits. The
/// machine's name is included because file locks may not be visible to other machines that share a
/// folder.
[[nodiscard]] QByteArray digestOf(const QByteArray &text, qsizetype bytes);

/// Opens the file if the process that wrote it, and held a lock on it, is gone; the caller then
/// holds the lock. Fails if the file is still locked or `path` does not name the opened regular
/// file.
[[nodiscard]] tl::expected<FileDescriptor, FileError> openAbandoned(const QByteArray &path);

/// Waits until the names in the folder are on the disk: without this, a file that was just moved
/// could lose its name in a power failure.
[[nodiscard]] tl::expected<void, FileError> synchroniseFolder(const QByteArray &folder);

} // namespace penwick
