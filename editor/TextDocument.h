#pragma once

#include "editor/TextStorage.h"
#include "platform/FileError.h"
#include "text/Text.h"

#include <QDateTime>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Why a document could not be read or written.
struct DocumentError
{
    enum class Domain {
        NSOSStatusErrorDomain, ///< The content is at fault.
        NSPOSIXErrorDomain,    ///< The file system is; `code` is an errno value, or 0.
    };

    Domain domain = Domain::NSOSStatusErrorDomain;
    int code = 0;
    /// What kind of failure it was; of meaning in the domain of the file system only.
    FileError::Kind fileErrorKind = FileError::Kind::Other;

    bool operator==(const DocumentError &) const = default;
};

/// Bytes that are not UTF-8 cannot be read, and a text without a UTF-8 form cannot be written: the
/// generic status of an operation that is not implemented.
inline constexpr DocumentError kUnsupportedContent{DocumentError::Domain::NSOSStatusErrorDomain,
                                                   -4};

/// The document of one editor window: a whole UTF-8 text, where its file is, and the storage that
/// the window edits, which is its undo manager too. It keeps no encoding and no newline style: what
/// the file holds comes in and goes out unit by unit. Use it from the main thread.
class TextDocument final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(penwick::Text contentString READ contentString WRITE setContentString NOTIFY
                   contentStringChanged)

public:
    explicit TextDocument(QObject *parent = nullptr);
    ~TextDocument() override;

    /// Documents are written when the person saves them, never behind their back.
    [[nodiscard]] static constexpr bool autosavesInPlace() { return false; }

    /// The complete text; copying it is cheap. It follows the text view, an event-loop turn later.
    [[nodiscard]] const Text &contentString() const { return m_contentString; }

    /// Changes neither the storage nor the edited state.
    void setContentString(const Text &text);

    /// What the window edits and undoes. Owned by the document; empty until a view fills it.
    [[nodiscard]] TextStorage *textStorage() const { return m_storage.get(); }

    /// The same, for a view that may outlive the document.
    [[nodiscard]] std::shared_ptr<TextStorage> sharedTextStorage() const { return m_storage; }

    /// True when the text was edited since it was opened or saved.
    [[nodiscard]] bool isEdited() const { return m_storage->isModified(); }

    /// Decodes `data` strictly into `contentString`; fails with `kUnsupportedContent` and then
    /// changes nothing. No byte-order mark, newline or encoding is looked for.
    /// \param typeName ignored.
    [[nodiscard]] tl::expected<void, DocumentError> readFromData(QByteArrayView data,
                                                                 const QString &typeName = {});

    /// `contentString` as UTF-8, without a byte-order mark.
    /// \param typeName ignored.
    [[nodiscard]] tl::expected<QByteArray, DocumentError>
    dataOfType(const QString &typeName = {}) const;

    /// Absolute path of the document's file; empty for one that was never saved. The file need not
    /// exist.
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

    void setFilePath(const QString &absolutePath);

    /// Reads the file and takes its path. On failure nothing changes.
    [[nodiscard]] tl::expected<void, DocumentError> readFromFile(const QString &absolutePath);

    /// Replaces the file by `contentString` in one step, takes its path, and marks the text as
    /// saved. What the window has not handed over yet is asked for first (`aboutToSave`). On
    /// failure neither the old file nor the document changes.
    [[nodiscard]] tl::expected<void, DocumentError> writeToFile(const QString &absolutePath);

    /// True when the file at `filePath` is not as it was read or written last, judged by its size
    /// and time. False for a document without a file, and for a file that is gone.
    [[nodiscard]] bool fileChangedOnDisk() const;

Q_SIGNALS:
    void contentStringChanged();
    void filePathChanged();
    void editedChanged(bool edited);
    /// The text is about to be written. Whoever holds edits back hands them over before returning.
    void aboutToSave();

private:
    /// What tells one state of a file from another without reading it.
    struct FileStamp
    {
        qint64 size = 0;
        QDateTime lastModified;

        bool operator==(const FileStamp &) const = default;
    };

    [[nodiscard]] static std::optional<FileStamp> stampOf(const QString &path);

    Text m_contentString;
    std::shared_ptr<TextStorage> m_storage;
    QString m_filePath;
    std::optional<FileStamp> m_stamp;
};

} // namespace penwick
