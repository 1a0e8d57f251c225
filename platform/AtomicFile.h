#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// Why a file operation failed.
struct FileError
{
    enum class Kind {
        NotFound,         ///< The file, or a folder on the way to it, does not exist.
        IsFolder,         ///< A folder stands where a file was expected.
        NotRegular,       ///< A device, pipe or socket stands there.
        PermissionDenied, ///< Not allowed, or the file system is read-only.
        NoSpace,          ///< The disk or the quota is full, or the file would grow too large.
        InvalidPath,      ///< No file can have this name: empty, too long, NUL, a ring of links.
        Cancelled,        ///< The producer stopped the writing.
        Other,
    };

    Kind kind = Kind::Other;
    int errnoValue = 0; ///< What the system reported; 0 when it was not the system.

    /// The system's description, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const FileError &) const = default;
};

/// Takes the next bytes of a file's new content; false when they could not be written.
using WriteBytes = std::function<bool(QByteArrayView)>;

/// Hands the new content of a file to `write`, in order, in pieces of any size. Returns false to
/// give up; must return false once `write` did.
using ProduceBytes = std::function<bool(const WriteBytes &write)>;

/// Replaces the file's content in one step: a reader, a crash or a full disk meets the old content
/// or the new, never half. After any failure the old file is untouched and nothing is left behind.
///
/// A symbolic link stays one and the file it points to is replaced. Permissions, and owner, group
/// and extended attributes where the system allows, are those of the old file; a new file gets the
/// user's defaults. The old file must be writable and so must its folder. Other hard links to the
/// old file keep the old content. Paths are absolute or relative to the current folder.
[[nodiscard]] tl::expected<void, FileError> replaceFile(const QString &path,
                                                        const ProduceBytes &produce);
[[nodiscard]] tl::expected<void, FileError> replaceFile(const QString &path,
                                                        QByteArrayView content);

/// The whole content of a regular file.
[[nodiscard]] tl::expected<QByteArray, FileError> readFile(const QString &path);

/// Removes a file or a symbolic link (not what it points to).
[[nodiscard]] tl::expected<void, FileError> removeFile(const QString &path);

/// Creates a folder and the folders on the way to it. A folder that exists is success.
[[nodiscard]] tl::expected<void, FileError> createFolder(const QString &path);

/// Names of everything in a folder, hidden ones too, in ascending byte order.
[[nodiscard]] tl::expected<QStringList, FileError> folderEntries(const QString &path);

} // namespace penwick
