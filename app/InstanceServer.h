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

/// A stream from another process: takes a request in while the event loop runs, a bounded piece at
/// a time, and gives answers. A process that sends nonsense, too much, or nothing for too long is
/// dropped.
class InstanceClient final : public QObject
{
    Q_OBJECT

public:
    /// \param patience how long the other process may take until its next piece.
    InstanceClient(LocalSocket stream, std::chrono::milliseconds patience, QObject *parent);

    /// Says that the request will be opened. One that does not wait is over then.
    /// \return false when whoever asked is gone, and expects nothing any more.
    bool taken();
    /// Says that all of it is closed. Nothing of the client is used after that.
    void closed(bool openedAll);

Q_SIGNALS:
    void requested(const penwick::OpenRequest &request);
    /// The stream is at its end, from this side or the other.
    void ended();

private:
    void readSome();
    void takeIn(QByteArrayView bytes);
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

/// Listens at the place of the one running process, and puts it up again where somebody takes it
/// away.
class InstanceServer final : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::seconds kPatience{10};

    explicit InstanceServer(InstancePlace place,
                            std::chrono::milliseconds patience = kPatience,
                            QObject *parent = nullptr);
    /// Leaves the place.
    ~InstanceServer() override;

    /// Gives the place up. Requests that were not taken yet end, so that whoever asks can turn to
    /// the next process; those that wait go on waiting.
    void leave();

Q_SIGNALS:
    /// \param client owned by this; goes when its stream ends.
    void requested(penwick::InstanceClient *client, const penwick::OpenRequest &request);

private:
    void listen();
    void watch();
    void lookAfterPlaceSoon();
    void lookAfterPlace();
    void renewPlace();
    void acceptAll();
    void setAccepting(bool accepts);
    void adopt(LocalSocket stream);

    std::optional<InstancePlace> m_place;
    std::chrono::milliseconds m_patience;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_pause; // Until the next try, after one that failed.
    QFileSystemWatcher m_watcher;
    QTimer m_lookTimer;
    std::chrono::milliseconds m_untilNextLook; // Where the next try fails.
    std::vector<InstanceClient *> m_arriving;  // Whose requests were not taken yet.
};

} // namespace penwick
