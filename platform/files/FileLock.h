#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

// The system's advisory lock on an open file or folder. It belongs to the open file: copies of the
// descriptor in child processes share it, and it is released when the last of them is closed.

/// Opens a folder for locking. Programs started later do not inherit the descriptor.
[[nodiscard]] tl::expected<FileDescriptor, FileError> openFolder(const QString &path);

/// Opens a lock file, and creates it if it is missing, accessible to its owner only. A symbolic
/// link is not followed. If the system allows it, the file gets the sticky bit, which keeps
/// cleaners of runtime folders from removing it. Programs started later do not inherit the
/// descriptor.
[[nodiscard]] tl::expected<FileDescriptor, FileError> openLockFile(const QString &path);

/// Takes the lock for this process alone, without waiting: fails with `Locked` if another process
/// holds it.
[[nodiscard]] tl::expected<void, FileError> lockExclusively(const FileDescriptor &file);

} // namespace penwick
