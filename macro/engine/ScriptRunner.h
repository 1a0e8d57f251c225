#pragma once

#include "macro/engine/ScriptHost.h"

#include <cstddef>

namespace penwick {

/// How large a completion value may grow, summed over the whole tree. Objects reached on several
/// paths count once per path.
struct ScriptLimits
{
    std::size_t values = std::size_t{1} << 25;
    std::size_t bytes = std::size_t{1} << 31; ///< Of UTF-16 text, keys included.
    std::size_t depth = 2000;                 ///< Nested objects and lists; a flat object has 1.
    /// Of the source, in UTF-16 code units. The engine ends the process above this.
    qsizetype sourceLength = 2147483647;
};

/// Evaluates the script in an engine of its own, which is gone when this returns: nothing that a
/// script defines is there in the next run. The script sees the language itself, `console.log` and
/// `userInput`; no time limit holds, and scripts run on the calling thread.
///
/// In the value, undefined is dropped from objects and becomes null in lists; a getter that throws
/// counts as undefined; `toJSON` is not called. Typed arrays are empty objects.
[[nodiscard]] ScriptOutcome
runScript(ScriptRequest request, const ScriptLogSink &log, const ScriptLimits &limits = {});

} // namespace penwick
