#pragma once

#include "editor/Worker.h"
#include "macro/script/EngineTrial.h"
#include "macro/script/ScriptHostPool.h"
#include "macro/script/StoppableWaiter.h"

#include <QObject>

namespace penwick {

/// Runs one trial of the script engine on a thread of its own. Destroying this object ends the
/// trial.
class EngineCheck final : public QObject
{
    Q_OBJECT

public:
    /// The longest time for a trial, in milliseconds. A machine under load is many times slower
    /// than an idle one.
    static constexpr int kLongest = 120'000;

    /// \param pool starts the trial's process in the constructor; not used afterwards.
    explicit EngineCheck(ScriptHostPool &pool, QObject *parent = nullptr);
    ~EngineCheck() override;
    Q_DISABLE_COPY_MOVE(EngineCheck)

    /// The outcome; valid once `ended` was emitted.
    [[nodiscard]] const EngineTrial &trial() const { return m_trial; }

Q_SIGNALS:
    /// Emitted once, on the thread of this object.
    void ended();

private:
    StoppableWaiter m_waiter{QDeadlineTimer(kLongest)};
    EngineTrial m_trial;
    Worker<EngineTrial> m_worker; // Last, so that it is destroyed first.
};

} // namespace penwick
