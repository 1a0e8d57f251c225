#pragma once

#include "editor/TextFile.h"

#include <QObject>
#include <QStringList>

#include <memory>

namespace penwick {

/// What stands where a document's file was.
struct FileFinding
{
    enum class Kind {
        Same,       ///< The state that was known.
        Text,       ///< Another state, with a text that may be the same nevertheless.
        Missing,    ///< No file.
        Unreadable, ///< A file that cannot be read, or that holds no UTF-8.
    };

    Kind kind = Kind::Same;
    StoredText stored;   ///< The version for each kind, the text for `Text` only.
    DocumentError error; ///< For `Unreadable`.
    QStringList copies;  ///< What `SafeCopy::left` tells of the file.
};

/// Looks at the file; reads it where it is in another state than `known`. Safe to call from any
/// thread.
[[nodiscard]] FileFinding lookAtFile(const QString &path,
                                     const std::optional<FileVersion> &known,
                                     TransferProgress &progress);

/// The same on a thread of its own, so that nobody waits for a file system that does not answer.
/// Make and use it on the main thread. It may be destroyed at any time: the thread then ends when
/// the system lets it, and nobody hears of it.
class FileCheck final : public QObject
{
    Q_OBJECT

public:
    FileCheck(const QString &path, const std::optional<FileVersion> &known, QObject *parent);
    ~FileCheck() override;

    /// How much of the file was read; nothing to do as long as it is not known to have changed.
    [[nodiscard]] const TransferProgress &progress() const;

Q_SIGNALS:
    /// Emitted once, in a turn of the event loop of its own.
    void finished(const penwick::FileFinding &finding);

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
};

} // namespace penwick
