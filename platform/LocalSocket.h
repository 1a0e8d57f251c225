#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <tl/expected.hpp>

class QDeadlineTimer;

namespace penwick {

/// One end of a stream of bytes between two processes of the same user on this machine, or the
/// place where such streams begin. No call waits unless it says so, and programs that are started
/// do not get the descriptor. Not usable once moved from.
class LocalSocket final
{
public:
    enum class Error {
        NobodyWaits,   ///< Nobody else has come.
        NobodyListens, ///< Nothing stands there, or what a process that is gone left behind.
        Busy,          ///< Somebody listens, but too many wait to be heard.
        PathTooLong,   ///< The system allows about a hundred bytes.
        Stranger,      ///< The process at the other end belongs to another user.
        Closed,        ///< The other end is gone.
        System,        ///< Anything else.
    };

    /// Takes the place at `path`, over whatever stood there: only for whoever knows that nobody
    /// else listens there.
    [[nodiscard]] static tl::expected<LocalSocket, Error> listenAt(const QString &path);
    [[nodiscard]] static tl::expected<LocalSocket, Error> connectTo(const QString &path);

    /// The next stream that waits at this place. Fails with `NobodyWaits` once there is none;
    /// `Stranger` and `Closed` are about one that did, and is gone. After `System`, which comes
    /// where the process has too many files open, whoever waits goes on waiting.
    [[nodiscard]] tl::expected<LocalSocket, Error> accept() const;

    /// Bytes that have come, at most `size`; 0 where none have yet.
    [[nodiscard]] tl::expected<qsizetype, Error> read(char *data, qsizetype size) const;
    /// How many bytes were taken, from the first; 0 where the other end has to read first.
    [[nodiscard]] tl::expected<qsizetype, Error> write(QByteArrayView bytes) const;

    /// Waits until there is something to read, the end included. False once the time is over.
    [[nodiscard]] bool waitForReading(const QDeadlineTimer &deadline) const;
    [[nodiscard]] bool waitForWriting(const QDeadlineTimer &deadline) const;

    /// For notifiers only.
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }

private:
    explicit LocalSocket(FileDescriptor descriptor)
        : m_descriptor(std::move(descriptor))
    {
    }

    [[nodiscard]] bool wait(short events, const QDeadlineTimer &deadline) const;

    FileDescriptor m_descriptor;
};

} // namespace penwick
