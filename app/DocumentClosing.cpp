#include "app/DocumentClosing.h"

#include <QApplication>
#include <QEvent>

#include <utility>

namespace penwick {

DocumentClosing::DocumentClosing(OpenDocuments &documents, CloseConsent::Save save)
    : m_documents(documents)
    , m_consent(documents, std::move(save))
{
}

void DocumentClosing::watch(EditorWindow *window)
{
    window->installEventFilter(this);
    connect(window, &EditorWindow::closeRequested, this, &DocumentClosing::close);
    connect(window, &EditorWindow::closeOthersRequested, this, &DocumentClosing::closeOthers);
}

bool DocumentClosing::closeOthers(DocumentId id)
{
    const OpenDocument *kept = m_documents.find(id);
    if (kept == nullptr)
        return true;
    QList<DocumentId> others;
    for (const EditorWindowController *other : kept->controller->window()->controllers())
        if (other != kept->controller.get())
            others << other;
    return closeTogether(others);
}

bool DocumentClosing::closeTogether(const QList<DocumentId> &documents)
{
    QList<std::shared_ptr<EditorWindowController>> agreed;
    for (const DocumentId document : documents) {
        OpenDocument *entry = m_documents.find(document);
        if (entry == nullptr)
            continue; // It was closed during a question about another document.
        agreed << entry->controller;
        if (!m_consent.confirmClose(*entry))
            return false;
    }
    for (const auto &controller : agreed)
        closeWithoutAsking(controller);
    return true;
}

void DocumentClosing::closeWithoutAsking(const std::shared_ptr<EditorWindowController> &controller)
{
    if (controller->window()->count() > 1) {
        m_documents.remove(controller.get());
        // A closed controller keeps showing its text in a hidden window, where macros can still use
        // it.
        controller->moveTo(std::make_shared<EditorWindow>());
        return;
    }
    const bool skippedQuestions = std::exchange(m_skipsQuestions, true);
    controller->window()->close();
    m_skipsQuestions = skippedQuestions;
}

bool DocumentClosing::closeAll()
{
    // A dialog may already be open, for example when the session ends. Closing now could remove the
    // document that the dialog is about.
    if (m_closingAll || m_consent.offerToStopMacro() || m_consent.raiseOpenDialog())
        return false;
    m_closingAll = true;
    bool mayClose = m_consent.confirmCloseAll();
    // Close other windows first: if one refuses, the editor windows must still be open.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (mayClose && window->isVisible() && m_documents.frontDocumentOf(window) == nullptr)
            mayClose = window->close();
    m_skipsQuestions = mayClose;
    const auto editorWindows = m_documents.windows();
    for (qsizetype i = 0; mayClose && i < editorWindows.size(); ++i)
        editorWindows.at(i)->close();
    m_skipsQuestions = false;
    m_closingAll = false;
    return mayClose;
}

bool DocumentClosing::eventFilter(QObject *watched, QEvent *event)
{
    const auto *window = qobject_cast<EditorWindow *>(watched);
    if (event->type() != QEvent::Close || window == nullptr)
        return QObject::eventFilter(watched, event);
    if (!m_skipsQuestions && !m_consent.confirmClose(*window)) {
        event->ignore();
        return true;
    }
    for (const EditorWindowController *controller : window->controllers())
        m_documents.remove(controller);
    return false;
}

} // namespace penwick
