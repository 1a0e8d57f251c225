#pragma once

#include "editor/TextStorage.h"

namespace penwick::test {

/// A clock for a `TextStorage` whose edits happen without a pause, however busy the machine is.
[[nodiscard]] inline EditClock stoppedClock()
{
    return [] { return std::chrono::steady_clock::time_point(); };
}

} // namespace penwick::test
