#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"

#include <QByteArray>

#include <sys/types.h>
#include <tl/expected.hpp>

namespace penwick {

/// A file that is being written until it is whole and takes its place; unless it does, it
/// disappears with this object.
///
/// Where the file system can, it has no name meanwhile, so that not even a killed process leaves
/// anything behind. Otherwise, and for the moment between having a name and taking its place, its
/// name comes from a few that belong to its target, and a lock of the system tells as long as its
/// writer lives: so the next one knows what may be removed.
class TemporaryFile final
{
public:
    /// \param target absolute path, without links, of what the file is for. It will stand in the
    ///        same folder.
    explicit TemporaryFile(QByteArray target);
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile();

    enum class Name { None, FromTheStart };

    /// Makes the file, open for reading and writing.
    /// \param mode as for open(): the user's mask is taken off.
    /// \param name `None` as far as the file system can do that.
    [[nodiscard]] tl::expected<void, FileError> create(mode_t mode, Name name = Name::None);

    [[nodiscard]] int descriptor() const { return m_file.get(); }

    /// False while the file has no name.
    [[nodiscard]] bool hasName() const { return !m_path.isEmpty(); }

    /// Gives a file without one its name. Some systems cannot: then it has to have it from the
    /// start.
    [[nodiscard]] tl::expected<void, FileError> takeName();

    /// Puts the file, which has a name, in the place of its target or where `path` says. It is no
    /// longer temporary then.
    [[nodiscard]] tl::expected<void, FileError> replaceTarget();
    /// Fails with EEXIST where something stands there.
    [[nodiscard]] tl::expected<void, FileError> moveToFreePlace(const QByteArray &path);

    /// Removes what killed processes left of this target's temporary files. Those that a living
    /// process is writing stay.
    static void removeLeftovers(const QByteArray &target);

private:
    [[nodiscard]] bool createUnnamed(mode_t mode);
    [[nodiscard]] bool createNamed(mode_t mode, int slot);

    QByteArray m_target;
    QByteArray m_path; // Empty when there is nothing to remove.
    FileDescriptor m_file;
};

/// The folder that `path` lies in, with its slash at the end.
[[nodiscard]] QByteArray folderOf(const QByteArray &path);

/// Twice as many hexadecimal digits as `bytes`, from the text. They name the machine too: of what
/// another one does in a shared folder, the locks of this one may know nothing.
[[nodiscard]] QByteArray digestOf(const QByteArray &text, qsizetype bytes);

/// Opens the file when the process that wrote it, and held a lock on it, is gone; the lock is now
/// the caller's. An open descriptor only for a regular file that still stands there.
[[nodiscard]] FileDescriptor openAbandoned(const QByteArray &path);

} // namespace penwick
