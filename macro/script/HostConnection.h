#pragma once

#include "macro/script/HostProcess.h"
#include "macro/script/ScriptWire.h"
#include "macro/script/SharedTexts.h"

#include <optional>

namespace penwick {

/// The editor's connection to one script host, from the greeting to the outcome of its last script.
class HostConnection final
{
public:
    explicit HostConnection(HostProcess process);

    [[nodiscard]] const HostProcess &process() const { return m_process; }

    /// False after the connection has failed, and after a script was stopped.
    [[nodiscard]] bool isUsable() const { return !m_broken && !m_stopped; }

    /// Returns the protection that the host reported, after waiting for the report for at most
    /// `milliseconds`. Nothing when the host has not reported it yet. Does not wait after a run.
    [[nodiscard]] std::optional<HostProtection> protection(int milliseconds);

    /// Name and version of the host's script engine; empty until the host has reported them.
    [[nodiscard]] const QString &engine() const { return m_engine; }

    /// The system calls that the sandbox has denied the host so far.
    [[nodiscard]] QList<DeniedCall> deniedCalls() { return m_process.deniedCalls(); }

    /// Kills the host if it still runs, waits until it is gone and returns how it ended.
    [[nodiscard]] HostEnding end();

    /// Sends the script to the host and waits for its outcome. Call this once, or, if the host
    /// serves many, again while `isUsable`. The host needs no cleanup afterwards.
    /// \param waiter not owned; null to block.
    [[nodiscard]] ScriptOutcome
    run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter);

private:
    [[nodiscard]] bool isOver() const { return m_outcome || m_broken || m_stopped; }

    [[nodiscard]] bool send(QByteArrayView bytes);
    void wait(bool forWriting);
    void receive();
    void takeMessages();
    void decodeAhead();
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
    std::optional<OutcomeDecoder> m_decoder; // During a run.
    std::optional<ScriptOutcome> m_outcome;
    bool m_broken = false;    // The connection is lost, or the host sent malformed data.
    bool m_malformed = false; // The host sent malformed or unexpected data.
    bool m_stopped = false;
};

/// Returns when the descriptor is readable, when it is writable and `forWriting` is set, or when
/// its other end is closed; after `milliseconds` at the latest, unless that is -1. A signal may
/// make it return earlier.
void waitForHost(int descriptor, bool forWriting, int milliseconds);

} // namespace penwick
