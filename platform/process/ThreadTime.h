#pragma once

#include <QtGlobal>

#include <ctime>

namespace penwick {

/// The processor time that the calling thread has used, in nanoseconds: other programs and a
/// suspended machine do not count.
[[nodiscard]] inline qint64 threadTime()
{
    constexpr qint64 kSecond = 1'000'000'000;
    timespec time{};
    (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

} // namespace penwick
