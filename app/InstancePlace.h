#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"
#include "platform/FileVersion.h"
#include "platform/LocalSocket.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <tl/expected.hpp>
#include <variant>

class QDeadlineTimer;

namespace penwick {

/// Where the running process of one user on one display is met.
struct InstanceAddress
{
    QString socket; ///< Absolute paths.
    QString lock;

    /// \param platform the window system asked for on the command line; may be empty.
    /// \param display the same for the display.
    [[nodiscard]] static tl::expected<InstanceAddress, FileError>
    ofThisDisplay(const QByteArray &platform, const QByteArray &display = {});

    /// The folder of both.
    [[nodiscard]] QString folder() const;

    bool operator==(const InstanceAddress &) const = default;
};

/// The place of the one running process: a socket that it listens at, and a lock that says so until
/// the process ends, in whatever way. Not usable once moved from.
///
/// Programs that clean up may take away both files. The place is that of whoever holds the lock on
/// the file that stands there now: one that has lost it gives way, and one that still has it may
/// take the socket's place over whatever stands there.
class InstancePlace final
{
public:
    /// \param listening at the address's socket; only this process listens there.
    InstancePlace(InstanceAddress address, FileDescriptor lock, LocalSocket listening);

    [[nodiscard]] const InstanceAddress &address() const { return m_address; }

    [[nodiscard]] const LocalSocket &listening() const { return m_listening; }

    /// Whether whoever arrives meets this process: its own lock and its own socket stand there.
    [[nodiscard]] bool stands() const;

    /// Puts up again what was taken away; the folder, too. `listening` may be another afterwards.
    /// \return false where another process has the place by now, or the system fails. As long as
    ///         nothing stands in the way, it may be tried again.
    [[nodiscard]] bool renew();

    /// Gives the place up for the next process. Whoever has been waiting at the socket meets its
    /// end. Destroying the object instead, as one that has forked does, leaves the place to the
    /// other process.
    static void leave(InstancePlace place);

private:
    [[nodiscard]] bool holdsLock() const;
    [[nodiscard]] bool ownsSocket() const;

    InstanceAddress m_address;
    FileDescriptor m_lock;
    LocalSocket m_listening;
    std::optional<FileVersion> m_socket; // What this process put there.
};

/// What somebody meets who arrives at an address: the free place, which is theirs from then on, or
/// the process that has it.
using Arrival = std::variant<InstancePlace, LocalSocket>;

enum class ArrivalError {
    Unusable,  ///< The place cannot be taken by anybody.
    NoAnswer,  ///< Some process has it but did not listen in time.
    Forbidden, ///< What listens there belongs to somebody else.
};

/// Of processes that arrive at the same moment exactly one gets the place.
[[nodiscard]] tl::expected<Arrival, ArrivalError> arriveAt(const InstanceAddress &address,
                                                           const QDeadlineTimer &deadline);

} // namespace penwick
