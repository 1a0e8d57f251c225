#pragma once

#include "macro/script/ScriptHost.h"

namespace penwick {

/// Evaluates the script in an engine of its own, which is gone when this returns: nothing that a
/// script defines is there in the next run. The script sees the language itself, `console.log` and
/// `userInput`; no time limit holds, and scripts run on the calling thread.
///
/// In the value, undefined is dropped from objects and becomes null in lists; a getter that throws
/// counts as undefined; `toJSON` is not called. Typed arrays are empty objects.
[[nodiscard]] ScriptOutcome
runScript(ScriptRequest request, const ScriptLogSink &log, const ScriptLimits &limits = {});

} // namespace penwick
