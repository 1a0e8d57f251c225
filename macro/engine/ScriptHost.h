#pragma once

#include "macro/engine/ScriptValue.h"

#include <QString>

#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// One script to evaluate. Plain data, so that it can cross a process boundary.
struct ScriptRequest
{
    QString source; ///< A whole program text.
    /// The global variable `userInput`; without a value there is no such variable.
    std::optional<QString> userInput;
};

/// Why a script gave no value.
struct ScriptError
{
    enum class Code {
        EngineUnavailable, ///< The engine could not be set up.
        SourceTooLong,     ///< The engine cannot hold a source of this length.
        Exception,         ///< The script threw, or is no valid program; `text` says what.
        ResultTooLarge,    ///< The completion value has too many parts or too much text.
        ResultTooDeep,     ///< The completion value is nested too deeply.
    };

    Code code = Code::Exception;
    QString text; ///< The exception's string conversion; empty with every other code.

    bool operator==(const ScriptError &) const = default;
};

/// Takes the string of each `console.log`, while the script runs. Must not throw.
using ScriptLogSink = std::function<void(const QString &)>;

/// The script's completion value; null also where that is undefined, or where the script threw a
/// value that has no string conversion.
using ScriptOutcome = tl::expected<ScriptValue, ScriptError>;

/// What evaluates a script, in this process or outside of it. Returns when the script has ended.
using ScriptHost = std::function<ScriptOutcome(ScriptRequest, const ScriptLogSink &)>;

} // namespace penwick
