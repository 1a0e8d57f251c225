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

QString hostProgram()
{
    const QString name = u"penwick-script-host"_s;
    const QDir folder = QFileInfo(QFileInfo(u"/proc/self/exe"_s).symLinkTarget()).dir();
    if (QFileInfo(folder.filePath(name)).isExecutable())
        return folder.filePath(name);
    return QDir::cleanPath(folder.filePath(u"../bin/"_s + name));
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

ScriptOutcome
ScriptHostPool::run(const ScriptRequest &request, const ScriptLogSink &log, ScriptWaiter *waiter)
{
    if (!prepare())
        return tl::unexpected(ScriptError{ScriptError::Code::HostUnavailable, {}});
    // Taken out first: while this script runs, a waiter may let another window run one.
    std::optional<Spare> taken = std::exchange(m_spare, std::nullopt);
    return taken->connection.run(request, log, waiter);
}

} // namespace penwick
