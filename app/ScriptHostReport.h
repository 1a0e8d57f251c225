#pragma once

#include "macro/script/ScriptWire.h"
#include "platform/UserDefaults.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace penwick {

/// For people: which walls stand around the process that macros run in, a line each.
/// \param protection nothing when the process does not start.
[[nodiscard]] QString scriptHostReport(const std::optional<HostProtection> &protection);

/// For the log: the walls that are missing. Empty when none is. Without a process,
/// macros do not run at all, and this names it.
[[nodiscard]] QString missingWalls(const std::optional<HostProtection> &protection);

/// How many bytes a macro may take, by the key `macroMemoryLimitMegabytes` (a whole number of MiB,
/// at least 64). Nothing where it is not stored, or senseless.
[[nodiscard]] std::optional<std::uint64_t> scriptMemory(const UserDefaults &defaults);

} // namespace penwick
