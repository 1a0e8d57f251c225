#pragma once

namespace penwick {

/// Installs a SIGSYS handler that applies the decisions of SystemCallTable.h to trapped system
/// calls: a refused call fails with its error, a killed one ends the process with SIGSYS. Call this
/// before `filterSystemCalls`.
///
/// The handler cannot run on a thread that has SIGSYS blocked. Every trapped call there ends the
/// process with SIGSYS and without a report.
///
/// \param descriptor receives a `DeniedCall` the first time that each call is denied, and one for
/// the call that ends the process; open for writing, must not block; not owned.
void installDeniedCallHandler(int descriptor);

/// From now on, a killed call fails with EACCES instead when one of the threads that run now makes
/// it, other than the calling thread. Calls through another architecture's table still end the
/// process. Libraries start threads while the engine initializes, for example to reach desktop
/// services; a late call of one of these must not end a harmless script.
///
/// Works once, and only after `installDeniedCallHandler`.
void exemptOtherThreads();

} // namespace penwick
