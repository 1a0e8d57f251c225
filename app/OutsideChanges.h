#pragma once

#include "editor/FileCheck.h"
#include "macro/engine/EditorWindowController.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>

namespace penwick {

/// What other programs do to the file of one document, and what becomes of it here. A text without
/// edits follows the file, as one step that undo takes back. About one with edits the person is
/// asked, once for each change of the file. Where the file is gone or has become unreadable, the
/// text stays and counts as not saved.
class OutsideChanges final : public QObject
{
    Q_OBJECT

public:
    /// \param document, controller not owned; outlive this.
    OutsideChanges(TextDocument *document, EditorWindowController *controller);
    ~OutsideChanges() override;

    /// Looks at the file. It is looked at and read on another thread; what comes of it happens
    /// later, not amid a composition of an input method, and no question comes over another one.
    void check();

private:
    void take(const FileFinding &finding);
    void settle();
    [[nodiscard]] bool hasToWait() const;
    void takeText(const StoredText &stored);
    void load(const StoredText &stored);
    void ask(const StoredText &stored);
    void keepOnly(const QString &message, const FileFinding &finding);

    TextDocument *m_document;
    EditorWindowController *m_controller;
    std::unique_ptr<FileCheck> m_check;
    std::optional<FileVersion> m_base;    // What the document knew when the check began.
    std::optional<FileFinding> m_finding; // Waits until it can be acted on.
    QTimer m_retry;
    QPointer<QMessageBox> m_question;

    /// A state of the file that was told of, but that the text may not replace without a word.
    struct Told
    {
        std::optional<FileVersion> state;
        std::optional<FileVersion> base; // Of no meaning for a document that knows another one.
    };

    std::optional<Told> m_told;
    QStringList m_copies; // Of interrupted saves that the person was told of.
};

} // namespace penwick
