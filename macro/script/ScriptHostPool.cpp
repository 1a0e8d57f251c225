#include "macro/script/ScriptHostPool.h"

#include <QDir>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

// Milliseconds. Long enough to show what a macro did first.
constexpr int kReplacementDelay = 200;
constexpr int kReapInterval = 1000;

QString hostProgram()
{
    const QString name = u"penwick-script-host"_s;
    const QDir folder = QFileInfo(QFileInfo(u"/proc/self/exe"_s).symLinkTarget()).dir();
    // Where both were built, where they are installed, and for the tests, which stand elsewhere.
    QString path = folder.filePath(name);
    for (const QString &other : {QStringLiteral(PENWICK_HOST_FOLDER), u"../bin"_s}) {
        if (QFileInfo(path).isExecutable())
            break;
        path = QDir::cleanPath(folder.filePath(other + u'/' + name));
    }
    return path;
}

QByteArray timeZoneName()
{
    const QByteArray set = qgetenv("TZ");
    return set.isEmpty() ? QTimeZone::systemTimeZoneId() : set;
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

HostProcess::Settings ScriptHostPool::settings() const
{
    HostProcess::Settings settings = m_settings();
    if (settings.memory == 0)
        settings.memory = m_memory;
    if (settings.timeZone.isEmpty())
        settings.timeZone = timeZoneName();
    return settings;
}

// It may have been killed meanwhile, or know a time zone that is the system's no more.
bool ScriptHostPool::isSpareFit() const
{
    return m_spare && m_spare->settings == settings() && m_spare->connection.process().isAlive();
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

void ScriptHostPool::forgetEndedRuns()
{
    std::erase_if(m_running, [](const auto &connection) { return connection.expired(); });
}

// Keeps a spare, and leaves no process that has ended in the system's list.
void ScriptHostPool::tend()
{
    prepare();
    forgetEndedRuns();
    if (!m_running.empty() || !reapHostProcesses())
        m_replacement->start(kReapInterval);
}

bool ScriptHostPool::prepare()
{
    reapHostProcesses();
    if (isSpareFit())
        return true;
    m_spare.reset();
    const HostProcess::Settings wanted = settings();
    if (auto process = HostProcess::start(wanted))
        m_spare.emplace(Spare{wanted, HostConnection(std::move(*process))});
    return m_spare.has_value();
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
    forgetEndedRuns();
    m_running.push_back(taken);
    if (m_replacement)
        m_replacement->start(kReplacementDelay);
    return [taken](ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter) {
        return taken->run(std::move(request), log, waiter);
    };
}

ScriptOutcome
ScriptHostPool::run(ScriptRequest request, const ScriptLogSink &log, ScriptWaiter *waiter)
{
    return start()(std::move(request), log, waiter);
}

} // namespace penwick
