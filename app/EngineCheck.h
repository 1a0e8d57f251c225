#pragma once

#include "macro/script/EngineTrial.h"
#include "macro/script/ScriptHostPool.h"
#include "macro/script/StoppableWaiter.h"

#include <QObject>

#include <thread>

namespace penwick {

/// Makes one trial of the script engine on a thread of its own. Ending this object ends the trial.
class EngineCheck final : public QObject
{
    Q_OBJECT

public:
    /// How long a trial may take, in milliseconds. A machine under load takes many times as long as
    /// an idle one.
    static constexpr int kLongest = 120'000;

    /// \param pool starts the trial's process now; not used afterwards.
    explicit EngineCheck(ScriptHostPool &pool, QObject *parent = nullptr);
    ~EngineCheck() override;
    Q_DISABLE_COPY_MOVE(EngineCheck)

    /// How it went, once `ended` was emitted.
    [[nodiscard]] const EngineTrial &trial() const { return m_trial; }

Q_SIGNALS:
    /// Emitted once, on the thread of this object.
    void ended();

private:
    StoppableWaiter m_waiter{QDeadlineTimer(kLongest)};
    EngineTrial m_trial;
    std::thread m_thread;
};

} // namespace penwick
