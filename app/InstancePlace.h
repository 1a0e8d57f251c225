#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileError.h"
#include "platform/files/FileVersion.h"
#include "platform/process/LocalSocket.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <tl/expected.hpp>
#include <variant>

class QDeadlineTimer;

namespace penwick {

/// The address at which the running process of one user on one display listens.
struct InstanceAddress
{
    QString socket; ///< Absolute path, as is `lock`.
    QString lock;

    /// \param platform the window system given on the command line; may be empty.
    /// \param display the display given on the command line; may be empty.
    [[nodiscard]] static tl::expected<InstanceAddress, FileError>
    ofThisDisplay(const QByteArray &platform, const QByteArray &display = {});

    /// The folder of both files.
    [[nodiscard]] QString folder() const;

    bool operator==(const InstanceAddress &) const = default;
};

/// The place of the one running process: a socket that it listens on, and a lock that it holds
/// until it ends, however it ends. Not usable once moved from.
///
/// Programs that clean up may remove both files. The place belongs to the process that holds the
/// lock on the file now at the lock's path. A process that has lost this lock gives the place up to
/// the new holder. A process that still holds it may listen at the socket's path again, whatever is
/// there.
class InstancePlace final
{
public:
    /// \param listening the socket at the address; only this process listens there.
    InstancePlace(InstanceAddress address, FileDescriptor lock, LocalSocket listening);

    [[nodiscard]] const InstanceAddress &address() const { return m_address; }

    [[nodiscard]] const LocalSocket &listening() const { return m_listening; }

    /// True when connections reach this process: its own lock and its own socket are at the
    /// address.
    [[nodiscard]] bool stands() const;

    /// Restores what was removed, the folder included. `listening` may be another socket
    /// afterwards.
    /// \return false when another process has the place by now, or on a system error. May be called
    ///         again later.
    [[nodiscard]] bool renew();

    /// Gives the place up to the next process. Pending connections to the socket are closed. To
    /// leave the place to another process instead, as a parent does after a fork, destroy the
    /// object.
    static void leave(InstancePlace place);

private:
    [[nodiscard]] bool holdsLock() const;
    [[nodiscard]] bool ownsSocket() const;

    InstanceAddress m_address;
    FileDescriptor m_lock;
    LocalSocket m_listening;
    std::optional<FileVersion> m_socket; // The socket that this process created.
};

/// The result of arriving at an address: the free place, which now belongs to the caller, or a
/// connection to the process that has it.
using Arrival = std::variant<InstancePlace, LocalSocket>;

enum class ArrivalError {
    Unusable,  ///< No process can take the place.
    NoAnswer,  ///< A process has it but did not listen in time.
    Forbidden, ///< The process that listens there belongs to another user.
};

/// Takes the place or connects to its process. Of several processes that arrive at once exactly one
/// gets the place.
[[nodiscard]] tl::expected<Arrival, ArrivalError> arriveAt(const InstanceAddress &address,
                                                           const QDeadlineTimer &deadline);

} // namespace penwick
