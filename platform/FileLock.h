#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

// The system's advisory lock on an open file or folder. It belongs to the open file, so copies of
// the descriptor in child processes share it, and it goes with the last of them.

/// Opens a folder, so that it can be locked. Programs started later do not get the descriptor.
[[nodiscard]] tl::expected<FileDescriptor, FileError> openFolder(const QString &path);

/// Opens a file of the user's own for the same, and creates it where it is missing, readable by
/// nobody else. A symbolic link is not followed. Where the system allows it, the file bears the
/// mark (the sticky bit) that keeps cleaners of runtime folders from it.
[[nodiscard]] tl::expected<FileDescriptor, FileError> openLockFile(const QString &path);

/// Takes the lock for this process alone, at once or not at all: fails with `Locked` where another
/// one has it.
[[nodiscard]] tl::expected<void, FileError> lockExclusively(const FileDescriptor &file);

} // namespace penwick
