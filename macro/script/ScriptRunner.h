#pragma once

#include "macro/script/ScriptHost.h"
#include "macro/script/ScriptValueSink.h"

#include <functional>
#include <memory>
#include <optional>

namespace penwick {

/// Evaluates the script on the calling thread, in an engine of its own that is destroyed before
/// this returns: a script finds nothing that an earlier one defined. The script sees the language
/// itself, `console.log` and `userInput`. There is no time limit.
///
/// In the value, undefined is dropped from objects and becomes null in lists; a getter that throws
/// counts as undefined; `toJSON` is not called. Typed arrays are empty objects. Elements are read
/// once and in order; promise jobs that a getter of a list starts may run after further elements
/// have been read.
[[nodiscard]] ScriptOutcome
runScript(const ScriptRequest &request, const ScriptLogSink &log, const ScriptLimits &limits = {});

/// Name and version of the script engine for display: "WebKitGTK 2.50.6".
[[nodiscard]] QString engineName();

/// Receives how a script ended, while its engine still exists.
struct ScriptOutcomeSink
{
    ScriptValueSink &value; ///< The script's completion value, part by part.
    /// Called once, last. With an error there is no value, whatever `value` received before.
    std::function<void(const std::optional<ScriptError> &)> done;
};

/// An engine for one script. It can be made ahead, so that the script does not wait for it.
class ScriptEngine final
{
public:
    ScriptEngine();
    ~ScriptEngine();
    Q_DISABLE_COPY_MOVE(ScriptEngine)

    /// Evaluates the script as `runScript` does, but passes the value on while it is converted,
    /// without a tree of it in memory: a script may return a very large value. Calls `sink.done`
    /// before the engine is destroyed, which also takes a while. Call it once, on the thread that
    /// made the engine. Texts of the request that do not own their memory must outlive this.
    void evaluate(const ScriptRequest &request,
                  const ScriptLogSink &log,
                  const ScriptLimits &limits,
                  const ScriptOutcomeSink &sink);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace penwick
