#pragma once

#include "macro/script/ScriptHostPool.h"

#include <csignal>

namespace penwick::test {

/// Delays the script of the next run: stops the spare host, which takes that script, until
/// `release`.
class HeldScript final
{
public:
    HeldScript()
    {
        if (!ScriptHostPool::shared().prepare())
            qFatal("no spare host");
        m_process = static_cast<pid_t>(ScriptHostPool::shared().spareProcessId());
        ::kill(m_process, SIGSTOP);
    }

    HeldScript(const HeldScript &) = delete;
    HeldScript &operator=(const HeldScript &) = delete;

    ~HeldScript() { release(); }

    void release() const { ::kill(m_process, SIGCONT); }

    [[nodiscard]] pid_t process() const { return m_process; }

private:
    pid_t m_process;
};

} // namespace penwick::test
