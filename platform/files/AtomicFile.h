#pragma once

#include "platform/files/FileError.h"
#include "platform/files/FileSystem.h" // IWYU pragma: export
#include "platform/files/FileVersion.h"

#include <QByteArrayView>
#include <QString>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// Writes the next bytes of a file's new content. Returns false if they could not be written.
using WriteBytes = std::function<bool(QByteArrayView)>;

/// Passes the new content of a file to `write`, in order, in pieces of any size. Returns false to
/// cancel; must return false once `write` did. May be called a second time, and then starts again
/// from the beginning.
using ProduceBytes = std::function<bool(const WriteBytes &write)>;

/// Replaces the file's content: renames a new file to its path, so that a reader, a crash or a full
/// disk sees either the old content or the new, never a part. After a failure the file holds the
/// old content and no temporary file is left.
///
/// The content is written in place if a new file cannot have everything that belongs to the old one
/// (its other hard links, its owner, group, access control lists and extended attributes) or if the
/// folder takes no new file. A reader or a crash may then see a part of the new content; see
/// `overwriteFile` for the guarantees and for the error `Damaged`. A symbolic link stays a link,
/// and the file it points to is replaced. A file that does not exist yet gets the user's default
/// permissions. The old file must be writable. Paths are absolute or relative to the current
/// folder.
/// \param isStillWanted called as late as the save can still be cancelled, and a second time if
///        renaming fails and the content is written in place. False cancels the save. May be empty.
/// \return the version of the file after its last byte was written.
[[nodiscard]] tl::expected<FileVersion, FileError> replaceFile(
    const QString &path, const ProduceBytes &produce, const std::function<bool()> &isStillWanted);
[[nodiscard]] tl::expected<void, FileError> replaceFile(const QString &path,
                                                        QByteArrayView content);

} // namespace penwick
