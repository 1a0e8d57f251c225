#include "platform/process/FreedMemory.h"

#include <cstdlib> // Defines __GLIBC__.

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace penwick {

void trimFreedMemory()
{
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}

void shareMemoryPool()
{
#ifdef __GLIBC__
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

} // namespace penwick
