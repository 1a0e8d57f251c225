#pragma once

#include "app/OpenDocuments.h"
#include "controls/Alerts.h"

#include <functional>
#include <optional>

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

    /// The same for every open document, in the order of the tabs. While several are unsaved, the
    /// user may answer for all of them at once.
    [[nodiscard]] bool confirmCloseAll();

    /// If a macro runs on any document, shows its notice, which lets the user stop it, and returns
    /// true. False when no macro runs.
    [[nodiscard]] bool offerToStopMacro();

    /// Brings the open modal dialog, on whichever window, to the front. False when there is none.
    [[nodiscard]] static bool raiseOpenDialog();

private:
    [[nodiscard]] UnsavedAnswer answerFor(const OpenDocument &entry);
    [[nodiscard]] OpenDocument *nextOf(const EditorWindow &window,
                                       const QList<DocumentId> &asked) const;

    const OpenDocuments &m_documents;
    Save m_save;
    bool m_offersAll = false;
    std::optional<UnsavedAnswer> m_answerForAll; // Set by an answer for all documents.
};

} // namespace penwick
