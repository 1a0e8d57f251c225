#include "macro/script/HostProcess.h"

#include <QFile>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <spawn.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <utility>
#include <vector>

namespace penwick {

namespace {

// As in HostChannel.h, which the editor does not link.
constexpr int kHostDescriptor = 3;
constexpr int kHostSharedDescriptor = 4;
constexpr int kOutOfMemoryStatus = 77;

/// What a script can see of the user's surroundings: the language and the time zone of dates and
/// numbers, nothing else.
std::vector<std::string> hostEnvironment(const QByteArray &timeZone)
{
    std::vector<std::string> environment;
    environment.push_back("TZ=" + timeZone.toStdString());
    // The engine would reserve more address space than a limit on memory can allow.
    environment.emplace_back("GIGACAGE_ENABLED=no");
    for (const char *name : {
             "LANG",
             "LANGUAGE",
             "LC_ALL",
             "LC_COLLATE",
             "LC_CTYPE",
             "LC_MESSAGES",
             "LC_MONETARY",
             "LC_NUMERIC",
             "LC_TIME",
#ifdef __SANITIZE_ADDRESS__
             "ASAN_OPTIONS",
             "LSAN_OPTIONS",
             "UBSAN_OPTIONS",
#endif
         }) {
        if (const char *value = std::getenv(name))
            environment.push_back(std::string(name) + '=' + value);
    }
    return environment;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// An empty file in memory, which no path leads to. Not open where there is none.
FileDescriptor makeSharedFile()
{
    const FileDescriptor made(memfd_create("penwick-texts", MFD_CLOEXEC));
    // Out of the way of the descriptors that the new process gets.
    return FileDescriptor(
        made.isOpen() ? fcntl(made.get(), F_DUPFD_CLOEXEC, kHostSharedDescriptor + 1) : -1);
}

/// What the new process starts with: no open file of ours but the connection, no signal of ours
/// blocked or ignored.
class SpawnRules final
{
public:
    /// \param shared above the descriptors that the new process gets; or -1.
    SpawnRules(int connection, int shared)
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, connection, kHostDescriptor);
        if (shared >= 0)
            posix_spawn_file_actions_adddup2(&m_actions, shared, kHostSharedDescriptor);
        posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, 1, "/dev/null", O_WRONLY, 0);
#ifndef __SANITIZE_ADDRESS__ // Whose reports are wanted.
        posix_spawn_file_actions_addopen(&m_actions, 2, "/dev/null", O_WRONLY, 0);
#endif
        posix_spawn_file_actions_addclosefrom_np(
            &m_actions, 1 + (shared >= 0 ? kHostSharedDescriptor : kHostDescriptor));
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }

    SpawnRules(const SpawnRules &) = delete;
    SpawnRules &operator=(const SpawnRules &) = delete;

    ~SpawnRules()
    {
        posix_spawnattr_destroy(&m_attributes);
        posix_spawn_file_actions_destroy(&m_actions);
    }

    [[nodiscard]] const posix_spawn_file_actions_t *actions() const
    {
        return &m_actions;
    }

    [[nodiscard]] const posix_spawnattr_t *attributes() const
    {
        return &m_attributes;
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Killed, but not yet gone when they were left: giving back gigabytes takes a moment. Each was
/// left by the thread that waited for it.
struct EndingProcesses
{
    std::mutex mutex;
    std::vector<pid_t> processes;
};

EndingProcesses &endingProcesses()
{
    static EndingProcesses ending;
    return ending;
}

bool isGone(pid_t process)
{
    return uninterrupted([process] { return waitpid(process, nullptr, WNOHANG); }) != 0;
}

} // namespace

// Spawning does not copy the page tables of an editor that holds large documents, as forking would.
std::optional<HostProcess> HostProcess::start(const Settings &settings)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return std::nullopt;
    FileDescriptor ours(ends[0]);
    const FileDescriptor theirs(ends[1]);
    fcntl(ours.get(), F_SETFL, O_NONBLOCK);

    FileDescriptor shared = makeSharedFile();
    const SpawnRules rules(theirs.get(), shared.get());
    const QByteArray program = QFile::encodeName(settings.program);
    std::vector<std::string> arguments{program.toStdString(),
                                       std::to_string(settings.memory),
                                       shared.isOpen() ? std::to_string(kHostSharedDescriptor)
                                                       : "-1"};
    std::vector<std::string> environment = hostEnvironment(settings.timeZone);
    pid_t process = -1;
    if (posix_spawn(&process,
                    program.constData(),
                    rules.actions(),
                    rules.attributes(),
                    pointersTo(arguments).data(),
                    pointersTo(environment).data()) != 0)
        return std::nullopt;
    return HostProcess(process, std::move(ours), std::move(shared));
}

HostProcess::HostProcess(qint64 processId, FileDescriptor descriptor, FileDescriptor shared)
    : m_processId(processId)
    , m_descriptor(std::move(descriptor))
    , m_shared(std::move(shared))
{
}

HostProcess::HostProcess(HostProcess &&other) noexcept
    : m_processId(std::exchange(other.m_processId, -1))
    , m_descriptor(std::move(other.m_descriptor))
    , m_shared(std::move(other.m_shared))
{
}

HostProcess &HostProcess::operator=(HostProcess &&other) noexcept
{
    std::swap(m_processId, other.m_processId);
    std::swap(m_descriptor, other.m_descriptor);
    std::swap(m_shared, other.m_shared);
    return *this;
}

HostProcess::~HostProcess()
{
    if (m_processId < 0)
        return;
    const auto process = static_cast<pid_t>(m_processId);
    kill(process, SIGKILL);
    if (isGone(process))
        return;
    EndingProcesses &ending = endingProcesses();
    const std::lock_guard lock(ending.mutex);
    ending.processes.push_back(process);
}

bool HostProcess::isAlive() const
{
    siginfo_t information{};
    return m_processId >= 0 && uninterrupted([&] {
                                   return waitid(P_PID,
                                                 static_cast<id_t>(m_processId),
                                                 &information,
                                                 WEXITED | WNOHANG | WNOWAIT);
                               }) == 0 &&
           information.si_pid == 0;
}

HostProcess::Ending HostProcess::end()
{
    if (m_processId < 0)
        return Ending::Unexpected;
    const auto process = static_cast<pid_t>(std::exchange(m_processId, -1));
    int status = 0;
    // An end that is under way already keeps its own cause.
    kill(process, SIGKILL);
    const pid_t ended = uninterrupted([&] { return waitpid(process, &status, 0); });
    m_descriptor.close();
    const bool spent =
        ended == process && WIFEXITED(status) && WEXITSTATUS(status) == kOutOfMemoryStatus;
    return spent ? Ending::OutOfMemory : Ending::Unexpected;
}

bool reapHostProcesses()
{
    EndingProcesses &ending = endingProcesses();
    const std::lock_guard lock(ending.mutex);
    std::erase_if(ending.processes, isGone);
    return ending.processes.empty();
}

} // namespace penwick
