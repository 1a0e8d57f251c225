#pragma once

#include "app/CloseConsent.h"
#include "app/OpenDocuments.h"

#include <QObject>

#include <memory>

namespace penwick {

/// Closes documents and windows, after all questions about them are answered.
class DocumentClosing final : public QObject
{
    Q_OBJECT

public:
    /// \param documents not owned; must outlive this.
    /// \param save saves a document for the answer "save".
    DocumentClosing(OpenDocuments &documents, CloseConsent::Save save);

    /// Closes the window's documents when it is closed or asks to close them.
    void watch(EditorWindow *window);

    /// Closes the document, and its window if it was the last one there. Asks before unsaved
    /// changes are lost, and waits for a save under way.
    /// \return false when the user cancelled.
    bool close(DocumentId id) { return closeTogether({id}); }

    /// Closes all other documents of its window, once all questions are answered.
    bool closeOthers(DocumentId id);
    /// Closes the document, and its window if it was the last one there, without asking.
    void closeWithoutAsking(const std::shared_ptr<EditorWindowController> &controller);
    /// Waits for the saves under way, asks about the unsaved changes of every document, then closes
    /// all windows of the application.
    /// \return false when the user cancelled or a window refused to close. No editor window is
    ///         closed before all questions are answered.
    bool closeAll();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool closeTogether(const QList<DocumentId> &documents);

    OpenDocuments &m_documents;
    CloseConsent m_consent;
    bool m_skipsQuestions = false;
    bool m_closingAll = false;
};

} // namespace penwick
