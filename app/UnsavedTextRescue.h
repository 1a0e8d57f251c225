#pragma once

#include <QString>

namespace penwick {

class DocumentController;
class TextDocument;

/// What there is to do when the process is made to exit in the middle of things, as it is when the
/// display goes: nobody can be asked any more. Saves under way are finished; a text with unsaved
/// edits is written to a new file of the person's, never over another one, and is said so on
/// standard error: beside its own file, else into the home folder, else into the one for temporary
/// files. penwick itself keeps no record of these files.
class UnsavedTextRescue final
{
public:
    /// Prepares for the process's exit as long as it lives; at most one does. Make it when all that
    /// lives until the exit has been made.
    /// \param documents not owned, outlives this.
    explicit UnsavedTextRescue(DocumentController *documents);
    UnsavedTextRescue(const UnsavedTextRescue &) = delete;
    UnsavedTextRescue &operator=(const UnsavedTextRescue &) = delete;
    ~UnsavedTextRescue();

    /// Does it now. Nothing else may be done with the documents afterwards.
    void run();

private:
    static void rescue(const TextDocument &document);

    DocumentController *m_documents;
};

/// Where the unsaved text of a document goes: beside its file, with ".unsaved" behind the name, and
/// a number where that name is taken.
/// \param filePath absolute; empty for an untitled one, whose text goes to `home`.
[[nodiscard]] QString placeForUnsavedText(const QString &filePath, const QString &home);

} // namespace penwick
