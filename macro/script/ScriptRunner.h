#pragma once

#include "macro/script/ScriptHost.h"
#include "macro/script/ScriptValueSink.h"

#include <functional>
#include <optional>

namespace penwick {

/// Evaluates the script in an engine of its own, which is gone when this returns: nothing that a
/// script defines is there in the next run. The script sees the language itself, `console.log` and
/// `userInput`; no time limit holds, and scripts run on the calling thread.
///
/// In the value, undefined is dropped from objects and becomes null in lists; a getter that throws
/// counts as undefined; `toJSON` is not called. Typed arrays are empty objects.
[[nodiscard]] ScriptOutcome
runScript(const ScriptRequest &request, const ScriptLogSink &log, const ScriptLimits &limits = {});

/// Name and version of the engine that scripts run in, for people: "WebKitGTK 2.50.6".
[[nodiscard]] QString engineName();

/// Takes how a script ended while its engine is still there.
struct ScriptOutcomeSink
{
    ScriptValueSink &value; ///< The script's completion value, part by part.
    /// Called once, last. With an error there is no value, whatever came of it before.
    std::function<void(const std::optional<ScriptError> &)> done;
};

/// The same, but hands the outcome on as it is found, without making a tree of it: a script may
/// return very much. To end the engine takes a while, too, then.
void evaluateScript(const ScriptRequest &request,
                    const ScriptLogSink &log,
                    const ScriptLimits &limits,
                    const ScriptOutcomeSink &sink);

} // namespace penwick
