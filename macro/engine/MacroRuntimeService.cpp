#include "macro/engine/MacroRuntimeService.h"

#include "macro/engine/ContextJson.h"
#include "macro/engine/ContextUse.h"
#include "macro/engine/HostEndingText.h"
#include "macro/script/ScriptHostPool.h"
#include "platform/process/StandardOutput.h"
#include "wording/WordingLookup.h"

#include <QStringBuilder>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Code = MacroResultError::Code;

constexpr QStringView kBeforeContext = u"(function() {\n    var context = ";
constexpr QStringView kAfterContext = u";\n    ";
constexpr QStringView kAfterCode = u"\n})();";

// Puts the prefix before each line: without it, a line would look like one of penwick's own.
void logToStandardError(const QString &text)
{
    constexpr qsizetype kBlock = 65'536; // Bounds the memory for a text of many short lines.
    QString block;
    for (const QStringView line : QStringView(text).tokenize(u'\n')) {
        if (block.size() > kBlock)
            writeErrorLine(std::exchange(block, {}));
        if (!block.isEmpty())
            block += u'\n';
        block += u"[MacroLog] "_s;
        block += line;
    }
    writeErrorLine(block);
}

/// Returns the error of an exception, with its place in the macro's code instead of the whole
/// script. An exception from before the code has none.
MacroResultError exceptionError(const ScriptError &error)
{
    // The context contains no line breaks.
    const auto linesBefore =
        static_cast<int>(kBeforeContext.count(u'\n') + kAfterContext.count(u'\n'));
    const auto indentation =
        static_cast<int>(kAfterContext.size() - kAfterContext.lastIndexOf(u'\n') - 1);
    MacroResultError result{Code::ExecutionException, error.text};
    result.line = std::max(0, error.line - linesBefore);
    if (result.line > 0)
        result.column = std::max(0, error.column - (result.line == 1 ? indentation : 0));
    return result;
}

MacroResultError executionException(const QString &detail)
{
    return {Code::ExecutionException, detail};
}

void append(QString &text, const TextChunkView &chunk)
{
    if (chunk.ascii != nullptr)
        text += QLatin1StringView(chunk.ascii, chunk.length);
    else
        text += QStringView(chunk.utf16, chunk.length);
}

void writeInPieces(const Text &text, const ScriptSource::Sink &sink)
{
    constexpr qsizetype kPiece = 65'536;
    QString piece;
    text.forEachChunk(0, text.size(), [&](const TextChunkView &chunk) {
        append(piece, chunk);
        if (piece.size() >= kPiece) {
            sink(piece);
            piece.resize(0);
        }
        return true;
    });
    sink(piece);
}

// Writes the text when the source is read, so that a large one is not in memory a second time.
ScriptSource sourceOf(const Text &text)
{
    return {static_cast<qsizetype>(text.size()),
            [text](const ScriptSource::Sink &sink) { writeInPieces(text, sink); }};
}

// Returns nothing when the script is too long for the engine.
std::optional<ScriptRequest>
requestOf(const QString &code, const MacroContext &context, const std::optional<QString> &userInput)
{
    std::vector<Text> longTexts;
    const QString json = contextJson(withoutUnreadTexts(context.toDictionary(), code), &longTexts);
    const QString source = kBeforeContext % json % kAfterContext % code % kAfterCode;
    ScriptRequest request{source, userInput};
    for (const Text &text : longTexts) {
        if (text.size() > ScriptLimits().sourceLength)
            return std::nullopt;
        request.longTexts.push_back(sourceOf(text));
    }
    if (request.size() > ScriptLimits().sourceLength)
        return std::nullopt;
    return request;
}

MacroResultError resultError(const ScriptError &error)
{
    switch (error.code) {
    case ScriptError::Code::Exception:
        return exceptionError(error);
    case ScriptError::Code::EngineUnavailable:
        return executionException(u"JSContext の生成に失敗しました"_s);
    case ScriptError::Code::SourceTooLong:
        return executionException(u"context の JSON 変換に失敗しました"_s);
    case ScriptError::Code::ResultTooManyValues:
        return executionException(wording::text(u"macro.error.resultTooManyValues"_s));
    case ScriptError::Code::ResultTooLarge:
        return executionException(wording::text(u"macro.error.resultTooLarge"_s));
    case ScriptError::Code::ResultTooDeep:
        return executionException(wording::text(u"macro.error.resultTooDeep"_s));
    case ScriptError::Code::HostUnavailable:
        return executionException(wording::text(u"macro.error.hostUnavailable"_s));
    case ScriptError::Code::HostEnded:
        return executionException(hostEndingText(error.ending));
    case ScriptError::Code::OutOfMemory:
        return executionException(wording::text(u"macro.error.outOfMemory"_s));
    case ScriptError::Code::Stopped:
        return {Code::Stopped, {}};
    }
    Q_UNREACHABLE();
}

} // namespace

MacroRuntimeService::MacroRuntimeService()
    : MacroRuntimeService([] { return ScriptHostPool::shared().start(); }, logToStandardError)
{
}

MacroRuntimeService::MacroRuntimeService(ScriptHost host, ScriptLogSink log)
    : m_host(std::move(host))
    , m_log(std::move(log))
{
}

MacroRuntimeService::Outcome MacroRuntimeService::run(const QString &code,
                                                      const MacroContext &context,
                                                      const std::optional<QString> &userInput,
                                                      ScriptWaiter *waiter) const
{
    return resultOf(prepare(code, context, userInput)(waiter), context);
}

MacroRuntimeService::Evaluation MacroRuntimeService::prepare(
    const QString &code, const MacroContext &context, const std::optional<QString> &userInput) const
{
    return [job = m_host(), log = m_log, code, context, userInput](
               ScriptWaiter *waiter) -> ScriptOutcome {
        std::optional<ScriptRequest> request = requestOf(code, context, userInput);
        if (!request)
            return tl::unexpected(ScriptError{ScriptError::Code::SourceTooLong, {}});
        ScriptOutcome outcome = job(*std::move(request), log, waiter);
        if (!outcome && outcome.error().code == ScriptError::Code::HostEnded)
            writeErrorLine(u"penwick: "_s + hostEndingLogLine(outcome.error().ending));
        return outcome;
    };
}

MacroRuntimeService::Outcome MacroRuntimeService::resultOf(const ScriptOutcome &outcome,
                                                           const MacroContext &context)
{
    if (!outcome)
        return tl::unexpected(resultError(outcome.error()));
    if (outcome->map() == nullptr)
        return tl::unexpected(MacroResultError{Code::NotAnObject, {}});
    return parseMacroResult(*outcome, context);
}

} // namespace penwick
