#pragma once

#include "platform/files/FileError.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <functional>
#include <tl/expected.hpp>

namespace penwick {

/// Encodes the path for system calls. Fails with `InvalidPath` for an empty path and for one with a
/// NUL, where the system would cut it off.
[[nodiscard]] tl::expected<QByteArray, FileError> systemPath(const QString &path);

/// Returns the absolute path of the current folder, encoded for system calls. Fails with `NotFound`
/// if the folder was removed: relative paths lead nowhere then.
[[nodiscard]] tl::expected<QByteArray, FileError> currentFolder();

/// Returns the whole content of a regular file.
[[nodiscard]] tl::expected<QByteArray, FileError> readFile(const QString &path);

/// Takes the next bytes of a file that is being read. Returns false to stop.
using TakeBytes = std::function<bool(QByteArrayView)>;

/// Passes the content of a regular file to `take`, in order, in blocks of bounded size, so that a
/// large file is never in memory as a whole. Fails with `Cancelled` when `take` returns false.
[[nodiscard]] tl::expected<void, FileError> readFileInBlocks(const QString &path,
                                                             const TakeBytes &take);

/// The same for standard input, up to its end.
[[nodiscard]] tl::expected<void, FileError> readStandardInput(const TakeBytes &take);

/// Removes a file or a symbolic link (not what it points to).
[[nodiscard]] tl::expected<void, FileError> removeFile(const QString &path);

/// Creates a folder and its missing parents. Succeeds if the folder exists.
[[nodiscard]] tl::expected<void, FileError> createFolder(const QString &path);

/// Makes new files private: files that this process creates from now on are accessible to their
/// owner only.
void makeNewFilesPrivate();

/// Returns the names of all entries of a folder, including hidden ones, in ascending byte order.
[[nodiscard]] tl::expected<QStringList, FileError> folderEntries(const QString &path);

} // namespace penwick
