#pragma once

#include "macro/script/EngineTrial.h"
#include "macro/script/HostConnection.h"

#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace penwick {

/// Runs each script in a process of its own, and can keep one process ready for the next script.
/// Use it from the main thread.
class ScriptHostPool final
{
public:
    /// \param settings asked before each start; without a time zone the process has the system's.
    explicit ScriptHostPool(std::function<HostProcess::Settings()> settings);
    ~ScriptHostPool();
    ScriptHostPool(const ScriptHostPool &) = delete;
    ScriptHostPool &operator=(const ScriptHostPool &) = delete;

    /// The one of this program: its host stands beside the program's executable, or in the folder
    /// bin next to the folder that this stands in. Lives until the process ends.
    [[nodiscard]] static ScriptHostPool &shared();

    /// How much memory a script of the shared pool may take from the next start on, in bytes.
    void setMemory(std::uint64_t bytes) { m_memory = bytes; }

    /// 4 GiB or half of the machine's memory, whichever is less.
    [[nodiscard]] static std::uint64_t defaultMemory();

    /// Starts a process now and after each run, in a later turn of the event loop. Off at first.
    void setKeepsSpare(bool keepsSpare);

    /// Starts a process ahead unless one is waiting already, and gives back what earlier ones held.
    /// \return false when there is none.
    bool prepare();

    /// Ends the process that waits, if one does.
    void discard();

    /// The process that waits; -1 when there is none.
    [[nodiscard]] qint64 spareProcessId() const;

    /// Which walls the host has, from the one that waits; starts it if need be. Waits for its
    /// greeting up to `milliseconds`. Nothing where it does not come.
    [[nodiscard]] std::optional<HostProtection> protection(int milliseconds);

    /// What the next process is started with.
    [[nodiscard]] HostProcess::Settings nextSettings() const;

    /// Starts a process of its own for a trial of the engine, one that leaves the processors to all
    /// others. The job makes the trial: on any thread, once. Its error is `HostUnavailable` where
    /// no process can be started.
    [[nodiscard]] std::function<EngineTrial(ScriptWaiter *)> startTrial();

    /// A `ScriptHost`: takes the process that waits. Its job fails with `HostUnavailable` where
    /// none can be started.
    [[nodiscard]] ScriptJob start();

    /// Starts a script and waits for its end.
    [[nodiscard]] ScriptOutcome
    run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter);

private:
    struct Spare
    {
        HostProcess::Settings settings;
        HostConnection connection;
    };

    /// What the runs, on their threads, find out for later starts.
    struct Experience
    {
        std::atomic<bool> trapsAreFatal = false;
    };

    [[nodiscard]] bool isSpareFit() const;
    void endSpare();
    static void learn(const HostEnding &ending, Experience &experience);
    void tend();
    void forgetEndedRuns();

    std::function<HostProcess::Settings()> m_settings;
    std::uint64_t m_memory = defaultMemory();
    std::optional<Spare> m_spare;
    std::vector<std::weak_ptr<HostConnection>> m_running;
    std::unique_ptr<QTimer> m_replacement; // While a spare is to be kept.
    std::shared_ptr<Experience> m_experience = std::make_shared<Experience>();
};

} // namespace penwick
