#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/script/ScriptHost.h"

#include <QString>

#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Runs the code of a macro against a snapshot of its window. Keeps no state between runs. Use it
/// from the main thread.
class MacroRuntimeService final
{
public:
    /// Runs each script in a process of its own. Its log lines, prefixed with "[MacroLog] ", are
    /// written to standard error as they arrive.
    MacroRuntimeService();
    /// \param log receives the lines without the prefix.
    MacroRuntimeService(ScriptHost host, ScriptLogSink log);

    using Outcome = tl::expected<MacroResult, MacroResultError>;
    /// Evaluates a macro's script once, on the calling thread, which may be any thread. Preferably
    /// destroyed on a thread other than the main one. `ScriptJob` describes how it waits.
    using Evaluation = std::function<ScriptOutcome(ScriptWaiter *)>;

    /// Runs a script and returns its result. There is no time limit: only the waiter can stop a
    /// script, and the run then fails with `Stopped`.
    /// \param code the body of a function that sees `context` and returns the macro's answer.
    /// \param userInput the global variable `userInput`; without a value there is no such variable.
    /// \param waiter how the calling thread waits; null to block. Not owned.
    [[nodiscard]] Outcome run(const QString &code,
                              const MacroContext &context,
                              const std::optional<QString> &userInput,
                              ScriptWaiter *waiter = nullptr) const;

    /// The first step of `run`, for callers that do other work while the script runs. `resultOf` is
    /// the second step: it turns the outcome of the evaluation into what `run` returns.
    [[nodiscard]] Evaluation prepare(const QString &code,
                                     const MacroContext &context,
                                     const std::optional<QString> &userInput) const;
    [[nodiscard]] static Outcome resultOf(const ScriptOutcome &outcome,
                                          const MacroContext &context);

private:
    ScriptHost m_host;
    ScriptLogSink m_log;
};

} // namespace penwick
