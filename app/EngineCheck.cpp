#include "app/EngineCheck.h"

namespace penwick {

EngineCheck::EngineCheck(ScriptHostPool &pool, QObject *parent)
    : QObject(parent)
    , m_worker([this, attempt = pool.startTrial()] { return attempt(&m_waiter); },
               [] {
                   EngineTrial trial;
                   trial.error = ScriptError{ScriptError::Code::HostUnavailable, {}};
                   return trial;
               },
               [this] {
                   m_trial = m_worker.take();
                   Q_EMIT ended();
               })
{
}

EngineCheck::~EngineCheck()
{
    m_waiter.stop();
}

} // namespace penwick
