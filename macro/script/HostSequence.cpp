#include "macro/script/HostSequence.h"

#include <utility>

namespace penwick {

namespace {

// A new process from time to time bounds what the engine leaves behind. It costs about 10 ms.
constexpr int kMostScripts = 500;
constexpr qint64 kMostLength = qint64{1} << 25; // UTF-16 code units.

/// True when the failure may be due to what earlier scripts left in the process.
bool isOfTheProcess(const ScriptOutcome &outcome)
{
    using Code = ScriptError::Code;
    return !outcome &&
           (outcome.error().code == Code::HostEnded || outcome.error().code == Code::OutOfMemory);
}

HostProcess::Settings servingMany(HostProcess::Settings settings)
{
    settings.servesMany = true;
    return settings;
}

} // namespace

HostSequence::HostSequence(HostProcess::Settings settings)
    : m_settings(servingMany(std::move(settings)))
{
}

void HostSequence::prepare()
{
    if (m_host)
        return;
    m_scripts = 0;
    m_length = 0;
    reapHostProcesses();
    if (auto process = HostProcess::start(m_settings))
        m_host.emplace(std::move(*process));
}

ScriptOutcome HostSequence::run(const ScriptRequest &request,
                                const ScriptLogSink &log,
                                ScriptWaiter *waiter,
                                const std::function<void()> &onRestart)
{
    prepare();
    const bool isUsed = m_scripts > 0;
    ScriptOutcome outcome = runOnce(request, log, waiter);
    if (isUsed && isOfTheProcess(outcome)) {
        if (onRestart)
            onRestart();
        outcome = runOnce(request, log, waiter);
    }
    return outcome;
}

ScriptOutcome
HostSequence::runOnce(const ScriptRequest &request, const ScriptLogSink &log, ScriptWaiter *waiter)
{
    prepare();
    if (!m_host)
        return tl::unexpected(ScriptError{ScriptError::Code::HostUnavailable, {}});
    ++m_scripts;
    m_length += request.size();
    ScriptOutcome outcome = m_host->run(request, log, waiter);
    if (!m_host->isUsable() || m_scripts >= kMostScripts || m_length >= kMostLength)
        m_host.reset();
    return outcome;
}

} // namespace penwick
