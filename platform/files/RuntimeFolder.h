#pragma once

#include "platform/files/FileError.h"

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// Returns a folder for sockets and locks that exist as long as the user's session, which no other
/// user can access: $XDG_RUNTIME_DIR, else a folder in /tmp. Creates it if it is missing. Fails
/// with `PermissionDenied` if neither belongs to the user alone.
[[nodiscard]] tl::expected<QString, FileError> privateRuntimeFolder();

/// Creates the folder if it is missing, but not its parents. True when it belongs to the user and
/// no other user can access it.
[[nodiscard]] bool ensurePrivateFolder(const QString &path);

} // namespace penwick
