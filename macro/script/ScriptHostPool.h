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

/// Runs each script in a process of its own, and can keep a spare host for the next script. Use the
/// pool from the main thread.
class ScriptHostPool final
{
public:
    /// \param settings called before each start. An empty time zone stands for the system's, a
    /// memory of 0 for the limit of `setMemory`.
    explicit ScriptHostPool(std::function<HostProcess::Settings()> settings);
    ~ScriptHostPool();
    ScriptHostPool(const ScriptHostPool &) = delete;
    ScriptHostPool &operator=(const ScriptHostPool &) = delete;

    /// The program's own pool. Its host executable is next to the program's, in the installation's
    /// folder for internal programs, or, for tests, in the folder ../bin. Lives until the process
    /// ends.
    [[nodiscard]] static ScriptHostPool &shared();

    /// Sets how many bytes a script of the shared pool may allocate, from the next start on.
    void setMemory(std::uint64_t bytes) { m_memory = bytes; }

    /// 4 GiB or half of the machine's memory, whichever is less.
    [[nodiscard]] static std::uint64_t defaultMemory();

    /// When true, starts a spare host now, and a new one shortly after each script has taken it.
    /// When false, keeps a spare that is there but starts no more. False by default.
    void setKeepsSpare(bool keepsSpare);

    /// Starts a spare host unless a usable one is there. Also reaps hosts that were killed before.
    /// \return false when there is no spare host.
    bool prepare();

    /// Kills the spare host, if there is one.
    void discard();

    /// The process id of the spare host; -1 when there is none.
    [[nodiscard]] qint64 spareProcessId() const;

    /// Returns the protection that the spare host reports. Starts a spare if needed, and waits for
    /// the report for at most `milliseconds`. Nothing when there is no report.
    [[nodiscard]] std::optional<HostProtection> protection(int milliseconds);

    /// The settings of the next host to be started.
    [[nodiscard]] HostProcess::Settings nextSettings() const;

    /// Starts a separate host for a trial of the engine, at a low priority. The returned job runs
    /// the trial; call it once, on any thread. Its error is `HostUnavailable` when no host could be
    /// started.
    [[nodiscard]] std::function<EngineTrial(ScriptWaiter *)> startTrial();

    /// Takes the spare host for one script, or starts a host; the pool's `ScriptHost`. The returned
    /// job fails with `HostUnavailable` when no host could be started.
    [[nodiscard]] ScriptJob start();

    /// Runs a script and waits until it has ended.
    [[nodiscard]] ScriptOutcome
    run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter);

private:
    struct Spare
    {
        HostProcess::Settings settings;
        HostConnection connection;
    };

    /// What runs learn, on their threads, for later starts.
    struct Experience
    {
        std::atomic<bool> trapsAreFatal = false;
    };

    [[nodiscard]] bool isSpareUsable() const;
    void endSpare();
    static void learn(const HostEnding &ending, Experience &experience);
    void tend();
    void removeEndedRuns();

    std::function<HostProcess::Settings()> m_settings;
    std::uint64_t m_memory = defaultMemory();
    std::optional<Spare> m_spare;
    std::vector<std::weak_ptr<HostConnection>> m_running;
    std::unique_ptr<QTimer> m_replacement; // Set while a spare is kept.
    std::shared_ptr<Experience> m_findings = std::make_shared<Experience>();
};

} // namespace penwick
