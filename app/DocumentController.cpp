#include "app/DocumentController.h"

#include "app/DocumentDialogs.h"
#include "app/DocumentPaths.h"
#include "controls/Alerts.h"
#include "editor/LoadingView.h"
#include "editor/TextView.h"
#include "platform/FreedMemory.h"
#include "platform/NotificationCenter.h"
#include "wording/UIWordingProfileManager.h"
#include "wording/WordingLookup.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QInputMethod>
#include <QMainWindow>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using paths::absolutePathOf;
using paths::identityOf;

namespace {

/// Why the file cannot become a new document, or nothing when it can: it is merely not there yet.
std::optional<DocumentError> obstacleToNewFile(const QString &path, const DocumentError &readError)
{
    if (readError.fileErrorKind != FileError::Kind::NotFound) {
        return readError;
    }
    // What the system calls by bytes that are no text came here as another name, under which
    // nothing is found. An empty window would pass for that file.
    if (path.contains(QChar::ReplacementCharacter)) {
        return DocumentError{
            DocumentError::Domain::NSPOSIXErrorDomain, 0, FileError::Kind::InvalidPath};
    }
    return std::nullopt;
}

/// True for the document's file, and for the one that it is being saved to.
bool isHeldBy(const TextDocument &document, const QString &identity)
{
    const QStringList paths{document.filePath(), document.transferPath()};
    return std::any_of(paths.begin(), paths.end(), [&identity](const QString &path) {
        return !path.isEmpty() && identityOf(path) == identity;
    });
}

void bringForward(QWidget *window)
{
    // Not showNormal(), which would take a maximised window's size away.
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

/// Units of a text whose memory is worth giving back to the system.
constexpr qint64 kLargeText = 4'000'000;

/// A moment from now, when what showed the text is gone too; beside the event loop, for it may take
/// long enough to be felt.
void giveBackMemoryLater()
{
    QTimer::singleShot(
        500ms, qApp, [] { QThreadPool::globalInstance()->start(giveBackFreedMemory); });
}

} // namespace

DocumentController::DocumentController(QObject *parent)
    : QObject(parent)
    , m_folder(paths::startFolder())
{
    NotificationCenter::defaultCenter().addObserver(UIWordingProfileDidChange, this, [this] {
        for (const auto &entry : m_documents) {
            updateTitle(entry->controller->window());
        }
    });
}

DocumentController::~DocumentController() = default;

QList<DocumentController::WindowController> DocumentController::windowControllers() const
{
    QList<WindowController> controllers;
    for (const auto &entry : m_documents) {
        controllers << entry->controller;
    }
    return controllers;
}

DocumentController::WindowController DocumentController::controllerOf(const QWidget *window) const
{
    const OpenDocument *entry = find(window);
    return entry != nullptr ? entry->controller : nullptr;
}

TextDocument *DocumentController::documentOf(const EditorWindowController *controller) const
{
    const OpenDocument *entry = find(controller);
    return entry != nullptr ? entry->document.get() : nullptr;
}

TextDocument *DocumentController::documentOfFile(const QString &path) const
{
    const OpenDocument *entry = findFile(absolutePathOf(path));
    return entry != nullptr ? entry->document.get() : nullptr;
}

const DocumentController::OpenDocument *
DocumentController::find(const QObject *windowOrController) const
{
    if (windowOrController == nullptr) {
        return nullptr;
    }
    for (const auto &entry : m_documents) {
        if (entry->controller->window() == windowOrController ||
            entry->controller.get() == windowOrController) {
            return entry.get();
        }
    }
    return nullptr;
}

DocumentController::OpenDocument *DocumentController::find(const QObject *windowOrController)
{
    return const_cast<OpenDocument *>(std::as_const(*this).find(windowOrController));
}

DocumentController::OpenDocument *DocumentController::findFile(const QString &path)
{
    return const_cast<OpenDocument *>(std::as_const(*this).findFile(path));
}

const DocumentController::OpenDocument *DocumentController::findFile(const QString &path) const
{
    const QString identity = identityOf(path);
    const auto entry =
        std::find_if(m_documents.begin(), m_documents.end(), [&identity](const auto &e) {
            return isHeldBy(*e->document, identity);
        });
    return entry != m_documents.end() ? entry->get() : nullptr;
}

/// The untitled window nobody has done anything in, when it is the only one.
DocumentController::OpenDocument *DocumentController::pristineUntitled()
{
    if (m_documents.size() != 1) {
        return nullptr;
    }
    OpenDocument &entry = *m_documents.front();
    const TextStorage &storage = *entry.document->textStorage();
    const bool isUntouched = entry.document->filePath().isEmpty() && storage.length() == 0 &&
                             !storage.isModified() && !storage.canUndo() && !storage.canRedo() &&
                             !entry.controller->isRunningMacro() &&
                             !entry.controller->textView()->hasMarkedText();
    return isUntouched ? &entry : nullptr;
}

void DocumentController::newDocument(Placement /*placement*/)
{
    showWindow(makeWindow(std::make_unique<TextDocument>()));
}

void DocumentController::openDocument()
{
    const OpenDocument *active = find(QApplication::activeWindow());
    const QString current = active != nullptr ? active->document->filePath() : QString();
    const QStringList paths =
        dialogs::askForFilesToOpen(active != nullptr ? active->controller->window() : nullptr,
                                   current.isEmpty() ? m_folder : QFileInfo(current).path());
    for (const QString &path : paths) {
        m_folder = QFileInfo(path).absolutePath();
        openFile(path);
    }
}

bool DocumentController::openFile(const QString &path, Placement placement)
{
    return openDocumentFrom(path, false, placement);
}

bool DocumentController::openFileOrNew(const QString &path, Placement placement)
{
    return openDocumentFrom(path, true, placement);
}

bool DocumentController::openDocumentFrom(const QString &path,
                                          bool mayBeMissing,
                                          Placement placement)
{
    const QString absolutePath = absolutePathOf(path);
    if (const OpenDocument *open = findFile(absolutePath)) {
        bringForward(open->controller->window());
        return true;
    }
    auto document = std::make_unique<TextDocument>();
    if (const auto wasRead = read(*document, absolutePath); !wasRead) {
        const auto obstacle =
            mayBeMissing ? obstacleToNewFile(absolutePath, wasRead.error()) : wasRead.error();
        if (obstacle) {
            dialogs::showOpenError(QApplication::activeWindow(), absolutePath, *obstacle);
            return false;
        }
        document->setFilePath(absolutePath);
    }
    OpenDocument *pristine = placement == Placement::Tab ? pristineUntitled() : nullptr;
    if (pristine == nullptr) {
        showWindow(makeWindow(std::move(document)));
        return true;
    }
    pristine->controller->documentState()->setMacroNotificationMessage(std::nullopt);
    setDocument(*pristine, std::move(document));
    showWindow(*pristine);
    return true;
}

tl::expected<void, DocumentError> DocumentController::read(TextDocument &document,
                                                           const QString &path) const
{
    const QFileInfo info(path);
    // What cannot be read at all is told before a window opens for it.
    if (!info.isFile() || !info.isReadable() || info.size() < m_patience.directBytes) {
        return document.readFromFile(path);
    }
    document.startReading(path);
    if (m_patience.reading.count() > 0) {
        if (const auto outcome = document.waitForTransfer(m_patience.reading)) {
            return *outcome;
        }
    }
    document.setFilePath(path); // The window is the file's from now on.
    return {};
}

DocumentController::OpenDocument &
DocumentController::makeWindow(std::unique_ptr<TextDocument> document)
{
    m_documents.push_back(std::make_unique<OpenDocument>());
    OpenDocument &entry = *m_documents.back();
    entry.controller = std::make_shared<EditorWindowController>();
    QMainWindow *window = entry.controller->window();
    window->setAttribute(Qt::WA_DeleteOnClose, false); // The controller owns it.
    window->installEventFilter(this);
    setDocument(entry, std::move(document));
    Q_EMIT windowMade(entry.controller.get());
    return entry;
}

void DocumentController::setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document)
{
    entry.untitledNumber = document->filePath().isEmpty() ? nextUntitledNumber() : 0;
    // The former document goes last: the view of its text goes with this call, and its own signal
    // may be what led here.
    if (entry.document != nullptr) {
        Q_EMIT documentClosed(entry.document.get());
        entry.document.release()->deleteLater();
    }
    QMainWindow *window = entry.controller->window();
    entry.document = std::move(document);
    entry.saver = std::make_unique<DocumentSaver>(entry.document.get(), window, m_patience);
    showContent(entry);
    const auto retitle = [this, window] { updateTitle(window); };
    connect(entry.document.get(), &TextDocument::filePathChanged, window, retitle);
    connect(entry.document.get(), &TextDocument::editedChanged, window, retitle);
    connect(
        entry.document.get(),
        &TextDocument::transferEnded,
        window,
        [this, window](TextDocument::Transfer transfer, const std::optional<DocumentError> &error) {
            if (transfer == TextDocument::Transfer::Reading) {
                readingDidEnd(window, error);
            }
        });
    updateTitle(window);
}

void DocumentController::showContent(OpenDocument &entry)
{
    if (!entry.document->isReading()) {
        entry.controller->setDocument(entry.document.get());
        return;
    }
    entry.controller->setDocument(nullptr); // Whatever works on the text finds none.
    entry.controller->window()->setCentralWidget(new LoadingView(entry.document.get()));
}

void DocumentController::readingDidEnd(const QObject *window,
                                       const std::optional<DocumentError> &error)
{
    OpenDocument *entry = find(window);
    if (entry == nullptr) {
        return; // Closed meanwhile.
    }
    if (!error) {
        showContent(*entry);
        updateTitle(window);
        // A macro that was tried meanwhile left its complaint, perhaps on its way still.
        DocumentState *state = entry->controller->documentState();
        QMetaObject::invokeMethod(
            state,
            [state] { state->setMacroNotificationMessage(std::nullopt); },
            Qt::QueuedConnection);
        return;
    }
    if (!error->isCancellation()) {
        dialogs::showOpenError(entry->controller->window(), entry->document->filePath(), *error);
    }
    giveUp(window);
}

/// Takes a window away whose file could not be read. The last one stays: closing it would end the
/// application.
void DocumentController::giveUp(const QObject *window)
{
    OpenDocument *entry = find(window);
    if (entry == nullptr) {
        return;
    }
    if (m_documents.size() == 1) {
        setDocument(*entry, std::make_unique<TextDocument>());
    } else {
        entry->controller->window()->close();
    }
}

void DocumentController::showWindow(const OpenDocument &entry) const
{
    bringForward(entry.controller->window());
}

bool DocumentController::saveDocument(const EditorWindowController *controller)
{
    OpenDocument *entry = find(controller);
    if (entry == nullptr || entry->document->isReading()) {
        return false;
    }
    if (entry->document->isWriting()) {
        return entry->saver->save(entry->document->transferPath());
    }
    if (entry->document->filePath().isEmpty()) {
        return saveDocumentAs(controller);
    }
    if (entry->document->fileChangedOnDisk() &&
        !dialogs::askToOverwriteChangedFile(entry->controller->window(), displayName(*entry))) {
        return false;
    }
    return entry->saver->save(entry->document->filePath());
}

bool DocumentController::saveDocumentAs(const EditorWindowController *controller)
{
    OpenDocument *entry = find(controller);
    if (entry == nullptr || entry->document->isReading() ||
        !entry->saver->await(displayName(*entry))) {
        return false;
    }
    const QString current = entry->document->filePath();
    const QString suggestion =
        current.isEmpty() ? QDir(m_folder).filePath(displayName(*entry) + u".txt"_s) : current;
    const QString path = dialogs::askForFileToSave(entry->controller->window(), suggestion);
    if (path.isEmpty()) {
        return false;
    }
    const OpenDocument *holder = findFile(path);
    if (holder != nullptr && holder != entry) {
        dialogs::showFileInUse(entry->controller->window(), path);
        return false;
    }
    m_folder = QFileInfo(path).absolutePath();
    return entry->saver->save(absolutePathOf(path));
}

/// Where a macro runs, shows its notice instead of ending what it works on.
bool DocumentController::offerToStopAMacro()
{
    const auto running =
        std::find_if(m_documents.begin(), m_documents.end(), [](const auto &entry) {
            return entry->controller->isRunningMacro();
        });
    if (running == m_documents.end()) {
        return false;
    }
    bringForward((*running)->controller->window());
    (*running)->controller->offerToStopMacro();
    return true;
}

bool DocumentController::confirmClose(OpenDocument &entry)
{
    if (entry.controller->isRunningMacro()) {
        bringForward(entry.controller->window());
        entry.controller->offerToStopMacro();
        return false;
    }
    if (entry.document->isReading()) {
        return true; // Nothing of it can be lost.
    }
    if (!entry.saver->await(displayName(entry))) {
        return false;
    }
    QGuiApplication::inputMethod()->commit();
    if (!entry.document->isEdited()) {
        return true;
    }
    bringForward(entry.controller->window());
    switch (askAboutUnsavedChanges(entry.controller->window(), displayName(entry))) {
    case UnsavedAnswer::Save:
        return saveDocument(entry.controller.get()) && entry.saver->await(displayName(entry));
    case UnsavedAnswer::Discard:
        return true;
    case UnsavedAnswer::Cancel:
        break;
    }
    return false;
}

bool DocumentController::closeAll()
{
    // A question is on the screen already. The session's end may come in the middle of it, and
    // would take away the document that it is about.
    if (m_closingAll || offerToStopAMacro() || QApplication::activeModalWidget() != nullptr) {
        return false;
    }
    m_closingAll = true;
    const QList<WindowController> controllers = windowControllers();
    bool goesOn =
        std::all_of(controllers.begin(), controllers.end(), [this](const auto &controller) {
            // One whose file could not be read may have gone during a question about another.
            OpenDocument *entry = find(controller.get());
            return entry == nullptr || confirmClose(*entry);
        });
    // Other windows first: one that refuses must not leave the editor windows closed.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (goesOn && window->isVisible() && find(window) == nullptr) {
            goesOn = window->close();
        }
    }
    for (const WindowController &controller : controllers) {
        if (goesOn) {
            controller->window()->close();
        }
    }
    m_closingAll = false;
    return goesOn;
}

bool DocumentController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Close) {
        return QObject::eventFilter(watched, event);
    }
    OpenDocument *entry = find(watched);
    if (entry == nullptr) {
        return false;
    }
    if (!m_closingAll && !confirmClose(*entry)) {
        event->ignore();
        return true;
    }
    forget(watched);
    return false;
}

void DocumentController::forget(const QObject *window)
{
    const auto entry =
        std::find_if(m_documents.begin(), m_documents.end(), [window](const auto &e) {
            return e->controller->window() == window;
        });
    if (entry == m_documents.end()) {
        return;
    }
    (*entry)->document->cancelTransfer();
    if ((*entry)->document->contentString().size() > kLargeText) {
        giveBackMemoryLater();
    }
    (*entry)->saver.reset();
    // Both outlive the close event that is being handled, the window longer than its document.
    TextDocument *document = (*entry)->document.release();
    document->deleteLater();
    QMetaObject::invokeMethod(
        this,
        [controller = std::move((*entry)->controller)]() mutable { controller.reset(); },
        Qt::QueuedConnection);
    m_documents.erase(entry);
    Q_EMIT documentClosed(document);
}

void DocumentController::updateTitle(const QObject *window)
{
    const OpenDocument *entry = find(window);
    if (entry == nullptr) {
        return;
    }
    const QString name = displayName(*entry);
    QString escaped = name;
    escaped.replace(u"[*]"_s, u"[*][*]"_s); // Else Qt takes it for the place of the edited mark.
    QMainWindow *target = entry->controller->window();
    target->setWindowTitle(escaped + u"[*] — "_s + wording::text(u"app.name"_s));
    target->setWindowModified(entry->document->isEdited());
    target->setWindowFilePath(entry->document->filePath());
    if (TextView *view = entry->controller->textView()) {
        view->setAccessibleName(name);
    }
}

QString DocumentController::displayName(const OpenDocument &entry) const
{
    if (!entry.document->filePath().isEmpty()) {
        return QFileInfo(entry.document->filePath()).fileName();
    }
    const QString untitled = wording::text(u"editor.untitled"_s);
    return entry.untitledNumber > 1 ? untitled + u' ' + QString::number(entry.untitledNumber)
                                    : untitled;
}

int DocumentController::nextUntitledNumber() const
{
    int number = 1;
    while (std::any_of(m_documents.begin(), m_documents.end(), [number](const auto &entry) {
        return entry->untitledNumber == number;
    })) {
        ++number;
    }
    return number;
}

} // namespace penwick
