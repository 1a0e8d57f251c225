#include "macro/script/EngineTrial.h"

#include <QDateTime>
#include <QFile>
#include <QTimeZone>

using namespace Qt::StringLiterals;

// Without this, the linker drops the resource of a static library. The macro must not be used
// inside a namespace.
static void registerTrial()
{
    Q_INIT_RESOURCE(trial);
}

namespace penwick {

namespace {

QString trialScript()
{
    registerTrial();
    QFile file(u":/penwick/trial.js"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Returns the offsets that the script must find; nothing when they cannot be predicted. The engine
/// has its own time zone data, which may be years older than the system's, so the offsets are those
/// of a past year. Only zones of the time zone database are compared: the engine does not accept
/// rules such as JST-9.
std::optional<QString> expectedOffsets(const QByteArray &timeZone)
{
    const QTimeZone zone(timeZone);
    const bool isOfDatabase = timeZone == "UTC" || timeZone.contains('/');
    if (!isOfDatabase || timeZone.startsWith('/') || timeZone.startsWith(':') || !zone.isValid())
        return std::nullopt;
    const auto minutesBehind = [&zone](qint64 secondsSinceEpoch) {
        return -zone.offsetFromUtc(QDateTime::fromSecsSinceEpoch(secondsSinceEpoch)) / 60;
    };
    constexpr qint64 kJanuary = 1263556800; // 2010-01-15 12:00 UTC
    constexpr qint64 kJuly = 1279195200;    // 2010-07-15 12:00 UTC
    return u"%1,%2"_s.arg(minutesBehind(kJanuary)).arg(minutesBehind(kJuly));
}

QStringList failuresIn(const ScriptValue &value)
{
    QStringList texts;
    const ScriptValue *failures = value.member(u"failures");
    const ScriptValue::List *list = failures != nullptr ? failures->list() : nullptr;
    if (list == nullptr)
        return {u"the trial gave no list"_s};
    for (const ScriptValue &failure : *list)
        texts << (failure.string() != nullptr ? *failure.string() : u"?"_s);
    return texts;
}

} // namespace

EngineTrial tryEngine(HostConnection &host, const QByteArray &timeZone, ScriptWaiter *waiter)
{
    EngineTrial trial;
    const auto log = [&trial](const QString &step) { trial.step = step; };
    const ScriptOutcome outcome = host.run({trialScript(), expectedOffsets(timeZone)}, log, waiter);
    trial.engine = host.engine();
    trial.protection = host.protection(0);
    if (outcome) {
        trial.failures = failuresIn(*outcome);
        trial.deniedCalls = host.deniedCalls();
    } else {
        trial.error = outcome.error();
        trial.deniedCalls = trial.error->ending.deniedCalls;
    }
    return trial;
}

} // namespace penwick
