#include "macro/script/EngineMemory.h"

#include <atomic>
#include <cstddef>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace penwick {

namespace {

std::atomic<bool> largePages = false;

#ifndef PENWICK_HOST_WITHOUT_SANDBOX

constexpr std::size_t kLargePage = std::size_t{2} << 20;

bool isFitForHugePages(const void *memory, std::size_t size, int protection, int flags)
{
    return largePages && memory != MAP_FAILED && size >= kLargePage &&
           (protection & (PROT_READ | PROT_WRITE | PROT_EXEC)) == (PROT_READ | PROT_WRITE) &&
           (flags & MAP_ANONYMOUS) != 0;
}

#endif

} // namespace

void enableHugePages()
{
    largePages = true;
}

#ifndef PENWICK_HOST_WITHOUT_SANDBOX // The sanitizers define their own.

// The engine has no setting for how it gets its memory. Its calls reach these functions instead of
// the C library's, because the definitions of a program take precedence over those of its
// libraries.
// NOLINTBEGIN(readability-function-size, performance-no-int-to-ptr): the system's own form.
extern "C" void *
mmap(void *address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept
{
    void *memory =
        reinterpret_cast<void *>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
    if (isFitForHugePages(memory, size, protection, flags))
        syscall(SYS_madvise, memory, size, MADV_HUGEPAGE);
    return memory;
}

// NOLINTEND(readability-function-size, performance-no-int-to-ptr)

extern "C" int madvise(void *address, std::size_t size, int advice) noexcept
{
    // The engine includes and excludes single pages from core files, which this process does not
    // leave. Each such call makes the kernel split its mapping into parts too small for huge pages.
    if (advice == MADV_DODUMP || advice == MADV_DONTDUMP)
        return 0;
    return static_cast<int>(syscall(SYS_madvise, address, size, advice));
}

#endif

} // namespace penwick
