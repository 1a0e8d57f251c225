#pragma once

#include "editor/DocumentError.h"
#include "editor/TextFile.h"
#include "editor/TextStorage.h"
#include "text/Text.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

class FileJob;

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

    /// Replaces the file by `contentString`, takes its path, and marks the text as saved. What the
    /// window has not handed over yet is asked for first (`aboutToSave`). On failure neither the
    /// old file nor the document changes. Where the document's own file is no longer the one that
    /// it knows (`fileVersion`), or another file changes while this goes on, that is a failure of
    /// the kind `FileError::Kind::Changed`.
    [[nodiscard]] tl::expected<void, DocumentError> writeToFile(const QString &absolutePath);

    enum class Transfer { None, Reading, Writing };

    /// As `readFromFile`, by a transfer that `transferEnded` tells the end of. Only when no other
    /// is under way.
    void startReading(const QString &absolutePath);

    /// As `writeToFile`, by a transfer. It writes the text as it is now: what is edited meanwhile
    /// stays edited. Only when no other is under way.
    void startWriting(const QString &absolutePath);

    [[nodiscard]] Transfer transfer() const { return m_transfer; }

    [[nodiscard]] bool isReading() const { return m_transfer == Transfer::Reading; }

    [[nodiscard]] bool isWriting() const { return m_transfer == Transfer::Writing; }

    /// Where the transfer under way reads or writes; empty without one.
    [[nodiscard]] const QString &transferPath() const { return m_transferPath; }

    /// How far the transfer has come: 0 at the start, never past 99 before its end.
    [[nodiscard]] int transferPercent() const;

    /// Calls the transfer off; it ends soon after, with a cancellation as its error. A write that
    /// cannot be stopped any more succeeds. Nothing happens without a transfer.
    void cancelTransfer();

    /// Blocks until the transfer has ended, but no longer than `time`. Emits `transferEnded` for
    /// one that did and returns its outcome; nothing when it goes on.
    [[nodiscard]] std::optional<tl::expected<void, DocumentError>>
    waitForTransfer(std::chrono::milliseconds time);

    /// The state of the file that the document may replace without a word: the one it was read
    /// from or written to last, unless another was accepted since. Nothing without a file.
    [[nodiscard]] const std::optional<FileVersion> &fileVersion() const { return m_version; }

    /// The file is in another state now, and the person agreed, or has no reason not to, that this
    /// text replaces it.
    void acceptFileVersion(const std::optional<FileVersion> &version) { m_version = version; }

    /// What the file held when it was read or written last.
    [[nodiscard]] const Text &savedText() const { return m_savedText; }

    /// The storage holds what stands in the file now: the text counts as saved.
    void adoptFileText(const StoredText &stored);

    /// True when the file at `filePath` is not as the document knows it, judged by its size and
    /// time. False for a document without a file, and for a file that is gone.
    [[nodiscard]] bool fileChangedOnDisk() const;

Q_SIGNALS:
    void contentStringChanged();
    void filePathChanged();
    void editedChanged(bool edited);
    /// The text is about to be written. Whoever holds edits back hands them over before returning.
    void aboutToSave();
    void transferStarted();
    /// The document is as the transfer left it. `error` is empty when it succeeded.
    void transferEnded(penwick::TextDocument::Transfer transfer,
                       const std::optional<penwick::DocumentError> &error);

private:
    void start(Transfer transfer, const QString &absolutePath);
    tl::expected<void, DocumentError> finishTransfer(FileJob &job);
    [[nodiscard]] tl::expected<void, DocumentError> adoptOutcome(FileJob &job);
    void adoptRead(const StoredText &stored, const QString &absolutePath);
    [[nodiscard]] Replaceable replaceableAt(const QString &absolutePath) const;
    void adoptWritten(const StoredText &stored, const QString &absolutePath);

    Text m_contentString;
    std::shared_ptr<TextStorage> m_storage;
    QString m_filePath;
    std::optional<FileVersion> m_version;
    Text m_savedText;
    Transfer m_transfer = Transfer::None;
    QString m_transferPath;
    std::unique_ptr<FileJob> m_job; // Last: it ends before anything else goes.
};

} // namespace penwick
