#include "macro/script/HostSandbox.h"

#include "macro/script/SharedTexts.h"

#include <QTest>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <linux/io_uring.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace penwick {

namespace {

constexpr std::size_t kMemory = std::size_t{256} << 20;
constexpr int kNoWalls = 99;

/// How a process ends that shuts itself in and then does `action`; its result is the exit status.
int statusOf(const std::function<int()> &action)
{
    const pid_t child = fork();
    if (child == 0) {
        prepareHostProcess();
        const HostProtection protection = confineProcess(kMemory);
        _exit(protection.systemCallFilter ? action() : kNoWalls);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

long call(long number, long a = 0, long b = 0, long c = 0, long d = 0)
{
    return syscall(number, a, b, c, d);
}

} // namespace

/// Each escape is tried by native code inside the walls, as a script would that has taken over the
/// engine.
class HostSandboxTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void escape_anyKind_killsTheProcess_data();
    void escape_anyKind_killsTheProcess();
    void file_opened_isRefused();
    void work_ofAScript_isAllowed();
    void memory_beyondTheLimit_isRefused();
    void memory_spent_endsWithItsStatus();
    void sharedFile_beyondTheRoomInIt_cannotBeFilled();
};

void HostSandboxTest::initTestCase()
{
    const int status = statusOf([] { return 0; });
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNoWalls)
        QSKIP("This build or this system has no filter of system calls.");
}

void HostSandboxTest::escape_anyKind_killsTheProcess_data()
{
    QTest::addColumn<std::function<int()>>("escape");

    const auto row = [](const char *name, std::function<int()> escape) {
        QTest::newRow(name) << std::move(escape);
    };
    row("socket", [] { return socket(AF_INET, SOCK_STREAM, 0); });
    row("socket to a desktop service", [] { return socket(AF_UNIX, SOCK_STREAM, 0); });
    row("fork", [] { return static_cast<int>(fork()); });
    row("vfork", [] { return static_cast<int>(call(SYS_vfork)); });
    row("clone without a thread", [] { return static_cast<int>(call(SYS_clone, SIGCHLD)); });
    row("exec", [] { return execl("/bin/true", "true", nullptr); });
    row("exec of a descriptor", [] { return static_cast<int>(call(SYS_execveat, 3)); });
    row("kill", [] { return kill(getppid(), SIGTERM); });
    row("kill of all", [] { return kill(-1, 0); });
    row("signal to a thread elsewhere",
        [] { return static_cast<int>(call(SYS_tgkill, 1, 1, SIGTERM)); });
    row("signal through a queue", [] { return sigqueue(1, 0, {}); });
    row("ptrace", [] { return static_cast<int>(ptrace(PTRACE_TRACEME)); });
    row("io_uring", [] { return static_cast<int>(call(SYS_io_uring_setup, 8)); });
    row("memory of another process, read",
        [] { return static_cast<int>(process_vm_readv(1, nullptr, 0, nullptr, 0, 0)); });
    row("memory of another process, write",
        [] { return static_cast<int>(process_vm_writev(1, nullptr, 0, nullptr, 0, 0)); });
    row("descriptor of another process", [] { return static_cast<int>(call(SYS_pidfd_getfd)); });
    row("new code", [] {
        return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
               nullptr;
    });
    row("code made executable", [] {
        static std::array<char, 8192> memory;
        const auto address = (reinterpret_cast<std::uintptr_t>(memory.data()) + 4095) & ~4095UL;
        return mprotect(reinterpret_cast<void *>(address), 4096, PROT_READ | PROT_EXEC);
    });
    row("file in memory", [] { return memfd_create("x", 0); });
    row("file made", [] { return creat("/tmp/penwick-escape", 0600); });
    row("file removed", [] { return unlink("/tmp/penwick-escape"); });
    row("file renamed", [] { return rename("/tmp/a", "/tmp/b"); });
    row("folder changed", [] { return chdir("/"); });
    row("namespace", [] { return unshare(CLONE_NEWUSER); });
    row("program in the kernel", [] { return static_cast<int>(call(SYS_bpf)); });
    row("keys of the kernel", [] { return static_cast<int>(call(SYS_add_key)); });
    row("input typed into a terminal", [] { return static_cast<int>(call(SYS_ioctl, 0, 0x5412)); });
    row("message with descriptors", [] { return static_cast<int>(call(SYS_sendmsg, 0)); });
    row("descriptor received", [] { return static_cast<int>(call(SYS_recvmsg, 0)); });
    row("limits raised", [] { return static_cast<int>(call(SYS_prlimit64, 0)); });
    row("call of the 32-bit world", [] {
        long result = 20; // getpid
        asm volatile("int $0x80" : "+a"(result) : : "memory");
        return static_cast<int>(result);
    });
}

void HostSandboxTest::escape_anyKind_killsTheProcess()
{
    QFETCH(std::function<int()>, escape);
    const int status = statusOf(escape);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGSYS);
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
        const bool started = pthread_create(
                                 &thread, nullptr, [](void *data) { return data; }, memory) == 0;
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
        // Volatile, for memory that nobody uses need not be asked for at all.
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

// Memory in a file is not counted as the process's own.
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
    const int longer = statusOf([file] { return ftruncate(file, SharedTexts::kHostRoom + 1); });
    QVERIFY(WIFSIGNALED(longer));
    QCOMPARE(WTERMSIG(longer), SIGSYS);
    close(file);
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::HostSandboxTest)
#include "HostSandboxTest.moc"
