#pragma once

#include "macro/script/EngineTrial.h"
#include "preferences/Preferences.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace penwick {

/// For the user: which protections of the sandbox are active, and the outcome of the engine's
/// trial, one line each.
[[nodiscard]] QString scriptHostReport(const EngineTrial &trial);

/// For the log: the protections that are missing, in English. Empty when all are active. No value
/// means that the script host did not start and macros do not run at all; the result says so.
[[nodiscard]] QString missingProtections(const std::optional<HostProtection> &protection);

/// For the user: why macros will fail, or which protection they lack, and what to do about it.
/// Empty when the trial passed and system calls are filtered.
[[nodiscard]] QString engineWarning(const EngineTrial &trial);

/// For the log: why the trial did not pass, in English. Empty when it passed.
[[nodiscard]] QString engineLogLine(const EngineTrial &trial);

/// The memory limit of a macro in bytes that the user set. No value for the usual one.
[[nodiscard]] std::optional<std::uint64_t> scriptMemory(const Preferences &preferences);

} // namespace penwick
