#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/script/ScriptHost.h"

#include <QString>

#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Runs the code of a macro against a snapshot of its window. Keeps nothing from one run to the
/// next. Use it from the main thread.
class MacroRuntimeService final
{
public:
    /// Each script runs in a process of its own; its log lines, prefixed with "[MacroLog] ", go to
    /// standard error, each at once.
    MacroRuntimeService();
    /// \param log takes the lines without the prefix.
    MacroRuntimeService(ScriptHost host, ScriptLogSink log);

    using Outcome = tl::expected<MacroResult, MacroResultError>;
    /// Evaluates a macro's script, once, on whatever thread it is called; not on the main thread it
    /// is best destroyed, too. As to waiting and the waiter see `ScriptJob`.
    using Evaluation = std::function<ScriptOutcome(ScriptWaiter *)>;

    /// \param code the body of a function that sees `context` and returns the macro's answer.
    /// Returns when the script has ended. There is no time limit: only the waiter ends a script
    /// before its time, which fails with `Timeout`.
    /// \param userInput the global variable of that name; without a value there is none.
    /// \param waiter how the calling thread waits; null to block. Not owned.
    [[nodiscard]] Outcome run(const QString &code,
                              const MacroContext &context,
                              const std::optional<QString> &userInput,
                              ScriptWaiter *waiter = nullptr) const;

    /// The same in steps, for who does other things while the script runs: `resultOf` what the
    /// evaluation gives is what `run` returns.
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
