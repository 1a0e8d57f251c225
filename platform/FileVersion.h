#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

namespace penwick {

/// Tells one state of a file from another without reading it. Replacing a file, as `replaceFile`
/// does, always makes another one; writing into it does as far as the file system's clock goes.
struct FileVersion
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;                ///< Bytes.
    qint64 modifiedNanoseconds = 0; ///< Since the epoch.

    /// Of the file that `path` leads to; nothing where there is none, or
    /// something else than a file.
    [[nodiscard]] static std::optional<FileVersion> of(const QString &path);

    /// Of what stands at `path` itself, whatever that is: a folder, a socket, a link.
    [[nodiscard]] static std::optional<FileVersion> ofEntry(const QString &path);

    /// Of an open file; nothing where the system fails.
    [[nodiscard]] static std::optional<FileVersion> of(int descriptor);

    /// Whether both are states of one file, which cannot be told once that was removed: the system
    /// gives its number to another then.
    [[nodiscard]] bool isOfSameFileAs(const FileVersion &other) const
    {
        return device == other.device && inode == other.inode;
    }

    bool operator==(const FileVersion &) const = default;
};

} // namespace penwick
