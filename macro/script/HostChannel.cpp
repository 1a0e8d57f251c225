#include "macro/script/HostChannel.h"

#include "macro/script/HostContract.h"
#include "platform/files/FileDescriptor.h"

#include <sys/socket.h>
#include <utility>

namespace penwick {

HostChannel::HostChannel(int sharedDescriptor)
    : m_shared(sharedDescriptor, SharedTexts::Side::Host)
    , m_sink([this](QByteArrayView bytes) { return send(bytes); })
{
}

bool HostChannel::isConnected() const
{
    int domain = 0;
    socklen_t size = sizeof domain;
    return getsockopt(kHostConnection, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 &&
           domain == AF_UNIX;
}

std::optional<ScriptRequest> HostChannel::receiveRequest()
{
    m_shared.startOver();
    constexpr std::size_t kPortion = std::size_t{1} << 18;
    MessageReader reader(MessageReader::Side::FromEditor);
    QByteArray portion(kPortion, Qt::Uninitialized);
    while (true) {
        auto message = reader.next();
        if (!message)
            return std::nullopt;
        if (*message) {
            auto request = decodeRequest((*message)->payload, &m_shared);
            return request ? std::optional(std::move(*request)) : std::nullopt;
        }
        const ssize_t size =
            uninterrupted([&] { return ::read(kHostConnection, portion.data(), kPortion); });
        if (size <= 0)
            return std::nullopt;
        reader.append(QByteArrayView(portion).first(size));
    }
}

void HostChannel::waitForEnd()
{
    char unused = 0;
    while (uninterrupted([&] { return ::read(kHostConnection, &unused, 1); }) > 0) {
    }
}

// Uses `write`, which the system call filter allows. When the editor has closed its end, SIGPIPE
// ends the process, which is intended.
bool HostChannel::send(QByteArrayView bytes) const
{
    while (!bytes.isEmpty()) {
        const ssize_t size = uninterrupted([&] {
            return ::write(kHostConnection, bytes.data(), static_cast<std::size_t>(bytes.size()));
        });
        if (size <= 0)
            return false;
        bytes = bytes.sliced(size);
    }
    return true;
}

} // namespace penwick
