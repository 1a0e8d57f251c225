#include "macro/script/EngineMemory.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace penwick {

namespace {

#ifndef PENWICK_HOST_WITHOUT_SANDBOX

std::atomic<bool> largePages = false;

constexpr std::size_t kLargePage = std::size_t{2} << 20;
// A mapping of this size that the engine makes first is address space of which it uses little.
constexpr std::size_t kAddressSpace = std::size_t{1} << 30;

// Where it takes longer, separate pages are faster. A virtual machine whose memory the system below
// has taken back gets it again page by page, as slowly for a large page as for its parts, while
// small pages come from what was freed last and is still there.
constexpr std::int64_t kMostNanoseconds = 1'000'000;

struct Mapping
{
    char *memory;
    std::size_t size; // Bytes.
};

/// What the engine maps before it has a script: most of its small objects will be there.
class EarlierMappings final
{
public:
    /// Keeps the first `kMost` mappings; an engine makes fewer.
    void add(Mapping mapping)
    {
        if (mapping.size >= kAddressSpace)
            return;
        const std::size_t i = m_count++;
        if (i < m_starts.size()) {
            m_starts[i] = mapping.memory;
            m_sizes[i] = mapping.size; // Only now is the entry complete.
        }
    }

    /// Does no harm to a mapping that no longer exists: the call is only advice.
    void useHugePages() const
    {
        for (std::size_t i = 0; i < m_sizes.size(); ++i)
            if (const std::size_t size = m_sizes[i]; size > 0)
                syscall(SYS_madvise, m_starts[i].load(), size, MADV_HUGEPAGE);
    }

private:
    static constexpr std::size_t kMost = 8;

    std::atomic<std::size_t> m_count = 0;
    std::array<std::atomic<char *>, kMost> m_starts{};
    std::array<std::atomic<std::size_t>, kMost> m_sizes{};
};

constinit EarlierMappings earlierMappings;

std::int64_t nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// Has the system back new memory with large pages unless it is slow to deliver the first one.
/// \return whether it does.
bool useHugePages(Mapping mapping)
{
    const auto start = reinterpret_cast<std::uintptr_t>(mapping.memory);
    const std::size_t before = (kLargePage - start) % kLargePage;
    if (mapping.size < before + kLargePage)
        return false;
    syscall(SYS_madvise, mapping.memory, mapping.size, MADV_HUGEPAGE);
    const std::int64_t begin = nanoseconds();
    *static_cast<volatile char *>(mapping.memory + before) = 0;
    if (nanoseconds() - begin <= kMostNanoseconds)
        return true;
    syscall(SYS_madvise, mapping.memory, mapping.size, MADV_NOHUGEPAGE);
    return false;
}

bool isFitForHugePages(const void *memory, std::size_t size, int protection, int flags)
{
    return memory != MAP_FAILED && size >= kLargePage &&
           (protection & (PROT_READ | PROT_WRITE | PROT_EXEC)) == (PROT_READ | PROT_WRITE) &&
           (flags & MAP_ANONYMOUS) != 0;
}

#endif

} // namespace

#ifdef PENWICK_HOST_WITHOUT_SANDBOX

void enableHugePages() {}

void enableHugePagesInEarlierBlocks() {}

#else

void enableHugePages()
{
    largePages = true;
}

// New memory shows whether the system is fast: of the earlier blocks, the first pages are in use.
// Its page goes back to the system, which can hand it out again at once.
void enableHugePagesInEarlierBlocks()
{
    constexpr std::size_t kTrial = 2 * kLargePage; // A whole page is somewhere in it.
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own form.
    void *trial = reinterpret_cast<void *>(syscall(
        SYS_mmap, nullptr, kTrial, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (trial == MAP_FAILED)
        return;
    if (useHugePages({static_cast<char *>(trial), kTrial}))
        earlierMappings.useHugePages();
    munmap(trial, kTrial);
}

// The engine has no setting for how it gets its memory. Its calls reach these functions instead of
// the C library's, because the definitions of a program take precedence over those of its
// libraries. Sanitizers have such definitions themselves.
// NOLINTBEGIN(readability-function-size, performance-no-int-to-ptr): the system's own form.
extern "C" void *
mmap(void *address, std::size_t size, int protection, int flags, int file, off_t offset) noexcept
{
    void *memory =
        reinterpret_cast<void *>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
    if (isFitForHugePages(memory, size, protection, flags)) {
        const Mapping mapping{static_cast<char *>(memory), size};
        if (largePages)
            useHugePages(mapping);
        else
            earlierMappings.add(mapping);
    }
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
