#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

namespace penwick {

/// A copy of a file's bytes that is safe on the disk while the file itself is written in place. It
/// is removed with this object, unless it is kept.
///
/// It lies beside the file or, where that folder takes no files, in `interrupted-saves` of
/// penwick's data folder. Its name begins with that of the file.
class SafeCopy final
{
public:
    /// \param original path of the file, which exists.
    explicit SafeCopy(const QByteArray &original);
    SafeCopy(const SafeCopy &) = delete;
    SafeCopy &operator=(const SafeCopy &) = delete;
    ~SafeCopy();

    /// Copies what stands in `file` and waits until the copy is safe.
    [[nodiscard]] tl::expected<void, FileError> make(int file);

    /// Makes the bytes of `file` those of the copy again. False where that failed.
    [[nodiscard]] bool writeBack(int file) const;

    /// From now on the copy stays: it holds what stands nowhere else.
    void keep() { m_path.clear(); }

    /// Removes those copies of the file that processes which are gone left, and that hold nothing
    /// but what it holds, or have done their work.
    static void removeDispensable(const QByteArray &file);

    /// Absolute paths of the copies that processes which are gone left of this file, and that hold
    /// something else than it does: somebody was kept from finishing a save in place.
    [[nodiscard]] static QStringList left(const QString &file);

private:
    [[nodiscard]] tl::expected<void, FileError> makeIn(const QByteArray &folder, int file);

    QByteArray m_original;
    QByteArray m_path; // Empty when there is nothing to remove.
    FileDescriptor m_copy;
};

} // namespace penwick
