#include "platform/process/LocalSocket.h"

#include "platform/files/FileSystem.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace penwick {

namespace {

using Error = LocalSocket::Error;

#ifdef MSG_NOSIGNAL
constexpr int kNoSignal = MSG_NOSIGNAL;
#else
constexpr int kNoSignal = 0; // SO_NOSIGPIPE is set instead.
#endif

std::optional<sockaddr_un> addressOf(const QString &path)
{
    const auto name = systemPath(path);
    sockaddr_un address{};
    if (!name || static_cast<std::size_t>(name->size()) >= sizeof address.sun_path)
        return std::nullopt;
    address.sun_family = AF_UNIX;
    std::memcpy(&address.sun_path, name->constData(), static_cast<std::size_t>(name->size()));
    return address;
}

const sockaddr *generic(const sockaddr_un &address)
{
    return reinterpret_cast<const sockaddr *>(&address);
}

#ifdef SOCK_CLOEXEC
// Set atomically when the socket is created, since another thread may be starting a program.
constexpr int kFlags = SOCK_CLOEXEC;
#else
constexpr int kFlags = 0;
#endif

int acceptOne(int listening)
{
#ifdef SOCK_CLOEXEC
    return ::accept4(listening, nullptr, nullptr, kFlags);
#else
    return ::accept(listening, nullptr, nullptr);
#endif
}

bool setUp(const FileDescriptor &socket)
{
    const int flags = ::fcntl(socket.get(), F_GETFL);
    bool good = flags >= 0 && ::fcntl(socket.get(), F_SETFL, flags | O_NONBLOCK) == 0 &&
                ::fcntl(socket.get(), F_SETFD, FD_CLOEXEC) == 0;
#ifdef SO_NOSIGPIPE
    const int on = 1;
    good = good && ::setsockopt(socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on) == 0;
#endif
    return good;
}

tl::expected<FileDescriptor, Error> makeSocket()
{
    FileDescriptor made(::socket(AF_UNIX, SOCK_STREAM | kFlags, 0));
    if (!made.isOpen() || !setUp(made))
        return tl::unexpected(Error::System);
    return made;
}

/// Makes the socket accessible to its owner only. The folder already excludes other users; this
/// still holds if its permissions are relaxed later.
bool makePrivate(const char *path)
{
    constexpr mode_t kOwn = S_IRUSR | S_IWUSR;
    // The sticky bit keeps cleaners of runtime folders from removing the socket; not every system
    // allows it.
    return ::chmod(path, kOwn | S_ISVTX) == 0 || ::chmod(path, kOwn) == 0;
}

/// The user id of the process at the other end; std::nullopt if the system does not report it.
std::optional<uid_t> peerOf(const FileDescriptor &socket)
{
#ifdef SO_PEERCRED
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0)
        return credentials.uid;
#else
    uid_t user = 0;
    gid_t group = 0;
    if (::getpeereid(socket.get(), &user, &group) == 0)
        return user;
#endif
    return std::nullopt;
}

Error errorOfConnecting(int errnoValue)
{
    switch (errnoValue) {
    case ENOENT:
    case ECONNREFUSED:
        return Error::NotListening;
    case EAGAIN:
        return Error::Busy;
    default:
        return Error::System;
    }
}

Error errorOfAccepting(int errnoValue)
{
    if (errnoValue == EAGAIN || errnoValue == EWOULDBLOCK)
        return Error::NoPendingConnection;
    return errnoValue == ECONNABORTED ? Error::Closed : Error::System;
}

tl::expected<qsizetype, Error> transferred(ssize_t count)
{
    if (count >= 0)
        return count;
    if (errno == EAGAIN || errno == EWOULDBLOCK)
        return 0;
    return tl::unexpected(errno == EPIPE || errno == ECONNRESET ? Error::Closed : Error::System);
}

} // namespace

tl::expected<LocalSocket, Error> LocalSocket::listenAt(const QString &path)
{
    const auto address = addressOf(path);
    if (!address)
        return tl::unexpected(Error::PathTooLong);
    auto made = makeSocket();
    if (!made)
        return tl::unexpected(made.error());
    ::unlink(address->sun_path);
    constexpr int kBacklog = 128;
    const bool isUp = ::bind(made->get(), generic(*address), sizeof *address) == 0 &&
                      makePrivate(address->sun_path) && ::listen(made->get(), kBacklog) == 0;
    if (!isUp)
        return tl::unexpected(Error::System);
    return LocalSocket(*std::move(made));
}

tl::expected<LocalSocket, Error> LocalSocket::connectTo(const QString &path)
{
    const auto address = addressOf(path);
    if (!address)
        return tl::unexpected(Error::PathTooLong);
    auto made = makeSocket();
    if (!made)
        return tl::unexpected(made.error());
    const int connected =
        uninterrupted([&] { return ::connect(made->get(), generic(*address), sizeof *address); });
    if (connected != 0)
        return tl::unexpected(errorOfConnecting(errno));
    if (peerOf(*made) != ::geteuid())
        return tl::unexpected(Error::OtherUser);
    return LocalSocket(*std::move(made));
}

tl::expected<LocalSocket, Error> LocalSocket::accept() const
{
    FileDescriptor stream(uninterrupted([&] { return acceptOne(m_descriptor.get()); }));
    if (!stream.isOpen())
        return tl::unexpected(errorOfAccepting(errno));
    if (!setUp(stream))
        return tl::unexpected(Error::System);
    if (peerOf(stream) != ::geteuid())
        return tl::unexpected(Error::OtherUser);
    return LocalSocket(std::move(stream));
}

tl::expected<qsizetype, Error> LocalSocket::read(char *data, qsizetype size) const
{
    const auto count = uninterrupted(
        [&] { return ::recv(m_descriptor.get(), data, static_cast<std::size_t>(size), 0); });
    if (count == 0 && size > 0)
        return tl::unexpected(Error::Closed);
    return transferred(count);
}

tl::expected<qsizetype, Error> LocalSocket::write(QByteArrayView bytes) const
{
    return transferred(uninterrupted([&] {
        return ::send(
            m_descriptor.get(), bytes.data(), static_cast<std::size_t>(bytes.size()), kNoSignal);
    }));
}

bool LocalSocket::waitForReading(const QDeadlineTimer &deadline) const
{
    return wait(POLLIN, deadline);
}

bool LocalSocket::waitForWriting(const QDeadlineTimer &deadline) const
{
    return wait(POLLOUT, deadline);
}

bool LocalSocket::wait(short events, const QDeadlineTimer &deadline) const
{
    while (true) {
        constexpr qint64 kLongest = std::numeric_limits<int>::max();
        const auto time = static_cast<int>(std::min(deadline.remainingTime(), kLongest));
        ::pollfd polled{m_descriptor.get(), events, 0};
        const int count = ::poll(&polled, 1, time);
        if (count > 0)
            return true;
        if (count == 0 && deadline.hasExpired())
            return false;
        if (count < 0 && errno != EINTR)
            return true; // The next read or write reports the error.
    }
}

} // namespace penwick
