#include "macro/script/DeniedCallHandler.h"

#include "macro/script/HostContract.h"
#include "macro/script/SystemCallTable.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <seccomp.h>
#include <sys/syscall.h>
#include <sys/ucontext.h>
#include <unistd.h>

namespace penwick {

namespace {

using Kind = SystemCallDecision::Kind;

// Greater than every number in the kernel's tables; larger numbers count as unknown.
constexpr std::size_t kNumbers = 1024;
// More threads than an engine starts while it initializes; further ones are not exempt.
constexpr std::size_t kMostThreads = 64;

/// The data of the signal handler, which can neither allocate nor look up names.
struct Answers
{
    std::array<SystemCallDecision, kNumbers> decisions{};
    std::array<std::atomic<bool>, kNumbers> isReported{};
    std::atomic<bool> isUnknownReported = false;
    std::array<pid_t, kMostThreads> exempt{}; // Thread ids; 0 after the last one.
    std::uint32_t architecture = 0;
    int descriptor = -1;
};

Answers answers;
DIR *runningThreads = nullptr; // Opened before the sandbox denies opening files.

bool isInTable(int number)
{
    return number >= 0 && static_cast<std::size_t>(number) < kNumbers;
}

void decide(const char *name, const SystemCallDecision &decision)
{
    const int number = seccomp_syscall_resolve_name(name);
    if (isInTable(number))
        answers.decisions[static_cast<std::size_t>(number)] = decision;
}

void fillAnswers(int descriptor)
{
    answers.descriptor = descriptor;
    answers.architecture = seccomp_arch_native();
    answers.decisions.fill(kUnknownSystemCall);
    for (const SystemCallGroup &group : systemCallGroups())
        for (const char *name : group.names)
            decide(name, group.decision);
    for (const ConditionalSystemCall &row : conditionalSystemCalls(getpid()))
        decide(row.name, row.otherwise);
}

void report(const DeniedCall &call)
{
    std::atomic<bool> &isReported = isInTable(call.number)
                                        ? answers.isReported[static_cast<std::size_t>(call.number)]
                                        : answers.isUnknownReported;
    // The call that ends the process is reported even if the same call was reported as refused
    // before.
    if (!isReported.exchange(true) || call.isKilled != 0)
        static_cast<void>(!write(answers.descriptor, &call, sizeof call));
}

void setResult(ucontext_t &context, long result)
{
#ifdef __x86_64__
    context.uc_mcontext.gregs[REG_RAX] = result;
#else // arm64. Other machines name their registers differently; this does not compile there.
    context.uc_mcontext.regs[0] = static_cast<unsigned long long>(result);
#endif
}

bool isExempt()
{
    const auto thread = static_cast<pid_t>(syscall(SYS_gettid));
    return std::find(answers.exempt.begin(), answers.exempt.end(), thread) != answers.exempt.end();
}

SystemCallDecision decisionOn(int number, bool isForeign)
{
    if (isForeign)
        return {Kind::Kill, 0};
    const SystemCallDecision decision = isInTable(number)
                                            ? answers.decisions[static_cast<std::size_t>(number)]
                                            : kUnknownSystemCall;
    const bool isKilled = decision.kind != Kind::Refuse;
    return isKilled && isExempt() ? SystemCallDecision{Kind::Refuse, EACCES} : decision;
}

// SIGSYS is blocked while its handler runs, so a trapped call ends the process. Before the filter
// is loaded no call traps, and raising the signal ends the process.
[[noreturn]] void endBySignal()
{
    syscall(SYS_execve, nullptr, nullptr, nullptr);
    std::signal(SIGSYS, SIG_DFL);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGSYS);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    std::raise(SIGSYS);
    _exit(EXIT_FAILURE);
}

bool isOfForeignTable(const siginfo_t &information)
{
#ifdef __x86_64__ // The numbers of x32, for programs with 32-bit pointers, start here.
    constexpr int kForeignNumbers = 0x40000000;
    if (information.si_syscall >= kForeignNumbers)
        return true;
#endif
    return information.si_arch != answers.architecture;
}

extern "C" void handleDeniedCall(int /*signal*/, siginfo_t *information, void *context)
{
    const int savedError = errno;
    constexpr int kTrapped = 1; // SYS_SECCOMP; the C library does not define it.
    if (information->si_code != kTrapped)
        endBySignal(); // The filter did not raise it.
    const int number = information->si_syscall;
    const bool isForeign = isOfForeignTable(*information);
    const SystemCallDecision decision = decisionOn(number, isForeign);
    const bool isKilled = decision.kind != Kind::Refuse;
    report({number, isKilled, isForeign, 0});
    if (isKilled)
        endBySignal();
    setResult(*static_cast<ucontext_t *>(context), -decision.error);
    errno = savedError;
}

} // namespace

void installDeniedCallHandler(int descriptor)
{
    fillAnswers(descriptor);
    runningThreads = opendir("/proc/self/task");
    struct sigaction action = {};
    action.sa_sigaction = handleDeniedCall;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigaction(SIGSYS, &action, nullptr);
}

void exemptOtherThreads()
{
    if (runningThreads == nullptr)
        return;
    rewinddir(runningThreads);
    auto place = answers.exempt.begin();
    while (const dirent *entry = readdir(runningThreads)) {
        const auto thread = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        const bool isOther = thread > 0 && thread != gettid(); // "." and ".." are not threads.
        if (isOther && place != answers.exempt.end())
            *place++ = thread;
    }
    closedir(runningThreads);
    runningThreads = nullptr;
}

} // namespace penwick
