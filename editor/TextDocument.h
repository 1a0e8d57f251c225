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

/// The document of one tab: the storage that owns its text and undo history, and the path of its
/// file. Loading fills the storage, views edit it, saving reads it. The document stores no encoding
/// and no newline style: text is read and written unchanged, unit by unit. Use it from the main
/// thread.
class TextDocument final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(penwick::Text contentString READ contentString WRITE setContentString NOTIFY
                   contentStringChanged)

public:
    explicit TextDocument(QObject *parent = nullptr);
    ~TextDocument() override;

    /// Documents are written only when the user saves them.
    [[nodiscard]] static constexpr bool autosavesInPlace() { return false; }

    /// The complete text as published last; cheap to copy. While the user edits, it follows the
    /// storage one event-loop turn later.
    [[nodiscard]] const Text &contentString() const { return m_contentString; }

    /// Replaces the storage's text, clears the undo history and publishes the text. The edited
    /// state stays as it was.
    void setContentString(const Text &text);

    /// Makes `text`, which the storage holds or held a moment ago, the `contentString`.
    void publishContentString(const Text &text);

    /// The storage that owns the text. Owned by the document.
    [[nodiscard]] TextStorage *textStorage() const { return m_storage.get(); }

    /// The same, for a view that may outlive the document.
    [[nodiscard]] std::shared_ptr<TextStorage> sharedTextStorage() const { return m_storage; }

    /// True when the text was edited since it was opened or saved.
    [[nodiscard]] bool isEdited() const { return m_storage->isModified(); }

    /// Decodes `data` strictly and calls `setContentString`. On other content it fails with
    /// `kUnsupportedContent` and changes nothing. It detects no byte-order mark, newline style or
    /// encoding.
    /// \param typeName ignored.
    [[nodiscard]] tl::expected<void, DocumentError> readFromData(QByteArrayView data,
                                                                 const QString &typeName = {});

    /// Returns the storage's text as UTF-8. Adds no byte-order mark.
    /// \param typeName ignored.
    [[nodiscard]] tl::expected<QByteArray, DocumentError>
    dataOfType(const QString &typeName = {}) const;

    /// Absolute path of the document's file; empty when it was never saved. The file need not
    /// exist.
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

    void setFilePath(const QString &absolutePath);

    /// Absolute path that is suggested for saving a document without a file; empty for none.
    [[nodiscard]] const QString &suggestedPath() const { return m_suggestedPath; }

    void setSuggestedPath(const QString &absolutePath) { m_suggestedPath = absolutePath; }

    /// Reads the file and adopts its path. On failure nothing changes.
    [[nodiscard]] tl::expected<void, DocumentError> readFromFile(const QString &absolutePath);

    /// Replaces the file's content by the storage's text, adopts its path, and marks the text as
    /// saved. On failure the document does not change, nor does the old file unless the error is
    /// `FileError::Kind::Damaged`. Fails with `FileError::Kind::Changed` when the document's own
    /// file no longer has the state `fileVersion`, or when another file changes during the call.
    [[nodiscard]] tl::expected<void, DocumentError> writeToFile(const QString &absolutePath);

    enum class Transfer { None, Reading, Writing };

    /// Does the same as `readFromFile` by a transfer, whose end `transferEnded` reports. Call it
    /// only while no other transfer is running.
    /// \param longestPause for this long at most, the reading pauses when it has the start of the
    ///        text, until `resumeReading` is called.
    void startReading(const QString &absolutePath, std::chrono::milliseconds longestPause = {});

    /// Ends the pause of the reading. Does nothing when nothing is being read or it does not pause.
    void resumeReading();

    /// Does the same as `writeToFile` by a transfer. It writes a snapshot of the text: edits made
    /// meanwhile leave the document edited. Call it only while no other transfer is running.
    void startWriting(const QString &absolutePath);

    [[nodiscard]] Transfer transfer() const { return m_transfer; }

    [[nodiscard]] bool isReading() const { return m_transfer == Transfer::Reading; }

    [[nodiscard]] bool isWriting() const { return m_transfer == Transfer::Writing; }

    /// Path that the running transfer reads or writes; empty without a transfer.
    [[nodiscard]] const QString &transferPath() const { return m_transferPath; }

    /// Progress of the transfer: 0 at the start, at most 99 before its end.
    [[nodiscard]] int transferPercent() const;

    /// The start of the text that is being read, as far as it is decoded; empty at first and when
    /// nothing is being read. The file may still turn out not to be text.
    [[nodiscard]] Text readSoFar() const;

    /// Blocks until `readSoFar` has a text or the transfer's work has ended, but not much longer
    /// than `time`. Emits nothing.
    void waitForText(std::chrono::milliseconds time) const;

    /// Cancels the transfer. It ends soon after, with a cancellation as its error. A write that can
    /// no longer be stopped succeeds. Does nothing without a transfer.
    void cancelTransfer();

    /// Blocks until the transfer has ended, but no longer than `time`. If it has ended, emits
    /// `transferEnded` and returns its outcome; otherwise returns nothing.
    [[nodiscard]] std::optional<tl::expected<void, DocumentError>>
    waitForTransfer(std::chrono::milliseconds time);

    /// The state of the file that a save may replace without asking: that of the last read or
    /// write, unless another was accepted since. Empty without a file.
    [[nodiscard]] const std::optional<FileVersion> &fileVersion() const { return m_version; }

    /// Accepts another state of the file: the next save may replace it. Call this when the user has
    /// agreed, or when there is no reason to ask.
    void acceptFileVersion(const std::optional<FileVersion> &version) { m_version = version; }

    /// The file's content when it was last read or written.
    [[nodiscard]] const Text &savedText() const { return m_savedText; }

    /// Records `stored` as the file's content and state, and marks the text as saved. Call this
    /// when the storage holds the same text.
    void adoptFileText(const StoredText &stored);

Q_SIGNALS:
    void contentStringChanged();
    void filePathChanged();
    void editedChanged(bool edited);
    void transferStarted();
    /// The document has adopted the outcome of the transfer. `error` is empty on success.
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
    QString m_suggestedPath;
    std::optional<FileVersion> m_version;
    Text m_savedText;
    Transfer m_transfer = Transfer::None;
    QString m_transferPath;
    std::unique_ptr<FileJob> m_job; // Last, so that it is destroyed first.
};

} // namespace penwick
