#pragma once

#include "app/DocumentSaver.h"
#include "editor/TextDocument.h"
#include "macro/engine/EditorWindowController.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// Owns the open documents and their windows: makes, opens, saves and closes them, and asks before
/// anything unsaved is lost. It talks to the person through modal dialogs.
///
/// Large files are read and written on other threads. While one is read its window shows the
/// progress and has no text: it cannot be edited, saved, or receive a macro. While one is written
/// everything goes on.
class DocumentController final : public QObject
{
    Q_OBJECT

public:
    using WindowController = std::shared_ptr<EditorWindowController>;

    /// Where a document goes that is opened.
    enum class Placement {
        Tab,       ///< Into the window that was active last.
        NewWindow, ///< Into a window of its own.
    };

    explicit DocumentController(QObject *parent = nullptr);
    ~DocumentController() override;

    [[nodiscard]] bool hasDocuments() const { return !m_documents.empty(); }

    /// The controllers of the open windows, oldest first.
    [[nodiscard]] QList<WindowController> windowControllers() const;
    /// The controller of an open editor window; null for any other window and for null.
    [[nodiscard]] WindowController controllerOf(const QWidget *window) const;
    /// The document of an open window; null when the controller's window has been closed.
    [[nodiscard]] TextDocument *documentOf(const EditorWindowController *controller) const;
    /// The open document of a file, or the one that is being saved to it; null when there is none.
    [[nodiscard]] TextDocument *documentOfFile(const QString &path) const;

    /// For the documents opened from now on.
    void setPatience(const TransferPatience &patience) { m_patience = patience; }

    /// Opens an untitled document.
    void newDocument(Placement placement = Placement::Tab);
    /// Asks for files and opens them.
    void openDocument();
    /// Opens one file, or brings the window forward that has it. A single untouched untitled window
    /// makes room for it, unless a new one is asked for. Says so when the file cannot be opened, be
    /// it at once or while it is read; then the window goes, or becomes an untitled one where it is
    /// the only one.
    /// \return false when that is known at once.
    bool openFile(const QString &path, Placement placement = Placement::Tab);
    /// As above, but a file that does not exist becomes an empty document to be saved there.
    bool openFileOrNew(const QString &path, Placement placement = Placement::Tab);

    /// Saves to the document's file, or asks for one. Says so when it fails. While a save is under
    /// way, the next one waits for it.
    /// \return true when the document is saved or its save is under way.
    bool saveDocument(const EditorWindowController *controller);
    bool saveDocumentAs(const EditorWindowController *controller);

    /// Waits for the saves under way, asks about the unsaved changes of every window, then closes
    /// all windows of the application.
    /// \return false when the person or a window said no; nothing is closed before all were asked.
    bool closeAll();

Q_SIGNALS:
    /// The window is about to be shown for the first time.
    void windowMade(penwick::EditorWindowController *controller);
    /// The document is no longer open: it was closed, could not be read, or was untouched and made
    /// room for another. It is deleted in a later turn of the event loop.
    void documentClosed(penwick::TextDocument *document);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct OpenDocument
    {
        std::unique_ptr<TextDocument> document;
        WindowController controller;
        std::unique_ptr<DocumentSaver> saver; // Goes before the document.
        int untitledNumber = 0;               // 0 for a document that was opened from a file.
    };

    OpenDocument *find(const QObject *windowOrController);
    [[nodiscard]] const OpenDocument *find(const QObject *windowOrController) const;
    OpenDocument *findFile(const QString &path);
    [[nodiscard]] const OpenDocument *findFile(const QString &path) const;
    OpenDocument *pristineUntitled();
    OpenDocument &makeWindow(std::unique_ptr<TextDocument> document);
    void setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document);
    void showContent(OpenDocument &entry);
    void showWindow(const OpenDocument &entry) const;
    [[nodiscard]] tl::expected<void, DocumentError> read(TextDocument &document,
                                                         const QString &path) const;
    bool openDocumentFrom(const QString &path, bool mayBeMissing, Placement placement);
    void readingDidEnd(const QObject *window, const std::optional<DocumentError> &error);
    void giveUp(const QObject *window);
    bool offerToStopAMacro();
    bool confirmClose(OpenDocument &entry);
    void forget(const QObject *window);
    void updateTitle(const QObject *window);
    [[nodiscard]] QString displayName(const OpenDocument &entry) const;
    [[nodiscard]] int nextUntitledNumber() const;

    std::vector<std::unique_ptr<OpenDocument>> m_documents;
    TransferPatience m_patience;
    QString m_folder; // Where the file dialogs start.
    bool m_closingAll = false;
};

} // namespace penwick
