#pragma once

#include "macro/script/HostConnection.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace penwick {

/// What came of making the script engine use, inside the sandbox, what macros can make it use.
struct EngineTrial
{
    QString engine;                           ///< Name and version; empty where it did not say so.
    std::optional<HostProtection> protection; ///< Nothing where the host did not get so far.
    QString step;                             ///< What was tried last, in English.
    QStringList failures;                     ///< What gave something wrong: "step: what happened".
    std::optional<ScriptError> error;         ///< Why the trial did not end by itself.
    QList<DeniedCall> deniedCalls;            ///< An engine can pass that does without some calls.

    [[nodiscard]] bool isPassed() const { return !error && failures.isEmpty(); }
};

/// Tries the engine of a host that was just started. Blocks until the trial has ended.
/// \param timeZone the one that the host was started with.
/// \param waiter not owned; null to wait without end.
[[nodiscard]] EngineTrial
tryEngine(HostConnection &host, const QByteArray &timeZone, ScriptWaiter *waiter);

} // namespace penwick
