#pragma once

#include "macro/script/HostConnection.h"
#include "macro/script/ScriptHost.h"

#include <functional>
#include <optional>

namespace penwick {

/// Runs many scripts one after the other, most of them in the same host process: starting a process
/// takes longer than running a short script. Each script gets an engine of its own, so it finds
/// nothing that an earlier one defined. Not for scripts of different origin: if one broke out of
/// the engine, later ones in its process would be in its hands, as far as the sandbox reaches.
///
/// Not thread-safe. The threads that use it must exist as long as this: a host ends with the thread
/// that started it.
class HostSequence final
{
public:
    /// \param settings `servesMany` is set here.
    explicit HostSequence(HostProcess::Settings settings);

    /// Starts a host unless one is there. Returns before the host is ready.
    void prepare();

    /// The process that will run the next script; -1 when there is none.
    [[nodiscard]] qint64 processId() const { return m_host ? m_host->process().processId() : -1; }

    /// Runs a script and waits until it has ended. If the process of an earlier script fails, for
    /// example because little memory is left in it, the script runs again in a new one.
    /// \param onRestart called before the script runs again; what it logged is void.
    [[nodiscard]] ScriptOutcome run(const ScriptRequest &request,
                                    const ScriptLogSink &log,
                                    ScriptWaiter *waiter,
                                    const std::function<void()> &onRestart = {});

private:
    [[nodiscard]] ScriptOutcome
    runOnce(const ScriptRequest &request, const ScriptLogSink &log, ScriptWaiter *waiter);

    HostProcess::Settings m_settings;
    std::optional<HostConnection> m_host;
    int m_scripts = 0;   // That `m_host` has run.
    qint64 m_length = 0; // Of their requests, in UTF-16 code units.
};

} // namespace penwick
