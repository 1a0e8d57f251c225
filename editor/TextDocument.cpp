#include "editor/TextDocument.h"

#include "editor/FileJob.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <utility>

namespace penwick {

TextDocument::TextDocument(QObject *parent)
    : QObject(parent)
    , m_storage(std::make_shared<TextStorage>())
{
    connect(m_storage.get(), &TextStorage::modifiedChanged, this, &TextDocument::editedChanged);
}

TextDocument::~TextDocument() = default;

void TextDocument::setContentString(const Text &text)
{
    m_storage->setText(text);
    publishContentString(text);
}

void TextDocument::publishContentString(const Text &text)
{
    m_contentString = text;
    Q_EMIT contentStringChanged();
}

tl::expected<void, DocumentError> TextDocument::readFromData(QByteArrayView data,
                                                             const QString & /*typeName*/)
{
    const auto text = Text::fromUtf8(data);
    if (!text)
        return tl::unexpected(kUnsupportedContent);
    setContentString(*text);
    return {};
}

tl::expected<QByteArray, DocumentError> TextDocument::dataOfType(const QString & /*typeName*/) const
{
    return m_storage->text().toUtf8(); // A text holds no lone surrogate, so this cannot fail.
}

void TextDocument::setFilePath(const QString &absolutePath)
{
    if (m_filePath == absolutePath)
        return;
    m_filePath = absolutePath;
    Q_EMIT filePathChanged();
}

tl::expected<void, DocumentError> TextDocument::readFromFile(const QString &absolutePath)
{
    TransferProgress unwatched;
    return readTextFile(absolutePath, unwatched).map([&](const StoredText &stored) {
        adoptRead(stored, absolutePath);
    });
}

tl::expected<void, DocumentError> TextDocument::writeToFile(const QString &absolutePath)
{
    m_storage->beginSaving();
    TransferProgress unwatched;
    const auto written =
        writeTextFile(absolutePath, m_storage->text(), unwatched, replaceableAt(absolutePath));
    if (!written) {
        m_storage->endSaving(false);
        return tl::unexpected(written.error());
    }
    adoptWritten(*written, absolutePath);
    return {};
}

void TextDocument::adoptRead(const StoredText &stored, const QString &absolutePath)
{
    setContentString(stored.text);
    adoptFileText(stored);
    setFilePath(absolutePath);
}

void TextDocument::adoptWritten(const StoredText &stored, const QString &absolutePath)
{
    m_version = stored.version;
    m_savedText = stored.text;
    setFilePath(absolutePath);
    m_storage->endSaving(true);
}

/// When the path is not that of the document's own file, the user has agreed to replace the file
/// there in its present state.
Replaceable TextDocument::replaceableAt(const QString &absolutePath) const
{
    return {false, absolutePath == m_filePath ? m_version : FileVersion::of(absolutePath)};
}

void TextDocument::adoptFileText(const StoredText &stored)
{
    m_version = stored.version;
    m_savedText = stored.text;
    m_storage->setSavePoint();
}

void TextDocument::startReading(const QString &absolutePath, std::chrono::milliseconds longestPause)
{
    Q_ASSERT(m_job == nullptr);
    m_job = std::make_unique<FileJob>(
        [absolutePath](TransferProgress &progress) { return readTextFile(absolutePath, progress); },
        longestPause);
    start(Transfer::Reading, absolutePath);
}

void TextDocument::resumeReading()
{
    if (m_job != nullptr)
        m_job->progress().resume();
}

void TextDocument::startWriting(const QString &absolutePath)
{
    Q_ASSERT(m_job == nullptr);
    m_storage->beginSaving();
    m_job = std::make_unique<FileJob>(
        [absolutePath, text = m_storage->text(), replaceable = replaceableAt(absolutePath)](
            TransferProgress &progress) {
            return writeTextFile(absolutePath, text, progress, replaceable);
        });
    start(Transfer::Writing, absolutePath);
}

void TextDocument::start(Transfer transfer, const QString &absolutePath)
{
    m_transfer = transfer;
    m_transferPath = absolutePath;
    connect(m_job.get(), &FileJob::finished, this, [this] {
        FileJob *job = m_job.release();
        job->deleteLater(); // It is the sender of this signal.
        finishTransfer(*job);
    });
    Q_EMIT transferStarted();
}

tl::expected<void, DocumentError> TextDocument::finishTransfer(FileJob &job)
{
    const Transfer transfer = m_transfer;
    const auto outcome = adoptOutcome(job);
    // Last, because a slot may delete the document.
    Q_EMIT transferEnded(transfer, outcome ? std::nullopt : std::optional(outcome.error()));
    return outcome;
}

tl::expected<void, DocumentError> TextDocument::adoptOutcome(FileJob &job)
{
    const bool wasCancelled = job.progress().isCancelled();
    TransferOutcome outcome = job.takeOutcome();
    const Transfer transfer = std::exchange(m_transfer, Transfer::None);
    const QString path = std::exchange(m_transferPath, {});
    if (transfer == Transfer::Reading && outcome && wasCancelled) {
        outcome = tl::unexpected(DocumentError{
            DocumentError::Domain::NSPOSIXErrorDomain, 0, FileError::Kind::Cancelled});
    }
    if (!outcome) {
        if (transfer == Transfer::Writing)
            m_storage->endSaving(false);
        return tl::unexpected(outcome.error());
    }
    if (transfer == Transfer::Reading)
        adoptRead(*outcome, path);
    else
        adoptWritten(*outcome, path);
    return {};
}

int TextDocument::transferPercent() const
{
    if (m_job == nullptr || m_job->progress().total() <= 0)
        return 0;
    // Written data still has to reach the disk, and a file can grow while it is read.
    constexpr qint64 kMost = 99;
    const TransferProgress &progress = m_job->progress();
    return static_cast<int>(std::min(kMost, progress.done() * 100 / progress.total()));
}

Text TextDocument::readSoFar() const
{
    return m_job != nullptr ? m_job->progress().readSoFar() : Text();
}

void TextDocument::waitForText(std::chrono::milliseconds time) const
{
    constexpr std::chrono::milliseconds kStep{1};
    const QDeadlineTimer deadline(time);
    while (m_job != nullptr && !m_job->waitFor(kStep) && readSoFar().isEmpty() &&
           !deadline.hasExpired()) {
    }
}

void TextDocument::cancelTransfer()
{
    if (m_job != nullptr)
        m_job->progress().cancel();
}

std::optional<tl::expected<void, DocumentError>>
TextDocument::waitForTransfer(std::chrono::milliseconds time)
{
    if (m_job == nullptr || !m_job->waitFor(time))
        return std::nullopt;
    const std::unique_ptr<FileJob> job = std::move(m_job);
    return finishTransfer(*job);
}

} // namespace penwick
