#pragma once

#include "editor/TextDifference.h"
#include "platform/files/FileError.h"
#include "platform/files/FileVersion.h"
#include "text/Text.h"

#include <QString>

#include <atomic>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

namespace penwick {

/// What a copy of an unsaved text was made from.
struct RecoveryOrigin
{
    QString filePath;                   ///< Absolute; empty for an untitled document.
    QString name;                       ///< As the user saw it.
    std::optional<FileVersion> version; ///< Of the file that the edits began with.

    bool operator==(const RecoveryOrigin &) const = default;
};

/// One write to a copy: the text as it is now, and how it came from the last written one.
struct RecoveryUpdate
{
    RecoveryOrigin origin;
    Text text;
    /// In order. Without a value the text is written as a whole.
    std::optional<std::vector<TextDifference>> changes;
    qint64 caret = 0; ///< UTF-16 code units, 0-based.
    qint64 time = 0;  ///< Milliseconds since the epoch.
};

/// What is known of a copy without reading its text.
struct RecoverySummary
{
    RecoveryOrigin origin;
    qint64 time = 0;      ///< Of the last write; milliseconds since the epoch.
    qint64 utf8Bytes = 0; ///< Size of the text.
};

/// A text read from a copy.
struct RecoveredText
{
    RecoverySummary summary;
    Text text;
    qint64 caret = 0; ///< UTF-16 code units, 0-based; at most the text's length.
    /// True when a part of the copy is damaged. In place of a damaged block of text the text holds
    /// U+FFFD, once for each code unit; what was written after damage of another kind is missing.
    bool isDamaged = false;
};

/// A file that keeps one unsaved text. It begins with the whole text; later writes append what
/// changed, and replace the file by the whole text again once the changes have become larger than
/// that. Every write is on the disk when it returns. A process killed at any moment leaves a file
/// that holds the text as of the last completed write.
///
/// Use it from one thread at a time. Paths are absolute; the folder must exist.
class RecoveryCopy final
{
public:
    explicit RecoveryCopy(QString path)
        : m_path(std::move(path))
    {
    }

    [[nodiscard]] const QString &path() const { return m_path; }

    /// After a failure or an exception the file still holds the last written text, and the next
    /// update must be whole. \param isCancelled checked between blocks; fails with `Cancelled` when
    /// it becomes true.
    [[nodiscard]] tl::expected<void, FileError> write(const RecoveryUpdate &update,
                                                      const std::atomic<bool> &isCancelled);

    /// Removes the file, if it exists.
    void remove();

    /// Fails with `NotFound` or another error of the system if the file cannot be opened. The
    /// summary of a damaged file holds what is readable.
    [[nodiscard]] static tl::expected<RecoverySummary, FileError> readSummary(const QString &path);

    /// \param isCancelled as for `write`.
    [[nodiscard]] static tl::expected<RecoveredText, FileError>
    read(const QString &path, const std::atomic<bool> &isCancelled);

private:
    [[nodiscard]] tl::expected<void, FileError> rewrite(const RecoveryUpdate &update,
                                                        const std::atomic<bool> &isCancelled);
    [[nodiscard]] tl::expected<void, FileError>
    append(const RecoveryUpdate &update, qint64 size, const std::atomic<bool> &isCancelled);

    const QString m_path;
    RecoveryOrigin m_origin; // As written last.
    qint64 m_size = 0;       // Of the file, in bytes; 0 if it must be written as a whole.
};

} // namespace penwick
