#include "batch/FileTask.h"

#include "batch/UnifiedDiff.h"
#include "macro/engine/MacroRuntimeService.h"
#include "macro/engine/ResultExecution.h"
#include "platform/files/FileBackup.h"
#include "platform/files/FileSystem.h"
#include "text/CutText.h"
#include "text/Utf8.h"
#include "wording/FileReasons.h"
#include "wording/WordingLookup.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <new>
#include <utility>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 kLongestLog = 1'000'000; // UTF-16 code units; a macro may log without end.

QLatin1StringView codeOf(FileError::Kind kind)
{
    using Kind = FileError::Kind;
    switch (kind) {
    case Kind::NotFound:
        return "notFound"_L1;
    case Kind::IsFolder:
        return "isFolder"_L1;
    case Kind::NotRegular:
        return "notRegular"_L1;
    case Kind::PermissionDenied:
        return "permissionDenied"_L1;
    case Kind::NoSpace:
        return "noSpace"_L1;
    case Kind::InvalidPath:
        return "invalidPath"_L1;
    case Kind::Changed:
        return "changed"_L1;
    case Kind::Damaged:
        return "damaged"_L1;
    default:
        return "inputOutput"_L1;
    }
}

QLatin1StringView codeOf(MacroResultError::Code code)
{
    using Code = MacroResultError::Code;
    switch (code) {
    case Code::UnknownTextEditType:
        return "unknownTextEditType"_L1;
    case Code::NotAnObject:
        return "notAnObject"_L1;
    case Code::MissingTextField:
        return "missingTextField"_L1;
    case Code::InvalidReplaceLines:
        return "invalidReplaceLines"_L1;
    case Code::OutOfRangeOffset:
        return "outOfRangeOffset"_L1;
    case Code::NoSelectionForReplaceSelection:
        return "noSelection"_L1;
    case Code::Timeout:
    case Code::Stopped: // Only the time limit stops a run whose report is printed.
        return "timeout"_L1;
    case Code::ExecutionException:
        break;
    }
    return "exception"_L1;
}

BatchFailure failureOf(const FileError &error)
{
    return {codeOf(error.kind), wording::reasonText(error.kind)};
}

BatchFailure failureOf(const MacroResultError &error, const QString &macro)
{
    return {codeOf(error.code), error.errorDescription(), macro, error.line, error.column};
}

BatchFailure invalidUtf8(qint64 byteOffset)
{
    return {"notUtf8"_L1, wording::text(u"batch.notUtf8"_s, {QString::number(byteOffset)})};
}

/// A text and the state of the file that it comes from.
using ReadOutcome = tl::expected<StoredText, BatchFailure>;

/// Like `readTextFile`, but with the place of an invalid byte, and for standard input too.
ReadOutcome readInput(const BatchInput &input, const TransferProgress &progress)
{
    const QString path = QFile::decodeName(input.name);
    if (!input.isStandardInput && QFile::encodeName(path) != input.name)
        return tl::unexpected(failureOf(FileError{FileError::Kind::InvalidPath, 0}));
    StoredText stored;
    if (!input.isStandardInput)
        stored.version = FileVersion::of(path);
    Utf8Reader reader;
    const auto take = [&](QByteArrayView block) {
        return !progress.isCancelled() && reader.append(block);
    };
    const auto read =
        input.isStandardInput ? readStandardInput(take) : readFileInBlocks(path, take);
    // The reader stops at the first invalid byte, which is reported as a cancellation.
    if (!read && (read.error().kind != FileError::Kind::Cancelled || progress.isCancelled()))
        return tl::unexpected(failureOf(read.error()));
    auto text = reader.finish();
    if (!text)
        return tl::unexpected(invalidUtf8(text.error().byteOffset));
    stored.text = *std::move(text);
    return stored;
}

/// Nothing if the text does not have the place.
std::optional<SelectedRange> rangeOf(const SelectionOption &option, const Text &text)
{
    if (const auto *range = std::get_if<SelectedRange>(&option))
        return range->end <= text.size() ? std::optional(*range) : std::nullopt;
    const qint64 line = std::get_if<SelectedLine>(&option)->number - 1;
    const qint64 lastLine = text.lineBreaksBefore(text.size());
    if (line > lastLine)
        return std::nullopt;
    const qint64 end = line == lastLine
                           ? text.size()
                           : text.previousClusterBoundary(text.offsetAfterLineBreak(line + 1));
    return SelectedRange{text.offsetAfterLineBreak(line), end};
}

std::chrono::microseconds elapsedSince(QElapsedTimer &timer)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::nanoseconds(timer.nsecsElapsed()));
}

/// Adds the line to the log, and drops what is too much.
void appendToLog(QStringList &log, qint64 &length, const QString &line)
{
    if (length > kLongestLog)
        return;
    const qint64 room = kLongestLog - length;
    length += line.size() + 1;
    log += length > kLongestLog ? line.first(std::min<qint64>(line.size(), room)) + u'…' : line;
}

} // namespace

/// While it lives, FileWorker::stop stops the waiter. It ends with the waiter's scope, also by an
/// exception.
class FileWorker::StoppableRun final
{
public:
    StoppableRun(FileWorker &worker, StoppableWaiter &waiter)
        : m_worker(worker)
    {
        const std::lock_guard lock(m_worker.m_mutex);
        m_worker.m_waiter = &waiter;
        if (m_worker.m_isStopped)
            waiter.stop();
    }

    ~StoppableRun()
    {
        const std::lock_guard lock(m_worker.m_mutex);
        m_worker.m_waiter = nullptr;
    }

    Q_DISABLE_COPY_MOVE(StoppableRun)

private:
    FileWorker &m_worker;
};

/// The work on one input.
class FileWorker::Task final
{
public:
    Task(FileWorker &worker, const BatchInput &input)
        : m_worker(worker)
        , m_plan(worker.m_plan)
        , m_options(worker.m_plan.options)
    {
        m_report.input = input;
    }

    FileReport run()
    {
        m_timer.start();
        const bool isDone = read() && runMacros() && finish();
        if (!isDone)
            m_report.result = Text();
        if (isInterrupted())
            m_report.status = FileReport::Status::Interrupted;
        return std::move(m_report);
    }

private:
    using Status = FileReport::Status;

    bool fail(const BatchFailure &failure)
    {
        m_report.status = Status::Failed;
        m_report.failure = failure;
        return false;
    }

    [[nodiscard]] bool isInterrupted() const
    {
        return m_report.status == Status::Failed && m_worker.m_progress.isCancelled();
    }

    void addTime(std::chrono::microseconds StepTimes::*step)
    {
        m_report.times.*step += elapsedSince(m_timer);
        m_timer.start();
    }

    bool read()
    {
        auto stored = readInput(m_report.input, m_worker.m_progress);
        addTime(&StepTimes::reading);
        if (!stored) {
            fail(stored.error());
            if (m_options.ignoreNonUtf8 && stored.error().code == "notUtf8"_L1)
                m_report.status = Status::Skipped;
            return false;
        }
        m_stored = *std::move(stored);
        m_state = {m_stored.text, 0, 0};
        if (!m_options.selection)
            return true;
        const auto range = rangeOf(*m_options.selection, m_stored.text);
        if (!range)
            return fail({"outOfRange"_L1, wording::text(u"batch.outOfRange"_s)});
        m_state.select(range->start, range->end);
        return true;
    }

    bool runMacros()
    {
        const std::lock_guard lock(m_worker.m_hosts.mutex);
        m_timer.start();
        const auto run = [this](const BatchMacro &macro) { return runMacro(macro); };
        return std::all_of(m_plan.macros.begin(), m_plan.macros.end(), run);
    }

    bool runMacro(const BatchMacro &macro)
    {
        const MacroContext context = buildMacroContext(snapshot(), macro.id, macro.name);
        const MacroRuntimeService service(
            [this] { return job(); },
            [this](const QString &line) { appendToLog(m_report.log, m_logLength, line); });
        const auto result = runService(service, macro, context);
        addTime(&StepTimes::macros);
        if (!result)
            return fail(failureOf(result.error(), macro.name));
        m_report.notifications += result->notifications;
        m_report.edits += result->textEdits.size();
        ExecutedResult executed = executeMacroResult(*result, m_state, {});
        addTime(&StepTimes::macros);
        if (executed.error)
            return fail(failureOf(*executed.error, macro.name));
        m_state = std::move(executed.state);
        return true;
    }

    [[nodiscard]] EditorSnapshot snapshot() const
    {
        const BatchInput &input = m_report.input;
        const TextRange selection = m_state.selection();
        return {.text = m_state.text,
                .selectionLocation = selection.location,
                .selectionLength = selection.length,
                .filePath = QFile::decodeName(input.isStandardInput ? m_options.standardInputName
                                                                    : input.name),
                .isModified = !m_state.text.isSameValue(m_stored.text),
                .now = QDateTime::currentDateTime(),
                .timeZone = m_plan.timeZone};
    }

    MacroRuntimeService::Outcome runService(const MacroRuntimeService &service,
                                            const BatchMacro &macro,
                                            const MacroContext &context)
    {
        const QDeadlineTimer deadline =
            m_options.timeout == 0 ? QDeadlineTimer(QDeadlineTimer::Forever)
                                   : QDeadlineTimer(std::chrono::seconds(m_options.timeout));
        StoppableWaiter waiter(deadline);
        const StoppableRun stoppable(m_worker, waiter);
        return service.run(macro.code, context, m_options.userInput, &waiter);
    }

    ScriptJob job()
    {
        return
            [this](const ScriptRequest &request, const ScriptLogSink &log, ScriptWaiter *waiter) {
                const qsizetype lines = m_report.log.size();
                const qint64 length = m_logLength;
                return m_worker.m_hosts.hosts.run(request, log, waiter, [this, lines, length] {
                    m_report.log.resize(lines);
                    m_logLength = length;
                });
            };
    }

    /// Called when all macros have run.
    bool finish()
    {
        const bool isChanged = !(m_state.text == m_stored.text);
        m_report.status = isChanged ? Status::Changed : Status::Unchanged;
        if (m_options.writesText() || m_options.outputFile == "-")
            m_report.result = m_state.text;
        if (isChanged && m_options.diff && !compare())
            return false;
        const bool isWritten = write(isChanged);
        addTime(&StepTimes::writing);
        return isWritten;
    }

    bool compare()
    {
        const BatchInput &input = m_report.input;
        const bool hasOtherName = input.isStandardInput && !m_options.standardInputName.isEmpty();
        auto diff = unifiedDiff(
            hasOtherName ? m_options.standardInputName : input.name, m_stored.text, m_state.text);
        if (!diff)
            return fail({"diffUnavailable"_L1, wording::text(u"batch.diffUnavailable"_s)});
        m_report.diff = *std::move(diff);
        return true;
    }

    bool write(bool isChanged)
    {
        const QByteArray &output = m_options.outputFile;
        if (!output.isEmpty() && output != "-" && !isInputFile(output))
            return writeTo(QFile::decodeName(output), {});
        if (!isChanged || (!m_options.inPlace && (output.isEmpty() || output == "-")))
            return true;
        const QString path = QFile::decodeName(m_report.input.name);
        const Replaceable asRead{.anyState = false, .state = m_stored.version, .missing = false};
        if (m_options.backupSuffix && !backUp(path, asRead))
            return false;
        return writeTo(path, asRead);
    }

    [[nodiscard]] bool isInputFile(const QByteArray &path) const
    {
        const auto version = FileVersion::of(QFile::decodeName(path));
        return version && m_stored.version && version->isOfSameFileAs(*m_stored.version);
    }

    bool backUp(const QString &path, const Replaceable &asRead)
    {
        // A file that cannot be replaced needs no backup, and an earlier one is worth keeping.
        if (!asRead.fits(path) || !QFileInfo(path).isWritable())
            return true;
        const QString backup = path + QFile::decodeName(*m_options.backupSuffix);
        const auto made = makeBackup(path, backup, [this](const WriteBytes &write) {
            return m_stored.text.forEachUtf8Block(write);
        });
        return made ? true : failToWrite(backup, made.error());
    }

    bool writeTo(const QString &path, const Replaceable &replaceable)
    {
        const auto written = writeTextFile(path, m_state.text, m_worker.m_progress, replaceable);
        if (written)
            return true;
        const DocumentError &error = written.error();
        return failToWrite(path, FileError{error.fileErrorKind, error.code});
    }

    /// Names the file in the message if it is not that of the input.
    bool failToWrite(const QString &path, const FileError &error)
    {
        BatchFailure failure = failureOf(error);
        if (QFile::encodeName(path) != m_report.input.name)
            failure.message = cutText(path, kLongestShown) + u": "_s + failure.message;
        return fail(failure);
    }

    FileWorker &m_worker;
    const BatchPlan &m_plan;
    const BatchOptions &m_options;
    FileReport m_report;
    StoredText m_stored;
    SelectedText m_state;
    qint64 m_logLength = 0; // Of the report's log, in UTF-16 code units.
    QElapsedTimer m_timer;  // Since the current step began.
};

FileWorker::FileWorker(const BatchPlan &plan, SharedHosts &hosts)
    : m_plan(plan)
    , m_hosts(hosts)
{
}

void FileWorker::prepare()
{
    const std::unique_lock lock(m_hosts.mutex, std::try_to_lock);
    if (lock.owns_lock()) // Otherwise another worker is running a script in the process.
        m_hosts.hosts.prepare();
}

FileReport FileWorker::process(const BatchInput &input)
{
    try {
        return Task(*this, input).run();
    } catch (const std::bad_alloc &) {
        FileReport report;
        report.input = input;
        report.status = FileReport::Status::Failed;
        report.failure = {"outOfMemory"_L1, wording::text(u"macro.error.outOfMemory"_s)};
        return report;
    }
}

void FileWorker::stop()
{
    m_progress.cancel();
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    if (m_waiter != nullptr)
        m_waiter->stop();
}

} // namespace penwick
