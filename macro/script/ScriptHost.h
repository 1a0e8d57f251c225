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
#include <vector>

namespace penwick {

/// One script to evaluate. Plain data, so that it can cross a process boundary.
struct ScriptRequest
{
    ScriptSource source; ///< The complete program text.
    /// The value of the global variable `userInput`; without one, the script has no such variable.
    std::optional<QString> userInput;
    /// Global variables named by `longTextName`, for long texts that the engine need not parse.
    /// Each variable is gone once it has been read. At most 255.
    std::vector<ScriptSource> longTexts = {};

    /// Of the source and the long texts, in UTF-16 code units.
    [[nodiscard]] qsizetype size() const
    {
        qsizetype size = source.size();
        for (const ScriptSource &text : longTexts)
            size += text.size();
        return size;
    }

    bool operator==(const ScriptRequest &) const = default;
};

/// Returns the name of the variable that holds the long text with this index.
[[nodiscard]] inline QString longTextName(std::size_t index)
{
    return QStringLiteral("penwickLongText") + QString::number(index);
}

/// Limits on a completion value, summed over the whole tree. An object that is reachable on several
/// paths counts once for each path.
struct ScriptLimits
{
    std::size_t values = std::size_t{1} << 25;
    std::size_t bytes = std::size_t{1} << 30; ///< Of UTF-16 text, keys included.
    std::size_t depth = 2000;                 ///< Nested objects and lists; a flat object has 1.
    /// Of the source and the long texts, in UTF-16 code units. A longer source makes the engine end
    /// the process.
    qsizetype sourceLength = 2147483647;
};

/// How a script host ended.
struct HostEnding
{
    enum class Cause {
        Ended,         ///< It exited with status `number`.
        Signal,        ///< Signal `number` ended it.
        DeniedCall,    ///< A killed system call ended it: the one of `deniedCalls` with `isKilled`.
        OutOfMemory,   ///< It reached its memory limit.
        MalformedData, ///< It was killed because it sent malformed data.
    };

    Cause cause = Cause::MalformedData;
    int number = 0;
    QList<DeniedCall> deniedCalls; ///< In the order in which each was first made.
    QString engine;                ///< Name and version of the script engine; empty when unknown.

    bool operator==(const HostEnding &) const = default;
};

/// Why a script returned no value.
struct ScriptError
{
    enum class Code {
        EngineUnavailable,   ///< The engine could not be initialized.
        SourceTooLong,       ///< The engine cannot hold a source of this length.
        Exception,           ///< The script threw or is no valid program; `text` says what.
        ResultTooManyValues, ///< The completion value has too many parts.
        ResultTooLarge,      ///< The completion value has too much text.
        ResultTooDeep,       ///< The completion value is nested too deeply.
        HostUnavailable,     ///< The script host could not be started.
        HostEnded,           ///< The script host ended before the script did; `ending` says how.
        OutOfMemory,         ///< The script reached its memory limit.
        Stopped,             ///< The waiter stopped the script: the user did, or a deadline passed.
    };

    Code code = Code::Exception;
    QString text; ///< The exception's string conversion; empty with every other code.
    int line = 0; ///< Line of the source, 1-based; 0 when unknown.
    HostEnding ending =
        {};         ///< With `HostEnded` and `OutOfMemory`; with `Stopped` its denied calls.
    int column = 0; ///< In the line, in UTF-16 code units, 1-based; 0 when unknown.

    bool operator==(const ScriptError &) const = default;
};

/// Receives the string of each `console.log` while the script runs, on the thread that waits for
/// the script. Must not throw.
using ScriptLogSink = std::function<void(const QString &)>;

/// The script's completion value, or why there is none. The value is also null when the completion
/// value is undefined and when the script threw a value that has no string conversion.
using ScriptOutcome = tl::expected<ScriptValue, ScriptError>;

/// Decides how the calling thread waits while a script runs in another process.
class ScriptWaiter
{
public:
    ScriptWaiter() = default;
    ScriptWaiter(const ScriptWaiter &) = delete;
    ScriptWaiter &operator=(const ScriptWaiter &) = delete;
    virtual ~ScriptWaiter() = default;

    /// Called repeatedly, even while the script's log keeps the caller busy. Returns when
    /// `descriptor` is readable, or when it is writable and `forWriting` is set; may return earlier
    /// at any time.
    /// \return false to stop the script.
    [[nodiscard]] virtual bool wait(int descriptor, bool forWriting) = 0;
};

/// Evaluates one script. Call it once. It may be called on another thread than the one that created
/// it, and is best destroyed there. Returns when the script has ended, or with `Stopped` when the
/// waiter stops the script. Without a waiter (null) the thread blocks meanwhile.
using ScriptJob =
    std::function<ScriptOutcome(ScriptRequest, const ScriptLogSink &, ScriptWaiter *)>;

/// Prepares for one script and returns its job. Call it on the main thread.
using ScriptHost = std::function<ScriptJob()>;

} // namespace penwick
