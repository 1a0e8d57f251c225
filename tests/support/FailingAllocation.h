#pragma once

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>

// Replaces the allocation functions of the test's process. Include it in one file of a test only.

namespace penwick::test {

/// Lets the next allocation on another thread than the main one fail; it is false again then.
inline std::atomic<bool> failsNextAllocation = false;

inline const std::thread::id allocationMainThread = std::this_thread::get_id();

} // namespace penwick::test

void *operator new(std::size_t size)
{
    if (std::this_thread::get_id() != penwick::test::allocationMainThread &&
        penwick::test::failsNextAllocation.exchange(false))
        throw std::bad_alloc();
    if (void *const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
