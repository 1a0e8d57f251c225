#pragma once

#include "editor/TextDocument.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace penwick {

class EditorWindowController;

/// Limits that decide what is read and written at once and what on another thread.
struct TransferLimits
{
    /// Files and texts with fewer bytes are read and written at once.
    qint64 directBytes = 1'000'000;
    /// How long to wait for the first text of a larger file before its window opens without text.
    std::chrono::milliseconds firstText{100};
    /// How long to wait then for the rest before its window opens with what has been read.
    std::chrono::milliseconds reading{10};
    /// The reading of files with at least so many bytes pauses behind the first text until it has
    /// been painted, so that decoding does not take the processor from the window.
    qint64 pausedBytes = 4'000'000;
    /// How long it pauses at most, should the text never be painted.
    std::chrono::milliseconds pause{200};
    /// How long a caller that needs a save to end waits before a dialog shows the save.
    std::chrono::milliseconds saving{200};
};

/// Saves one document, one save at a time: small texts at once, large ones by a transfer during
/// which the user can keep editing. Shows an error when a save fails. Asks first when another
/// program has changed the file, and offers to save elsewhere when the file cannot be written.
class DocumentSaver final : public QObject
{
    Q_OBJECT

public:
    /// Asks for another file and saves there. True when that is done or under way.
    using SaveElsewhere = std::function<bool()>;

    /// \param document not owned; must outlive this.
    /// \param controller its window is the parent of all messages; not owned; must outlive this.
    /// \param saveElsewhere called when the user accepts the offer.
    DocumentSaver(TextDocument *document,
                  const EditorWindowController *controller,
                  const TransferLimits &limits,
                  SaveElsewhere saveElsewhere);

    /// Writes the text to the file. If a save is under way, another one to the same file follows
    /// it. A composition is committed first.
    /// \return true when the text is saved or its save is under way.
    bool save(const QString &path);

    /// Returns once no save is under way. If that takes long, shows a modal dialog that offers to
    /// cancel the save.
    /// \param name the document's display name.
    /// \return false when a save failed or was cancelled.
    bool await(const QString &name);

private:
    bool write(const QString &path);
    [[nodiscard]] bool recover(const DocumentError &error);
    [[nodiscard]] bool confirmReplace(const std::optional<FileVersion> &version);
    bool finishSave(const std::optional<DocumentError> &error);
    [[nodiscard]] std::optional<DocumentError> awaitOne(const QString &name);

    TextDocument *m_document;
    const EditorWindowController *m_controller;
    TransferLimits m_limits;
    SaveElsewhere m_saveElsewhere;
    QString m_path;            // The target of the last save, successful or not.
    bool m_savesAgain = false; // A save was requested while another was under way.
    bool m_isAwaited = false;
};

} // namespace penwick
