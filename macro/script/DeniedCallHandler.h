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

} // namespace penwick
