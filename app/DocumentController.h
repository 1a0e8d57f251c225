#pragma once

#include "app/CloseConsent.h"
#include "app/DocumentReading.h"
#include "app/OpenDocuments.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace penwick {

/// Owns the open documents and, through them, their windows: makes, opens, saves and closes them,
/// and asks before anything unsaved is lost. It talks to the person through modal dialogs.
///
/// Large files are read and written on other threads. While one is read its tab shows the progress
/// and has no text: it cannot be edited, saved, or receive a macro. While one is written everything
/// goes on.
class DocumentController final : public QObject
{
    Q_OBJECT

public:
    using WindowController = std::shared_ptr<EditorWindowController>;

    /// Where a document goes that is opened.
    enum class Placement {
        Tab,       ///< Into the window that was active last, unless a macro holds it.
        NewWindow, ///< Into a window of its own.
    };

    explicit DocumentController(QObject *parent = nullptr);
    ~DocumentController() override;

    [[nodiscard]] bool hasDocuments() const { return !m_documents.isEmpty(); }

    /// The controllers of the open documents, oldest first.
    [[nodiscard]] QList<WindowController> windowControllers() const
    {
        return m_documents.controllers();
    }

    /// The windows that they stand in, each once.
    [[nodiscard]] QList<std::shared_ptr<EditorWindow>> windows() const
    {
        return m_documents.windows();
    }

    /// The controller of the document in front of an editor window; null for any other window and
    /// for null.
    [[nodiscard]] WindowController controllerOf(const QWidget *window) const;
    /// The open document; null when it has been closed.
    [[nodiscard]] TextDocument *documentOf(const EditorWindowController *controller) const;
    /// The open document of a file, or the one that is being saved to it; null when there is none.
    [[nodiscard]] TextDocument *documentOfFile(const QString &path) const;

    /// For the documents opened from now on.
    void setPatience(const TransferPatience &patience) { m_patience = patience; }

    /// Opens an untitled document.
    void newDocument(Placement placement = Placement::Tab);
    /// Opens an untitled document that holds the text and is unsaved, unless the text is empty.
    /// Room is made for it as for a file. \return owned by this.
    TextDocument *newDocument(const Text &text, Placement placement);
    /// Asks for files and opens them.
    void openDocument();
    /// Opens one file, or brings the tab forward that has it. An untouched untitled document that
    /// is alone in its window makes room for it. Says so when the file cannot be opened, be it at
    /// once or while it is read; then its tab goes, or becomes an untitled one where it is the only
    /// one.
    /// \return false when that is known at once.
    bool openFile(const QString &path, Placement placement = Placement::Tab);
    /// As above, but a file that does not exist becomes an empty document to be saved there.
    bool openFileOrNew(const QString &path, Placement placement = Placement::Tab);

    /// Saves to the document's file, or asks for one. Says so when it fails. While a save is under
    /// way, the next one waits for it.
    /// \return true when the document is saved or its save is under way.
    bool saveDocument(const EditorWindowController *controller);
    bool saveDocumentAs(const EditorWindowController *controller);

    /// Closes the document, and with the last one of a window that. Asks before something unsaved
    /// is lost, and waits for a save under way.
    /// \return false when the person said no.
    bool closeDocument(const EditorWindowController *controller);
    /// Closes all others of its window, after every question has been answered.
    bool closeOtherDocuments(const EditorWindowController *controller);

    /// Moves the document's tab into a new window. One that is alone in its window moves that.
    /// \param position of the window's frame, on the screen.
    void moveToNewWindow(const EditorWindowController *controller, const QPoint &position);

    /// Waits for the saves under way, asks about the unsaved changes of every document, then closes
    /// all windows of the application.
    /// \return false when the person or a window said no; nothing is closed before all were asked.
    bool closeAll();

    /// Looks for what other programs did to the document's file, as happens by itself when its text
    /// comes forward.
    void checkFileOnDisk(const EditorWindowController *controller);

Q_SIGNALS:
    /// The window is about to be shown for the first time; it has no document yet.
    void windowMade(penwick::EditorWindow *window);
    /// The controller is about to get its first document.
    void controllerMade(penwick::EditorWindowController *controller);
    /// The document is no longer open: it was closed, could not be read, or was untouched and made
    /// room for another. It is deleted in a later turn of the event loop.
    void documentClosed(penwick::TextDocument *document);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] std::shared_ptr<EditorWindow> currentWindow() const;
    [[nodiscard]] OpenDocument *pristineDocument() const;
    std::shared_ptr<EditorWindow> makeWindow();
    OpenDocument &addDocument(std::unique_ptr<TextDocument> document, Placement placement);
    void setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document);
    static void showContent(OpenDocument &entry);
    void showDocument(std::unique_ptr<TextDocument> document, Placement placement);
    bool openDocumentFrom(const QString &path, MissingFile missingFile, Placement placement);
    void readingDidEnd(const EditorWindowController *controller,
                       const std::optional<DocumentError> &error);
    void giveUp(const EditorWindowController *controller);
    bool closeDocuments(const QList<const EditorWindowController *> &controllers);
    void removeAgreed(const WindowController &controller);
    void forget(const WindowController &controller);
    void updateLabel(const EditorWindowController *controller);

    OpenDocuments m_documents;
    CloseConsent m_consent;
    QPointer<EditorWindow> m_activeWindow; // The one that was so last.
    TransferPatience m_patience;
    QString m_folder; // Where the file dialogs start.
    bool m_closeIsAgreed = false;
    bool m_closingAll = false;
};

} // namespace penwick
