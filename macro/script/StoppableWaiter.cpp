#include "macro/script/StoppableWaiter.h"

#include <array>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>

namespace penwick {

StoppableWaiter::StoppableWaiter(QDeadlineTimer deadline)
    : m_deadline(deadline)
    , m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

bool StoppableWaiter::wait(int descriptor, bool forWriting)
{
    // Milliseconds between checks when the system had no descriptor for `m_wakeUp`.
    constexpr qint64 kPollInterval = 20;
    const qint64 rest = m_deadline.remainingTime(); // -1 without a deadline.
    std::array<pollfd, 2> waited{{{descriptor, POLLIN, 0}, {m_wakeUp.get(), POLLIN, 0}}};
    if (forWriting)
        waited[0].events |= POLLOUT;
    if (!m_isStopped)
        poll(waited.data(),
             waited.size(),
             static_cast<int>(m_wakeUp.isOpen() ? rest : kPollInterval));
    return !m_isStopped && !m_deadline.hasExpired();
}

void StoppableWaiter::stop()
{
    m_isStopped = true;
    const std::uint64_t one = 1;
    static_cast<void>(uninterrupted([&] { return ::write(m_wakeUp.get(), &one, sizeof one); }));
}

} // namespace penwick
