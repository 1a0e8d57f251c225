#include "app/EngineCheck.h"

#include <system_error>
#include <utility>

namespace penwick {

EngineCheck::EngineCheck(ScriptHostPool &pool, QObject *parent)
    : QObject(parent)
{
    auto work = [this, attempt = pool.startTrial()] {
        EngineTrial trial = attempt(&m_waiter);
        const auto finish = [this, trial = std::move(trial)] {
            m_trial = trial;
            Q_EMIT ended();
        };
        QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
    };
    try {
        m_thread = std::thread(std::move(work));
    } catch (const std::system_error &) { // No thread can be started.
        m_trial.error = ScriptError{ScriptError::Code::HostUnavailable, {}};
        QMetaObject::invokeMethod(this, &EngineCheck::ended, Qt::QueuedConnection);
    }
}

EngineCheck::~EngineCheck()
{
    m_waiter.stop();
    if (m_thread.joinable())
        m_thread.join();
}

} // namespace penwick
