#pragma once

#include "platform/FileError.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// The bytes by which the system knows the path. Fails with `InvalidPath` for the empty path and
/// for one with a NUL, which the system would cut short there.
[[nodiscard]] tl::expected<QByteArray, FileError> systemPath(const QString &path);

/// The absolute path of the current folder, in the bytes by which the system knows it. Fails with
/// `NotFound` where it was removed: relative names lead nowhere then.
[[nodiscard]] tl::expected<QByteArray, FileError> currentFolder();

/// The whole content of a regular file.
[[nodiscard]] tl::expected<QByteArray, FileError> readFile(const QString &path);

/// Takes the next bytes of a file that is being read; false to stop.
using TakeBytes = std::function<bool(QByteArrayView)>;

/// Hands the content of a regular file to `take`, in order, in blocks of bounded size, so that a
/// large file never stands in memory as a whole. Fails with `Cancelled` when `take` stopped it.
[[nodiscard]] tl::expected<void, FileError> readFileInBlocks(const QString &path,
                                                             const TakeBytes &take);

/// Removes a file or a symbolic link (not what it points to).
[[nodiscard]] tl::expected<void, FileError> removeFile(const QString &path);

/// Creates a folder and the folders on the way to it. A folder that exists is success.
[[nodiscard]] tl::expected<void, FileError> createFolder(const QString &path);

/// From now on, files that this process makes can be read and written by their owner only.
void makeNewFilesPrivate();

/// Names of everything in a folder, hidden ones too, in ascending byte order.
[[nodiscard]] tl::expected<QStringList, FileError> folderEntries(const QString &path);

} // namespace penwick
