#pragma once

#include "app/OpenDialogs.h"
#include "editor/FileCheck.h"
#include "window/EditorWindowController.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace penwick {

/// Handles changes that other programs make to the file of one document. A text without edits is
/// reloaded, as one undo step. For a text with edits the user is asked, once for each change of the
/// file. When the file is missing or unreadable, the text stays and counts as unsaved.
class OutsideChanges final : public QObject
{
    Q_OBJECT

public:
    /// \param document, controller not owned; must outlive this.
    OutsideChanges(TextDocument *document, EditorWindowController *controller);
    ~OutsideChanges() override;

    /// Checks the file and, if it has changed, reads it, both on another thread. The result is
    /// handled later: not during a composition, and no question is shown over another dialog.
    void check();

private:
    void take(const FileCheckResult &finding);
    void settle();
    [[nodiscard]] bool hasToWait();
    void takeText(const StoredText &stored);
    void load(const StoredText &stored);
    void ask(const StoredText &stored);
    void keepOnly(const QString &message, const FileCheckResult &finding);

    TextDocument *m_document;
    EditorWindowController *m_controller;
    std::unique_ptr<FileCheck> m_check;
    bool m_checksAgain = false;               // Requested during a check or a question.
    std::optional<FileVersion> m_base;        // The version known at the start of the check.
    std::optional<FileCheckResult> m_finding; // Set until it can be acted on.
    OpenDialogs m_dialogs;
    QPointer<QMessageBox> m_question;

    /// A state of the file that the user was informed of, but that the text may not replace without
    /// asking.
    struct Reported
    {
        std::optional<FileVersion> state;
        std::optional<FileVersion> base; // Invalid once the document knows another version.
    };

    std::optional<Reported> m_reported;
    QStringList m_copies; // Copies of interrupted saves that the user was informed of.
};

} // namespace penwick
