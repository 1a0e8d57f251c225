#include "platform/FreedMemory.h"

#include <cstdlib> // Says whose library this is.

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace penwick {

void giveBackFreedMemory()
{
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}

} // namespace penwick
