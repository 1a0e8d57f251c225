#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

namespace penwick {

/// Identifies one state of a file without reading it. Replacing a file, as `replaceFile` does,
/// always makes another version; writing into it does so within the precision of the file system's
/// clock.
struct FileVersion
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;                ///< Bytes.
    qint64 modifiedNanoseconds = 0; ///< Since the epoch.

    /// The version of the file that `path` leads to, through links; std::nullopt if there is none
    /// or it is not a regular file.
    [[nodiscard]] static std::optional<FileVersion> of(const QString &path);

    /// The version of the entry at `path` itself, of any kind: a folder, a socket, a link.
    [[nodiscard]] static std::optional<FileVersion> ofEntry(const QString &path);

    /// The version of an open file; std::nullopt if the system call fails.
    [[nodiscard]] static std::optional<FileVersion> of(int descriptor);

    /// True when both are states of one file. Valid only while that file exists: after its removal
    /// the system may give its inode number to another file.
    [[nodiscard]] bool isOfSameFileAs(const FileVersion &other) const
    {
        return device == other.device && inode == other.inode;
    }

    bool operator==(const FileVersion &) const = default;
};

} // namespace penwick
