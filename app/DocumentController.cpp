#include "app/DocumentController.h"

#include "app/DocumentDialogs.h"
#include "app/DocumentPaths.h"
#include "app/WindowPlacement.h"
#include "editor/TextView.h"
#include "platform/FreedMemory.h"
#include "platform/NotificationCenter.h"
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
    , m_consent(
          m_documents,
          [this](const EditorWindowController *controller) { return saveDocument(controller); })
    , m_folder(paths::startFolder())
{
    NotificationCenter::defaultCenter().addObserver(UIWordingProfileDidChange, this, [this] {
        for (const auto &controller : m_documents.controllers()) {
            updateLabel(controller.get());
        }
    });
}

DocumentController::~DocumentController()
{
    // The tabs go one by one, which is no longer of interest to anybody. Nothing else is
    // disconnected: the toolkit has to learn when a window is gone.
    for (const auto &window : m_documents.windows()) {
        disconnect(window.get(), &EditorWindow::currentTabChanged, nullptr, nullptr);
    }
}

DocumentController::WindowController DocumentController::controllerOf(const QWidget *window) const
{
    const OpenDocument *entry = m_documents.inFrontOf(window);
    return entry != nullptr ? entry->controller : nullptr;
}

TextDocument *DocumentController::documentOf(const EditorWindowController *controller) const
{
    const OpenDocument *entry = m_documents.find(controller);
    return entry != nullptr ? entry->document.get() : nullptr;
}

TextDocument *DocumentController::documentOfFile(const QString &path) const
{
    const OpenDocument *entry = m_documents.withFile(absolutePathOf(path));
    return entry != nullptr ? entry->document.get() : nullptr;
}

/// Where a new tab goes; null where it needs a window of its own.
std::shared_ptr<EditorWindow> DocumentController::currentWindow() const
{
    const auto windows = m_documents.windows();
    if (windows.isEmpty()) {
        return nullptr;
    }
    const auto active = std::find_if(windows.begin(), windows.end(), [this](const auto &window) {
        return window.get() == m_activeWindow;
    });
    const auto &window = active != windows.end() ? *active : windows.last();
    const auto controllers = window->controllers();
    const bool isHeld =
        std::any_of(controllers.begin(), controllers.end(), [](const auto *controller) {
            return controller->isRunningMacro();
        });
    return isHeld ? nullptr : window;
}

/// The untitled document nobody has done anything to, when it is alone in the current window.
OpenDocument *DocumentController::pristineDocument() const
{
    const auto window = currentWindow();
    OpenDocument *entry = m_documents.inFrontOf(window.get());
    return entry != nullptr && window->count() == 1 && entry->isPristine() ? entry : nullptr;
}

void DocumentController::newDocument(Placement placement)
{
    bringForward(*addDocument(std::make_unique<TextDocument>(), placement).controller);
}

TextDocument *DocumentController::newDocument(const Text &text, Placement placement)
{
    auto document = std::make_unique<TextDocument>();
    TextDocument *made = document.get();
    made->setContentString(text);
    made->textStorage()->replaceCharacters({}, text); // For the edited state, which stays.
    showDocument(std::move(document), placement);
    return made;
}

void DocumentController::openDocument()
{
    QWidget *parent = QApplication::activeWindow();
    const OpenDocument *active = m_documents.inFrontOf(parent);
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
        bringForward(*open->controller);
        return true;
    }
    auto document = readDocument(absolutePath, missingFile, m_patience);
    if (!document) {
        dialogs::showOpenError(QApplication::activeWindow(), absolutePath, document.error());
        return false;
    }
    showDocument(*std::move(document), placement);
    return true;
}

/// An untouched untitled document makes room for it.
void DocumentController::showDocument(std::unique_ptr<TextDocument> document, Placement placement)
{
    OpenDocument *pristine = placement == Placement::Tab ? pristineDocument() : nullptr;
    if (pristine == nullptr) {
        bringForward(*addDocument(std::move(document), placement).controller);
        return;
    }
    pristine->controller->documentState()->setMacroNotificationMessage(std::nullopt);
    setDocument(*pristine, std::move(document));
    bringForward(*pristine->controller);
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
    if (window == nullptr) {
        window = makeWindow();
    }
    OpenDocument &entry = m_documents.add();
    entry.controller = std::make_shared<EditorWindowController>(std::move(window));
    Q_EMIT controllerMade(entry.controller.get());
    setDocument(entry, std::move(document));
    return entry;
}

void DocumentController::setDocument(OpenDocument &entry, std::unique_ptr<TextDocument> document)
{
    entry.untitledNumber = document->filePath().isEmpty() ? m_documents.nextUntitledNumber() : 0;
    // The former document goes last: the view of its text goes with this call, and its own signal
    // may be what led here.
    if (entry.document != nullptr) {
        Q_EMIT documentClosed(entry.document.get());
        entry.document.release()->deleteLater();
    }
    EditorWindowController *controller = entry.controller.get();
    entry.document = std::move(document);
    entry.saver = std::make_unique<DocumentSaver>(entry.document.get(), controller, m_patience);
    entry.saver->setSaveElsewhere([this, controller] { return saveDocumentAs(controller); });
    entry.outsideChanges = std::make_unique<OutsideChanges>(entry.document.get(), controller);
    showContent(entry);
    const auto relabel = [this, controller] { updateLabel(controller); };
    connect(entry.document.get(), &TextDocument::filePathChanged, controller, relabel);
    connect(entry.document.get(), &TextDocument::editedChanged, controller, relabel);
    connect(entry.document.get(),
            &TextDocument::transferEnded,
            controller,
            [this, controller](TextDocument::Transfer transfer,
                               const std::optional<DocumentError> &error) {
                if (transfer == TextDocument::Transfer::Reading) {
                    readingDidEnd(controller, error);
                }
            });
    updateLabel(controller);
}

void DocumentController::showContent(OpenDocument &entry)
{
    if (entry.document->isReading()) {
        entry.controller->showLoading(entry.document.get());
    } else {
        entry.controller->setDocument(entry.document.get());
    }
}

void DocumentController::readingDidEnd(const EditorWindowController *controller,
                                       const std::optional<DocumentError> &error)
{
    OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr) {
        return; // Closed meanwhile.
    }
    if (!error) {
        showContent(*entry);
        updateLabel(controller);
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
    giveUp(controller);
}

/// Takes a tab away whose file could not be read. The last one stays: closing it would end the
/// application.
void DocumentController::giveUp(const EditorWindowController *controller)
{
    OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr) {
        return;
    }
    if (m_documents.controllers().size() == 1) {
        setDocument(*entry, std::make_unique<TextDocument>());
    } else {
        removeAgreed(WindowController(entry->controller)); // The entry goes with it.
    }
}

bool DocumentController::saveDocument(const EditorWindowController *controller)
{
    OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr || entry->document->isReading()) {
        return false;
    }
    if (entry->document->isWriting()) {
        return entry->saver->save(entry->document->transferPath());
    }
    if (entry->document->filePath().isEmpty()) {
        return saveDocumentAs(controller);
    }
    return entry->saver->save(entry->document->filePath());
}

bool DocumentController::saveDocumentAs(const EditorWindowController *controller)
{
    OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr || entry->document->isReading() ||
        !entry->saver->await(entry->displayName())) {
        return false;
    }
    const QString current = entry->document->filePath();
    const QString suggestion =
        current.isEmpty() ? QDir(m_folder).filePath(entry->displayName() + u".txt"_s) : current;
    const QString path = dialogs::askForFileToSave(entry->controller->window(), suggestion);
    if (path.isEmpty()) {
        return false;
    }
    const OpenDocument *holder = m_documents.withFile(path);
    if (holder != nullptr && holder != entry) {
        dialogs::showFileInUse(entry->controller->window(), path);
        return false;
    }
    m_folder = QFileInfo(path).absolutePath();
    if (absolutePathOf(path) == entry->document->filePath()) {
        entry->document->acceptFileVersion(FileVersion::of(path)); // To be replaced, as agreed.
    }
    return entry->saver->save(absolutePathOf(path));
}

void DocumentController::moveToNewWindow(const EditorWindowController *controller,
                                         const QPoint &position)
{
    const OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr || controller->isRunningMacro()) {
        return;
    }
    const auto former = controller->window()->shared_from_this();
    if (former->count() == 1) {
        former->move(position);
        return;
    }
    const auto window = makeWindow();
    const bool isWhole = former->isMaximized() || former->isFullScreen();
    window->resize(isWhole ? former->normalGeometry().size() : former->size());
    window->move(onScreen(position, isWhole ? window->size() : former->frameGeometry().size()));
    window->setTabBarStays(true);
    entry->controller->moveTo(window);
    bringForward(*controller);
}

bool DocumentController::closeDocument(const EditorWindowController *controller)
{
    return closeDocuments({controller});
}

bool DocumentController::closeOtherDocuments(const EditorWindowController *controller)
{
    QList<const EditorWindowController *> others;
    for (const EditorWindowController *other : controller->window()->controllers()) {
        if (other != controller) {
            others << other;
        }
    }
    return closeDocuments(others);
}

bool DocumentController::closeDocuments(const QList<const EditorWindowController *> &controllers)
{
    QList<WindowController> agreed;
    for (const EditorWindowController *controller : controllers) {
        OpenDocument *entry = m_documents.find(controller);
        if (entry == nullptr) {
            continue; // It went during a question about another.
        }
        agreed << entry->controller;
        if (!m_consent.isGivenFor(*entry)) {
            return false;
        }
    }
    for (const WindowController &controller : agreed) {
        removeAgreed(controller);
    }
    return true;
}

/// Closes a document without a question, and its window with the last one.
void DocumentController::removeAgreed(const WindowController &controller)
{
    if (controller->window()->count() > 1) {
        forget(controller);
        // A closed controller goes on showing its text, where only macros find it.
        controller->moveTo(std::make_shared<EditorWindow>());
        return;
    }
    const bool wasAgreed = std::exchange(m_closeIsAgreed, true);
    controller->window()->close();
    m_closeIsAgreed = wasAgreed;
}

bool DocumentController::closeAll()
{
    // A question is on the screen already. The session's end may come in the middle of it, and
    // would take away the document that it is about.
    if (m_closingAll || m_consent.offersToStopAMacro() || m_consent.showsOpenQuestion()) {
        return false;
    }
    m_closingAll = true;
    const QList<WindowController> controllers = windowControllers();
    bool goesOn =
        std::all_of(controllers.begin(), controllers.end(), [this](const auto &controller) {
            // One whose file could not be read may have gone during a question about another.
            OpenDocument *entry = m_documents.find(controller.get());
            return entry == nullptr || m_consent.isGivenFor(*entry);
        });
    // Other windows first: one that refuses must not leave the editor windows closed.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (goesOn && window->isVisible() && m_documents.inFrontOf(window) == nullptr) {
            goesOn = window->close();
        }
    }
    m_closeIsAgreed = goesOn;
    for (const auto &window :
         goesOn ? m_documents.windows() : QList<std::shared_ptr<EditorWindow>>()) {
        window->close();
    }
    m_closeIsAgreed = false;
    m_closingAll = false;
    return goesOn;
}

bool DocumentController::eventFilter(QObject *watched, QEvent *event)
{
    auto *window = qobject_cast<EditorWindow *>(watched);
    if (event->type() == QEvent::WindowActivate) {
        m_activeWindow = window;
        checkFileOnDisk(window != nullptr ? window->currentController() : nullptr);
    }
    if (event->type() != QEvent::Close || window == nullptr) {
        return QObject::eventFilter(watched, event);
    }
    if (!m_closeIsAgreed && !m_consent.isGivenFor(*window)) {
        event->ignore();
        return true;
    }
    for (const EditorWindowController *controller : window->controllers()) {
        if (const OpenDocument *entry = m_documents.find(controller)) {
            forget(WindowController(entry->controller));
        }
    }
    return false;
}

void DocumentController::checkFileOnDisk(const EditorWindowController *controller)
{
    if (const OpenDocument *entry = m_documents.find(controller)) {
        entry->outsideChanges->check();
    }
}

void DocumentController::forget(const WindowController &controller)
{
    const std::unique_ptr<OpenDocument> entry = m_documents.take(controller.get());
    if (entry == nullptr) {
        return;
    }
    entry->document->cancelTransfer();
    if (entry->document->contentString().size() > kLargeText) {
        giveBackMemoryLater();
    }
    entry->saver.reset();
    entry->outsideChanges.reset();
    // Both outlive the event that is being handled, the tab longer than its document.
    TextDocument *document = entry->document.release();
    document->deleteLater();
    QMetaObject::invokeMethod(
        this, [kept = controller]() mutable { kept.reset(); }, Qt::QueuedConnection);
    Q_EMIT documentClosed(document);
}

void DocumentController::updateLabel(const EditorWindowController *controller)
{
    const OpenDocument *entry = m_documents.find(controller);
    if (entry == nullptr) {
        return;
    }
    const QString name = entry->displayName();
    entry->controller->setTabLabel(
        {name, entry->document->filePath(), entry->document->isEdited()});
    if (TextView *view = controller->textView()) {
        view->setAccessibleName(name);
    }
}

} // namespace penwick
