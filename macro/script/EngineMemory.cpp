#include "macro/script/EngineMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace penwick {

namespace {

std::atomic<bool> largePages = false;

#ifndef PENWICK_HOST_WITHOUT_SANDBOX

constexpr std::size_t kLargePage = std::size_t{2} << 20;

// Where it takes longer, separate pages are faster. A virtual machine whose memory the system below
// has taken back gets it again page by page, as slowly for a large page as for its parts, while
// small pages come from what was freed last and is still there.
constexpr std::int64_t kMostNanoseconds = 1'000'000;

std::int64_t nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// Has the system back new memory with large pages if it can deliver the first one quickly.
void useHugePages(char *memory, std::size_t size)
{
    const std::size_t before = (kLargePage - reinterpret_cast<std::uintptr_t>(memory)) % kLargePage;
    if (size < before + kLargePage)
        return;
    syscall(SYS_madvise, memory, size, MADV_HUGEPAGE);
    const std::int64_t start = nanoseconds();
    *static_cast<volatile char *>(memory + before) = 0;
    if (nanoseconds() - start > kMostNanoseconds)
        syscall(SYS_madvise, memory, size, MADV_NOHUGEPAGE);
}

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
        useHugePages(static_cast<char *>(memory), size);
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
