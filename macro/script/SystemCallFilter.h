#pragma once

namespace penwick {

/// From now on the process dies of any system call that evaluating a script does not need. Must not
/// gain privileges any more (PR_SET_NO_NEW_PRIVS).
/// \return false where the system has no such filter; then nothing is changed.
[[nodiscard]] bool filterSystemCalls();

} // namespace penwick
