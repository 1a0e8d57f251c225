#include "macro/script/HostProcess.h"

#include "platform/process/SpawnTexts.h"

#include <QFile>

#include <algorithm>
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

/// The environment of a host. Of the user's settings, a script can see only these: the language and
/// the time zone of dates and numbers.
std::vector<std::string> hostEnvironment(const QByteArray &timeZone)
{
    std::vector<std::string> environment;
    environment.push_back("TZ=" + timeZone.toStdString());
    // Otherwise the engine reserves more address space than a memory limit can allow.
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

/// Duplicates the descriptor to a number that the new process does not use. Not open when `file` is
/// not.
FileDescriptor duplicatedAboveHostDescriptors(const FileDescriptor &file)
{
    return FileDescriptor(file.isOpen() ? fcntl(file.get(), F_DUPFD_CLOEXEC, kHostFirstUnused)
                                        : -1);
}

/// Creates an empty file in memory that has no path. Not open when that fails.
FileDescriptor makeSharedFile()
{
    return duplicatedAboveHostDescriptors(
        FileDescriptor(memfd_create("penwick-texts", MFD_CLOEXEC)));
}

/// What the editor passes to a new process. The numbers are above those that the process uses, so
/// that no duplication overwrites another descriptor.
struct HostEnds
{
    FileDescriptor connection{};
    FileDescriptor deniedCalls{};
    int shared = -1; ///< Not owned; -1 for none.
};

#ifdef __SANITIZE_ADDRESS__ // Its reports go to standard error.
constexpr bool kReportsErrors = true;
#else
constexpr bool kReportsErrors = false;
#endif

/// What the new process starts with: no open file of the editor's but those meant for it, and no
/// signal blocked or ignored. It has a process group of its own, so that Ctrl+C in a terminal does
/// not reach it: the editor decides how a script ends.
class SpawnRules final
{
public:
    explicit SpawnRules(const HostEnds &ends)
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, ends.connection.get(), kHostConnection);
        posix_spawn_file_actions_adddup2(&m_actions, ends.deniedCalls.get(), kHostDeniedCalls);
        if (ends.shared >= 0)
            posix_spawn_file_actions_adddup2(&m_actions, ends.shared, kHostSharedTexts);
        posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, 1, "/dev/null", O_WRONLY, 0);
        if (!kReportsErrors)
            posix_spawn_file_actions_addopen(&m_actions, 2, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(
            &m_actions, ends.shared >= 0 ? kHostFirstUnused : kHostSharedTexts);
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(
            &m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }

    SpawnRules(const SpawnRules &) = delete;
    SpawnRules &operator=(const SpawnRules &) = delete;

    ~SpawnRules()
    {
        posix_spawnattr_destroy(&m_attributes);
        posix_spawn_file_actions_destroy(&m_actions);
    }

    [[nodiscard]] const posix_spawn_file_actions_t *actions() const { return &m_actions; }

    [[nodiscard]] const posix_spawnattr_t *attributes() const { return &m_attributes; }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

/// Processes that a destructor has killed and that had not ended by then: releasing gigabytes takes
/// a moment. Destructors add to it from several threads.
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

/// Returns the process id; -1 when the system cannot start the process.
pid_t spawn(const HostProcess::Settings &settings, const HostEnds &ends)
{
    const SpawnRules rules(ends);
    const QByteArray program = QFile::encodeName(settings.program);
    std::vector<std::string> arguments{program.toStdString(),
                                       std::to_string(settings.memory),
                                       std::to_string(ends.shared >= 0 ? kHostSharedTexts : -1),
                                       settings.reportsRefusedCalls ? kHostReports : kHostIsSilent,
                                       settings.servesMany ? kHostServesMany : kHostServesOne};
    std::vector<std::string> environment = hostEnvironment(settings.timeZone);
    pid_t process = -1;
    const int error = posix_spawn(&process,
                                  program.constData(),
                                  rules.actions(),
                                  rules.attributes(),
                                  pointersTo(arguments).data(),
                                  pointersTo(environment).data());
    return error == 0 ? process : -1;
}

HostEnding endingOf(int status)
{
    HostEnding ending;
    if (WIFSIGNALED(status)) {
        ending.cause = HostEnding::Cause::Signal;
        ending.number = WTERMSIG(status);
    } else if (WIFEXITED(status) && WEXITSTATUS(status) == kOutOfMemoryStatus) {
        ending.cause = HostEnding::Cause::OutOfMemory;
    } else {
        ending.cause = HostEnding::Cause::Ended;
        ending.number = WEXITSTATUS(status);
    }
    return ending;
}

} // namespace

// Uses `posix_spawn`: unlike `fork`, it does not copy the page tables of an editor that holds large
// documents.
std::optional<HostProcess> HostProcess::start(const Settings &settings)
{
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0)
        return std::nullopt;
    Ends ours;
    ours.connection = FileDescriptor(sockets[0]);
    HostEnds theirs;
    theirs.connection = duplicatedAboveHostDescriptors(FileDescriptor(sockets[1]));
    fcntl(ours.connection.get(), F_SETFL, O_NONBLOCK);

    std::array<int, 2> pipes{};
    if (pipe2(pipes.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return std::nullopt;
    ours.deniedCalls = FileDescriptor(pipes[0]);
    theirs.deniedCalls = duplicatedAboveHostDescriptors(FileDescriptor(pipes[1]));

    ours.shared = makeSharedFile();
    theirs.shared = ours.shared.get();
    if (!theirs.connection.isOpen() || !theirs.deniedCalls.isOpen())
        return std::nullopt;
    const pid_t process = spawn(settings, theirs);
    if (process < 0)
        return std::nullopt;
    return HostProcess(process, std::move(ours));
}

HostProcess::HostProcess(qint64 processId, Ends ends)
    : m_processId(processId)
    , m_ends(std::move(ends))
{
}

HostProcess::HostProcess(HostProcess &&other) noexcept
    : m_processId(std::exchange(other.m_processId, -1))
    , m_ends(std::move(other.m_ends))
    , m_deniedCalls(std::move(other.m_deniedCalls))
{
}

HostProcess &HostProcess::operator=(HostProcess &&other) noexcept
{
    std::swap(m_processId, other.m_processId);
    std::swap(m_ends, other.m_ends);
    std::swap(m_deniedCalls, other.m_deniedCalls);
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

// What the host writes here is only shown to the user. The call that ended the host comes last.
const QList<DeniedCall> &HostProcess::deniedCalls()
{
    constexpr qsizetype kMost = 64; // A host that reports more is not trusted.
    DeniedCall call;
    const auto readNext = [&] {
        const auto count =
            uninterrupted([&] { return read(m_ends.deniedCalls.get(), &call, sizeof call); });
        return count == ssize_t{sizeof call};
    };
    while (readNext()) {
        const bool isFull = m_deniedCalls.size() == kMost;
        if (isFull && call.isKilled == 0)
            continue;
        if (isFull)
            m_deniedCalls.removeLast();
        m_deniedCalls.append(call);
    }
    return m_deniedCalls;
}

HostEnding HostProcess::end()
{
    if (m_processId < 0)
        return {};
    const auto process = static_cast<pid_t>(std::exchange(m_processId, -1));
    int status = 0;
    // A process that is already ending keeps its own cause.
    kill(process, SIGKILL);
    uninterrupted([&] { return waitpid(process, &status, 0); });
    HostEnding ending = endingOf(status);
    ending.deniedCalls = deniedCalls();
    const bool isKilled = std::any_of(ending.deniedCalls.cbegin(),
                                      ending.deniedCalls.cend(),
                                      [](const DeniedCall &call) { return call.isKilled != 0; });
    if (isKilled && ending.cause == HostEnding::Cause::Signal && ending.number == SIGSYS)
        ending.cause = HostEnding::Cause::DeniedCall;
    m_ends = Ends();
    return ending;
}

bool reapHostProcesses()
{
    EndingProcesses &ending = endingProcesses();
    const std::lock_guard lock(ending.mutex);
    std::erase_if(ending.processes, isGone);
    return ending.processes.empty();
}

} // namespace penwick
