#include "macro/engine/HostEndingText.h"

#include "macro/script/SystemCallName.h"
#include "wording/WordingLookup.h"

#include <csignal>
#include <cstring>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

/// The names of the causes, for the user or for the log.
struct Words
{
    QString deniedCall;
    QString signal;
    QString exitStatus;
    QString garbled;
    QString refusedCalls;
    QString killedForMemory;
};

Words userWords()
{
    return {wording::text(u"macro.ending.deniedCall"_s),
            wording::text(u"macro.ending.signal"_s),
            wording::text(u"macro.ending.exitStatus"_s),
            wording::text(u"macro.ending.garbled"_s),
            wording::text(u"macro.ending.refusedCalls"_s),
            wording::text(u"macro.ending.killedForMemory"_s)};
}

Words logWords()
{
    return {u"denied system call"_s,
            u"signal"_s,
            u"exit status"_s,
            u"its answer makes no sense"_s,
            u"refused system calls"_s,
            u"perhaps for want of memory"_s};
}

QString signalName(int signal)
{
#ifdef __GLIBC__
    if (const char *name = sigabbrev_np(signal))
        return u"SIG"_s + QString::fromLatin1(name);
#endif
    return QString::number(signal);
}

QString cause(const HostEnding &ending, const Words &words)
{
    switch (ending.cause) {
    case HostEnding::Cause::Ended:
        return words.exitStatus + u": "_s + QString::number(ending.number);
    case HostEnding::Cause::Signal:
        return words.signal + u": "_s + signalName(ending.number);
    case HostEnding::Cause::DeniedCall:
        return words.deniedCall + u": "_s + deniedCallNames(ending.deniedCalls, true);
    case HostEnding::Cause::MalformedData:
    case HostEnding::Cause::OutOfMemory:
        break;
    }
    return words.garbled;
}

/// Puts the engine last, if it is known.
QStringList details(const HostEnding &ending, const Words &words)
{
    QStringList details{cause(ending, words)};
    // When the machine runs out of memory, the kernel kills script hosts first.
    if (ending.cause == HostEnding::Cause::Signal && ending.number == SIGKILL)
        details << words.killedForMemory;
    const QString refused = deniedCallNames(ending.deniedCalls, false);
    if (!refused.isEmpty())
        details << words.refusedCalls + u": "_s + refused;
    if (!ending.engine.isEmpty())
        details << ending.engine;
    return details;
}

} // namespace

QString deniedCallNames(const QList<DeniedCall> &calls, bool isKilled)
{
    QStringList names;
    for (const DeniedCall &call : calls)
        if ((call.isKilled != 0) == isKilled)
            names << systemCallName(call);
    return names.join(u", "_s);
}

QString reportableFailure(const QString &what, const QStringList &details)
{
    return wording::text(u"macro.ending.report"_s,
                         {what,
                          details.join(wording::text(u"macro.ending.separator"_s)),
                          wording::text(u"macro.ending.advice"_s)});
}

QStringList hostEndingDetails(const HostEnding &ending)
{
    return details(ending, userWords());
}

QString hostEndingText(const HostEnding &ending)
{
    return reportableFailure(wording::text(u"macro.error.hostDied"_s), hostEndingDetails(ending));
}

QString hostEndingLogLine(const HostEnding &ending)
{
    return u"The process that runs macros ended: "_s + details(ending, logWords()).join(u"; "_s);
}

} // namespace penwick
