#pragma once

#include "macro/script/ScriptHost.h"

#include <QString>
#include <QStringList>

namespace penwick {

/// Returns the message for the user about the end of the script host: the cause, refused calls, the
/// engine, and what to do.
[[nodiscard]] QString hostEndingText(const HostEnding &ending);

/// Returns the same facts for the log: one line in English.
[[nodiscard]] QString hostEndingLogLine(const HostEnding &ending);

/// Returns the details that a report of such an end needs, for the user: the cause, refused calls,
/// the engine.
[[nodiscard]] QStringList hostEndingDetails(const HostEnding &ending);

/// Returns `what` with the details in parentheses and a request to report the failure.
[[nodiscard]] QString reportableFailure(const QString &what, const QStringList &details);

/// Returns the names of the calls that ended the host, or of those that were refused, separated by
/// commas.
/// \param isKilled true for the calls that ended the host.
[[nodiscard]] QString deniedCallNames(const QList<DeniedCall> &calls, bool isKilled);

} // namespace penwick
