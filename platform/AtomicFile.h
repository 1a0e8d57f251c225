#pragma once

#include "platform/FileError.h"
#include "platform/FileSystem.h" // IWYU pragma: export

#include <QByteArrayView>
#include <QString>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// Takes the next bytes of a file's new content; false when they could not be written.
using WriteBytes = std::function<bool(QByteArrayView)>;

/// Hands the new content of a file to `write`, in order, in pieces of any size. Returns false to
/// give up; must return false once `write` did.
using ProduceBytes = std::function<bool(const WriteBytes &write)>;

/// Replaces the file's content in one step: a reader, a crash or a full disk meets the old content
/// or the new, never half. After any failure the old file is untouched and nothing is left behind.
///
/// A symbolic link stays one and the file it points to is replaced. Permissions, and owner, group
/// and extended attributes where the system allows, are those of the old file; a new file gets the
/// user's defaults. The old file must be writable and so must its folder. Other hard links to the
/// old file keep the old content. Paths are absolute or relative to the current folder.
/// \param isStillWanted asked once, when the new content is safe on the disk and only the step
///        itself is left; false gives up as late as that. May be empty.
[[nodiscard]] tl::expected<void, FileError>
replaceFile(const QString &path,
            const ProduceBytes &produce,
            const std::function<bool()> &isStillWanted = {});
[[nodiscard]] tl::expected<void, FileError> replaceFile(const QString &path,
                                                        QByteArrayView content);

} // namespace penwick
