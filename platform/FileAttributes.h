#pragma once

#include <QByteArray>

#include <sys/stat.h>

namespace penwick {

/// Gives an open file what belongs to another one besides its content: owner, group, permissions,
/// access control lists and extended attributes. Times, and the flags that only one file system
/// knows, are not among them.
/// \return false when something could not be carried over.
[[nodiscard]] bool
copyAttributes(const QByteArray &oldPath, const struct stat &old, int descriptor);

} // namespace penwick
