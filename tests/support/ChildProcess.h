#pragma once

#include "support/Waits.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>

#include <csignal>
#include <functional>
#include <memory>

namespace penwick::test {

/// Runs the test's own program as a second process. `arguments` select in its main() what it does
/// there. The destructor kills it.
class ChildProcess final
{
public:
    explicit ChildProcess(const QStringList &arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }

    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    ~ChildProcess() { kill(); }

    /// Waits for the next line that the process writes. Empty at a timeout.
    QByteArray readLine()
    {
        while (!m_process.canReadLine())
            if (!m_process.waitForReadyRead(kChildTimeout))
                return {};
        return m_process.readLine().trimmed();
    }

    /// Waits for the process to end. True when it ended with status 0.
    bool succeeds()
    {
        return (m_process.state() == QProcess::NotRunning ||
                m_process.waitForFinished(kChildTimeout)) &&
               m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }

    void sendSignal(int signal) { ::kill(static_cast<pid_t>(m_process.processId()), signal); }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    static constexpr int kChildTimeout = 5 * kLongWait; // For many writes to a slow disk.

    QProcess m_process;
};

} // namespace penwick::test
