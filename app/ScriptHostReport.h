#pragma once

#include "macro/script/EngineTrial.h"
#include "platform/UserDefaults.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace penwick {

/// For people: which walls stand around the process that macros run in, and what came of trying its
/// engine, a line each.
[[nodiscard]] QString scriptHostReport(const EngineTrial &trial);

/// For the log: the walls that are missing. Empty when none is. Without a process, macros do not
/// run at all, and this names it.
[[nodiscard]] QString missingWalls(const std::optional<HostProtection> &protection);

/// For the user: what macros will fail of, or run without, and what to do about it. Empty where the
/// trial passed and the system calls are filtered.
[[nodiscard]] QString engineWarning(const EngineTrial &trial);

/// For the log: why the trial did not pass, in English. Empty where it did.
[[nodiscard]] QString engineLogLine(const EngineTrial &trial);

/// How many bytes a macro may take, by the key `macroMemoryLimitMegabytes` (a whole number of MiB,
/// at least 64). Nothing where it is not stored, or senseless.
[[nodiscard]] std::optional<std::uint64_t> scriptMemory(const UserDefaults &defaults);

} // namespace penwick
