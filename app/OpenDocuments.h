#pragma once

#include "app/DocumentSaver.h"
#include "app/OutsideChanges.h"
#include "editor/TextDocument.h"
#include "macro/engine/EditorWindowController.h"

#include <QList>

#include <memory>
#include <vector>

namespace penwick {

/// A document and what belongs to it.
struct OpenDocument
{
    std::unique_ptr<TextDocument> document;
    std::shared_ptr<EditorWindowController> controller;
    std::unique_ptr<DocumentSaver> saver; // Goes before the document.
    std::unique_ptr<OutsideChanges> outsideChanges;
    int untitledNumber = 0; // 0 for a document that was opened from a file.

    /// How the person knows it.
    [[nodiscard]] QString displayName() const;
    /// Untitled, and nobody has done anything to it.
    [[nodiscard]] bool isPristine() const;
};

/// The documents that are open, oldest first, and how they are found.
class OpenDocuments final
{
public:
    [[nodiscard]] bool isEmpty() const { return m_entries.empty(); }

    [[nodiscard]] QList<std::shared_ptr<EditorWindowController>> controllers() const;
    /// The windows that they stand in, each once.
    [[nodiscard]] QList<std::shared_ptr<EditorWindow>> windows() const;

    /// Each is null where there is none, and for null.
    [[nodiscard]] OpenDocument *find(const EditorWindowController *controller) const;
    /// The one in front of an editor window.
    [[nodiscard]] OpenDocument *inFrontOf(const QWidget *window) const;
    /// The one whose file it is, or that is being saved to it. \param path absolute.
    [[nodiscard]] OpenDocument *withFile(const QString &path) const;
    [[nodiscard]] OpenDocument *withRunningMacro() const;

    OpenDocument &add();
    [[nodiscard]] std::unique_ptr<OpenDocument> take(const EditorWindowController *controller);

    /// The lowest that no untitled document has.
    [[nodiscard]] int nextUntitledNumber() const;

private:
    std::vector<std::unique_ptr<OpenDocument>> m_entries;
};

} // namespace penwick
