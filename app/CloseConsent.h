#pragma once

#include "app/OpenDocuments.h"

#include <functional>

namespace penwick {

/// Asks before documents with unsaved changes are closed, each with its tab in front, and waits for
/// saves under way. It closes nothing itself: to close several documents, ask about all of them
/// first.
class CloseConsent final
{
public:
    /// Saves a document for the answer "save". False when it was not saved.
    using Save = std::function<bool(DocumentId)>;

    /// \param documents not owned; must outlive this.
    CloseConsent(const OpenDocuments &documents, Save save);

    /// Waits for a save under way and asks about unsaved changes. While a macro runs on the
    /// document, shows its notice instead.
    /// \return false when the document must stay open.
    [[nodiscard]] bool confirmClose(OpenDocument &entry);
    /// The same for every document of the window, including one opened in it during a question.
    [[nodiscard]] bool confirmClose(const EditorWindow &window);

    /// If a macro runs on any document, shows its notice, which lets the user stop it, and returns
    /// true. False when no macro runs.
    [[nodiscard]] bool offerToStopMacro();

    /// Brings the open modal dialog, on whichever window, to the front. False when there is none.
    [[nodiscard]] static bool raiseOpenDialog();

private:
    [[nodiscard]] OpenDocument *nextOf(const EditorWindow &window,
                                       const QList<DocumentId> &asked) const;

    const OpenDocuments &m_documents;
    Save m_save;
};

} // namespace penwick
