#pragma once

#include "macro/script/HostConnection.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace penwick {

/// The result of a trial: a script that exercises, inside the sandbox, the parts of the script
/// engine that macros can reach.
struct EngineTrial
{
    QString engine;                           ///< Name and version; empty when not reported.
    std::optional<HostProtection> protection; ///< Not set: the host ended before it reported it.
    QString step;                             ///< The last step tried, in English.
    QStringList failures;                     ///< Steps with a wrong result: "step: what happened".
    std::optional<ScriptError> error;         ///< Why the trial did not run to its end.
    QList<DeniedCall> deniedCalls;            ///< No failures: an engine may not need them.

    [[nodiscard]] bool isPassed() const { return !error && failures.isEmpty(); }
};

/// Runs the trial in a host that was just started. Blocks until the trial has ended.
/// \param timeZone the one that the host was started with.
/// \param waiter not owned; null to wait without a time limit.
[[nodiscard]] EngineTrial
tryEngine(HostConnection &host, const QByteArray &timeZone, ScriptWaiter *waiter);

} // namespace penwick
