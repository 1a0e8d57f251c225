#include "app/ScriptHostReport.h"

#include "macro/engine/HostEndingText.h"
#include "wording/WordingLookup.h"

#include <QStringList>

namespace penwick {

using namespace Qt::StringLiterals;

namespace {

QString protectionLine(const QString &name, bool isActive)
{
    return u"  "_s + name + u": "_s +
           (isActive ? wording::text(u"cli.sandboxActive"_s)
                     : wording::text(u"cli.sandboxMissing"_s));
}

QStringList causes(const ScriptError &error)
{
    switch (error.code) {
    case ScriptError::Code::HostEnded:
        return hostEndingDetails(error.ending);
    case ScriptError::Code::HostUnavailable:
        return {wording::text(u"macro.error.hostUnavailable"_s)};
    case ScriptError::Code::OutOfMemory:
        return {wording::text(u"macro.error.outOfMemory"_s)};
    case ScriptError::Code::Stopped:
        return {wording::text(u"macro.trial.endless"_s)};
    case ScriptError::Code::Exception:
        return {error.text};
    default:
        return {wording::text(u"macro.trial.noEngine"_s)};
    }
}

QString refusedCalls(const EngineTrial &trial)
{
    const QString names = deniedCallNames(trial.deniedCalls, false);
    return names.isEmpty() ? QString()
                           : wording::text(u"macro.ending.refusedCalls"_s) + u": "_s + names;
}

/// Returns why the trial did not pass: the step, the cause, refused calls, the engine. Empty when
/// it passed.
QStringList failureDetails(const EngineTrial &trial)
{
    if (trial.isPassed())
        return {};
    QStringList details = trial.failures;
    if (trial.error)
        details = QStringList{trial.step} + causes(*trial.error);
    details << refusedCalls(trial) << trial.engine;
    details.removeAll(QString());
    details.removeDuplicates(); // The details of an ended host repeat some of these.
    return details;
}

QStringList protectionLines(const HostProtection &protection)
{
    return {wording::text(u"cli.sandbox"_s),
            protectionLine(wording::text(u"cli.sandboxProcess"_s), true),
            protectionLine(wording::text(u"cli.sandboxMemory"_s), protection.memoryLimit),
            protectionLine(wording::text(u"cli.sandboxSystemCalls"_s), protection.systemCallFilter),
            protectionLine(wording::text(u"cli.sandboxFiles"_s), protection.fileAccessRules)};
}

QStringList engineLines(const EngineTrial &trial)
{
    const QString engine = wording::text(u"cli.engine"_s);
    const QString check = wording::text(u"cli.engineTrial"_s);
    const QStringList failures = failureDetails(trial);
    const QString outcome = failures.isEmpty()
                                ? wording::text(u"cli.engineTrialPassed"_s)
                                : failures.join(wording::text(u"macro.ending.separator"_s));
    QStringList lines;
    if (!trial.engine.isEmpty())
        lines << engine + u": "_s + trial.engine;
    lines << u"  "_s + check + u": "_s + outcome;
    const QString refused = refusedCalls(trial);
    if (failures.isEmpty() && !refused.isEmpty())
        lines << u"  "_s + refused;
    return lines;
}

} // namespace

QString scriptHostReport(const EngineTrial &trial)
{
    QStringList lines;
    if (trial.protection)
        lines = protectionLines(*trial.protection);
    return (lines + engineLines(trial)).join(u'\n');
}

QString missingProtections(const std::optional<HostProtection> &protection)
{
    if (!protection)
        return u"the process that runs them"_s;
    QStringList missing;
    if (!protection->memoryLimit)
        missing << u"a memory limit"_s;
    if (!protection->systemCallFilter)
        missing << u"a filter of system calls (seccomp)"_s;
    if (!protection->fileAccessRules)
        missing << u"file access rules (Landlock)"_s;
    return missing.join(u", "_s);
}

QString engineWarning(const EngineTrial &trial)
{
    const QStringList failures = failureDetails(trial);
    if (!failures.isEmpty())
        return reportableFailure(wording::text(u"macro.trial.failed"_s), failures);
    if (trial.protection && !trial.protection->systemCallFilter)
        return wording::text(u"macro.trial.noFilter"_s);
    return {};
}

QString engineLogLine(const EngineTrial &trial)
{
    if (trial.isPassed())
        return {};
    QStringList details = trial.failures;
    if (trial.error && trial.error->code == ScriptError::Code::HostEnded) {
        details << trial.step << hostEndingLogLine(trial.error->ending);
    } else if (trial.error) {
        details << trial.step << trial.error->text
                << u"error %1"_s.arg(static_cast<int>(trial.error->code));
    }
    details << deniedCallNames(trial.deniedCalls, false) << trial.engine;
    details.removeAll(QString());
    return u"The script engine fails its trial: "_s + details.join(u"; "_s);
}

std::optional<std::uint64_t> scriptMemory(const Preferences &preferences)
{
    const int megabytes = preferences.number(PreferenceId::MacroMemory);
    if (megabytes == 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(megabytes) << 20;
}

} // namespace penwick
