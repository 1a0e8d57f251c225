#pragma once

#include "app/OpenDocuments.h"

#include <functional>

namespace penwick {

/// Asks before documents are closed whose changes would be lost, each with its tab in front, and
/// waits for saves under way. It closes nothing itself: who closes several asks about all first.
class CloseConsent final
{
public:
    /// Saves a document for the answer "save"; false when that came to nothing.
    using Save = std::function<bool(const EditorWindowController *)>;

    /// \param documents not owned, outlives this.
    CloseConsent(const OpenDocuments &documents, Save save);

    /// False when the document is to stay open. Where a macro runs on it, that is what is asked
    /// about.
    [[nodiscard]] bool isGivenFor(OpenDocument &entry) const;
    /// The same for every document of the window, also one that was opened in it during a question.
    [[nodiscard]] bool isGivenFor(const EditorWindow &window) const;

    /// Where a macro runs, shows its notice instead of ending what it works on. False where none
    /// does.
    [[nodiscard]] bool offersToStopAMacro() const;

    /// Brings a question that waits already, on whichever window, before the person. False where
    /// none does.
    [[nodiscard]] static bool showsOpenQuestion();

private:
    [[nodiscard]] OpenDocument *nextOf(const EditorWindow &window,
                                       const QList<const EditorWindowController *> &asked) const;

    const OpenDocuments &m_documents;
    Save m_save;
};

} // namespace penwick
