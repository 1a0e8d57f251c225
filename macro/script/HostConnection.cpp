#include "macro/script/HostConnection.h"

#include <QDeadlineTimer>

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace penwick {

namespace {

constexpr qsizetype kPortion = qsizetype{1} << 18;

ScriptError::Code resultError(WireError error)
{
    switch (error) {
    case WireError::TooManyValues:
        return ScriptError::Code::ResultTooManyValues;
    case WireError::TooManyBytes:
        return ScriptError::Code::ResultTooLarge;
    case WireError::TooDeep:
        return ScriptError::Code::ResultTooDeep;
    default:
        return ScriptError::Code::HostEnded;
    }
}

} // namespace

void waitForHost(int descriptor, bool forWriting, int milliseconds)
{
    pollfd waited{descriptor, POLLIN, 0};
    if (forWriting)
        waited.events |= POLLOUT;
    poll(&waited, 1, milliseconds);
}

HostConnection::HostConnection(HostProcess process)
    : m_process(std::move(process))
    , m_shared(m_process.sharedDescriptor(), SharedTexts::Side::Editor)
    , m_portion(kPortion, Qt::Uninitialized)
{
}

std::optional<HostProtection> HostConnection::protection(int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!m_protection && !m_broken && m_process.descriptor() >= 0) {
        waitForHost(m_process.descriptor(), false, static_cast<int>(deadline.remainingTime()));
        receive();
        if (deadline.hasExpired())
            break;
    }
    return m_protection;
}

ScriptOutcome
HostConnection::run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter)
{
    m_log = &log;
    m_waiter = waiter;
    m_decoder.emplace(ScriptLimits(), &m_shared);
    m_shared.startOver();
    // A failure to send needs no handling here: the way the host ended gives the reason.
    const auto sink = [this](QByteArrayView bytes) { return send(bytes); };
    static_cast<void>(sendRequest(request, sink, &m_shared));
    request = {}; // It may hold a document of hundreds of megabytes.
    while (!isOver()) {
        wait(false);
        receive();
    }
    m_log = nullptr;
    m_waiter = nullptr;
    m_decoder.reset();
    if (!m_outcome)
        return failure();
    ScriptOutcome outcome = *std::move(m_outcome);
    m_outcome.reset();
    return outcome;
}

HostEnding HostConnection::end()
{
    HostEnding ending = m_process.end();
    if (m_malformed)
        ending.cause = HostEnding::Cause::MalformedData;
    ending.engine = m_engine;
    return ending;
}

ScriptOutcome HostConnection::failure()
{
    ScriptError error{ScriptError::Code::HostEnded, {}};
    error.ending = end();
    if (m_stopped) {
        // The cause is only the SIGKILL sent here; the calls denied before may explain more.
        const QList<DeniedCall> denied = error.ending.deniedCalls;
        error = {ScriptError::Code::Stopped, {}};
        error.ending.deniedCalls = denied;
    } else if (error.ending.cause == HostEnding::Cause::OutOfMemory) {
        error.code = ScriptError::Code::OutOfMemory;
    }
    return tl::unexpected(std::move(error));
}

// Reads while it cannot write: a host that is blocked on writing would never read the rest.
// MSG_NOSIGNAL avoids SIGPIPE when the host is gone, without changing how the whole program handles
// that signal.
bool HostConnection::send(QByteArrayView bytes)
{
    while (!bytes.isEmpty() && !isOver()) {
        const ssize_t sent = uninterrupted([&] {
            return ::send(m_process.descriptor(),
                          bytes.data(),
                          static_cast<std::size_t>(bytes.size()),
                          MSG_NOSIGNAL | MSG_DONTWAIT);
        });
        if (sent >= 0) {
            bytes = bytes.sliced(sent);
        } else if (errno == EAGAIN) {
            wait(true);
            receive();
        } else {
            return false;
        }
    }
    return bytes.isEmpty();
}

void HostConnection::wait(bool forWriting)
{
    if (m_waiter == nullptr)
        waitForHost(m_process.descriptor(), forWriting, -1);
    else if (!m_waiter->wait(m_process.descriptor(), forWriting))
        m_stopped = true;
}

void HostConnection::receive()
{
    if (isOver())
        return;
    const ssize_t size = uninterrupted([this] {
        return ::recv(m_process.descriptor(),
                      m_portion.data(),
                      static_cast<std::size_t>(kPortion),
                      MSG_DONTWAIT);
    });
    if (size > 0) {
        m_reader.append(QByteArrayView(m_portion).first(size));
        takeMessages();
    } else if (size == 0 || errno != EAGAIN) {
        m_broken = true;
    }
}

void HostConnection::takeMessages()
{
    while (!isOver()) {
        const auto message = m_reader.next();
        if (!message)
            m_malformed = true;
        else if (*message)
            take(**message);
        else
            return decodeAhead();
        m_broken = m_broken || m_malformed;
    }
}

// Decodes while the host still converts the rest of its value.
void HostConnection::decodeAhead()
{
    if (m_decoder && m_reader.incomplete() != nullptr)
        m_decoder->decodeAhead(*m_reader.incomplete());
}

// The greeting comes first and once. Every later message belongs to a run.
void HostConnection::take(const Message &message)
{
    if (!m_protection) {
        takeGreeting(message);
    } else if (m_log == nullptr) {
        m_malformed = true;
    } else if (message.kind == MessageKind::Log) {
        const auto line = decodeText(message.payload);
        m_malformed = !line;
        if (line && *m_log)
            (*m_log)(*line);
    } else {
        takeOutcome(message);
    }
}

void HostConnection::takeGreeting(const Message &message)
{
    if (message.kind == MessageKind::Engine && m_engine.isEmpty()) {
        m_engine = decodeText(message.payload).value_or(QString());
        m_malformed = m_engine.isEmpty();
    } else if (const auto protection = decodeReady(message.payload);
               message.kind == MessageKind::Ready && protection) {
        m_protection = *protection;
    } else {
        m_malformed = true;
    }
}

void HostConnection::takeOutcome(const Message &message)
{
    const bool isOutcome =
        message.kind == MessageKind::Value || message.kind == MessageKind::Failure;
    if (!isOutcome) {
        m_malformed = true;
        return;
    }
    auto outcome = m_decoder->decode(message);
    if (outcome)
        m_outcome = std::move(*outcome);
    else if (resultError(outcome.error()) == ScriptError::Code::HostEnded)
        m_malformed = true;
    else
        m_outcome = tl::unexpected(ScriptError{resultError(outcome.error()), {}});
}

} // namespace penwick
