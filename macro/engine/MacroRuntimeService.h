#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/script/ScriptHost.h"

#include <QString>

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

    /// \param code the body of a function that sees `context` and returns the macro's answer.
    /// Returns when the script has ended. There is no time limit: only the waiter ends a script
    /// before its time, which fails with `Timeout`.
    /// \param userInput the global variable of that name; without a value there is none.
    /// \param waiter how the calling thread waits; null to block. Not owned.
    [[nodiscard]] tl::expected<MacroResult, MacroResultError>
    run(const QString &code,
        const MacroContext &context,
        const std::optional<QString> &userInput,
        ScriptWaiter *waiter = nullptr) const;

private:
    ScriptHost m_host;
    ScriptLogSink m_log;
};

} // namespace penwick
