#pragma once

#include "macro/script/ScriptRunner.h"
#include "macro/script/ScriptValueSink.h"

#include <JavaScriptCore/JavaScript.h>

namespace penwick {

/// Hands a value of the engine to `sink` as plain values, as `runScript` describes them. Getters
/// and proxies make this run code of the script.
/// \return nothing where all went well; else `ResultTooManyValues`, `ResultTooLarge` or
///         `ResultTooDeep`, and what the sink took is void.
[[nodiscard]] std::optional<ScriptError> convertJsValue(JSContextRef context,
                                                        JSValueRef value,
                                                        const ScriptLimits &limits,
                                                        ScriptValueSink &sink);

} // namespace penwick
