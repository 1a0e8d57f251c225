#pragma once

#include "macro/script/HostContract.h"
#include "macro/script/ScriptWire.h"
#include "macro/script/SharedTexts.h"

#include <optional>

namespace penwick {

/// The host's end of its connection to the editor. Calls block.
class HostChannel final
{
public:
    /// \param descriptor a connected stream socket; not owned.
    /// \param sharedDescriptor see `SharedTexts`; not owned.
    explicit HostChannel(int sharedDescriptor, int descriptor = kHostConnection);
    HostChannel(const HostChannel &) = delete;
    HostChannel &operator=(const HostChannel &) = delete;
    ~HostChannel() = default;

    /// Whether the descriptor is a connection at all: it is none when a person starts the host.
    [[nodiscard]] bool isConnected() const;

    /// Nothing when the editor goes away, or says what no editor says, before the request is here.
    [[nodiscard]] std::optional<ScriptRequest> receiveRequest() const;

    /// To say how the script ended; must not outlive this.
    [[nodiscard]] OutcomeSender outcomeSender() { return OutcomeSender(m_sink, &m_shared); }

    /// Where the `send` functions of ScriptWire.h put what they have to say.
    [[nodiscard]] const ByteSink &sink() const { return m_sink; }

private:
    [[nodiscard]] bool send(QByteArrayView bytes) const;

    int m_descriptor;
    SharedTexts m_shared;
    ByteSink m_sink;
};

} // namespace penwick
