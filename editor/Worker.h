#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

namespace penwick {

/// Runs one function on a thread of its own. Create, use and destroy it on one thread that has an
/// event loop. The function never outlives this object: the destructor waits for it, so request its
/// end before.
template <typename Outcome> class Worker final
{
public:
    using Work = std::function<Outcome()>;

    /// Starts the work.
    /// \param work must not throw. What it holds is freed before the outcome is available.
    /// \param withoutThread called before this returns, for the outcome, if the system can start no
    ///        thread.
    /// \param ended called from the event loop when the outcome is available, unless it was taken
    ///        or this was destroyed before.
    Worker(Work work, const Work &withoutThread, const std::function<void()> &ended)
    {
        const auto end = [this, ended](Outcome outcome) {
            m_promise.set_value(std::move(outcome));
            const auto report = [this, ended] {
                if (m_outcome.valid())
                    ended();
            };
            QMetaObject::invokeMethod(&m_receiver, report, Qt::QueuedConnection);
        };
        try {
            m_thread = std::thread([end, work = std::move(work)]() mutable {
                Outcome outcome = work();
                work = nullptr;
                end(std::move(outcome));
            });
        } catch (const std::system_error &) {
            end(withoutThread());
        }
    }

    ~Worker()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    Q_DISABLE_COPY_MOVE(Worker)

    /// Waits for the outcome at most `time`. Returns true when it is available.
    [[nodiscard]] bool waitFor(std::chrono::milliseconds time) const
    {
        return m_outcome.wait_for(time) == std::future_status::ready;
    }

    /// Waits for the outcome and returns it. Call it once.
    [[nodiscard]] Outcome take() { return m_outcome.get(); }

private:
    std::promise<Outcome> m_promise;
    std::future<Outcome> m_outcome = m_promise.get_future();
    QObject m_receiver; // Drops a pending call of `ended` when it is destroyed.
    std::thread m_thread;
};

} // namespace penwick
