#pragma once

#include "app/DocumentId.h"
#include "app/DocumentSaver.h"
#include "app/OutsideChanges.h"
#include "editor/TextDocument.h"
#include "window/EditorWindowController.h"

#include <QList>
#include <QObject>

#include <memory>
#include <vector>

namespace penwick {

/// A document and the objects that belong to it.
struct OpenDocument
{
    std::unique_ptr<TextDocument> document;
    std::shared_ptr<EditorWindowController> controller;
    std::unique_ptr<DocumentSaver> saver; // Destroyed before the document.
    std::unique_ptr<OutsideChanges> outsideChanges;
    int untitledNumber = 0; // 0 for a document that was opened from a file.

    /// The name shown to the user.
    [[nodiscard]] QString displayName() const;
    /// True for an untitled document that is empty and untouched.
    [[nodiscard]] bool isPristine() const;
};

/// Owns the open documents, oldest first, with their look-up functions.
class OpenDocuments final : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] bool isEmpty() const { return m_entries.empty(); }

    [[nodiscard]] QList<std::shared_ptr<EditorWindowController>> controllers() const;
    /// The windows of these controllers, each once.
    [[nodiscard]] QList<std::shared_ptr<EditorWindow>> windows() const;

    /// Each look-up returns null when there is no match, and for null.
    [[nodiscard]] OpenDocument *find(DocumentId document) const;
    /// The document in the front tab of an editor window.
    [[nodiscard]] OpenDocument *frontDocumentOf(const QWidget *window) const;
    /// The document that has this file or is being saved to it.
    /// \param path absolute.
    [[nodiscard]] OpenDocument *withFile(const QString &path) const;
    [[nodiscard]] OpenDocument *withRunningMacro() const;

    /// Adds an entry. Give it a controller and then a document before anything else is called.
    OpenDocument &add();
    /// Gives the entry a document, and closes its former one.
    void setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document);
    /// Closes the document and cancels its transfer. Its controller stays until a later turn of the
    /// event loop. Does nothing when it is closed already.
    void remove(DocumentId document);

Q_SIGNALS:
    /// The document is no longer open. It is deleted in a later turn of the event loop.
    void documentClosed(penwick::TextDocument *document);

private:
    [[nodiscard]] int nextUntitledNumber() const;

    std::vector<std::unique_ptr<OpenDocument>> m_entries;
};

} // namespace penwick
