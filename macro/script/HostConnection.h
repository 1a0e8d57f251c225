#pragma once

#include "macro/script/HostProcess.h"
#include "macro/script/ScriptWire.h"
#include "macro/script/SharedTexts.h"

#include <optional>

namespace penwick {

/// The conversation with one script host, from its greeting to the outcome of its only script.
class HostConnection final
{
public:
    explicit HostConnection(HostProcess process);

    [[nodiscard]] const HostProcess &process() const { return m_process; }

    /// What the host said about its walls, after waiting for it at most `milliseconds`. Nothing
    /// where it said nothing yet; after a run, what it had said.
    [[nodiscard]] std::optional<HostProtection> protection(int milliseconds);

    /// Name and version of the host's script engine; empty as long as it has not said so.
    [[nodiscard]] const QString &engine() const { return m_engine; }

    /// The system calls that the sandbox has denied the host so far.
    [[nodiscard]] QList<DeniedCall> deniedCalls() { return m_process.deniedCalls(); }

    /// Ends the host, and says how it had ended before where it had.
    [[nodiscard]] HostEnding end();

    /// Hands the script over and waits for its outcome. Call it once. Nobody else needs to know of
    /// the process afterwards: it is gone or about to go.
    /// \param waiter not owned; null to block.
    [[nodiscard]] ScriptOutcome
    run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter);

private:
    [[nodiscard]] bool isOver() const { return m_outcome || m_broken || m_stopped; }

    [[nodiscard]] bool send(QByteArrayView bytes);
    void wait(bool forWriting);
    void receive();
    void takeMessages();
    void take(const Message &message);
    void takeGreeting(const Message &message);
    void takeOutcome(const Message &message);
    [[nodiscard]] ScriptOutcome failure();

    HostProcess m_process;
    SharedTexts m_shared;
    MessageReader m_reader{MessageReader::Side::FromHost};
    QByteArray m_portion;
    const ScriptLogSink *m_log = nullptr;
    ScriptWaiter *m_waiter = nullptr;
    QString m_engine;
    std::optional<HostProtection> m_protection;
    std::optional<ScriptOutcome> m_outcome;
    bool m_broken = false;  // The host is gone, or makes no sense.
    bool m_garbled = false; // It makes no sense.
    bool m_stopped = false;
};

/// Returns once there is something to read from the descriptor, or room to write where `forWriting`
/// is set, or its other end is closed; after `milliseconds` at the latest, where these are not -1.
void waitForHost(int descriptor, bool forWriting, int milliseconds);

} // namespace penwick
