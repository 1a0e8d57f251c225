#pragma once

#include "macro/script/HostContract.h"
#include "macro/script/ScriptSource.h"
#include "macro/script/ScriptValue.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// One script to evaluate. Plain data, so that it can cross a process boundary.
struct ScriptRequest
{
    ScriptSource source; ///< A whole program text.
    /// The global variable `userInput`; without a value there is no such variable.
    std::optional<QString> userInput;

    bool operator==(const ScriptRequest &) const = default;
};

/// How large a completion value may grow, summed over the whole tree. Objects reached on several
/// paths count once per path.
struct ScriptLimits
{
    std::size_t values = std::size_t{1} << 25;
    std::size_t bytes = std::size_t{1} << 30; ///< Of UTF-16 text, keys included.
    std::size_t depth = 2000;                 ///< Nested objects and lists; a flat object has 1.
    /// Of the source, in UTF-16 code units. The engine ends the process above this.
    qsizetype sourceLength = 2147483647;
};

/// How the process that runs a script came to its end.
struct HostEnding
{
    enum class Cause {
        Ended,       ///< With exit status `number`.
        Signal,      ///< By signal `number`.
        DeniedCall,  ///< By a system call that the sandbox kills for, the one of `deniedCalls` that
                     ///< says so.
        OutOfMemory, ///< It had taken all the memory that it may have.
        Garbled,     ///< It was ended for sending what no host sends.
    };

    Cause cause = Cause::Garbled;
    int number = 0;
    QList<DeniedCall> deniedCalls; ///< In the order in which each was first made.
    QString engine;                ///< Name and version of the script engine; empty where unknown.

    bool operator==(const HostEnding &) const = default;
};

/// Why a script gave no value.
struct ScriptError
{
    enum class Code {
        EngineUnavailable,   ///< The engine could not be set up.
        SourceTooLong,       ///< The engine cannot hold a source of this length.
        Exception,           ///< The script threw, or is no valid program; `text` says what.
        ResultTooManyValues, ///< The completion value has too many parts.
        ResultTooLarge,      ///< The completion value has too much text.
        ResultTooDeep,       ///< The completion value is nested too deeply.
        HostUnavailable,     ///< The process that runs scripts could not be started.
        HostDied,            ///< That process ended before the script did; `ending` says how.
        OutOfMemory,         ///< The script took all the memory that it may have.
        Stopped,             ///< The person stopped the script.
    };

    Code code = Code::Exception;
    QString text;           ///< The exception's string conversion; empty with every other code.
    int line = 0;           ///< Of the source, 1-based, where the exception tells; otherwise 0.
    HostEnding ending = {}; ///< With `HostDied` and `OutOfMemory`; with `Stopped` its denied calls.

    bool operator==(const ScriptError &) const = default;
};

/// Takes the string of each `console.log`, while the script runs, on the thread that waits for it.
/// Must not throw.
using ScriptLogSink = std::function<void(const QString &)>;

/// The script's completion value; null also where that is undefined, or where the script threw a
/// value that has no string conversion.
using ScriptOutcome = tl::expected<ScriptValue, ScriptError>;

/// How the calling thread spends its time while a script runs elsewhere.
class ScriptWaiter
{
public:
    ScriptWaiter() = default;
    ScriptWaiter(const ScriptWaiter &) = delete;
    ScriptWaiter &operator=(const ScriptWaiter &) = delete;
    virtual ~ScriptWaiter() = default;

    /// Called again and again, also while the script keeps its caller busy with lines of its log.
    /// Returns once `descriptor` can be read from, or written to where `forWriting` is set; or
    /// earlier, at any time.
    /// \return false to stop the script.
    [[nodiscard]] virtual bool wait(int descriptor, bool forWriting) = 0;
};

/// Evaluates one script, once. May be called, and is best destroyed, on another thread than the one
/// that made it. Returns when the script has ended, or with `Stopped` when the waiter says so;
/// without a waiter (null) the thread blocks meanwhile.
using ScriptJob =
    std::function<ScriptOutcome(ScriptRequest, const ScriptLogSink &, ScriptWaiter *)>;

/// Gets ready for a script, on the main thread.
using ScriptHost = std::function<ScriptJob()>;

} // namespace penwick
