#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// Why a file operation failed.
struct FileError
{
    enum class Kind {
        NotFound,         ///< The file, or a folder in its path, does not exist.
        IsFolder,         ///< The path names a folder where a file was expected.
        NotRegular,       ///< The path names a device, pipe or socket.
        PermissionDenied, ///< Not allowed, or the file system is read-only.
        NoSpace,          ///< The disk or the quota is full, or the file would grow too large.
        InvalidPath,      ///< Not a possible path: empty, too long, with a NUL, or a loop of links.
        Cancelled,        ///< A callback of the caller stopped the operation.
        Locked,           ///< Another process held the lock and did not release it in time.
        Changed,          ///< Another program changed the file in the meantime.
        Damaged,          ///< The file is half written; a copy of the old content was kept.
        Other,
    };

    Kind kind = Kind::Other;
    int errnoValue = 0; ///< The system's error number; 0 if the error is not the system's.

    /// The error for a value of `errno`.
    [[nodiscard]] static FileError fromErrno(int errnoValue);

    /// The system's description, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const FileError &) const = default;
};

/// The failure of the system call that has just set `errno`.
[[nodiscard]] tl::unexpected<FileError> systemError();

} // namespace penwick
