#pragma once

#include "macro/script/JsTextReader.h"
#include "macro/script/ScriptRunner.h"
#include "macro/script/ScriptValueSink.h"

#include <JavaScriptCore/JavaScript.h>

namespace penwick {

/// Passes a value of the engine to `sink` as plain values, in the form that `runScript` describes.
/// Getters and proxies run code of the script meanwhile.
/// \param reader of the same engine.
/// \return nothing on success; otherwise `ResultTooManyValues`, `ResultTooLarge` or
/// `ResultTooDeep`, and what the sink received is void.
[[nodiscard]] std::optional<ScriptError> convertJsValue(JSContextRef context,
                                                        JSValueRef value,
                                                        JsTextReader &reader,
                                                        const ScriptLimits &limits,
                                                        ScriptValueSink &sink);

} // namespace penwick
