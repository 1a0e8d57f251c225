#include "app/HandOver.h"

#include <QDeadlineTimer>

namespace penwick {

namespace {

using ErrorKind = HandOverError::Kind;

/// Writes all bytes. Fails as stalled when the other side accepts none within the timeout.
class Writer final
{
public:
    Writer(const LocalSocket &stream, std::chrono::milliseconds timeout)
        : m_stream(stream)
        , m_timeout(timeout)
    {
    }

    bool write(QByteArrayView bytes)
    {
        while (!bytes.isEmpty()) {
            const auto count = m_stream.write(bytes);
            if (!count)
                return false;
            bytes = bytes.sliced(*count);
            if (*count == 0 && !m_stream.waitForWriting(QDeadlineTimer(m_timeout))) {
                m_stalled = true;
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] bool hasStalled() const { return m_stalled; }

private:
    const LocalSocket &m_stream;
    std::chrono::milliseconds m_timeout;
    bool m_stalled = false;
};

/// Reads replies one by one.
class ReplyStream final
{
public:
    explicit ReplyStream(const LocalSocket &stream)
        : m_stream(stream)
    {
    }

    /// Returns the next reply.
    /// \param ended the error when the connection closes without a reply.
    tl::expected<Reply, HandOverError> next(const QDeadlineTimer &deadline, ErrorKind ended)
    {
        while (true) {
            const auto reply = m_replies.next();
            if (!reply)
                return tl::unexpected(HandOverError{ErrorKind::Refused, reply.error()});
            if (const std::optional<Reply> &answer = *reply)
                return *answer;
            if (!m_stream.waitForReading(deadline))
                return tl::unexpected(HandOverError{ErrorKind::NoAnswer});
            char bytes[256];
            const auto count = m_stream.read(bytes, sizeof bytes);
            if (!count)
                return tl::unexpected(HandOverError{ended});
            m_replies.append(QByteArrayView(bytes, *count));
        }
    }

private:
    const LocalSocket &m_stream;
    ReplyReader m_replies;
};

} // namespace

tl::expected<void, HandOverError>
handOver(const OpenRequest &request, const LocalSocket &stream, std::chrono::milliseconds timeout)
{
    Writer writer(stream, timeout);
    // After a failed write, read the reply: the other side may have said why it refuses.
    if (!sendRequest(request, [&writer](QByteArrayView bytes) { return writer.write(bytes); }) &&
        writer.hasStalled())
        return tl::unexpected(HandOverError{ErrorKind::NoAnswer});
    ReplyStream replies(stream);
    const auto answer = replies.next(QDeadlineTimer(timeout), ErrorKind::NotTaken);
    if (!answer)
        return tl::unexpected(answer.error());
    if (answer->kind == Reply::Kind::Refused)
        return tl::unexpected(HandOverError{ErrorKind::Refused, answer->refusal});
    if (!request.wait) {
        const auto opened = replies.next(QDeadlineTimer(timeout), ErrorKind::Abandoned);
        if (opened && opened->kind == Reply::Kind::Opened && !opened->openedAll)
            return tl::unexpected(HandOverError{ErrorKind::NotAllOpened});
        return {};
    }
    const auto last = replies.next(QDeadlineTimer(QDeadlineTimer::Forever), ErrorKind::Abandoned);
    if (!last)
        return tl::unexpected(last.error());
    if (last->kind != Reply::Kind::Closed)
        return tl::unexpected(HandOverError{ErrorKind::Refused, Refusal::Malformed});
    if (!last->openedAll)
        return tl::unexpected(HandOverError{ErrorKind::NotAllOpened});
    return {};
}

} // namespace penwick
