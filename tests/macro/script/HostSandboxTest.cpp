#include "macro/script/HostSandbox.h"

#include "macro/script/SharedTexts.h"
#include "macro/script/SystemCallTable.h"
#include "platform/files/FileDescriptor.h"

#include <QSet>
#include <QTest>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <linux/capability.h>
#include <pthread.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace penwick {

namespace {

constexpr std::size_t kMemory = std::size_t{256} << 20;
constexpr int kSandboxMissing = 99;

/// The wait status and the denied calls of a child process that ran an action inside the sandbox.
/// The action's result is the exit status.
struct Ended
{
    int status = 0;
    QList<DeniedCall> denied;
};

Ended endOf(const std::function<int()> &action, RefusedCalls refused = RefusedCalls::Reported)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return {};
    const FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        prepareHostProcess(writer.get());
        const HostProtection protection = confineProcess(kMemory, refused);
        _exit(protection.systemCallFilter ? action() : kSandboxMissing);
    }
    writer.close();
    Ended ended;
    waitpid(child, &ended.status, 0);
    DeniedCall call;
    while (read(reader.get(), &call, sizeof call) == ssize_t{sizeof call})
        ended.denied.append(call);
    return ended;
}

int statusOf(const std::function<int()> &action)
{
    return endOf(action).status;
}

long call(long number, long a = 0, long b = 0, long c = 0, long d = 0)
{
    return syscall(number, a, b, c, d);
}

} // namespace

/// Native code attempts each escape inside the sandbox, as a script that controls the engine could.
class HostSandboxTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void escape_anyKind_killsTheProcess_data();
    void escape_anyKind_killsTheProcess();
    void escape_toThe32BitWorld_killsTheProcess();
    void escape_withSignalsBlocked_killsTheProcess();
    void escape_beforeTheSandboxStands_isRefused();
    void process_ofAnyUser_hasNoPrivileges();
    void escape_ofAThreadFromBefore_isRefused();
    void escape_byForking_killsTheProcess();
    void handler_ofDeniedCalls_cannotBeReplaced();
    void refusedCall_anyOne_getsItsError();
    void unknownCall_getsTheErrorOfOlderKernels();
    void file_opened_isRefused();
    void work_ofAScript_isAllowed();
    void memory_beyondTheLimit_isRefused();
    void memory_spent_endsWithItsStatus();
    void sharedFile_beyondTheRoomInIt_cannotBeFilled();
};

void HostSandboxTest::initTestCase()
{
    const int status = statusOf([] { return 0; });
    if (WIFEXITED(status) && WEXITSTATUS(status) == kSandboxMissing)
        QSKIP("This build or this system has no filter of system calls.");
}

void HostSandboxTest::escape_anyKind_killsTheProcess_data()
{
    QTest::addColumn<std::function<int()>>("escape");
    QTest::addColumn<int>("number");

    const auto row = [](const char *name, long number, std::function<int()> escape) {
        QTest::newRow(name) << std::move(escape) << static_cast<int>(number);
    };
    row("socket", SYS_socket, [] { return socket(AF_INET, SOCK_STREAM, 0); });
    row("socket to a desktop service", SYS_socket, [] { return socket(AF_UNIX, SOCK_STREAM, 0); });
    row("clone without a thread", SYS_clone, [] {
        return static_cast<int>(call(SYS_clone, SIGCHLD));
    });
    row("exec", SYS_execve, [] { return execl("/bin/true", "true", nullptr); });
    row("kill", SYS_kill, [] { return kill(getppid(), SIGTERM); });
    row("kill of all", SYS_kill, [] { return kill(-1, 0); });
    row("signal to a thread elsewhere", SYS_tgkill, [] {
        return static_cast<int>(call(SYS_tgkill, 1, 1, SIGTERM));
    });
    row("signal through a queue", SYS_rt_sigqueueinfo, [] { return sigqueue(1, 0, {}); });
    row("ptrace", SYS_ptrace, [] { return static_cast<int>(ptrace(PTRACE_TRACEME)); });
    row("memory of another process, read", SYS_process_vm_readv, [] {
        return static_cast<int>(process_vm_readv(1, nullptr, 0, nullptr, 0, 0));
    });
    row("memory of another process, write", SYS_process_vm_writev, [] {
        return static_cast<int>(process_vm_writev(1, nullptr, 0, nullptr, 0, 0));
    });
    row("new code", SYS_mmap, [] {
        return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
               nullptr;
    });
    row("code made executable", SYS_mprotect, [] {
        static std::array<char, 8192> memory;
        const auto address = (reinterpret_cast<std::uintptr_t>(memory.data()) + 4095) & ~4095UL;
        return mprotect(reinterpret_cast<void *>(address), 4096, PROT_READ | PROT_EXEC);
    });
    row("all readable memory executable", SYS_personality, [] {
        return static_cast<int>(call(SYS_personality, 0x0400000));
    });
    row("namespace", SYS_unshare, [] { return unshare(CLONE_NEWUSER); });
    for (const SystemCallGroup &group : systemCallGroups()) {
        if (group.decision.kind != SystemCallDecision::Kind::Kill)
            continue;
        for (const char *name : group.names) {
            const int number = seccomp_syscall_resolve_name(name);
            if (number >= 0)
                row(name, number, [number] { return static_cast<int>(call(number)); });
        }
    }
}

void HostSandboxTest::escape_anyKind_killsTheProcess()
{
    QFETCH(std::function<int()>, escape);
    QFETCH(int, number);
    for (const RefusedCalls refused : {RefusedCalls::Silent, RefusedCalls::Reported}) {
        const Ended ended = endOf(escape, refused);
        QVERIFY(WIFSIGNALED(ended.status));
        QCOMPARE(WTERMSIG(ended.status), SIGSYS);
        QVERIFY(!ended.denied.isEmpty());
        QVERIFY((ended.denied.last() == DeniedCall{number, 1, 0, 0}));
    }
}

void HostSandboxTest::escape_toThe32BitWorld_killsTheProcess()
{
#ifdef __x86_64__
    const Ended ended = endOf([] {
        long result = 20; // getpid
        asm volatile("int $0x80" : "+a"(result) : : "memory");
        return static_cast<int>(result);
    });
    QVERIFY(WIFSIGNALED(ended.status));
    QCOMPARE(WTERMSIG(ended.status), SIGSYS);
    QVERIFY((ended.denied == QList{DeniedCall{20, 1, 1, 0}}));
#else
    QSKIP("Only this processor has such calls.");
#endif
}

// Signals cannot be handled while blocked; the kernel then kills the process at a trap.
void HostSandboxTest::escape_withSignalsBlocked_killsTheProcess()
{
    const Ended ended = endOf([] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        return socket(AF_INET, SOCK_STREAM, 0);
    });
    QVERIFY(WIFSIGNALED(ended.status));
    QCOMPARE(WTERMSIG(ended.status), SIGSYS);
}

// The engine would keep descriptors that it opens during start-up.
void HostSandboxTest::escape_beforeTheSandboxStands_isRefused()
{
    const pid_t child = fork();
    if (child == 0) {
        prepareHostProcess(-1);
        errno = 0;
        const bool isRefused = socket(AF_UNIX, SOCK_STREAM, 0) == -1 && errno == EACCES &&
                               execl("/bin/true", "true", nullptr) == -1 && errno == EACCES;
        _exit(isRefused && open("/dev/null", O_RDONLY) >= 0 ? 7 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

// Applies to root too, because the table later allows calls that are harmless without privileges.
void HostSandboxTest::process_ofAnyUser_hasNoPrivileges()
{
    const pid_t child = fork();
    if (child == 0) {
        prepareHostProcess(-1);
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> held{};
        const bool isRead = call(SYS_capget,
                                 reinterpret_cast<long>(&header),
                                 reinterpret_cast<long>(held.data())) == 0;
        const bool hasNone = held[0].effective == 0 && held[0].permitted == 0 &&
                             held[1].effective == 0 && held[1].permitted == 0;
        _exit(isRead && hasNone ? 7 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

// A call of a library's thread that is still starting up is refused; it must not end the process.
void HostSandboxTest::escape_ofAThreadFromBefore_isRefused()
{
    std::array<int, 2> ends{};
    QVERIFY(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0);
    const FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        prepareHostProcess(writer.get());
        static std::atomic<bool> stands = false;
        std::atomic<int> error = 0;
        std::thread late([&error] {
            stands.wait(false);
            errno = 0;
            error = socket(AF_UNIX, SOCK_STREAM, 0) == -1 ? errno : 0;
        });
        const HostProtection protection = confineProcess(kMemory, RefusedCalls::Reported);
        stands = true;
        stands.notify_all();
        late.join();
        if (protection.systemCallFilter && error == EACCES)
            socket(AF_UNIX, SOCK_STREAM, 0);
        _exit(1);
    }
    writer.close();
    int status = 0;
    waitpid(child, &status, 0);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGSYS);
    DeniedCall call;
    QCOMPARE(read(reader.get(), &call, sizeof call), ssize_t{sizeof call});
    QVERIFY((call == DeniedCall{SYS_socket, 0, 0, 0}));
    QCOMPARE(read(reader.get(), &call, sizeof call), ssize_t{sizeof call});
    QVERIFY((call == DeniedCall{SYS_socket, 1, 0, 0}));

    const Ended ended = endOf([] {
        std::thread([] { socket(AF_UNIX, SOCK_STREAM, 0); }).join();
        return 0;
    });
    QVERIFY(WIFSIGNALED(ended.status));
    QCOMPARE(WTERMSIG(ended.status), SIGSYS);
}

// The C library's function blocks signals on some releases.
void HostSandboxTest::escape_byForking_killsTheProcess()
{
    const Ended ended = endOf([] { return static_cast<int>(fork()); });
    QVERIFY(WIFSIGNALED(ended.status));
    QCOMPARE(WTERMSIG(ended.status), SIGSYS);
}

// A script that controls the engine may try to replace the sandbox's signal handler.
void HostSandboxTest::handler_ofDeniedCalls_cannotBeReplaced()
{
    const Ended ended = endOf([] {
        // The kernel uses only the low bits.
        constexpr long kDisguised = (1L << 32) | SIGSYS;
        const bool replaced = std::signal(SIGSYS, SIG_IGN) != SIG_ERR ||
                              call(SYS_rt_sigaction, kDisguised, 0, 0, 8) == 0;
        return !replaced && std::signal(SIGUSR2, SIG_IGN) != SIG_ERR ? 7 : 1;
    });
    QVERIFY(WIFEXITED(ended.status));
    QCOMPARE(WEXITSTATUS(ended.status), 7);
}

// Tries each refused call of the table in the running kernel. A new library may make any of them.
void HostSandboxTest::refusedCall_anyOne_getsItsError()
{
    for (const SystemCallGroup &group : systemCallGroups()) {
        if (group.decision.kind != SystemCallDecision::Kind::Refuse)
            continue;
        for (const char *name : group.names) {
            const int number = seccomp_syscall_resolve_name(name);
            // The kernel handles these probe calls before any filter.
            if (number < 0 || QByteArray(name).endsWith("probe"))
                continue;
            const int error = group.decision.error;
            const auto action = [number, error] {
                errno = 0;
                return call(number) == -1 && errno == error ? 7 : 1;
            };
            const Ended silent = endOf(action, RefusedCalls::Silent);
            QVERIFY2(WIFEXITED(silent.status) && WEXITSTATUS(silent.status) == 7, name);
            QVERIFY2(silent.denied.isEmpty(), name);
            const Ended reported = endOf(action, RefusedCalls::Reported);
            QVERIFY2(WIFEXITED(reported.status) && WEXITSTATUS(reported.status) == 7, name);
            const QList<DeniedCall> wanted{{number, 0, 0, 0}};
            QVERIFY2(reported.denied == (group.isReported ? wanted : QList<DeniedCall>()), name);
        }
    }
}

void HostSandboxTest::unknownCall_getsTheErrorOfOlderKernels()
{
    constexpr int kBeyondEveryTable = 4000;
    const auto action = [] {
        errno = 0;
        const bool first = call(kBeyondEveryTable, 1, 2, 3, 4) == -1 && errno == ENOSYS;
        errno = 0;
        return first && call(kBeyondEveryTable) == -1 && errno == ENOSYS ? 7 : 1;
    };
    const Ended silent = endOf(action, RefusedCalls::Silent);
    QVERIFY(WIFEXITED(silent.status));
    QCOMPARE(WEXITSTATUS(silent.status), 7);
    const Ended reported = endOf(action, RefusedCalls::Reported);
    QVERIFY(WIFEXITED(reported.status));
    QCOMPARE(WEXITSTATUS(reported.status), 7);
    QVERIFY((reported.denied == QList{DeniedCall{kBeyondEveryTable, 0, 0, 0}}));

    const Ended blocked = endOf(
        [&action] {
            sigset_t all;
            sigfillset(&all);
            sigprocmask(SIG_BLOCK, &all, nullptr);
            return action();
        },
        RefusedCalls::Silent);
    QVERIFY(WIFEXITED(blocked.status));
    QCOMPARE(WEXITSTATUS(blocked.status), 7);
}

void HostSandboxTest::file_opened_isRefused()
{
    const int status = statusOf([] {
        const bool passwords = open("/etc/passwd", O_RDONLY) == -1 && errno == EACCES;
        const bool own = open("/proc/self/mem", O_RDWR) == -1 && errno == EACCES;
        const bool made = open("/tmp/penwick-escape", O_CREAT | O_WRONLY, 0600) == -1;
        const bool known = access("/etc/passwd", F_OK) == -1 && errno == EACCES;
        return passwords && own && made && known ? 7 : 1;
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

void HostSandboxTest::work_ofAScript_isAllowed()
{
    const int status = statusOf([] {
        void *memory =
            mmap(nullptr, 1 << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        pthread_t thread{};
        const auto identity = [](void *data) { return data; };
        const bool started = pthread_create(&thread, nullptr, identity, memory) == 0;
        void *result = nullptr;
        const bool joined = started && pthread_join(thread, &result) == 0;
        const bool clock = ::time(nullptr) > 0 && usleep(10) == 0;
        return memory != MAP_FAILED && joined && result == memory && clock && raise(0) == 0 ? 7 : 1;
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

void HostSandboxTest::memory_beyondTheLimit_isRefused()
{
    const int status = statusOf([] {
        const auto take = [](std::size_t size) {
            return mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        };
        const bool within = take(kMemory / 2) != MAP_FAILED;
        return within && take(kMemory) == MAP_FAILED && errno == ENOMEM ? 7 : 1;
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

void HostSandboxTest::memory_spent_endsWithItsStatus()
{
    const int spent = statusOf([] {
        // Volatile, so that the compiler keeps the unused allocations.
        void *volatile memory = nullptr;
        do {
            memory = std::malloc(std::size_t{1} << 20);
        } while (memory != nullptr);
        std::abort();
        return 0;
    });
    QVERIFY(WIFEXITED(spent));
    QCOMPARE(WEXITSTATUS(spent), kOutOfMemoryStatus);

    const int aborted = statusOf([] {
        std::abort();
        return 0;
    });
    QVERIFY(WIFSIGNALED(aborted));
    QCOMPARE(WTERMSIG(aborted), SIGABRT);
}

// The limit of the process's memory does not cover memory in a file.
void HostSandboxTest::sharedFile_beyondTheRoomInIt_cannotBeFilled()
{
    const int file = memfd_create("test", MFD_CLOEXEC);
    QVERIFY(file >= 0);
    const int within = statusOf(
        [file] { return pwrite(file, "12345678", 8, SharedTexts::kHostRoom - 4) == 4 ? 7 : 1; });
    QVERIFY(WIFEXITED(within));
    QCOMPARE(WEXITSTATUS(within), 7);
    const int beyond =
        statusOf([file] { return static_cast<int>(pwrite(file, "1", 1, SharedTexts::kHostRoom)); });
    QVERIFY(WIFSIGNALED(beyond));
    QCOMPARE(WTERMSIG(beyond), SIGXFSZ);
    const int longer = statusOf(
        [file] { return ftruncate(file, SharedTexts::kHostRoom + 1) == -1 && errno == EACCES; });
    QVERIFY(WIFEXITED(longer));
    QCOMPARE(WEXITSTATUS(longer), 1);
    close(file);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::HostSandboxTest)
#include "HostSandboxTest.moc"
