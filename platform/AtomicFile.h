#pragma once

#include "platform/FileError.h"
#include "platform/FileSystem.h" // IWYU pragma: export
#include "platform/FileVersion.h"

#include <QByteArrayView>
#include <QString>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// Takes the next bytes of a file's new content; false when they could not be written.
using WriteBytes = std::function<bool(QByteArrayView)>;

/// Hands the new content of a file to `write`, in order, in pieces of any size. Returns false to
/// give up; must return false once `write` did. It may be called a second time, from the start.
using ProduceBytes = std::function<bool(const WriteBytes &write)>;

/// Replaces the file's content: by a new file that takes its place in one step, so that a reader, a
/// crash or a full disk meets the old content or the new, never half. After a failure the file
/// holds the old content and nothing is left behind.
///
/// Where a new file cannot have all that belongs to the old one (its other hard links, its owner,
/// group, access control lists and extended attributes), or the folder takes none, the content is
/// written in place, which a reader or a crash may meet half done: see `overwriteFile` for what is
/// promised then, and for the failure `Damaged`. A symbolic link stays one, and the file it points
/// to is replaced. A new file gets the user's defaults. The old file must be writable. Paths are
/// absolute or relative to the current folder.
/// \param isStillWanted asked once, as late as something can be kept from happening; false gives
///        up. May be empty.
/// \return the file as it was when its last byte was written.
[[nodiscard]] tl::expected<FileVersion, FileError> replaceFile(
    const QString &path, const ProduceBytes &produce, const std::function<bool()> &isStillWanted);
[[nodiscard]] tl::expected<void, FileError> replaceFile(const QString &path,
                                                        QByteArrayView content);

} // namespace penwick
