#pragma once

#include <cstdint>

namespace penwick {

/// Who answers the calls that the sandbox refuses.
enum class RefusedCalls : std::uint8_t {
    Silent,   ///< The kernel, without a report.
    Reported, ///< The handler of `installDeniedCallHandler`, with a report; see there for its
              ///< limits.
};

/// From now on, the calls that `filterSystemCalls` will kill regardless of their arguments fail
/// with EACCES. Call this before the script engine initializes, while the process has one thread: a
/// connection that the engine opens, for example to a desktop service, would stay open.
/// PR_SET_NO_NEW_PRIVS must be set.
/// \return false when the system has no such filter; nothing is changed then.
bool refuseKilledCalls();

/// From now on, the decisions of SystemCallTable.h hold for all threads of the process. Killed
/// calls raise SIGSYS, so call `installDeniedCallHandler` first. PR_SET_NO_NEW_PRIVS must be set.
/// \return false when the system has no such filter; no call is filtered then.
[[nodiscard]] bool filterSystemCalls(RefusedCalls refused);

/// Writes the filter as a program, an array of `sock_filter`, instead of loading it.
/// \param architecture an `AUDIT_ARCH_` value; need not be this machine's.
/// \param process the id of the process that the filter is for.
/// \param descriptor open for writing; not owned.
/// \return false when the filter cannot be built or written.
[[nodiscard]] bool writeSystemCallFilter(RefusedCalls refused,
                                         std::uint32_t architecture,
                                         std::int32_t process,
                                         int descriptor);

} // namespace penwick
