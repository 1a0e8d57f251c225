#include "app/InstancePlace.h"

#include "platform/FileLock.h"
#include "platform/FileSystem.h"
#include "platform/RuntimeFolder.h"

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

/// Names a display as all its programs see it.
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
    // On a display both of these are at home. The others show nothing there, so whoever asks on the
    // display must not be sent to them.
    if (system == "xcb" || system.startsWith("wayland"))
        system.clear();
    return display + '\0' + qgetenv("WAYLAND_DISPLAY") + '\0' + system + '\0' +
           qgetenv("XDG_RUNTIME_DIR");
}

/// The lock, when it was free.
tl::expected<FileDescriptor, FileError> takeLock(const QString &path)
{
    auto file = openLockFile(path);
    if (!file)
        return file;
    if (const auto locked = lockExclusively(*file); !locked)
        return tl::unexpected(locked.error());
    return file;
}

/// What there is to be met right now; nothing for something in between.
std::optional<tl::expected<Arrival, ArrivalError>> look(const InstanceAddress &address)
{
    auto stream = LocalSocket::connectTo(address.socket);
    if (stream)
        return Arrival(*std::move(stream));
    if (stream.error() == LocalSocket::Error::Stranger)
        return tl::unexpected(ArrivalError::Forbidden);
    if (stream.error() == LocalSocket::Error::Busy)
        return std::nullopt;
    auto lock = takeLock(address.lock);
    if (!lock) {
        // Somebody else is about to listen, or about to end.
        if (lock.error().kind == FileError::Kind::Locked)
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
        constexpr qsizetype kDigits = 16; // A socket's path has to be short.
        const QByteArray hash =
            QCryptographicHash::hash(displayKey(platform, display), QCryptographicHash::Sha256)
                .toHex();
        const QString name = folder + u"/penwick-"_s + QString::fromLatin1(hash.first(kDigits));
        return InstanceAddress{name + u".sock"_s, name + u".lock"_s};
    });
}

void InstancePlace::leave(InstancePlace place)
{
    // While the lock is held, so that it is nobody else's.
    static_cast<void>(removeFile(place.m_address.socket));
}

tl::expected<Arrival, ArrivalError> arriveAt(const InstanceAddress &address,
                                             const QDeadlineTimer &deadline)
{
    constexpr auto kPause = 5ms;
    while (true) {
        if (auto met = look(address))
            return *std::move(met);
        if (deadline.hasExpired())
            return tl::unexpected(ArrivalError::NoAnswer);
        std::this_thread::sleep_for(kPause);
    }
}

} // namespace penwick
