#pragma once

#include "macro/script/ScriptWire.h"
#include "macro/script/SharedTexts.h"

#include <optional>

namespace penwick {

/// The host's end of its connection to the editor, `kHostConnection`. Calls block.
class HostChannel final
{
public:
    /// \param sharedDescriptor see `SharedTexts`; not owned.
    explicit HostChannel(int sharedDescriptor);
    HostChannel(const HostChannel &) = delete;
    HostChannel &operator=(const HostChannel &) = delete;
    ~HostChannel() = default;

    /// True when the connection is a Unix socket. It is none when a user starts the host directly.
    [[nodiscard]] bool isConnected() const;

    /// Waits for the next request. Returns nothing when the editor closes the connection first or
    /// sends malformed data. An earlier request must no longer be used: its texts are released.
    [[nodiscard]] std::optional<ScriptRequest> receiveRequest();

    /// Waits until the editor closes the connection. What it sends until then is dropped.
    static void waitForEnd();

    /// Returns a sender for the script's outcome. This must outlive the sender.
    [[nodiscard]] OutcomeSender outcomeSender() { return OutcomeSender(m_sink, &m_shared); }

    /// The sink for the `send` functions of ScriptWire.h.
    [[nodiscard]] const ByteSink &sink() const { return m_sink; }

private:
    [[nodiscard]] bool send(QByteArrayView bytes) const;

    SharedTexts m_shared;
    ByteSink m_sink;
};

} // namespace penwick
