#include "app/DocumentTabs.h"

#include "platform/desktop/WindowFrame.h"
#include "platform/settings/NotificationCenter.h"
#include "text/CutText.h"
#include "view/TextView.h"
#include "wording/UIWordingProfileManager.h"

#include <QEvent>

#include <algorithm>
#include <utility>

namespace penwick {

DocumentTabs::DocumentTabs(OpenDocuments &documents, Prepare prepare)
    : m_documents(documents)
    , m_prepare(std::move(prepare))
{
    NotificationCenter::defaultCenter().addObserver(UIWordingProfileDidChange, this, [this] {
        for (const auto &controller : m_documents.controllers())
            updateLabel(controller.get());
    });
}

/// Returns the window for a new tab; null when the tab needs a window of its own.
std::shared_ptr<EditorWindow> DocumentTabs::currentWindow() const
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

std::shared_ptr<EditorWindow> DocumentTabs::makeWindow()
{
    auto window = std::make_shared<EditorWindow>(&UserDefaults::usage());
    window->installEventFilter(this);
    connect(window.get(), &EditorWindow::currentTabChanged, this, &DocumentTabs::cameForward);
    connect(window.get(),
            &EditorWindow::moveToNewWindowRequested,
            this,
            &DocumentTabs::moveToNewWindow);
    Q_EMIT windowMade(window.get());
    return window;
}

void DocumentTabs::add(std::unique_ptr<TextDocument> document, Placement placement)
{
    std::shared_ptr<EditorWindow> window = placement == Placement::Tab ? currentWindow() : nullptr;
    if (window == nullptr)
        window = makeWindow();
    OpenDocument &entry = m_documents.add();
    entry.controller = std::make_shared<EditorWindowController>(std::move(window));
    Q_EMIT controllerMade(entry.controller.get());
    replace(entry, std::move(document));
    entry.controller->bringForward();
}

void DocumentTabs::addOrReplace(std::unique_ptr<TextDocument> document, Placement placement)
{
    const auto window = placement == Placement::Tab ? currentWindow() : nullptr;
    OpenDocument *front = m_documents.frontDocumentOf(window.get());
    if (front == nullptr || window->count() > 1 || !front->isPristine()) {
        add(std::move(document), placement);
        return;
    }
    front->controller->documentState()->setMacroNotificationMessage(std::nullopt);
    replace(*front, std::move(document));
    front->controller->bringForward();
}

void DocumentTabs::replace(OpenDocument &entry, std::unique_ptr<TextDocument> document)
{
    m_documents.setDocument(entry, std::move(document));
    m_prepare(entry);
    showContent(entry);
    const auto relabel = [this, id = DocumentId(entry.controller.get())] { updateLabel(id); };
    const TextDocument *shown = entry.document.get();
    connect(shown, &TextDocument::filePathChanged, entry.controller.get(), relabel);
    connect(shown, &TextDocument::editedChanged, entry.controller.get(), relabel);
}

void DocumentTabs::showContent(const OpenDocument &entry)
{
    if (entry.document->isReading())
        entry.controller->showLoading(entry.document.get());
    else
        entry.controller->setDocument(entry.document.get());
    updateLabel(entry.controller.get());
}

void DocumentTabs::updateLabel(DocumentId id) const
{
    const OpenDocument *entry = m_documents.find(id);
    if (entry == nullptr)
        return;
    const QString name = entry->displayName();
    entry->controller->setTabLabel(
        {name, entry->document->filePath(), entry->document->isEdited()});
    if (TextView *view = entry->controller->textView())
        view->setAccessibleName(cutText(name, kLongestName));
}

void DocumentTabs::moveToNewWindow(DocumentId id, const QPoint &position)
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

bool DocumentTabs::eventFilter(QObject *watched, QEvent *event)
{
    auto *window = qobject_cast<EditorWindow *>(watched);
    if (event->type() == QEvent::WindowActivate && window != nullptr) {
        m_activeWindow = window;
        Q_EMIT cameForward(window->currentController());
    }
    return QObject::eventFilter(watched, event);
}

} // namespace penwick
