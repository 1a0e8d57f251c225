#pragma once

#include "macro/script/ScriptHost.h"

#include <QString>
#include <QStringList>

namespace penwick {

/// For the user: that the process which runs macros ended, why, with which engine, and what to do.
[[nodiscard]] QString hostEndingText(const HostEnding &ending);

/// The same cause for the log: one line in English.
[[nodiscard]] QString hostEndingLogLine(const HostEnding &ending);

/// What belongs into a report of such an end, for the user: the cause, refused calls, the engine.
[[nodiscard]] QStringList hostEndingDetails(const HostEnding &ending);

/// Says what failed, with the details in parentheses, and asks for a report of it.
[[nodiscard]] QString reportableFailure(const QString &what, const QStringList &details);

/// Names of the calls, of those that ended the host or of the others, with commas between.
[[nodiscard]] QString deniedCallNames(const QList<DeniedCall> &calls, bool isKilled);

} // namespace penwick
