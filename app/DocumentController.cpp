#include "app/DocumentController.h"

#include "app/DocumentDialogs.h"
#include "app/DocumentPaths.h"
#include "platform/desktop/WindowFrame.h"
#include "platform/process/FreedMemory.h"
#include "platform/settings/NotificationCenter.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using paths::absolutePathOf;

namespace {

/// From this size on, in UTF-16 code units, the memory of a closed text is returned to the system.
constexpr qint64 kLargeText = 4'000'000;

/// Waits a moment, until the widgets that showed the text are deleted as well. Runs on another
/// thread because it may take noticeably long.
void giveBackMemoryLater()
{
    QTimer::singleShot(500ms, qApp, [] { QThreadPool::globalInstance()->start(trimFreedMemory); });
}

} // namespace

DocumentController::DocumentController(QObject *parent)
    : QObject(parent)
    , m_consent(m_documents, [this](DocumentId id) { return saveDocument(id); })
    , m_folder(paths::startFolder())
{
    NotificationCenter::defaultCenter().addObserver(UIWordingProfileDidChange, this, [this] {
        for (const auto &controller : m_documents.controllers())
            updateLabel(controller.get());
    });
}

DocumentController::~DocumentController()
{
    // The tabs are destroyed one by one; ignore the changes of the current tab that result. Keep
    // all other connections: the toolkit must learn when a window is destroyed.
    for (const auto &window : m_documents.windows())
        disconnect(window.get(), &EditorWindow::currentTabChanged, nullptr, nullptr);
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

/// Returns the window for a new tab; null when the tab needs a window of its own.
std::shared_ptr<EditorWindow> DocumentController::currentWindow() const
{
    const auto windows = m_documents.windows();
    if (windows.isEmpty())
        return nullptr;
    const auto active = std::find_if(windows.begin(), windows.end(), [this](const auto &window) {
        return window.get() == m_activeWindow;
    });
    const auto &window = active != windows.end() ? *active : windows.last();
    const auto controllers = window->controllers();
    const bool runsMacro =
        std::any_of(controllers.begin(), controllers.end(), [](const auto *controller) {
            return controller->isRunningMacro();
        });
    return runsMacro ? nullptr : window;
}

/// Returns the untouched untitled document if it is alone in the current window; else null.
OpenDocument *DocumentController::pristineDocument() const
{
    const auto window = currentWindow();
    OpenDocument *entry = m_documents.frontDocumentOf(window.get());
    return entry != nullptr && window->count() == 1 && entry->isPristine() ? entry : nullptr;
}

void DocumentController::newDocument(Placement placement)
{
    addDocument(std::make_unique<TextDocument>(), placement).controller->bringForward();
}

TextDocument *DocumentController::newDocument(const Text &text, Placement placement)
{
    auto document = std::make_unique<TextDocument>();
    TextDocument *made = document.get();
    made->setContentString(text);
    if (!text.isEmpty())
        made->textStorage()->forgetSavePoint();
    showDocument(std::move(document), placement);
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
        dialogs::showOpenError(QApplication::activeWindow(), absolutePath, document.error());
        return false;
    }
    showDocument(*std::move(document), placement);
    return true;
}

/// Shows the document in place of an untouched untitled one, if there is one.
void DocumentController::showDocument(std::unique_ptr<TextDocument> document, Placement placement)
{
    OpenDocument *pristine = placement == Placement::Tab ? pristineDocument() : nullptr;
    if (pristine == nullptr) {
        addDocument(std::move(document), placement).controller->bringForward();
        return;
    }
    pristine->controller->documentState()->setMacroNotificationMessage(std::nullopt);
    setDocument(*pristine, std::move(document));
    pristine->controller->bringForward();
}

std::shared_ptr<EditorWindow> DocumentController::makeWindow()
{
    auto window = std::make_shared<EditorWindow>(&UserDefaults::standard());
    window->installEventFilter(this);
    connect(window.get(), &EditorWindow::closeRequested, this, &DocumentController::closeDocument);
    connect(window.get(),
            &EditorWindow::closeOthersRequested,
            this,
            &DocumentController::closeOtherDocuments);
    connect(window.get(),
            &EditorWindow::moveToNewWindowRequested,
            this,
            &DocumentController::moveToNewWindow);
    connect(
        window.get(), &EditorWindow::currentTabChanged, this, &DocumentController::checkFileOnDisk);
    Q_EMIT windowMade(window.get());
    return window;
}

OpenDocument &DocumentController::addDocument(std::unique_ptr<TextDocument> document,
                                              Placement placement)
{
    std::shared_ptr<EditorWindow> window = placement == Placement::Tab ? currentWindow() : nullptr;
    if (window == nullptr)
        window = makeWindow();
    OpenDocument &entry = m_documents.add();
    entry.controller = std::make_shared<EditorWindowController>(std::move(window));
    Q_EMIT controllerMade(entry.controller.get());
    setDocument(entry, std::move(document));
    return entry;
}

void DocumentController::setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document)
{
    entry.untitledNumber = document->filePath().isEmpty() ? m_documents.nextUntitledNumber() : 0;
    // Delete the former document later: this call removes the view of its text, and one of its own
    // signals may have led here.
    if (entry.document != nullptr) {
        Q_EMIT documentClosed(entry.document.get());
        entry.document.release()->deleteLater();
    }
    EditorWindowController *controller = entry.controller.get();
    entry.document = std::move(document);
    entry.saver = std::make_unique<DocumentSaver>(entry.document.get(), controller, m_limits);
    const DocumentId id = controller;
    entry.saver->setSaveElsewhere([this, id] { return saveDocumentAs(id); });
    entry.outsideChanges = std::make_unique<OutsideChanges>(entry.document.get(), controller);
    showContent(entry);
    const auto relabel = [this, id] { updateLabel(id); };
    connect(entry.document.get(), &TextDocument::filePathChanged, controller, relabel);
    connect(entry.document.get(), &TextDocument::editedChanged, controller, relabel);
    connect(entry.document.get(),
            &TextDocument::transferEnded,
            controller,
            [this, id](TextDocument::Transfer transfer, const std::optional<DocumentError> &error) {
                if (transfer == TextDocument::Transfer::Reading)
                    readingDidEnd(id, error);
            });
    updateLabel(id);
}

void DocumentController::showContent(OpenDocument &entry)
{
    if (entry.document->isReading())
        entry.controller->showLoading(entry.document.get());
    else
        entry.controller->setDocument(entry.document.get());
}

void DocumentController::readingDidEnd(DocumentId id, const std::optional<DocumentError> &error)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return; // The tab was closed meanwhile.
    if (!error) {
        showContent(*entry);
        updateLabel(id);
        // A macro that was tried meanwhile has left an error message, which may still be in the
        // event queue.
        DocumentState *state = entry->controller->documentState();
        QMetaObject::invokeMethod(
            state,
            [state] { state->setMacroNotificationMessage(std::nullopt); },
            Qt::QueuedConnection);
        return;
    }
    if (!error->isCancellation())
        dialogs::showOpenError(entry->controller->window(), entry->document->filePath(), *error);
    discardUnreadTab(id);
}

/// Removes the tab of a file that could not be read. The last tab stays, because closing it would
/// end the application.
void DocumentController::discardUnreadTab(DocumentId id)
{
    OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return;
    if (m_documents.controllers().size() == 1)
        setDocument(*entry, std::make_unique<TextDocument>());
    else
        closeWithoutAsking(WindowController(entry->controller)); // Deletes the entry.
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
    const QString current = entry->document->filePath();
    const QString suggestion =
        current.isEmpty() ? QDir(m_folder).filePath(entry->displayName() + u".txt"_s) : current;
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

void DocumentController::moveToNewWindow(DocumentId id, const QPoint &position)
{
    const OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr || entry->controller->isRunningMacro())
        return;
    const auto former = entry->controller->window()->shared_from_this();
    if (former->count() == 1) {
        former->move(position);
        return;
    }
    const auto window = makeWindow();
    const bool isWhole = former->isMaximized() || former->isFullScreen();
    window->resize(isWhole ? former->normalGeometry().size() : former->size());
    window->move(
        positionOnScreen(position, isWhole ? window->size() : former->frameGeometry().size()));
    window->setTabBarAlwaysVisible(true);
    entry->controller->moveTo(window);
    entry->controller->bringForward();
}

bool DocumentController::closeDocument(DocumentId id)
{
    return closeDocuments({id});
}

bool DocumentController::closeOtherDocuments(DocumentId id)
{
    const OpenDocument *kept = m_documents.find(id);
    if (kept == nullptr)
        return true;
    QList<DocumentId> others;
    for (const EditorWindowController *other : kept->controller->window()->controllers())
        if (other != kept->controller.get())
            others << other;
    return closeDocuments(others);
}

bool DocumentController::closeDocuments(const QList<DocumentId> &documents)
{
    QList<WindowController> agreed;
    for (const DocumentId document : documents) {
        OpenDocument *entry = m_documents.find(document);
        if (entry == nullptr)
            continue; // It was closed during a question about another document.
        agreed << entry->controller;
        if (!m_consent.confirmClose(*entry))
            return false;
    }
    for (const WindowController &controller : agreed)
        closeWithoutAsking(controller);
    return true;
}

/// Closes a document without asking, and with the last document of a window the window.
void DocumentController::closeWithoutAsking(const WindowController &controller)
{
    if (controller->window()->count() > 1) {
        forget(controller);
        // A closed controller keeps showing its text in a hidden window, where macros can still use
        // it.
        controller->moveTo(std::make_shared<EditorWindow>());
        return;
    }
    const bool wasAgreed = std::exchange(m_skipsCloseQuestions, true);
    controller->window()->close();
    m_skipsCloseQuestions = wasAgreed;
}

bool DocumentController::closeAll()
{
    // A dialog may already be open, for example when the session ends. Closing now could remove the
    // document that the dialog is about.
    if (m_closingAll || m_consent.offerToStopMacro() || m_consent.raiseOpenDialog())
        return false;
    m_closingAll = true;
    const QList<WindowController> controllers = windowControllers();
    bool mayClose =
        std::all_of(controllers.begin(), controllers.end(), [this](const auto &controller) {
            // A document whose file could not be read may have been closed during a question about
            // another.
            OpenDocument *entry = m_documents.find(controller.get());
            return entry == nullptr || m_consent.confirmClose(*entry);
        });
    // Close other windows first: if one refuses, the editor windows must still be open.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (mayClose && window->isVisible() && m_documents.frontDocumentOf(window) == nullptr)
            mayClose = window->close();
    m_skipsCloseQuestions = mayClose;
    const auto editorWindows = m_documents.windows();
    for (qsizetype i = 0; mayClose && i < editorWindows.size(); ++i)
        editorWindows.at(i)->close();
    m_skipsCloseQuestions = false;
    m_closingAll = false;
    return mayClose;
}

bool DocumentController::eventFilter(QObject *watched, QEvent *event)
{
    auto *window = qobject_cast<EditorWindow *>(watched);
    if (event->type() == QEvent::WindowActivate) {
        m_activeWindow = window;
        checkFileOnDisk(window != nullptr ? window->currentController() : nullptr);
    }
    if (event->type() != QEvent::Close || window == nullptr)
        return QObject::eventFilter(watched, event);
    if (!m_skipsCloseQuestions && !m_consent.confirmClose(*window)) {
        event->ignore();
        return true;
    }
    for (const EditorWindowController *controller : window->controllers())
        if (const OpenDocument *entry = m_documents.find(controller))
            forget(WindowController(entry->controller));
    return false;
}

void DocumentController::checkFileOnDisk(DocumentId id)
{
    if (const OpenDocument *entry = m_documents.find(id))
        entry->outsideChanges->check();
}

void DocumentController::forget(const WindowController &controller)
{
    const std::unique_ptr<OpenDocument> entry = m_documents.take(controller.get());
    if (entry == nullptr)
        return;
    entry->document->cancelTransfer();
    if (entry->document->textStorage()->length() > kLargeText)
        giveBackMemoryLater();
    entry->saver.reset();
    entry->outsideChanges.reset();
    // Both must outlive the current event, and the tab must outlive its document.
    TextDocument *document = entry->document.release();
    document->deleteLater();
    QMetaObject::invokeMethod(
        this, [kept = controller]() mutable { kept.reset(); }, Qt::QueuedConnection);
    Q_EMIT documentClosed(document);
}

void DocumentController::updateLabel(DocumentId id)
{
    const OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return;
    const QString name = entry->displayName();
    entry->controller->setTabLabel(
        {name, entry->document->filePath(), entry->document->isEdited()});
    if (TextView *view = entry->controller->textView())
        view->setAccessibleName(name);
}

} // namespace penwick
