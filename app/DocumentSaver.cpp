#include "app/DocumentSaver.h"

#include "app/DocumentDialogs.h"
#include "app/SavingDialog.h"
#include "window/EditorWindowController.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QInputMethod>

#include <utility>

namespace penwick {

DocumentSaver::DocumentSaver(TextDocument *document,
                             const EditorWindowController *controller,
                             const TransferLimits &limits,
                             SaveElsewhere saveElsewhere)
    : m_document(document)
    , m_controller(controller)
    , m_limits(limits)
    , m_saveElsewhere(std::move(saveElsewhere))
{
    connect(document,
            &TextDocument::transferEnded,
            this,
            [this](TextDocument::Transfer transfer, const std::optional<DocumentError> &error) {
                if (transfer == TextDocument::Transfer::Writing && !m_isAwaited)
                    finishSave(error);
            });
}

bool DocumentSaver::save(const QString &path)
{
    // An active composition is part of the text to save.
    QGuiApplication::inputMethod()->commit();
    if (m_document->isWriting()) {
        m_savesAgain = true;
        return true;
    }
    return write(path);
}

bool DocumentSaver::write(const QString &path)
{
    m_path = path;
    if (m_document->textStorage()->text().metrics().utf8Bytes >= m_limits.directBytes) {
        m_document->startWriting(path);
        return true;
    }
    if (const auto written = m_document->writeToFile(path); !written)
        return recover(written.error());
    return true;
}

/// Handles a failed save. True when another save then succeeded or is under way.
bool DocumentSaver::recover(const DocumentError &error)
{
    if (error.fileErrorKind == FileError::Kind::PermissionDenied) {
        return dialogs::offerToSaveElsewhere(m_controller->window(), m_path, error) &&
               m_saveElsewhere();
    }
    if (error.fileErrorKind != FileError::Kind::Changed) {
        dialogs::showSaveError(m_controller->window(), m_path, error);
        return false;
    }
    // Take this version before the question: a change made during the question needs another one.
    const std::optional<FileVersion> version = FileVersion::of(m_path);
    if (!confirmReplace(version))
        return false;
    if (m_path == m_document->filePath()) {
        m_document->acceptFileVersion(version);
        // If this save fails, no undo step leads back to the content of the file.
        m_document->textStorage()->forgetSavePoint();
    }
    return write(m_path);
}

bool DocumentSaver::confirmReplace(const std::optional<FileVersion> &version)
{
    // A file that was only touched still has the known content. A large file is not read to find
    // out.
    constexpr qint64 kMaxComparedSize = 20'000'000;
    const Text &known = m_document->savedText();
    if (version && version->size == known.metrics().utf8Bytes && version->size < kMaxComparedSize) {
        TransferProgress unwatched;
        const TransferOutcome present = readTextFile(m_path, unwatched);
        if (present && present->version == version && present->text == known)
            return true;
    }
    return dialogs::askToOverwriteChangedFile(m_controller->window(), QFileInfo(m_path).fileName());
}

/// Handles the end of a transfer. False when the text was not saved.
bool DocumentSaver::finishSave(const std::optional<DocumentError> &error)
{
    const bool savesAgain = std::exchange(m_savesAgain, false);
    if (error)
        return !error->isCancellation() && recover(*error);
    return !savesAgain || !m_document->isEdited() || write(m_path);
}

bool DocumentSaver::await(const QString &name)
{
    while (m_document->isWriting())
        if (!finishSave(awaitOne(name)))
            return false;
    return true;
}

std::optional<DocumentError> DocumentSaver::awaitOne(const QString &name)
{
    std::optional<DocumentError> error;
    m_isAwaited = true;
    if (const auto outcome = m_document->waitForTransfer(m_limits.saving)) {
        error = *outcome ? std::nullopt : std::optional(outcome->error());
    } else {
        SavingDialog dialog(m_controller->window(), m_document, name);
        dialog.exec();
        error = dialog.error();
    }
    m_isAwaited = false;
    return error;
}

} // namespace penwick
