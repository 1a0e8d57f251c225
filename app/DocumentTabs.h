#pragma once

#include "app/OpenDocuments.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

namespace penwick {

/// Shows the open documents in the tabs of editor windows, and keeps the tabs' labels up to date.
class DocumentTabs final : public QObject
{
    Q_OBJECT

public:
    /// Where a document is shown.
    enum class Placement {
        Tab,       ///< In the last active window, unless a macro runs on it.
        NewWindow, ///< In a window of its own.
    };

    /// Called with an entry that has got a document, before the document is shown.
    using Prepare = std::function<void(OpenDocument &)>;

    /// \param documents not owned; must outlive this.
    DocumentTabs(OpenDocuments &documents, Prepare prepare);

    /// Shows the document in a new tab, which comes to the front.
    void add(std::unique_ptr<TextDocument> document, Placement placement);
    /// The same, but a document that is not placed in a new window replaces an untouched untitled
    /// one that is alone in the last active window.
    void addOrReplace(std::unique_ptr<TextDocument> document, Placement placement);
    /// Shows the document in the tab of another one, which is closed.
    void replace(OpenDocument &entry, std::unique_ptr<TextDocument> document);

    /// Shows the text of the document, or the progress while it is being read. Call it again when
    /// that has ended.
    void showContent(const OpenDocument &entry);

    /// Moves the document's tab into a new window. If it is alone in its window, moves that window.
    /// Does nothing while a macro runs on it.
    /// \param position of the window's frame, on the screen.
    void moveToNewWindow(DocumentId id, const QPoint &position);

Q_SIGNALS:
    /// The window is about to be shown for the first time; it has no document yet.
    void windowMade(penwick::EditorWindow *window);
    /// The controller is about to get its first document.
    void controllerMade(penwick::EditorWindowController *controller);
    /// A tab has become the current one of its window, or its window the active one. Null when the
    /// window has no tab.
    void cameForward(penwick::EditorWindowController *controller);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] std::shared_ptr<EditorWindow> currentWindow() const;
    std::shared_ptr<EditorWindow> makeWindow();
    void updateLabel(DocumentId id) const;

    OpenDocuments &m_documents;
    Prepare m_prepare;
    QPointer<EditorWindow> m_activeWindow; // The last active one.
};

} // namespace penwick
