#pragma once

#include <cstdint>

namespace penwick {

// What the editor and the script host agree on besides their messages.

/// The descriptors that a host finds open. Standard input, output and error are /dev/null.
constexpr int kHostConnection = 3;  ///< A connected stream socket.
constexpr int kHostDeniedCalls = 4; ///< Receives each `DeniedCall`; a pipe that never blocks.
constexpr int kHostSharedTexts = 5; ///< See `SharedTexts`; may be missing.
constexpr int kHostFirstUnused = 6; ///< This one and all above are closed.

// The arguments of a host: how many bytes a script may allocate, `kHostSharedTexts` or -1 if that
// is missing, whether refused system calls are reported, and for how many scripts it serves.
constexpr char kHostReports[] = "report";
constexpr char kHostIsSilent[] = "silent";
constexpr char kHostServesOne[] = "one";
constexpr char kHostServesMany[] = "many";

/// The exit status of a host that ran out of memory.
constexpr int kOutOfMemoryStatus = 77;

/// A system call that the sandbox denied, in the form in which the host reports it.
struct DeniedCall
{
    std::int32_t number = 0;
    std::uint8_t isKilled = 0;  ///< 1 if it ended the host, 0 if it failed with an error.
    std::uint8_t isForeign = 0; ///< 1 if `number` is not of this machine's 64-bit table.
    std::uint16_t unused = 0;

    bool operator==(const DeniedCall &) const = default;
};

} // namespace penwick
