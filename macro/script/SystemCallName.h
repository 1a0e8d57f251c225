#pragma once

#include "macro/script/HostContract.h"

#include <QString>

namespace penwick {

/// For people: "socket (41)", or the number alone where the system's library does not know the
/// call.
[[nodiscard]] QString systemCallName(const DeniedCall &call);

} // namespace penwick
