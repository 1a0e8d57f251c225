#pragma once

#include "macro/script/HostConnection.h"

#include <QTimer>

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

    [[nodiscard]] HostProcess::Settings settings() const;
    [[nodiscard]] bool isSpareFit() const;
    void tend();
    void forgetEndedRuns();

    std::function<HostProcess::Settings()> m_settings;
    std::uint64_t m_memory = defaultMemory();
    std::optional<Spare> m_spare;
    std::vector<std::weak_ptr<HostConnection>> m_running;
    std::unique_ptr<QTimer> m_replacement; // While a spare is to be kept.
};

} // namespace penwick
