#pragma once

#include "macro/script/HostContract.h"

#include <QString>

namespace penwick {

/// Returns the call's name for display: "socket (41)", "32-bit 41" for a call of another table, or
/// only the number when the system's library does not know the call.
[[nodiscard]] QString systemCallName(const DeniedCall &call);

} // namespace penwick
