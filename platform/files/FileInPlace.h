#pragma once

#include "platform/files/AtomicFile.h"

#include <QByteArray>

namespace penwick {

/// Writes the new content into the existing file, so that its other hard links, its owner and its
/// attributes stay. A copy of the old content is on the disk before the first byte is changed, and
/// is written back after a failure. If that fails too, the copy is kept and the error is `Damaged`.
/// Fails with `Changed` if `path` no longer names the file after the write.
/// \param path absolute, without links, of a regular file.
/// \param isStillWanted as for `replaceFile`, but called only once, before the first byte is
///        changed.
[[nodiscard]] tl::expected<FileVersion, FileError>
overwriteFile(const QByteArray &path,
              const ProduceBytes &produce,
              const std::function<bool()> &isStillWanted);

/// Writes what `produce` makes to the descriptor, from its current position.
[[nodiscard]] tl::expected<void, FileError> fill(int descriptor, const ProduceBytes &produce);

} // namespace penwick
