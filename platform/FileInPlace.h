#pragma once

#include "platform/AtomicFile.h"

#include <QByteArray>

namespace penwick {

/// Writes the new content into the file itself, so that its other names, its owner and all that
/// belongs to it stay. A copy of the old content is safe on the disk before the first byte is
/// touched; after a failure the file holds it again. Where even that fails, the copy stays, and the
/// error is of the kind `Damaged`. Where the file no longer stands at `path` in the end, that is a
/// failure of the kind `Changed`.
/// \param path absolute, without links, of a regular file.
/// \param isStillWanted as for `replaceFile`: asked once, before the first byte is touched.
[[nodiscard]] tl::expected<FileVersion, FileError>
overwriteFile(const QByteArray &path,
              const ProduceBytes &produce,
              const std::function<bool()> &isStillWanted);

/// Hands what `produce` makes to a writer.
[[nodiscard]] tl::expected<void, FileError> fill(int descriptor, const ProduceBytes &produce);

} // namespace penwick
