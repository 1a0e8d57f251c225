#include "app/InstancePlace.h"

#include "platform/files/FileLock.h"
#include "platform/files/FileSystem.h"
#include "platform/files/RuntimeFolder.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>

#include <chrono>
#include <optional>
#include <thread>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Returns a key that is the same for all programs on one display.
QByteArray displayKey(const QByteArray &platform, const QByteArray &askedDisplay)
{
    QByteArray display = askedDisplay.isEmpty() ? qgetenv("DISPLAY") : askedDisplay;
    // ":0.1" is another screen of the display ":0".
    const qsizetype colon = display.lastIndexOf(':');
    const qsizetype dot = display.indexOf('.', colon + 1);
    if (colon >= 0 && dot >= 0)
        display.truncate(dot);
    QByteArray system = (platform.isEmpty() ? qgetenv("QT_QPA_PLATFORM") : platform);
    system.truncate(
        std::max<qsizetype>(0, system.indexOf(':') < 0 ? system.size() : system.indexOf(':')));
    // Windows of both of these platforms appear on the display. Other platforms (such as offscreen)
    // show nothing there, so they get keys of their own.
    if (system == "xcb" || system.startsWith("wayland"))
        system.clear();
    return display + '\0' + qgetenv("WAYLAND_DISPLAY") + '\0' + system + '\0' +
           qgetenv("XDG_RUNTIME_DIR");
}

/// True when the open file is still the one at `path`.
bool isFileAt(const QString &path, const FileDescriptor &file)
{
    const auto open = FileVersion::of(file.get());
    const auto present = FileVersion::ofEntry(path);
    return open && present && open->isOfSameFileAs(*present);
}

/// Takes the lock if it is free.
tl::expected<FileDescriptor, FileError> takeLock(const QString &path)
{
    auto file = openLockFile(path);
    if (!file)
        return file;
    if (const auto locked = lockExclusively(*file); !locked)
        return tl::unexpected(locked.error());
    // A lock on a deleted file protects nothing: the next process would create another file.
    if (!isFileAt(path, *file))
        return tl::unexpected(FileError{FileError::Kind::Changed});
    return file;
}

/// Connects to the running process or takes the free place. No value in a transient state, in which
/// the caller retries.
std::optional<tl::expected<Arrival, ArrivalError>> tryToArrive(const InstanceAddress &address)
{
    auto stream = LocalSocket::connectTo(address.socket);
    if (stream)
        return Arrival(*std::move(stream));
    if (stream.error() == LocalSocket::Error::OtherUser)
        return tl::unexpected(ArrivalError::Forbidden);
    if (stream.error() == LocalSocket::Error::Busy)
        return std::nullopt;
    auto lock = takeLock(address.lock);
    if (!lock) {
        // Another process is about to listen or about to end.
        if (lock.error().kind == FileError::Kind::Locked ||
            lock.error().kind == FileError::Kind::Changed)
            return std::nullopt;
        return tl::unexpected(ArrivalError::Unusable);
    }
    auto listening = LocalSocket::listenAt(address.socket);
    if (!listening)
        return tl::unexpected(ArrivalError::Unusable);
    return Arrival(InstancePlace(address, *std::move(lock), *std::move(listening)));
}

} // namespace

tl::expected<InstanceAddress, FileError> InstanceAddress::ofThisDisplay(const QByteArray &platform,
                                                                        const QByteArray &display)
{
    return privateRuntimeFolder().map([&](const QString &folder) {
        constexpr qsizetype kDigits = 16; // The path of a socket must be short.
        const QByteArray hash =
            QCryptographicHash::hash(displayKey(platform, display), QCryptographicHash::Sha256)
                .toHex();
        const QString name = folder + u"/penwick-"_s + QString::fromLatin1(hash.first(kDigits));
        return InstanceAddress{name + u".sock"_s, name + u".lock"_s};
    });
}

QString InstanceAddress::folder() const
{
    return socket.left(socket.lastIndexOf(u'/'));
}

InstancePlace::InstancePlace(InstanceAddress address, FileDescriptor lock, LocalSocket listening)
    : m_address(std::move(address))
    , m_lock(std::move(lock))
    , m_listening(std::move(listening))
    , m_socket(FileVersion::ofEntry(m_address.socket))
{
}

bool InstancePlace::holdsLock() const
{
    return isFileAt(m_address.lock, m_lock);
}

bool InstancePlace::ownsSocket() const
{
    return m_socket && FileVersion::ofEntry(m_address.socket) == m_socket;
}

bool InstancePlace::stands() const
{
    return holdsLock() && ownsSocket();
}

bool InstancePlace::renew()
{
    if (!ensurePrivateFolder(m_address.folder()))
        return false;
    // Take the lock first: only its holder may listen.
    if (!holdsLock()) {
        auto lock = takeLock(m_address.lock);
        if (!lock)
            return false;
        m_lock = *std::move(lock);
    }
    if (!ownsSocket()) {
        auto listening = LocalSocket::listenAt(m_address.socket);
        if (!listening)
            return false;
        m_listening = *std::move(listening);
        m_socket = FileVersion::ofEntry(m_address.socket);
    }
    return true;
}

void InstancePlace::leave(InstancePlace place)
{
    // Remove the socket while the lock is held: no other process can have replaced it.
    if (place.stands())
        static_cast<void>(removeFile(place.m_address.socket));
}

tl::expected<Arrival, ArrivalError> arriveAt(const InstanceAddress &address,
                                             const QDeadlineTimer &deadline)
{
    constexpr auto kRetryInterval = 5ms;
    while (true) {
        if (auto met = tryToArrive(address))
            return *std::move(met);
        if (deadline.hasExpired())
            return tl::unexpected(ArrivalError::NoAnswer);
        std::this_thread::sleep_for(kRetryInterval);
    }
}

} // namespace penwick
