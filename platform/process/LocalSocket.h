#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <tl/expected.hpp>

class QDeadlineTimer;

namespace penwick {

/// One end of a byte stream between two processes of the same user on this machine, or a socket
/// that listens for such streams. No call waits unless its description says so, and programs
/// started later do not inherit the descriptor. Not usable after it was moved from.
class LocalSocket final
{
public:
    enum class Error {
        NoPendingConnection, ///< No further connection is waiting.
        NotListening,        ///< No socket exists at the path, or its process is gone.
        Busy,                ///< The server's queue of waiting connections is full.
        PathTooLong, ///< The path is empty, holds a NUL or is longer than about a hundred bytes.
        OtherUser,   ///< The other process belongs to another user, or its user is unknown.
        Closed,      ///< The other end closed the connection.
        System,      ///< Any other error.
    };

    /// Listens at `path`, replacing whatever exists there. Call this only when no other process
    /// listens there.
    [[nodiscard]] static tl::expected<LocalSocket, Error> listenAt(const QString &path);
    [[nodiscard]] static tl::expected<LocalSocket, Error> connectTo(const QString &path);

    /// Accepts the next waiting connection. Fails with `NoPendingConnection` if there is none.
    /// `OtherUser` and `Closed` concern one connection, which is discarded. `System` occurs when
    /// the process has too many open files; the connection then stays in the queue.
    [[nodiscard]] tl::expected<LocalSocket, Error> accept() const;

    /// Reads at most `size` bytes that have arrived. Returns their number; 0 if none have arrived
    /// yet.
    [[nodiscard]] tl::expected<qsizetype, Error> read(char *data, qsizetype size) const;
    /// Writes the first bytes and returns their number; 0 if the other end must read first.
    [[nodiscard]] tl::expected<qsizetype, Error> write(QByteArrayView bytes) const;

    /// Waits until there is something to read or the other end has closed the connection. False
    /// when the deadline has passed.
    [[nodiscard]] bool waitForReading(const QDeadlineTimer &deadline) const;
    [[nodiscard]] bool waitForWriting(const QDeadlineTimer &deadline) const;

    /// For socket notifiers only.
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
