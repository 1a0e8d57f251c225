#include "platform/process/ThreadPriority.h"

#include <sys/resource.h>

namespace penwick {

void lowerThreadPriority()
{
    constexpr int kNiceness = 10;
    static_cast<void>(::setpriority(PRIO_PROCESS, 0, kNiceness)); // On Linux: of this thread only.
}

} // namespace penwick
