#pragma once

#include <QString>

namespace penwick {

class DocumentController;
class TextDocument;

/// Saves unsaved texts when the process is forced to exit and the user cannot be asked: when the
/// display is lost, or after a fatal error on the main thread (`qFatal`). Waits for saves under
/// way. Writes each text with unsaved edits to a new file of the user, never over an existing one,
/// and prints its name to standard error. The file is beside the document's own, else in the home
/// folder, else in the folder for temporary files. penwick keeps no record of these files.
class UnsavedTextRescue final
{
public:
    /// Runs at the process's exit while this object exists; at most one may exist. Make it after
    /// everything that it needs at the exit.
    /// \param documents not owned; must outlive this.
    explicit UnsavedTextRescue(DocumentController *documents);
    UnsavedTextRescue(const UnsavedTextRescue &) = delete;
    UnsavedTextRescue &operator=(const UnsavedTextRescue &) = delete;
    ~UnsavedTextRescue();

    /// Runs the rescue now. Do not use the documents afterwards.
    void run();

private:
    static void rescue(const TextDocument &document);

    DocumentController *m_documents;
};

/// The file name for the unsaved text of a document: beside its file, with ".unsaved" appended, and
/// a number when that name is taken.
/// \param filePath absolute; empty for an untitled document, whose text goes to `home`.
[[nodiscard]] QString placeForUnsavedText(const QString &filePath, const QString &home);

} // namespace penwick
