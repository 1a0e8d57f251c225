#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

namespace penwick {

/// A copy of a file's bytes that is on the disk while the file itself is written in place. It is
/// removed with this object unless `keep` was called.
///
/// It is made beside the file or, if that folder takes no files, in `interrupted-saves` in
/// penwick's data folder. Its name begins with the name of the file.
class SafeCopy final
{
public:
    /// \param original path of the file, which exists.
    explicit SafeCopy(const QByteArray &original);
    SafeCopy(const SafeCopy &) = delete;
    SafeCopy &operator=(const SafeCopy &) = delete;
    ~SafeCopy();

    /// Copies the content of `file` and waits until the copy is on the disk.
    [[nodiscard]] tl::expected<void, FileError> make(int file);

    /// Restores the content of `file` from the copy. False on failure.
    [[nodiscard]] bool writeBack(int file) const;

    /// Keeps the copy when this object is destroyed: it holds content that exists nowhere else.
    void keep() { m_path.clear(); }

    /// Removes the copies of the file that were left by processes that are gone and are no longer
    /// needed: those with the same content as the file, and empty ones.
    static void removeObsolete(const QByteArray &file);

    /// Returns the absolute paths of the copies of the file that were left by processes that are
    /// gone and differ from the file: each is from a save in place that was interrupted.
    [[nodiscard]] static QStringList left(const QString &file);

private:
    [[nodiscard]] tl::expected<void, FileError> makeIn(const QByteArray &folder, int file);

    QByteArray m_original;
    QByteArray m_path; // Empty when there is nothing to remove.
    FileDescriptor m_copy;
};

} // namespace penwick
