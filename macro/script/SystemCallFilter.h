#pragma once

#include <cstdint>

namespace penwick {

/// What the sandbox does with calls that it refuses.
enum class RefusedCalls : std::uint8_t {
    Silent,   ///< The kernel answers them.
    Reported, ///< `answerDeniedCalls` answers and reports them; see there for when that fails.
};

/// From now on the calls in the groups that `filterSystemCalls` kills for fail with EACCES. Meant
/// for the time in which the script engine comes up: a connection that it opens then, to a desktop
/// service for instance, would stay open. Call it while the process has one thread. Must not gain
/// privileges any more (PR_SET_NO_NEW_PRIVS).
/// \return false where the system has no such filter; then nothing is changed.
bool refuseEscapes();

/// From now on the decisions of SystemCallTable.h hold for all threads of the process. Killed calls
/// raise SIGSYS, so call `answerDeniedCalls` before. Must not gain privileges any more
/// (PR_SET_NO_NEW_PRIVS).
/// \return false where the system has no such filter; then nothing is changed.
[[nodiscard]] bool filterSystemCalls(RefusedCalls refused);

/// Writes the program that such a filter is, an array of `sock_filter`, instead of loading it.
/// \param architecture an `AUDIT_ARCH_` value; need not be this machine's.
/// \param process the id of the process that the filter is for.
/// \param descriptor open for writing; not owned.
/// \return false where it cannot be made or written.
[[nodiscard]] bool writeSystemCallFilter(RefusedCalls refused,
                                         std::uint32_t architecture,
                                         std::int32_t process,
                                         int descriptor);

} // namespace penwick
