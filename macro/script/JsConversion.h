#pragma once

#include "macro/script/ScriptRunner.h"

#include <JavaScriptCore/JavaScript.h>

namespace penwick {

/// Copies a value of the engine into a tree of plain values, as `runScript` describes it. Getters
/// and proxies make this run code of the script. Fails with
/// `ResultTooManyValues`, `ResultTooLarge` or `ResultTooDeep`.
[[nodiscard]] ScriptOutcome
convertJsValue(JSContextRef context, JSValueRef value, const ScriptLimits &limits);

} // namespace penwick
