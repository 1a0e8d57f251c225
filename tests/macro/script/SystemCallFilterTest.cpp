#include "macro/script/SystemCallFilter.h"

#include "macro/script/SystemCallTable.h"
#include "platform/files/FileDescriptor.h"

#include <QMap>
#include <QSet>
#include <QStringList>
#include <QTest>

#include <array>
#include <bit>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace penwick {

namespace {

using Kind = SystemCallDecision::Kind;

constexpr std::int32_t kProcess = 4711;
constexpr int kBeyondEveryTable = 1200;
constexpr std::uint32_t kAllowed = SECCOMP_RET_ALLOW;
constexpr std::uint32_t kTrapped = SECCOMP_RET_TRAP;

std::uint32_t refusedWith(int error)
{
    return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

/// Interprets a filter's program for one call, as the kernel does.
class Simulator final
{
public:
    Simulator(RefusedCalls refused, std::uint32_t architecture)
        : m_architecture(architecture)
    {
        const FileDescriptor file(memfd_create("filter", MFD_CLOEXEC));
        if (!writeSystemCallFilter(refused, architecture, kProcess, file.get()))
            return;
        const off_t size = lseek(file.get(), 0, SEEK_END);
        m_program.resize(static_cast<std::size_t>(size) / sizeof(sock_filter));
        if (pread(file.get(), m_program.data(), static_cast<std::size_t>(size), 0) != size)
            m_program.clear();
    }

    [[nodiscard]] bool isMade() const { return !m_program.empty(); }

    [[nodiscard]] std::uint32_t result(int number,
                                       const std::array<std::uint64_t, 6> &arguments = {}) const
    {
        return resultOf({number, m_architecture, 0, {}}, arguments);
    }

    [[nodiscard]] std::uint32_t resultOf(seccomp_data call,
                                         const std::array<std::uint64_t, 6> &arguments) const
    {
        std::copy(arguments.begin(), arguments.end(), call.args);
        const auto words = std::bit_cast<std::array<std::uint32_t, sizeof(seccomp_data) / 4>>(call);
        std::uint32_t accumulator = 0;
        for (std::size_t at = 0; at < m_program.size(); ++at) {
            const sock_filter &step = m_program[at];
            switch (step.code) {
            case BPF_LD | BPF_W | BPF_ABS:
                accumulator = words.at(step.k / 4);
                break;
            case BPF_ALU | BPF_AND | BPF_K:
                accumulator &= step.k;
                break;
            case BPF_JMP | BPF_JA:
                at += step.k;
                break;
            case BPF_JMP | BPF_JEQ | BPF_K:
                at += accumulator == step.k ? step.jt : step.jf;
                break;
            case BPF_JMP | BPF_JGE | BPF_K:
                at += accumulator >= step.k ? step.jt : step.jf;
                break;
            case BPF_JMP | BPF_JGT | BPF_K:
                at += accumulator > step.k ? step.jt : step.jf;
                break;
            case BPF_RET | BPF_K:
                return step.k;
            default:
                qFatal("The filter has an instruction that this test does not know: %x", step.code);
            }
        }
        qFatal("The filter does not end.");
    }

private:
    std::uint32_t m_architecture;
    std::vector<sock_filter> m_program;
};

/// The name of a call in an architecture's table; empty when the library knows none.
QByteArray nameOf(std::uint32_t architecture, int number)
{
    char *name = seccomp_syscall_resolve_num_arch(architecture, number);
    QByteArray copy(name);
    std::free(name);
    return copy;
}

int highestNumber(std::uint32_t architecture)
{
    int highest = 0;
    for (int number = 0; number < kBeyondEveryTable; ++number)
        if (!nameOf(architecture, number).isEmpty())
            highest = number;
    return highest;
}

QMap<QByteArray, SystemCallDecision> unconditionalDecisions()
{
    QMap<QByteArray, SystemCallDecision> decisions;
    for (const SystemCallGroup &group : systemCallGroups())
        for (const char *name : group.names)
            decisions.insert(name, group.decision);
    return decisions;
}

QSet<QByteArray> unreportedNames()
{
    QSet<QByteArray> names;
    for (const SystemCallGroup &group : systemCallGroups()) {
        for (const char *name : group.names)
            if (!group.isReported)
                names.insert(name);
    }
    return names;
}

QSet<QByteArray> conditionalNames()
{
    QSet<QByteArray> names;
    for (const ConditionalSystemCall &row : conditionalSystemCalls(kProcess))
        names.insert(row.name);
    return names;
}

/// The expected result of the filter.
std::uint32_t expected(const SystemCallDecision &decision, RefusedCalls refused)
{
    if (decision.kind == Kind::Allow)
        return kAllowed;
    if (decision.kind == Kind::Kill || refused == RefusedCalls::Reported)
        return kTrapped;
    return refusedWith(decision.error);
}

} // namespace

class SystemCallFilterTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void call_inEitherTable_isDecidedOnce_data();
    void call_inEitherTable_isDecidedOnce();
    void escapes_areKilled();
    void neededCalls_areAllowed();
    void filter_anyNumber_followsTheTable_data();
    void filter_anyNumber_followsTheTable();
    void filter_arguments_decide_data();
    void filter_arguments_decide();
    void filter_foreignWorld_isTrapped();
};

void SystemCallFilterTest::call_inEitherTable_isDecidedOnce_data()
{
    QTest::addColumn<quint32>("architecture");

    QTest::newRow("x86-64") << quint32{AUDIT_ARCH_X86_64};
    QTest::newRow("arm64") << quint32{AUDIT_ARCH_AARCH64};
}

void SystemCallFilterTest::call_inEitherTable_isDecidedOnce()
{
    QFETCH(quint32, architecture);
    QMap<QByteArray, int> decided;
    for (const SystemCallGroup &group : systemCallGroups())
        for (const char *name : group.names)
            ++decided[name];
    for (const QByteArray &name : conditionalNames())
        ++decided[name];
    const int highest = highestNumber(architecture);
    QVERIFY2(highest >= 449, "The library names fewer calls than it ever did.");
    QStringList undecided;
    for (int number = 0; number <= highest; ++number) {
        const QByteArray name = nameOf(architecture, number);
        if (!name.isEmpty() && decided.value(name) != 1)
            undecided << QString::fromLatin1(name);
    }
    QCOMPARE(undecided, QStringList());
}

// Repeated here on purpose: the calls that lead out of the process must be killed, whatever the
// table says.
void SystemCallFilterTest::escapes_areKilled()
{
    const QMap<QByteArray, SystemCallDecision> decisions = unconditionalDecisions();
    constexpr const char *kEscapes[] = {"socket",
                                        "socketpair",
                                        "connect",
                                        "bind",
                                        "accept4",
                                        "sendmsg",
                                        "recvmsg",
                                        "execve",
                                        "execveat",
                                        "fork",
                                        "vfork",
                                        "ptrace",
                                        "process_vm_readv",
                                        "process_vm_writev",
                                        "io_uring_setup",
                                        "io_uring_enter",
                                        "bpf",
                                        "add_key",
                                        "keyctl",
                                        "request_key",
                                        "mount",
                                        "move_mount",
                                        "fsopen",
                                        "pivot_root",
                                        "init_module",
                                        "finit_module",
                                        "perf_event_open",
                                        "userfaultfd",
                                        "pidfd_open",
                                        "pidfd_getfd",
                                        "pidfd_send_signal",
                                        "setns",
                                        "unshare",
                                        "tkill"};
    for (const char *name : kEscapes)
        QVERIFY2(decisions.value(name).kind == Kind::Kill, name);
    QMap<QByteArray, Kind> otherwise;
    for (const ConditionalSystemCall &row : conditionalSystemCalls(kProcess))
        otherwise.insert(row.name, row.otherwise.kind);
    for (const char *name : {"clone",
                             "mmap",
                             "mprotect",
                             "pkey_mprotect",
                             "personality",
                             "kill",
                             "tgkill",
                             "rt_sigqueueinfo",
                             "rt_tgsigqueueinfo"})
        QVERIFY2(otherwise.value(name) == Kind::Kill, name);
}

// Calls that engines of other releases need.
void SystemCallFilterTest::neededCalls_areAllowed()
{
    const QMap<QByteArray, SystemCallDecision> decisions = unconditionalDecisions();
    for (const char *name : {"timerfd_create",
                             "timerfd_settime",
                             "timer_create",
                             "eventfd2",
                             "epoll_create1",
                             "epoll_pwait2",
                             "futex_waitv",
                             "futex_wait",
                             "mseal",
                             "membarrier",
                             "rseq",
                             "getrandom",
                             "clock_nanosleep",
                             "ppoll",
                             "pipe2",
                             "dup3"})
        QVERIFY2(decisions.value(name).kind == Kind::Allow, name);
}

void SystemCallFilterTest::filter_anyNumber_followsTheTable_data()
{
    QTest::addColumn<quint32>("architecture");
    QTest::addColumn<bool>("isReported");

    QTest::newRow("x86-64, silent") << quint32{AUDIT_ARCH_X86_64} << false;
    QTest::newRow("x86-64, reported") << quint32{AUDIT_ARCH_X86_64} << true;
    QTest::newRow("arm64, silent") << quint32{AUDIT_ARCH_AARCH64} << false;
    QTest::newRow("arm64, reported") << quint32{AUDIT_ARCH_AARCH64} << true;
}

void SystemCallFilterTest::filter_anyNumber_followsTheTable()
{
    QFETCH(quint32, architecture);
    QFETCH(bool, isReported);
    const RefusedCalls refused = isReported ? RefusedCalls::Reported : RefusedCalls::Silent;
    const Simulator simulator(refused, architecture);
    QVERIFY(simulator.isMade());
    const QMap<QByteArray, SystemCallDecision> decisions = unconditionalDecisions();
    const QSet<QByteArray> conditional = conditionalNames();
    const QSet<QByteArray> unreported = unreportedNames();
    QVERIFY(unreported.contains("clone3"));
    int walked = 0;
    for (int number = 0; number < kBeyondEveryTable; ++number) {
        const QByteArray name = nameOf(architecture, number);
        if (conditional.contains(name))
            continue; // Covered by the next test.
        const SystemCallDecision decision = decisions.value(name, kUnknownSystemCall);
        const std::uint32_t wanted =
            expected(decision, unreported.contains(name) ? RefusedCalls::Silent : refused);
        const std::uint32_t result = simulator.result(number);
        QVERIFY2(result == wanted,
                 qPrintable(
                     u"%1 %2: %3"_s.arg(QString::fromLatin1(name)).arg(number).arg(result, 0, 16)));
        ++walked;
    }
    QCOMPARE(walked, kBeyondEveryTable - conditional.size());
}

void SystemCallFilterTest::filter_arguments_decide_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QList<quint64>>("arguments");
    QTest::addColumn<bool>("isAllowed");
    QTest::addColumn<bool>("isKilled");

    const auto row =
        [](const char *title, const char *name, const QList<quint64> &arguments, char outcome) {
            QTest::newRow(title) << QByteArray(name) << arguments << (outcome == 'a')
                                 << (outcome == 'k');
        };
    constexpr quint64 kThreadFlags = 0x3d0f00; // The C library's flags for a thread.
    row("thread", "clone", {kThreadFlags}, 'a');
    row("process", "clone", {17}, 'k');
    row("process that shares memory", "clone", {0x100 | 17}, 'k');
    row("thread without memory", "clone", {0x10000}, 'k');
    row("thread in a network of its own", "clone", {kThreadFlags | 0x40000000}, 'k');
    row("thread among mounts of its own", "clone", {kThreadFlags | 0x20000}, 'k');
    row("data", "mmap", {0, 4096, 3}, 'a');
    row("code", "mmap", {0, 4096, 5}, 'k');
    row("data protected", "mprotect", {0, 4096, 1}, 'a');
    row("data made code", "mprotect", {0, 4096, 7}, 'k');
    row("data made code by key", "pkey_mprotect", {0, 4096, 4, 1}, 'k');
    row("personality asked", "personality", {0xffffffff}, 'a');
    row("all memory made code", "personality", {0x0400000}, 'k');
    row("signal to itself", "kill", {kProcess, 6}, 'a');
    row("signal to another", "kill", {1, 6}, 'k');
    row("signal to its group", "kill", {0, 6}, 'k');
    row("signal to all", "kill", {0xffffffffffffffff, 6}, 'k');
    row("thread of its own", "tgkill", {kProcess, kProcess, 6}, 'a');
    row("thread of another", "tgkill", {1, 1, 6}, 'k');
    row("queue of its own", "rt_sigqueueinfo", {kProcess}, 'a');
    row("queue of another", "rt_sigqueueinfo", {1}, 'k');
    row("thread queue of another", "rt_tgsigqueueinfo", {1, kProcess}, 'k');
    row("handler", "rt_sigaction", {10}, 'a');
    row("handler of denied calls", "rt_sigaction", {31}, 'r');
    row("handler of denied calls, disguised", "rt_sigaction", {0x10000001f}, 'r');
    row("name of a thread", "prctl", {15}, 'a');
    row("name of memory", "prctl", {0x53564d41}, 'a');
    row("death signal", "prctl", {1}, 'r');
    row("dumpable", "prctl", {4, 1}, 'r');
    row("flags", "fcntl", {3, 4}, 'a');
    row("copy", "fcntl", {3, 1030}, 'a');
    row("owner", "fcntl", {3, 8}, 'r');
    row("lock", "fcntl", {3, 6}, 'r');
    row("bytes to read", "ioctl", {3, 0x541b}, 'a');
    row("typing into a terminal", "ioctl", {3, 0x5412}, 'r');
    row("limit read", "prlimit64", {0, 7, 0}, 'a');
    row("limit set", "prlimit64", {0, 7, 1}, 'r');
    row("limit of another", "prlimit64", {1, 7, 0}, 'r');
}

void SystemCallFilterTest::filter_arguments_decide()
{
    QFETCH(QByteArray, name);
    QFETCH(QList<quint64>, arguments);
    QFETCH(bool, isAllowed);
    QFETCH(bool, isKilled);
    std::array<std::uint64_t, 6> given{};
    std::copy(arguments.cbegin(), arguments.cend(), given.begin());
    for (const quint32 architecture : {AUDIT_ARCH_X86_64, AUDIT_ARCH_AARCH64}) {
        const int number = seccomp_syscall_resolve_name_arch(architecture, name.constData());
        QVERIFY(number >= 0);
        const std::uint32_t silent = isAllowed  ? kAllowed
                                     : isKilled ? kTrapped
                                                : refusedWith(ENOSYS);
        QCOMPARE(Simulator(RefusedCalls::Silent, architecture).result(number, given), silent);
        QCOMPARE(Simulator(RefusedCalls::Reported, architecture).result(number, given),
                 isAllowed ? kAllowed : kTrapped);
    }
}

// In another architecture's table the same numbers are other calls.
void SystemCallFilterTest::filter_foreignWorld_isTrapped()
{
    for (const RefusedCalls refused : {RefusedCalls::Silent, RefusedCalls::Reported}) {
        const Simulator simulator(refused, AUDIT_ARCH_X86_64);
        QCOMPARE(simulator.resultOf({0, AUDIT_ARCH_I386, 0, {}}, {}), kTrapped);
        QCOMPARE(simulator.result(0x40000000), kTrapped);
        QCOMPARE(Simulator(refused, AUDIT_ARCH_AARCH64).resultOf({0, AUDIT_ARCH_ARM, 0, {}}, {}),
                 kTrapped);
    }
}

} // namespace penwick

QTEST_APPLESS_MAIN(penwick::SystemCallFilterTest)
#include "SystemCallFilterTest.moc"
