#include "app/InstanceServer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace penwick {

namespace {

// Decoding this much takes less than a millisecond, so the event loop stays responsive.
constexpr std::size_t kReadSize = std::size_t{1} << 18;

// Limits the connections whose requests are incomplete. No user starts so many processes at once; a
// connection uses little memory until its bytes arrive.
constexpr std::size_t kMaxArriving = 256;

// The delay after a failed accept, such as with too many open files. Shorter than a client's
// timeout.
constexpr std::chrono::milliseconds kAcceptRetryDelay{200};

// A cleaning program removes one file after the other; wait until it has finished. Shorter than a
// client's timeout.
constexpr std::chrono::milliseconds kSettleTime{100};
// The first check runs after the start-up, yet sooner than a client's timeout.
constexpr std::chrono::milliseconds kFirstCheckDelay{1'000};
// The longest delay between attempts to get the place back, which another process then has.
constexpr std::chrono::milliseconds kMaxRetryDelay{60'000};

} // namespace

InstanceClient::InstanceClient(LocalSocket stream,
                               std::chrono::milliseconds clientTimeout,
                               QObject *parent)
    : QObject(parent)
    , m_stream(std::move(stream))
    , m_notifier(m_stream.descriptor(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &InstanceClient::readSome);
    m_timer.setSingleShot(true);
    m_timer.setInterval(clientTimeout);
    connect(&m_timer, &QTimer::timeout, this, &InstanceClient::end);
    m_timer.start();
}

void InstanceClient::readSome()
{
    static thread_local std::array<char, kReadSize> bytes;
    const auto count = m_stream.read(bytes.data(), bytes.size());
    if (!count) {
        end();
        return;
    }
    if (m_complete || *count == 0) {
        // The request is complete, so what follows is discarded; or no bytes are available yet.
        return;
    }
    m_timer.start();
    decode(QByteArrayView(bytes.data(), *count));
}

void InstanceClient::decode(QByteArrayView bytes)
{
    const auto complete = m_reader.append(bytes);
    if (!complete) {
        answer({.kind = Reply::Kind::Refused, .refusal = complete.error()});
        end();
        return;
    }
    if (!*complete)
        return;
    m_complete = true;
    m_timer.stop();
    const OpenRequest request = m_reader.take();
    m_waits = request.wait;
    Q_EMIT requested(request);
}

bool InstanceClient::taken(bool opensNow)
{
    const bool isSent = answer({.kind = Reply::Kind::Taken});
    if (!m_waits && !opensNow)
        end();
    return isSent;
}

void InstanceClient::opened(bool openedAll)
{
    if (m_waits)
        return;
    answer({.kind = Reply::Kind::Opened, .openedAll = openedAll});
    end();
}

void InstanceClient::closed(bool openedAll)
{
    answer({.kind = Reply::Kind::Closed, .openedAll = openedAll});
    end();
}

// The replies are a few bytes in all, so the socket has room for them while it is open.
bool InstanceClient::answer(const Reply &reply)
{
    return !m_ended && m_stream.write(encoded(reply)).has_value();
}

void InstanceClient::end()
{
    if (std::exchange(m_ended, true))
        return;
    m_timer.stop();
    m_notifier.setEnabled(false);
    deleteLater();
    Q_EMIT ended();
}

InstanceServer::InstanceServer(InstancePlace place,
                               std::chrono::milliseconds clientTimeout,
                               QObject *parent)
    : QObject(parent)
    , m_place(std::move(place))
    , m_clientTimeout(clientTimeout)
    , m_retryDelay(kSettleTime)
{
    listen();
    m_pause.setSingleShot(true);
    m_pause.setInterval(kAcceptRetryDelay);
    connect(&m_pause, &QTimer::timeout, this, [this] { setAccepting(true); });
    m_checkTimer.setSingleShot(true);
    connect(&m_checkTimer, &QTimer::timeout, this, &InstanceServer::checkPlace);
    connect(&m_watcher,
            &QFileSystemWatcher::directoryChanged,
            this,
            &InstanceServer::schedulePlaceCheck);
    m_checkTimer.start(kFirstCheckDelay);
}

InstanceServer::~InstanceServer()
{
    leave();
}

void InstanceServer::leave()
{
    if (!m_place)
        return;
    m_notifier.reset();
    m_checkTimer.stop();
    InstancePlace::leave(*std::exchange(m_place, std::nullopt));
    for (InstanceClient *client : std::exchange(m_arriving, {}))
        delete client;
}

void InstanceServer::listen()
{
    m_notifier =
        std::make_unique<QSocketNotifier>(m_place->listening().descriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &InstanceServer::acceptAll);
}

void InstanceServer::watch()
{
    // Watch anew: the folder of that name may be another one by now.
    const QString folder = m_place->address().folder();
    m_watcher.removePath(folder);
    m_watcher.addPath(folder);
}

void InstanceServer::schedulePlaceCheck()
{
    if (m_place &&
        (!m_checkTimer.isActive() || m_checkTimer.remainingTimeAsDuration() > kSettleTime))
        m_checkTimer.start(kSettleTime);
}

void InstanceServer::checkPlace()
{
    if (m_watcher.directories().isEmpty())
        watch(); // Watch before the check, so that no change in between is missed.
    if (!m_place->stands())
        renewPlace();
    if (m_place->stands()) {
        m_retryDelay = kSettleTime;
        return;
    }
    m_checkTimer.start(m_retryDelay);
    m_retryDelay = std::min(2 * m_retryDelay, kMaxRetryDelay);
}

void InstanceServer::renewPlace()
{
    acceptAll(); // Accept pending connections first: closing the old socket would end them.
    m_notifier.reset();
    static_cast<void>(m_place->renew());
    listen();
    watch();
}

void InstanceServer::acceptAll()
{
    using Error = LocalSocket::Error;
    while (m_arriving.size() < kMaxArriving) {
        auto stream = m_place->listening().accept();
        if (stream) {
            adopt(*std::move(stream));
        } else if (stream.error() == Error::NoPendingConnection) {
            return;
        } else if (stream.error() == Error::System) {
            m_pause.start();
            break;
        }
    }
    // A pending connection would wake the event loop in each turn.
    setAccepting(false);
}

void InstanceServer::setAccepting(bool accepts)
{
    if (m_notifier)
        m_notifier->setEnabled(accepts);
}

void InstanceServer::adopt(LocalSocket stream)
{
    auto *client = new InstanceClient(std::move(stream), m_clientTimeout, this);
    m_arriving.push_back(client);
    const auto forget = [this, client] {
        m_arriving.erase(std::remove(m_arriving.begin(), m_arriving.end(), client),
                         m_arriving.end());
        setAccepting(true);
    };
    connect(client, &InstanceClient::ended, this, forget);
    connect(client,
            &InstanceClient::requested,
            this,
            [this, client, forget](const OpenRequest &request) {
                forget();
                Q_EMIT requested(client, request);
            });
}

} // namespace penwick
