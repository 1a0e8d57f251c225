#pragma once

#include <cstdint>

namespace penwick {

// What the editor and the script host that it starts agree on besides their messages.

/// The descriptors that a host finds open. Standard input, output and error lead nowhere.
constexpr int kHostConnection = 3;  ///< A connected stream socket.
constexpr int kHostDeniedCalls = 4; ///< Takes each `DeniedCall`; a pipe that never blocks.
constexpr int kHostSharedTexts = 5; ///< See `SharedTexts`; need not be there.

/// The exit status of a host that had no memory left.
constexpr int kOutOfMemoryStatus = 77;

/// A system call that the sandbox did not let the host make, as the host writes it.
struct DeniedCall
{
    std::int32_t number = 0;
    std::uint8_t isKilled =
        0; ///< 1 where it ended the host, 0 where it was answered with an error.
    std::uint8_t isForeign =
        0; ///< 1 where the number is of another table than this machine's 64-bit one.
    std::uint16_t unused = 0;

    bool operator==(const DeniedCall &) const = default;
};

} // namespace penwick
