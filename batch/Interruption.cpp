#include "batch/Interruption.h"

#include <atomic>
#include <cstddef>
#include <iterator>

namespace penwick {

namespace {

std::atomic<int> first = 0;
static_assert(std::atomic<int>::is_always_lock_free); // A signal handler may use it.

extern "C" void recordSignal(int signal)
{
    int none = 0;
    first.compare_exchange_strong(none, signal);
}

} // namespace

Interruption::Interruption()
{
    first = 0;
    struct sigaction action = {};
    action.sa_handler = recordSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        sigaction(kSignals[i], nullptr, &m_former[i]);
        if (m_former[i].sa_handler != SIG_IGN)
            sigaction(kSignals[i], &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        sigaction(kSignals[i], &m_former[i], nullptr);
}

int Interruption::signal()
{
    return first;
}

} // namespace penwick
