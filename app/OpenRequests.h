#pragma once

#include "app/DocumentController.h"
#include "app/InstanceServer.h"
#include "app/OpenRequest.h"

#include <QEventLoopLocker>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// Opens what this process, and others that hand over to it, were started for. While a question is
/// on the screen, requests of others wait for its answer: opening a document may take away the one
/// that the question is about.
class OpenRequests final : public QObject
{
    Q_OBJECT

public:
    /// The window that is to come forward where nothing is to be opened; null for none.
    using FrontWindow = std::function<QWidget *()>;

    /// \param documents not owned, outlives this.
    OpenRequests(DocumentController *documents, FrontWindow frontWindow);
    ~OpenRequests() override;

    /// Opens at once what this process was started for.
    void open(const OpenRequest &request);

    /// Takes the requests of other processes from now on.
    void listenAt(InstancePlace place);

    /// For who is about to end the process. What waits for an answer still is opened instead; else
    /// no other request is taken any more.
    /// \return true when the process may end.
    bool finish();

private:
    struct Waiting
    {
        QPointer<InstanceClient> client;
        OpenRequest request;
    };

    /// The documents that a process waits for.
    struct Watch
    {
        QPointer<InstanceClient> client;
        QSet<const TextDocument *> open;
        bool openedAll = true;
    };

    void take(InstanceClient *client, const OpenRequest &request);
    void openWaiting();
    void carryOut(const Waiting &waiting);
    const TextDocument *openItem(const OpenRequest::Item &item,
                                 DocumentController::Placement placement);
    /// \return the untitled document that it takes where no window can come forward; else null.
    const TextDocument *comeForward(const OpenRequest &request);
    void followReading(TextDocument *document, const std::optional<TextPlace> &place);
    void showPlace(TextDocument *document, const TextPlace &place);
    void forget(const TextDocument *document);
    void tellWhoIsDone();

    DocumentController *m_documents;
    FrontWindow m_frontWindow;
    std::unique_ptr<InstanceServer> m_server;
    std::deque<Waiting> m_waiting;
    std::unique_ptr<QEventLoopLocker> m_stay; // While requests wait.
    bool m_isOpening = false;
    std::vector<Watch> m_watches;
    std::optional<Watch> m_beginning;     // Not all of its documents are opened yet.
    QSet<const TextDocument *> m_reading; // Opened, but the text has not come yet.
    QTimer m_timer;
};

} // namespace penwick
