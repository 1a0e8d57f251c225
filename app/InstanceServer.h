#pragma once

#include "app/InstancePlace.h"
#include "app/OpenRequest.h"
#include "app/OpenRequestWire.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// A connection from another process. Reads a request in bounded pieces while the event loop runs,
/// and sends replies. A client whose request is malformed or too large, or that sends nothing until
/// the timeout, is dropped.
class InstanceClient final : public QObject
{
    Q_OBJECT

public:
    /// \param clientTimeout how long to wait for the client's next bytes.
    InstanceClient(LocalSocket stream, std::chrono::milliseconds clientTimeout, QObject *parent);

    /// Replies that the request will be opened. Ends the connection unless the request waits or
    /// `opensNow` promises a call of `opened`.
    /// \return false when the client is gone. It reported a failure then, so do not open its
    ///         request.
    bool taken(bool opensNow = false);
    /// Replies whether all documents of a request that does not wait could be opened, and ends the
    /// connection. Later calls do nothing, and so do calls for a request that waits.
    void opened(bool openedAll);
    /// Replies that all documents of the request are closed. Do not use the client afterwards.
    void closed(bool openedAll);

Q_SIGNALS:
    void requested(const penwick::OpenRequest &request);
    /// The connection has ended, from either side. The object is deleted in a later turn of the
    /// event loop.
    void ended();

private:
    void readSome();
    void decode(QByteArrayView bytes);
    bool answer(const Reply &reply);
    void end();

    LocalSocket m_stream;
    QSocketNotifier m_notifier;
    QTimer m_timer;
    RequestReader m_reader;
    bool m_complete = false;
    bool m_waits = false;
    bool m_ended = false;
};

/// Listens at the place of the one running process, and restores the place when its files are
/// removed.
class InstanceServer final : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::seconds kClientTimeout{10};

    explicit InstanceServer(InstancePlace place,
                            std::chrono::milliseconds clientTimeout = kClientTimeout,
                            QObject *parent = nullptr);
    /// Gives the place up.
    ~InstanceServer() override;

    /// Gives the place up and drops the clients whose requests are incomplete, so that they can
    /// turn to the next process. Clients that wait for their documents stay connected.
    void leave();

Q_SIGNALS:
    /// \param client owned by this; deleted when its connection ends.
    void requested(penwick::InstanceClient *client, const penwick::OpenRequest &request);

private:
    void listen();
    void watch();
    void schedulePlaceCheck();
    void checkPlace();
    void renewPlace();
    void acceptAll();
    void setAccepting(bool accepts);
    void adopt(LocalSocket stream);

    std::optional<InstancePlace> m_place;
    std::chrono::milliseconds m_clientTimeout;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_pause; // The delay after a failed accept.
    QFileSystemWatcher m_watcher;
    QTimer m_checkTimer;
    std::chrono::milliseconds m_retryDelay;   // The delay after the next failed check.
    std::vector<InstanceClient *> m_arriving; // Their requests are not complete yet.
};

} // namespace penwick
