#pragma once

#include "platform/files/AtomicFile.h"

#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// Makes `backup` a file with the content that `produce` makes, which is that of `original`, and
/// with the owner, permissions and attributes of `original`. Where they cannot be copied, only the
/// owner of the backup may read it. A file at `backup` is replaced as a whole; a link there is
/// replaced, not followed.
/// \param original an existing file.
[[nodiscard]] tl::expected<void, FileError>
makeBackup(const QString &original, const QString &backup, const ProduceBytes &produce);

} // namespace penwick
