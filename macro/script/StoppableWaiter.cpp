#include "macro/script/StoppableWaiter.h"

#include <array>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>

namespace penwick {

StoppableWaiter::StoppableWaiter()
    : m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

bool StoppableWaiter::wait(int descriptor, bool forWriting)
{
    constexpr int kLookAgain = 20; // Milliseconds, where the system has no descriptor left for us.
    std::array<pollfd, 2> waited{{{descriptor, POLLIN, 0}, {m_wakeUp.get(), POLLIN, 0}}};
    if (forWriting)
        waited[0].events |= POLLOUT;
    if (!m_isStopped)
        poll(waited.data(), waited.size(), m_wakeUp.isOpen() ? -1 : kLookAgain);
    return !m_isStopped;
}

void StoppableWaiter::stop()
{
    m_isStopped = true;
    const std::uint64_t one = 1;
    static_cast<void>(uninterrupted([&] { return ::write(m_wakeUp.get(), &one, sizeof one); }));
}

} // namespace penwick
