#pragma once

#include "app/DocumentClosing.h"
#include "app/DocumentReading.h"
#include "app/DocumentTabs.h"
#include "app/OpenDocuments.h"

#include <QObject>

#include <memory>
#include <optional>

namespace penwick {

/// Owns the open documents and, through them, their windows. Creates, opens, saves and closes
/// documents, and asks in modal dialogs before unsaved changes are lost.
///
/// Large files are read and written on other threads. While a file is read, its tab shows the
/// progress and has no text: it cannot be edited or saved, and no macro runs on it. While a file is
/// written, its text can be edited as usual.
class DocumentController final : public QObject
{
    Q_OBJECT

public:
    using WindowController = std::shared_ptr<EditorWindowController>;

    using Placement = DocumentTabs::Placement;

    explicit DocumentController(QObject *parent = nullptr);
    ~DocumentController() override;

    [[nodiscard]] bool hasDocuments() const { return !m_documents.isEmpty(); }

    /// The controllers of the open documents, oldest first.
    [[nodiscard]] QList<WindowController> windowControllers() const
    {
        return m_documents.controllers();
    }

    /// The windows of these controllers, each once.
    [[nodiscard]] QList<std::shared_ptr<EditorWindow>> windows() const
    {
        return m_documents.windows();
    }

    /// The controller of the document in front of an editor window; null for any other window and
    /// for null.
    [[nodiscard]] WindowController controllerOf(const QWidget *window) const;
    /// The open document; null when it has been closed.
    [[nodiscard]] TextDocument *documentOf(DocumentId id) const;
    /// The open document that has this file or is being saved to it; null when there is none.
    [[nodiscard]] TextDocument *documentOfFile(const QString &path) const;

    /// The name that the user sees; empty when the document has been closed.
    [[nodiscard]] QString nameOf(DocumentId id) const;

    /// Applies to documents opened from now on.
    void setTransferLimits(const TransferLimits &limits) { m_limits = limits; }

    /// Opens an untitled document.
    void newDocument(Placement placement = Placement::Tab);
    /// Opens an untitled document that holds the text. It is edited unless the text is empty. It
    /// replaces an untouched untitled document as an opened file does.
    /// \return owned by this.
    TextDocument *newDocument(const Text &text, Placement placement);
    /// Asks for files and opens them.
    void openDocument();
    /// Opens one file, or brings the tab that has it to the front. The document replaces an
    /// untouched untitled one that is alone in its window. Shows an error when the file cannot be
    /// opened, at once or while it is read. In the latter case its tab is closed, or becomes an
    /// untitled document if it is the only one. The message about a file that is not UTF-8 offers
    /// to open a converted copy as an untitled document, which is edited.
    /// \return false when opening failed at once.
    bool openFile(const QString &path, Placement placement = Placement::Tab);
    /// As above, but a file that does not exist becomes an empty document that is saved there.
    bool openFileOrNew(const QString &path, Placement placement = Placement::Tab);

    /// Saves to the document's file, or asks for one. Shows an error when it fails. A save
    /// requested while another is under way starts after it.
    /// \return true when the document is saved or its save is under way.
    bool saveDocument(DocumentId id);
    bool saveDocumentAs(DocumentId id);

    /// Closes the document, and its window if it was the last one there. Asks before unsaved
    /// changes are lost, and waits for a save under way.
    /// \return false when the user cancelled.
    bool closeDocument(DocumentId id) { return m_closing.close(id); }

    /// Closes all other documents of its window, once all questions are answered.
    bool closeOtherDocuments(DocumentId id) { return m_closing.closeOthers(id); }

    /// Moves the document's tab into a new window. If it is alone in its window, moves that window.
    /// \param position of the window's frame, on the screen.
    void moveToNewWindow(DocumentId id, const QPoint &position)
    {
        m_tabs.moveToNewWindow(id, position);
    }

    /// Waits for the saves under way, asks about the unsaved changes of every document, then closes
    /// all windows of the application.
    /// \return false when the user cancelled or a window refused to close. No editor window is
    ///         closed before all questions are answered.
    bool closeAll() { return m_closing.closeAll(); }

    /// Checks whether another program has changed the document's file. This also happens
    /// automatically when its text comes to the front.
    void checkFileOnDisk(DocumentId id);

Q_SIGNALS:
    /// A file could not be opened. The message is about to be shown.
    void openingFailed(const QString &path, const penwick::DocumentError &error);
    /// The window is about to be shown for the first time; it has no document yet.
    void windowMade(penwick::EditorWindow *window);
    /// The controller is about to get its first document.
    void controllerMade(penwick::EditorWindowController *controller);
    /// The document is open now. Its tab may not show it yet, and it may still be read.
    void documentOpened(penwick::TextDocument *document,
                        penwick::EditorWindowController *controller);
    /// The document is no longer open: it was closed, could not be read, or was untouched and has
    /// been replaced by another. It is deleted in a later turn of the event loop.
    void documentClosed(penwick::TextDocument *document);

private:
    void prepare(OpenDocument &entry);
    bool openDocumentFrom(const QString &path, MissingFile missingFile, Placement placement);
    void readingDidEnd(DocumentId id, const std::optional<DocumentError> &error);
    void discardUnreadTab(DocumentId id);
    void openCopy(const QString &path, const Text &text, Placement placement);

    OpenDocuments m_documents;
    DocumentTabs m_tabs;
    DocumentClosing m_closing;
    TransferLimits m_limits;
    QString m_folder; // The start folder of file dialogs.
};

} // namespace penwick
