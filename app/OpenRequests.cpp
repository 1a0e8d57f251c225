#include "app/OpenRequests.h"

#include "app/DocumentDialogs.h"
#include "platform/desktop/WindowActivation.h"
#include "platform/process/StandardOutput.h"
#include "text/CutText.h"
#include "view/TextView.h"

#include <QApplication>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

using namespace Qt::StringLiterals;
using Placement = DocumentController::Placement;

Placement placementOf(const OpenRequest &request)
{
    return request.newWindow ? Placement::NewWindow : Placement::Tab;
}

DocumentController::WindowController controllerOf(const DocumentController &documents,
                                                  const TextDocument *document)
{
    const auto controllers = documents.windowControllers();
    const auto found =
        std::find_if(controllers.begin(), controllers.end(), [&](const auto &controller) {
            return documents.documentOf(controller.get()) == document;
        });
    return found != controllers.end() ? *found : nullptr;
}

} // namespace

OpenRequests::OpenRequests(DocumentController *documents, FrontWindow frontWindow)
    : m_documents(documents)
    , m_frontWindow(std::move(frontWindow))
{
    connect(&m_dialogs, &OpenDialogs::closed, this, &OpenRequests::openWaiting);
    connect(documents, &DocumentController::documentClosed, this, &OpenRequests::forget);
    connect(documents, &DocumentController::openingFailed, this, &OpenRequests::reportFailure);
}

OpenRequests::~OpenRequests() = default;

void OpenRequests::listenAt(InstancePlace place)
{
    m_server = std::make_unique<InstanceServer>(std::move(place));
    connect(m_server.get(), &InstanceServer::requested, this, &OpenRequests::take);
    // The process ends soon after the last window closes. Later requests must go to the next
    // process.
    connect(qApp, &QGuiApplication::lastWindowClosed, m_server.get(), [this] {
        if (m_waiting.empty())
            m_server->leave();
    });
}

bool OpenRequests::finish()
{
    if (!m_waiting.empty()) {
        openWaiting();
        return false;
    }
    if (m_server != nullptr)
        m_server->leave();
    return true;
}

bool OpenRequests::open(const OpenRequest &request)
{
    return carryOut({nullptr, request});
}

void OpenRequests::take(InstanceClient *client, const OpenRequest &request)
{
    // Reply before anything is opened, because opening may show a modal dialog.
    QWidget *question = OpenDialogs::question();
    if (!client->taken(question == nullptr && m_waiting.empty()))
        return; // The client has given up meanwhile and reported it.
    m_waiting.push_back({client, request});
    if (m_quitLock == nullptr)
        m_quitLock = std::make_unique<QEventLoopLocker>();
    if (question != nullptr) {
        m_dialogs.watch();
        allowActivation(request.activationToken, request.startupId);
        bringForward(question);
        return;
    }
    // Open in a later turn of the event loop: a dialog would run a nested event loop, in which the
    // client may be deleted.
    QMetaObject::invokeMethod(this, &OpenRequests::openWaiting, Qt::QueuedConnection);
}

void OpenRequests::openWaiting()
{
    if (m_isOpening)
        return;
    m_isOpening = true;
    while (!m_waiting.empty() && OpenDialogs::question() == nullptr) {
        const Waiting next = std::move(m_waiting.front());
        m_waiting.pop_front();
        allowActivation(next.request.activationToken, next.request.startupId);
        carryOut(next);
    }
    m_isOpening = false;
    if (m_waiting.empty())
        m_quitLock.reset();
    else
        m_dialogs.watch();
}

bool OpenRequests::carryOut(const Waiting &waiting)
{
    const OpenRequest &request = waiting.request;
    // The first documents may be closed again before the last one is open.
    m_currentWatch = Watch{waiting.client, {}, true};
    for (const OpenRequest::Item &item : request.items) {
        const TextDocument *document = openItem(item, placementOf(request));
        if (document != nullptr)
            m_currentWatch->open.insert(document);
        else
            m_currentWatch->openedAll = false;
    }
    if (request.items.isEmpty()) {
        if (const TextDocument *untitled = comeForward(request))
            m_currentWatch->open.insert(untitled);
    }
    auto watch = std::exchange(m_currentWatch, std::nullopt);
    if (!watch)
        return true;
    const bool openedAll = watch->openedAll;
    if (watch->client != nullptr)
        watch->client->opened(openedAll);
    if (request.wait) {
        m_watches.push_back(*std::move(watch));
        notifyFinishedClients();
    }
    return openedAll;
}

/// Called before the message is shown, so that a client does not wait until the user closes it.
void OpenRequests::reportFailure(const QString &path, const DocumentError &error)
{
    if (!m_currentWatch)
        return;
    if (m_currentWatch->client != nullptr)
        m_currentWatch->client->opened(false);
    else
        writeErrorLine(u"penwick: "_s + dialogs::openErrorReason(path, error) + u' ' +
                       cutText(path, kLongestToolTip));
}

const TextDocument *OpenRequests::openItem(const OpenRequest::Item &item, Placement placement)
{
    TextDocument *document = nullptr;
    if (item.text) {
        document = m_documents->newDocument(*item.text, placement);
    } else {
        const QString path = QFile::decodeName(item.path);
        if (m_documents->openFileOrNew(path, placement))
            document = m_documents->documentOfFile(path);
    }
    if (document == nullptr)
        return nullptr;
    if (document->isReading())
        followReading(document, item.place);
    else if (item.place)
        showPlace(document, *item.place);
    return document;
}

const TextDocument *OpenRequests::comeForward(const OpenRequest &request)
{
    QWidget *window = m_frontWindow();
    if (window == nullptr || request.newWindow || request.wait)
        return m_documents->newDocument(Text(), placementOf(request));
    bringForward(window);
    return nullptr;
}

void OpenRequests::followReading(TextDocument *document, const std::optional<TextPlace> &place)
{
    m_reading.insert(document);
    connect(
        document,
        &TextDocument::transferEnded,
        this,
        [this, document, place](TextDocument::Transfer, const std::optional<DocumentError> &error) {
            if (error || !m_reading.remove(document))
                return;
            if (place)
                showPlace(document, *place);
        });
}

/// Waits one turn of the event loop, until the window shows the text.
void OpenRequests::showPlace(TextDocument *document, const TextPlace &place)
{
    QTimer::singleShot(0, document, [this, document, place] {
        const auto controller = controllerOf(*m_documents, document);
        TextView *view = controller != nullptr ? controller->textView() : nullptr;
        if (view != nullptr)
            view->setSelectedRange({offsetOf(place, view->string()), 0});
    });
}

void OpenRequests::forget(const TextDocument *document)
{
    const bool wasRead = !m_reading.remove(document);
    const auto forgetIn = [&](Watch &watch) {
        if (watch.open.remove(document))
            watch.openedAll = watch.openedAll && wasRead;
    };
    std::for_each(m_watches.begin(), m_watches.end(), forgetIn);
    if (m_currentWatch)
        forgetIn(*m_currentWatch);
    notifyFinishedClients();
}

void OpenRequests::notifyFinishedClients()
{
    const auto isDone = [](const Watch &watch) { return watch.open.isEmpty(); };
    for (const Watch &watch : m_watches)
        if (isDone(watch) && watch.client != nullptr)
            watch.client->closed(watch.openedAll);
    m_watches.erase(std::remove_if(m_watches.begin(), m_watches.end(), isDone), m_watches.end());
}

} // namespace penwick
