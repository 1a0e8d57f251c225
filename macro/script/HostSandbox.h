#pragma once

#include "macro/script/ScriptWire.h"
#include "macro/script/SystemCallFilter.h"

namespace penwick {

/// Makes the process end as soon as the thread that started it does, leave no core file, answer a
/// crash for want of memory with the exit status `kOutOfMemoryStatus`, report the system calls that
/// the sandbox will deny, have no privileges, and open no way out meanwhile. Call it first, while
/// there is one thread.
/// \param deniedCalls the descriptor for `answerDeniedCalls`; not owned.
void prepareHostProcess(int deniedCalls);

/// Shuts the calling process in, for good: it keeps the descriptors that are open and may compute,
/// nothing else. Call it when the script engine is up; threads that it has by then are under the
/// filter alone. What a script may still do, and why, stands in SystemCallTable.cpp.
/// \param memory how many bytes the process may take in addition to those that it has.
/// \return what holds; a wall that this system does not offer is left out.
[[nodiscard]] HostProtection confineProcess(std::size_t memory, RefusedCalls refused);

} // namespace penwick
