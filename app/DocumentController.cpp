#include "app/DocumentController.h"

#include "app/ConversionOffer.h"
#include "app/DocumentDialogs.h"
#include "app/DocumentPaths.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using paths::absolutePathOf;

namespace {

/// Says why the file was not opened. Returns the text of a converted copy if the user wants one.
std::optional<Text> reportUnread(QWidget *parent, const QString &path, const DocumentError &error)
{
    if (error == kUnsupportedContent)
        return dialogs::offerConversion(parent, path);
    dialogs::showOpenError(parent, path, error);
    return std::nullopt;
}

} // namespace

DocumentController::DocumentController(QObject *parent)
    : QObject(parent)
    , m_tabs(m_documents, [this](OpenDocument &entry) { prepare(entry); })
    , m_closing(m_documents, [this](DocumentId id) { return saveDocument(id); })
    , m_folder(paths::startFolder())
{
    connect(&m_tabs, &DocumentTabs::windowMade, &m_closing, &DocumentClosing::watch);
    connect(&m_tabs, &DocumentTabs::windowMade, this, &DocumentController::windowMade);
    connect(&m_tabs, &DocumentTabs::controllerMade, this, &DocumentController::controllerMade);
    connect(&m_tabs, &DocumentTabs::cameForward, this, &DocumentController::checkFileOnDisk);
    connect(
        &m_documents, &OpenDocuments::documentClosed, this, &DocumentController::documentClosed);
}

DocumentController::~DocumentController()
{
    // The tabs are destroyed one by one; ignore the changes of the current tab that result. Keep
    // all other connections: the toolkit must learn when a window is destroyed.
    for (const auto &controller : m_documents.controllers())
        disconnect(controller->window(), &EditorWindow::currentTabChanged, nullptr, nullptr);
}

DocumentController::WindowController DocumentController::controllerOf(const QWidget *window) const
{
    const OpenDocument *entry = m_documents.frontDocumentOf(window);
    return entry != nullptr ? entry->controller : nullptr;
}

TextDocument *DocumentController::documentOf(DocumentId id) const
{
    const OpenDocument *entry = m_documents.find(id);
    return entry != nullptr ? entry->document.get() : nullptr;
}

TextDocument *DocumentController::documentOfFile(const QString &path) const
{
    const OpenDocument *entry = m_documents.withFile(absolutePathOf(path));
    return entry != nullptr ? entry->document.get() : nullptr;
}

QString DocumentController::nameOf(DocumentId id) const
{
    const OpenDocument *entry = m_documents.find(id);
    return entry != nullptr ? entry->displayName() : QString();
}

void DocumentController::newDocument(Placement placement)
{
    m_tabs.add(std::make_unique<TextDocument>(), placement);
}

TextDocument *DocumentController::newDocument(const Text &text, Placement placement)
{
    auto document = std::make_unique<TextDocument>();
    TextDocument *made = document.get();
    made->setContentString(text);
    if (!text.isEmpty())
        made->textStorage()->forgetSavePoint();
    m_tabs.addOrReplace(std::move(document), placement);
    return made;
}

void DocumentController::openDocument()
{
    QWidget *parent = QApplication::activeWindow();
    const OpenDocument *active = m_documents.frontDocumentOf(parent);
    const QString current = active != nullptr ? active->document->filePath() : QString();
    const QStringList paths =
        dialogs::askForFilesToOpen(active != nullptr ? parent : nullptr,
                                   current.isEmpty() ? m_folder : QFileInfo(current).path());
    for (const QString &path : paths) {
        m_folder = QFileInfo(path).absolutePath();
        openFile(path);
    }
}

bool DocumentController::openFile(const QString &path, Placement placement)
{
    return openDocumentFrom(path, MissingFile::IsAnError, placement);
}

bool DocumentController::openFileOrNew(const QString &path, Placement placement)
{
    return openDocumentFrom(path, MissingFile::IsAnEmptyDocument, placement);
}

bool DocumentController::openDocumentFrom(const QString &path,
                                          MissingFile missingFile,
                                          Placement placement)
{
    const QString absolutePath = absolutePathOf(path);
    if (const OpenDocument *open = m_documents.withFile(absolutePath)) {
        open->controller->bringForward();
        return true;
    }
    auto document = readDocument(absolutePath, missingFile, m_limits);
    if (!document) {
        Q_EMIT openingFailed(absolutePath, document.error());
        const auto copy =
            reportUnread(QApplication::activeWindow(), absolutePath, document.error());
        if (copy)
            openCopy(absolutePath, *copy, placement);
        return false;
    }
    m_tabs.addOrReplace(*std::move(document), placement);
    return true;
}

void DocumentController::prepare(OpenDocument &entry)
{
    EditorWindowController *controller = entry.controller.get();
    const DocumentId id = controller;
    entry.saver = std::make_unique<DocumentSaver>(
        entry.document.get(), controller, m_limits, [this, id] { return saveDocumentAs(id); });
    connect(entry.document.get(),
            &TextDocument::transferEnded,
            controller,
            [this, id](TextDocument::Transfer transfer, const std::optional<DocumentError> &error) {
                if (transfer == TextDocument::Transfer::Reading)
                    readingDidEnd(id, error);
            });
    Q_EMIT documentOpened(entry.document.get(), controller);
}

void DocumentController::readingDidEnd(DocumentId id, const std::optional<DocumentError> &error)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return; // The tab was closed meanwhile.
    if (!error) {
        m_tabs.showContent(*entry);
        // A macro that was tried meanwhile has left an error message, which may still be in the
        // event queue.
        DocumentState *state = entry->controller->documentState();
        QMetaObject::invokeMethod(
            state,
            [state] { state->setMacroNotificationMessage(std::nullopt); },
            Qt::QueuedConnection);
        return;
    }
    // The message below stands over the tab: nothing of the file may be visible behind it.
    entry->controller->showLoading(entry->document.get());
    const QString path = entry->document->filePath();
    std::optional<Text> copy;
    if (!error->isCancellation())
        copy = reportUnread(entry->controller->window(), path, *error);
    discardUnreadTab(id);
    if (copy)
        openCopy(path, *copy, Placement::Tab);
}

/// Opens the converted text of a file as an untitled document. Its first save suggests a file
/// beside the old one.
void DocumentController::openCopy(const QString &path, const Text &text, Placement placement)
{
    TextDocument *copy = newDocument(text, placement);
    copy->setSuggestedPath(dialogs::pathForCopyOf(path));
    copy->textStorage()->forgetSavePoint(); // Edited, even if it is empty.
}

/// Removes the tab of a file that could not be read. The last tab stays, because closing it would
/// end the application.
void DocumentController::discardUnreadTab(DocumentId id)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return;
    if (m_documents.controllers().size() == 1)
        m_tabs.replace(*entry, std::make_unique<TextDocument>());
    else
        m_closing.closeWithoutAsking(WindowController(entry->controller)); // Deletes the entry.
}

bool DocumentController::saveDocument(DocumentId id)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr || entry->document->isReading())
        return false;
    if (entry->document->isWriting())
        return entry->saver->save(entry->document->transferPath());
    if (entry->document->filePath().isEmpty())
        return saveDocumentAs(id);
    return entry->saver->save(entry->document->filePath());
}

bool DocumentController::saveDocumentAs(DocumentId id)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr || entry->document->isReading())
        return false;
    if (!entry->saver->await(entry->displayName()))
        return false;
    QString suggestion = entry->document->filePath();
    if (suggestion.isEmpty())
        suggestion = entry->document->suggestedPath();
    if (suggestion.isEmpty())
        suggestion = QDir(m_folder).filePath(entry->displayName() + u".txt"_s);
    const QString path = dialogs::askForFileToSave(entry->controller->window(), suggestion);
    if (path.isEmpty())
        return false;
    const OpenDocument *holder = m_documents.withFile(path);
    if (holder != nullptr && holder != entry) {
        dialogs::showFileInUse(entry->controller->window(), path);
        return false;
    }
    m_folder = QFileInfo(path).absolutePath();
    if (absolutePathOf(path) == entry->document->filePath())
        entry->document->acceptFileVersion(FileVersion::of(path)); // Agreed to replace it.
    return entry->saver->save(absolutePathOf(path));
}

void DocumentController::checkFileOnDisk(DocumentId id)
{
    if (const OpenDocument *entry = m_documents.find(id))
        entry->outsideChanges->check();
}

} // namespace penwick
