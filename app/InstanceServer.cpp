#include "app/InstanceServer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace penwick {

namespace {

// Decoding this much takes less than a millisecond, so the person at the keyboard feels nothing.
constexpr std::size_t kPiece = std::size_t{1} << 18;

// More at the same moment than anybody starts; each holds little until its bytes have come.
constexpr std::size_t kMaxArriving = 256;

// While no file can be opened; less than anybody who waits would give up after.
constexpr std::chrono::milliseconds kPause{200};

// Whoever cleans up takes one file after the other, and a start waits for longer than this.
constexpr std::chrono::milliseconds kSettling{100};
// A process that has just started has other things to do, and whoever arrives waits for longer.
constexpr std::chrono::milliseconds kFirstLook{1'000};
// Between tries to get the place back. There is no hurry: another process has it.
constexpr std::chrono::milliseconds kLongestWait{60'000};

} // namespace

InstanceClient::InstanceClient(LocalSocket stream,
                               std::chrono::milliseconds patience,
                               QObject *parent)
    : QObject(parent)
    , m_stream(std::move(stream))
    , m_notifier(m_stream.descriptor(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &InstanceClient::readSome);
    m_timer.setSingleShot(true);
    m_timer.setInterval(patience);
    connect(&m_timer, &QTimer::timeout, this, &InstanceClient::end);
    m_timer.start();
}

void InstanceClient::readSome()
{
    static thread_local std::array<char, kPiece> bytes;
    const auto count = m_stream.read(bytes.data(), bytes.size());
    if (!count) {
        end();
        return;
    }
    if (m_complete || *count == 0) {
        // Nothing is left to be said, so what comes is not listened to.
        return;
    }
    m_timer.start();
    takeIn(QByteArrayView(bytes.data(), *count));
}

void InstanceClient::takeIn(QByteArrayView bytes)
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

bool InstanceClient::taken()
{
    const bool isHeard = answer({.kind = Reply::Kind::Taken});
    if (!m_waits)
        end();
    return isHeard;
}

void InstanceClient::closed(bool openedAll)
{
    answer({.kind = Reply::Kind::Closed, .openedAll = openedAll});
    end();
}

// A few bytes in all, so there is always room for them, unless the other side is gone.
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
                               std::chrono::milliseconds patience,
                               QObject *parent)
    : QObject(parent)
    , m_place(std::move(place))
    , m_patience(patience)
    , m_untilNextLook(kSettling)
{
    listen();
    m_pause.setSingleShot(true);
    m_pause.setInterval(kPause);
    connect(&m_pause, &QTimer::timeout, this, [this] { setAccepting(true); });
    m_lookTimer.setSingleShot(true);
    connect(&m_lookTimer, &QTimer::timeout, this, &InstanceServer::lookAfterPlace);
    connect(&m_watcher,
            &QFileSystemWatcher::directoryChanged,
            this,
            &InstanceServer::lookAfterPlaceSoon);
    m_lookTimer.start(kFirstLook);
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
    m_lookTimer.stop();
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
    // Anew, for the folder of that name may be another one by now.
    const QString folder = m_place->address().folder();
    m_watcher.removePath(folder);
    m_watcher.addPath(folder);
}

void InstanceServer::lookAfterPlaceSoon()
{
    if (m_place && (!m_lookTimer.isActive() || m_lookTimer.remainingTimeAsDuration() > kSettling))
        m_lookTimer.start(kSettling);
}

void InstanceServer::lookAfterPlace()
{
    if (m_watcher.directories().isEmpty())
        watch(); // Before looking, so that nothing happens in between.
    if (!m_place->stands())
        renewPlace();
    if (m_place->stands()) {
        m_untilNextLook = kSettling;
        return;
    }
    m_lookTimer.start(m_untilNextLook);
    m_untilNextLook = std::min(2 * m_untilNextLook, kLongestWait);
}

void InstanceServer::renewPlace()
{
    acceptAll(); // Who came before, for those would meet the end of the socket.
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
        } else if (stream.error() == Error::NobodyWaits) {
            return;
        } else if (stream.error() == Error::System) {
            m_pause.start();
            break;
        }
    }
    // Whoever waits would wake the event loop in each turn.
    setAccepting(false);
}

void InstanceServer::setAccepting(bool accepts)
{
    if (m_notifier)
        m_notifier->setEnabled(accepts);
}

void InstanceServer::adopt(LocalSocket stream)
{
    auto *client = new InstanceClient(std::move(stream), m_patience, this);
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
