#pragma once

#include <QByteArray>

#include <sys/stat.h>

namespace penwick {

/// Copies everything but the content from one file to another: owner, group, permissions, access
/// control lists and extended attributes. Times, and flags that only one file system supports, are
/// not copied.
/// \param oldPath of the file to copy from.
/// \param old its status.
/// \param descriptor of the file to copy to.
/// \return false when something could not be copied.
[[nodiscard]] bool
copyAttributes(const QByteArray &oldPath, const struct stat &old, int descriptor);

} // namespace penwick
