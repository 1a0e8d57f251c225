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

} // namespace penwick
