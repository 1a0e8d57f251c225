#pragma once

#include "editor/TextDocument.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace penwick {

class EditorWindowController;

/// What is read and written at once, and what on another thread.
struct TransferPatience
{
    /// Files and texts of fewer bytes are read and written at once.
    qint64 directBytes = 1'000'000;
    /// How long a larger file may take to be read before its window opens without it.
    std::chrono::milliseconds reading{100};
    /// How long somebody who has to wait for a save does so before it is shown.
    std::chrono::milliseconds saving{200};
};

/// The saves of one document, one after another: small ones at once, large ones by a transfer while
/// the person goes on. It says so when one fails. Where another program changed the file it asks
/// first, and where the file cannot be written it offers to save elsewhere.
class DocumentSaver final : public QObject
{
    Q_OBJECT

public:
    /// \param document not owned; outlives this.
    /// \param controller whose window messages stand over; not owned, outlives this.
    DocumentSaver(TextDocument *document,
                  const EditorWindowController *controller,
                  const TransferPatience &patience);

    /// Asks where else to save, and saves there.
    using SaveElsewhere = std::function<bool()>;

    /// \param saveElsewhere called when the person agreed; true when that is done or under way.
    void setSaveElsewhere(SaveElsewhere saveElsewhere)
    {
        m_saveElsewhere = std::move(saveElsewhere);
    }

    /// Writes the text to the file. While a save is under way this one waits for it, and goes to
    /// the same file. What an input method is composing is committed first.
    /// \return true when the text is saved or its save is under way.
    bool save(const QString &path);

    /// Returns when no save is under way any more. Where that takes long, a dialog shows it and
    /// offers to call it off; nothing else can be done meanwhile.
    /// \param name how the person knows the document.
    /// \return false when a save failed or was called off.
    bool await(const QString &name);

private:
    bool write(const QString &path);
    [[nodiscard]] bool recover(const DocumentError &error);
    [[nodiscard]] bool mayReplace(const std::optional<FileVersion> &version) const;
    bool end(const std::optional<DocumentError> &error);
    [[nodiscard]] std::optional<DocumentError> awaitOne(const QString &name);

    TextDocument *m_document;
    const EditorWindowController *m_controller;
    TransferPatience m_patience;
    QString m_path;            // Where it was saved last, or tried to.
    bool m_savesAgain = false; // Asked for while a save was under way.
    bool m_isAwaited = false;
    SaveElsewhere m_saveElsewhere;
};

} // namespace penwick
