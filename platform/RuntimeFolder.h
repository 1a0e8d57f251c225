#pragma once

#include "platform/FileError.h"

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// A folder for sockets and locks that live as long as the user's session, which nobody else can
/// look into: $XDG_RUNTIME_DIR, else one below /tmp; made where it is missing. Fails with
/// `PermissionDenied` where neither belongs to the user alone.
[[nodiscard]] tl::expected<QString, FileError> privateRuntimeFolder();

/// Makes the folder where it is missing, but none around it. True when it is the user's own then,
/// and nobody else can look into it.
[[nodiscard]] bool makePrivateFolder(const QString &path);

} // namespace penwick
