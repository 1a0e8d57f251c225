#pragma once

#include "platform/FileDescriptor.h"
#include "platform/FileError.h"
#include "platform/LocalSocket.h"

#include <QByteArray>
#include <QString>

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

    bool operator==(const InstanceAddress &) const = default;
};

/// The place of the one running process: a socket that it listens at, and a lock that says so until
/// the process ends, in whatever way. Not usable once moved from.
class InstancePlace final
{
public:
    InstancePlace(InstanceAddress address, FileDescriptor lock, LocalSocket listening)
        : m_address(std::move(address))
        , m_lock(std::move(lock))
        , m_listening(std::move(listening))
    {
    }

    [[nodiscard]] const InstanceAddress &address() const { return m_address; }

    [[nodiscard]] const LocalSocket &listening() const { return m_listening; }

    /// Gives the place up for the next process. Whoever has been waiting at the socket meets its
    /// end. Destroying the object instead, as one that has forked does, leaves the place to the
    /// other process.
    static void leave(InstancePlace place);

private:
    InstanceAddress m_address;
    FileDescriptor m_lock;
    LocalSocket m_listening;
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
