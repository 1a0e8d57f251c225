#include "macro/script/ScriptHostPool.h"

#include "platform/settings/SystemTimeZone.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// Milliseconds. The delay lets the editor show what a macro did first.
constexpr int kReplacementDelay = 200;
constexpr int kReapInterval = 1000;

QString hostProgram()
{
    const QString name = u"penwick-script-host"_s;
    const QDir folder = QFileInfo(QFileInfo(u"/proc/self/exe"_s).symLinkTarget()).dir();
    // The program's own folder, as in a build; the installation's folder for internal programs; and
    // ../bin, for tests.
    QString path = folder.filePath(name);
    for (const QString &other : {QStringLiteral(PENWICK_HOST_FOLDER), u"../bin"_s}) {
        if (QFileInfo(path).isExecutable())
            break;
        path = QDir::cleanPath(folder.filePath(other + u'/' + name));
    }
    return path;
}

} // namespace

ScriptHostPool::ScriptHostPool(std::function<HostProcess::Settings()> settings)
    : m_settings(std::move(settings))
{
}

ScriptHostPool::~ScriptHostPool() = default;

ScriptHostPool &ScriptHostPool::shared()
{
    static ScriptHostPool pool([] { return HostProcess::Settings{hostProgram(), 0, {}}; });
    return pool;
}

std::uint64_t ScriptHostPool::defaultMemory()
{
    constexpr std::uint64_t kMost = std::uint64_t{4} << 30;
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    return std::min(kMost, pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 2);
}

HostProcess::Settings ScriptHostPool::nextSettings() const
{
    HostProcess::Settings settings = m_settings();
    if (settings.memory == 0)
        settings.memory = m_memory;
    if (settings.timeZone.isEmpty())
        settings.timeZone = systemTimeZone().id();
    settings.reportsRefusedCalls = !m_findings->trapsAreFatal;
    return settings;
}

// The spare may have been killed, or started with a time zone that is no longer the system's.
bool ScriptHostPool::isSpareUsable() const
{
    return m_spare && m_spare->settings == nextSettings() &&
           m_spare->connection.process().isAlive();
}

void ScriptHostPool::setKeepsSpare(bool keepsSpare)
{
    m_replacement.reset();
    if (!keepsSpare)
        return;
    m_replacement = std::make_unique<QTimer>();
    m_replacement->setSingleShot(true);
    QObject::connect(
        m_replacement.get(), &QTimer::timeout, m_replacement.get(), [this] { tend(); });
    prepare();
}

void ScriptHostPool::removeEndedRuns()
{
    std::erase_if(m_running, [](const auto &connection) { return connection.expired(); });
}

// Keeps a spare, and reaps hosts that have ended.
void ScriptHostPool::tend()
{
    prepare();
    removeEndedRuns();
    if (!m_running.empty() || !reapHostProcesses())
        m_replacement->start(kReapInterval);
}

bool ScriptHostPool::prepare()
{
    reapHostProcesses();
    if (isSpareUsable())
        return true;
    endSpare();
    const HostProcess::Settings wanted = nextSettings();
    if (auto process = HostProcess::start(wanted))
        m_spare.emplace(Spare{wanted, HostConnection(std::move(*process))});
    return m_spare.has_value();
}

// A host that SIGSYS ended without a report made the call on a thread with all signals blocked,
// where the handler cannot run. From then on, the kernel answers refused calls.
void ScriptHostPool::learn(const HostEnding &ending, Experience &experience)
{
    if (ending.cause == HostEnding::Cause::Signal && ending.number == SIGSYS)
        experience.trapsAreFatal = true;
}

void ScriptHostPool::endSpare()
{
    if (m_spare && !m_spare->connection.process().isAlive())
        learn(m_spare->connection.end(), *m_findings);
    m_spare.reset();
}

void ScriptHostPool::discard()
{
    m_spare.reset();
}

qint64 ScriptHostPool::spareProcessId() const
{
    return m_spare ? m_spare->connection.process().processId() : -1;
}

std::optional<HostProtection> ScriptHostPool::protection(int milliseconds)
{
    if (!prepare())
        return std::nullopt;
    return m_spare->connection.protection(milliseconds);
}

ScriptJob ScriptHostPool::start()
{
    if (!prepare()) {
        return [](const ScriptRequest &, const ScriptLogSink &, ScriptWaiter *) -> ScriptOutcome {
            return tl::unexpected(ScriptError{ScriptError::Code::HostUnavailable, {}});
        };
    }
    const auto taken = std::make_shared<HostConnection>(std::move(m_spare->connection));
    m_spare.reset();
    removeEndedRuns();
    m_running.push_back(taken);
    if (m_replacement)
        m_replacement->start(kReplacementDelay);
    return [taken, experience = m_findings](
               ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter) {
        ScriptOutcome outcome = taken->run(std::move(request), log, waiter);
        if (!outcome)
            learn(outcome.error().ending, *experience);
        return outcome;
    };
}

std::function<EngineTrial(ScriptWaiter *)> ScriptHostPool::startTrial()
{
    HostProcess::Settings wanted = nextSettings();
    // With a small limit of the user's some steps fail although nothing is wrong.
    constexpr std::uint64_t kTrialMemory = std::uint64_t{1} << 30;
    wanted.memory = std::max(wanted.memory, kTrialMemory);
    auto process = HostProcess::start(wanted);
    if (!process) {
        return [](ScriptWaiter *) {
            EngineTrial trial;
            trial.error = ScriptError{ScriptError::Code::HostUnavailable, {}};
            return trial;
        };
    }
    constexpr int kTrialNiceness = 10; // With 19, a trial beside a long build would take minutes.
    setpriority(PRIO_PROCESS, static_cast<id_t>(process->processId()), kTrialNiceness);
    const auto host = std::make_shared<HostConnection>(std::move(*process));
    return [host, zone = wanted.timeZone, experience = m_findings](ScriptWaiter *waiter) {
        EngineTrial trial = tryEngine(*host, zone, waiter);
        if (trial.error)
            learn(trial.error->ending, *experience);
        static_cast<void>(host->end()); // Reaps the host, so that the pool need not.
        return trial;
    };
}

ScriptOutcome
ScriptHostPool::run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter)
{
    return start()(std::move(request), log, waiter);
}

} // namespace penwick
