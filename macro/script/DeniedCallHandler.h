#pragma once

namespace penwick {

/// Makes the process answer system calls that trap (SIGSYS) by the decisions of SystemCallTable.h:
/// a refused call fails with its error, a killed one ends the process with SIGSYS. Call it before
/// `filterSystemCalls`.
///
/// A trap cannot be answered on a thread that has SIGSYS blocked. There every trapped call ends the
/// process with SIGSYS, unreported.
///
/// \param descriptor takes a `DeniedCall` for each call, the first time that it is denied; open for
/// writing, must not block; not owned.
void answerDeniedCalls(int descriptor);

/// From now on calls that would end the process fail with EACCES where one of the threads that run
/// now makes them, other than the calling one. Libraries start threads as they come up, to reach
/// desktop services for instance, and one that is late must not end a script that does no harm.
void pardonOtherThreads();

} // namespace penwick
