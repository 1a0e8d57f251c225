#pragma once

#include "macro/engine/MacroContext.h"
#include "macro/engine/MacroResult.h"
#include "macro/engine/ScriptHost.h"

#include <QString>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Runs the code of a macro against a snapshot of its window. Keeps nothing from one run to the
/// next. Use it from the main thread, which waits for the script.
class MacroRuntimeService final
{
public:
    /// Scripts run in this process; their log lines, prefixed with "[MacroLog] ", go to standard
    /// error, each at once.
    MacroRuntimeService();
    /// \param log takes the lines without the prefix.
    MacroRuntimeService(ScriptHost host, ScriptLogSink log);

    /// \param code the body of a function that sees `context` and returns the macro's answer.
    /// \param userInput the global variable of that name; without a value there is none.
    [[nodiscard]] tl::expected<MacroResult, MacroResultError>
    run(const QString &code,
        const MacroContext &context,
        const std::optional<QString> &userInput) const;

private:
    ScriptHost m_host;
    ScriptLogSink m_log;
};

} // namespace penwick
