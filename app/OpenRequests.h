#pragma once

#include "app/DocumentController.h"
#include "app/InstanceServer.h"
#include "app/OpenDialogs.h"
#include "app/OpenRequest.h"

#include <QEventLoopLocker>
#include <QObject>
#include <QPointer>
#include <QSet>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// Opens what this process was started for and what other processes hand over. While a modal dialog
/// is open, requests of other processes wait: opening a document may close the one that the dialog
/// is about.
class OpenRequests final : public QObject
{
    Q_OBJECT

public:
    /// Returns the window to bring to the front when a request has no items; null when there is
    /// none.
    using FrontWindow = std::function<QWidget *()>;

    /// \param documents not owned; must outlive this.
    OpenRequests(DocumentController *documents, FrontWindow frontWindow);
    ~OpenRequests() override;

    /// Opens this process's own request at once, and prints what cannot be opened.
    /// \return false when something could not be opened at once.
    bool open(const OpenRequest &request);

    /// Accepts requests of other processes from now on.
    void listenAt(InstancePlace place);

    /// Prepares the end of the process. If requests are waiting, tries to open them and returns
    /// false; otherwise stops accepting requests.
    /// \return true when the process may end.
    bool finish();

private:
    struct Waiting
    {
        QPointer<InstanceClient> client;
        OpenRequest request;
    };

    /// The documents that a client waits for.
    struct Watch
    {
        QPointer<InstanceClient> client;
        QSet<const TextDocument *> open;
        bool openedAll = true;
    };

    void take(InstanceClient *client, const OpenRequest &request);
    void openWaiting();
    bool carryOut(const Waiting &waiting);
    void reportFailure(const QString &path, const DocumentError &error);
    const TextDocument *openItem(const OpenRequest::Item &item,
                                 DocumentController::Placement placement);
    /// \return the untitled document that is opened when no window can come to the front; else
    ///         null.
    const TextDocument *comeForward(const OpenRequest &request);
    void followReading(TextDocument *document, const std::optional<TextPlace> &place);
    void showPlace(TextDocument *document, const TextPlace &place);
    void forget(const TextDocument *document);
    void notifyFinishedClients();

    DocumentController *m_documents;
    FrontWindow m_frontWindow;
    std::unique_ptr<InstanceServer> m_server;
    std::deque<Waiting> m_waiting;
    std::unique_ptr<QEventLoopLocker> m_quitLock; // Set while requests wait.
    bool m_isOpening = false;
    std::vector<Watch> m_watches;
    std::optional<Watch> m_currentWatch;  // The request whose documents are being opened.
    QSet<const TextDocument *> m_reading; // Opened documents whose text is still being read.
    OpenDialogs m_dialogs;
};

} // namespace penwick
