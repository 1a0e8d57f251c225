#pragma once

#include "macro/script/ScriptWire.h"
#include "macro/script/SystemCallFilter.h"

namespace penwick {

/// Prepares the process for the sandbox. Call this first, while the process has one thread. From
/// then on the process
/// - is killed when the thread that started it ends,
/// - is the first that the system kills when the machine runs out of memory,
/// - leaves no core file,
/// - exits with `kOutOfMemoryStatus` when it crashes for lack of memory,
/// - can report the system calls that the sandbox will deny,
/// - has no privileges and cannot gain any,
/// - opens no connection to the outside: the calls that `refuseKilledCalls` names fail with EACCES.
/// \param deniedCalls the descriptor for `installDeniedCallHandler`; not owned.
void prepareHostProcess(int deniedCalls);

/// Confines the process permanently: it keeps the descriptors that are open and may compute,
/// nothing else. SystemCallTable.cpp lists what a script may still do, and why. Call this when the
/// script engine has initialized. The file access rules do not apply to other threads that exist by
/// then; the limits and the system call filter do.
/// \param memory how many bytes of address space the process may take in addition to what it has.
/// \return the protections in force; those that this system does not offer are false.
[[nodiscard]] HostProtection confineProcess(std::size_t memory, RefusedCalls refused);

} // namespace penwick
