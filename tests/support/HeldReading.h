#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

// Replaces the function `read` of the test's process. Include it in one file of a test only.

namespace penwick::test {

/// While one exists, the reading of large files on other threads than the main one stops after a
/// number of bytes and waits, as it would for a slow disk.
class HeldReading final
{
public:
    explicit HeldReading(std::size_t bytes)
    {
        const std::lock_guard lock(mutex);
        isHeld = true;
        allowed = bytes;
    }

    HeldReading(const HeldReading &) = delete;
    HeldReading &operator=(const HeldReading &) = delete;

    ~HeldReading() { release(); }

    /// Lets so many more bytes be read.
    static void allow(std::size_t bytes)
    {
        const std::lock_guard lock(mutex);
        allowed += bytes;
        isAllowed.notify_all();
    }

    static void release()
    {
        const std::lock_guard lock(mutex);
        isHeld = false;
        isAllowed.notify_all();
    }

    /// Waits until something may be read, and returns how much of `size`.
    static std::size_t take(std::size_t size)
    {
        constexpr std::size_t kLarge = 1 << 16; // Nothing else is read in so large blocks.
        if (size < kLarge || std::this_thread::get_id() == mainThread)
            return size;
        std::unique_lock lock(mutex);
        isAllowed.wait(lock, [] { return !isHeld || allowed > 0; });
        if (!isHeld)
            return size;
        const std::size_t taken = size < allowed ? size : allowed;
        allowed -= taken;
        return taken;
    }

private:
    static inline const std::thread::id mainThread = std::this_thread::get_id();
    static inline std::mutex mutex;
    static inline std::condition_variable isAllowed;
    static inline std::size_t allowed = 0;
    static inline bool isHeld = false;
};

} // namespace penwick::test

extern "C" ssize_t read(int descriptor, void *buffer, std::size_t size)
{
    return ::syscall(SYS_read, descriptor, buffer, penwick::test::HeldReading::take(size));
}
