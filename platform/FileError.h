#pragma once

#include <QString>

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
        Locked,           ///< Another process is at it, and did not finish in time.
        Changed,          ///< Somebody else changed the file meanwhile.
        Damaged,          ///< The file is half written; a copy of the old content was kept.
        Other,
    };

    Kind kind = Kind::Other;
    int errnoValue = 0; ///< What the system reported; 0 when it was not the system.

    /// The error for a value of `errno`.
    [[nodiscard]] static FileError fromErrno(int errnoValue);

    /// The system's description, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const FileError &) const = default;
};

} // namespace penwick
