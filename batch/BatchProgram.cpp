#include "batch/BatchProgram.h"

#include "batch/BatchInputs.h"
#include "batch/Interruption.h"
#include "batch/OrderedRun.h"
#include "batch/ProgressLine.h"
#include "batch/ReportPrinter.h"
#include "macro/script/ScriptHostPool.h"
#include "platform/files/FileVersion.h"
#include "platform/json/JsonText.h"
#include "platform/process/StandardOutput.h"
#include "platform/settings/SystemTimeZone.h"
#include "wording/FileReasons.h"
#include "wording/RememberedProfile.h"
#include "wording/SourceLabel.h"
#include "wording/WordingLookup.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <unistd.h>

namespace penwick {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kFailure = 2;
constexpr int kSignalBase = 128; // Shells add the number of the signal to it.

int fail(const QString &message)
{
    writeWholeErrorLine(u"penwick-macro: "_s + message);
    return kFailure;
}

int failUsage(const UsageFault &fault)
{
    return fail(fault.message() + u'\n' + wording::text(u"batch.seeHelp"_s));
}

int failInput(const InputFault &fault)
{
    if (const auto *usage = std::get_if<UsageFault>(&fault))
        return failUsage(*usage);
    const auto &list = *std::get_if<NameListError>(&fault);
    return fail(QFile::decodeName(list.path) + u": "_s + wording::reasonText(list.error.kind));
}

/// The exit status after standard output has failed. A reader that closed its end wants no more;
/// the program then ends as others do, by SIGPIPE.
int failOutput(const FileError &error)
{
    if (error.errnoValue == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    return fail(wording::text(u"cli.outputUnwritable"_s) + u": "_s +
                wording::reasonText(error.kind));
}

int answer(const QByteArray &text)
{
    const auto written = writeStandardOutput(text);
    return written ? 0 : failOutput(written.error());
}

/// Blanks instead of characters that would break the line.
QString onOneLine(QString text)
{
    for (QChar &character : text)
        if (character.category() == QChar::Other_Control)
            character = u' ';
    return text;
}

QByteArray listLine(const Macro &macro, bool asJson)
{
    if (asJson)
        return JsonText::writeLine(JsonObject{{u"id"_s, macro.id},
                                              {u"name"_s, macro.name},
                                              {u"source"_s, macro.source},
                                              {u"description"_s, macro.description},
                                              {u"isEnabled"_s, macro.isEnabled}}) +
               '\n';
    QStringList fields;
    for (const QString &field : {macro.id, macro.name, wording::sourceLabel(macro.source)})
        fields << onOneLine(field);
    return fields.join(u'\t').toUtf8() + '\n';
}

int listMacros(const BatchOptions &options)
{
    const auto macros = storedMacros();
    if (!macros)
        return fail(macros.error());
    QByteArray lines;
    for (const Macro &macro : *macros)
        lines += listLine(macro, options.json);
    return answer(lines);
}

/// True when standard output goes to the file of an input, which it would destroy.
bool wouldOverwrite(const QList<BatchInput> &inputs)
{
    const auto output = FileVersion::of(STDOUT_FILENO);
    return output && std::any_of(inputs.begin(), inputs.end(), [&](const BatchInput &input) {
               const auto version = input.isStandardInput
                                        ? FileVersion::of(STDIN_FILENO)
                                        : FileVersion::of(QFile::decodeName(input.name));
               return version && version->isOfSameFileAs(*output);
           });
}

/// Delivers reports until all are there, standard output fails, or a signal arrives.
class Delivery final
{
public:
    Delivery(const BatchPlan &plan, const QList<BatchInput> &inputs)
        : m_plan(plan)
        , m_inputs(inputs)
        , m_printer(plan.options)
        , m_progress(plan.options.verbosity != BatchOptions::Verbosity::Quiet, inputs.size())
    {
    }

    int run(const HostProcess::Settings &settings)
    {
        const Interruption interruption;
        OrderedRun run(m_plan, m_inputs, settings);
        qsizetype delivered = 0;
        while (delivered < m_inputs.size() && Interruption::signal() == 0) {
            const auto report = run.next(50ms);
            m_progress.show(run.done(), run.currentName());
            // A program that the signal reached, too, may be the reason for what the report says.
            if (Interruption::signal() != 0 || (report && !print(*report)))
                break;
            delivered += report ? 1 : 0;
        }
        m_progress.hide();
        if (Interruption::signal() != 0)
            return interrupted(run);
        if (!m_output) {
            run.stop(); // The program may end without destructors.
            run.join();
            return failOutput(m_output.error());
        }
        m_printer.printSummary();
        return m_printer.exitStatus();
    }

private:
    bool print(const FileReport &report)
    {
        m_progress.hide();
        m_output = m_printer.print(report);
        return m_output.has_value();
    }

    int interrupted(OrderedRun &run)
    {
        const int status = kSignalBase + Interruption::signal();
        // Its thread waits for input that may never come.
        if (std::any_of(m_inputs.begin(), m_inputs.end(), [](const BatchInput &input) {
                return input.isStandardInput;
            }))
            _exit(status);
        run.stop();
        return status;
    }

    const BatchPlan &m_plan;
    const QList<BatchInput> &m_inputs;
    ReportPrinter m_printer;
    ProgressLine m_progress;
    tl::expected<void, FileError> m_output;
};

int runMacros(const BatchOptions &options)
{
    const auto macros = chosenMacros(options);
    if (!macros)
        return fail(macros.error());
    const auto inputs = collectInputs(options);
    if (!inputs)
        return failInput(inputs.error());
    const bool writesText = options.writesText() || options.outputFile == "-";
    if (writesText && wouldOverwrite(*inputs))
        return fail(wording::text(u"batch.outputIsInput"_s));
    const BatchPlan plan{options, *macros, systemTimeZone()};
    try {
        return Delivery(plan, *inputs).run(ScriptHostPool::shared().nextSettings());
    } catch (const std::system_error &) { // No thread can be started.
        return fail(wording::text(u"macro.error.hostUnavailable"_s));
    }
}

} // namespace

int runBatchProgram(const QByteArrayList &arguments)
{
    useRememberedProfile();
    const auto options = BatchOptions::parse(arguments);
    if (!options)
        return failUsage(options.error());
    switch (options->request) {
    case BatchOptions::Request::ShowHelp:
        return answer(batchHelpText().toUtf8() + '\n');
    case BatchOptions::Request::ShowVersion:
        return answer(QByteArray("penwick-macro ") + PENWICK_VERSION + '\n');
    case BatchOptions::Request::ListMacros:
        return listMacros(*options);
    case BatchOptions::Request::Run:
        break;
    }
    return runMacros(*options);
}

} // namespace penwick
