#pragma once

namespace penwick {

/// Makes the calling thread, and the threads that it starts from now on, leave the processor to the
/// other threads of the process while they have work. It cannot be undone: call it on a thread that
/// exists for one task.
void lowerThreadPriority();

} // namespace penwick
