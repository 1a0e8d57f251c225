#pragma once

#include "app/DocumentId.h"
#include "app/DocumentSaver.h"
#include "app/OutsideChanges.h"
#include "editor/TextDocument.h"
#include "window/EditorWindowController.h"

#include <QList>

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

/// The open documents, oldest first, with their look-up functions.
class OpenDocuments final
{
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

    OpenDocument &add();
    [[nodiscard]] std::unique_ptr<OpenDocument> take(DocumentId document);

    /// The lowest number that no untitled document has.
    [[nodiscard]] int nextUntitledNumber() const;

private:
    std::vector<std::unique_ptr<OpenDocument>> m_entries;
};

} // namespace penwick
