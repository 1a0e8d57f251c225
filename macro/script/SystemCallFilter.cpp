#include "macro/script/SystemCallFilter.h"

#include <cerrno>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace penwick {

namespace {

struct ReleaseFilter
{
    void operator()(void *filter) const { seccomp_release(filter); }
};

using Filter = std::unique_ptr<void, ReleaseFilter>;

// Computing, and talking over descriptors that are open already. Nothing here makes a new one that
// leads out of the process.
constexpr int kAllowed[] = {
    // Memory.
    SCMP_SYS(brk),
    SCMP_SYS(madvise),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    // Threads of the engine: its compilers and its collector.
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(futex),
    SCMP_SYS(membarrier),
    SCMP_SYS(rseq),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_yield),
    SCMP_SYS(set_robust_list),
    // Clocks.
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(nanosleep),
    SCMP_SYS(time),
    // Signals to itself; the collector stops threads with them.
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(rt_sigsuspend),
    SCMP_SYS(sigaltstack),
    // Descriptors that are open: the connection, the engine's own statm and eventfd.
    SCMP_SYS(close),
    SCMP_SYS(fstat),
    SCMP_SYS(lseek),
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(pread64),
    SCMP_SYS(pwrite64),
    SCMP_SYS(read),
    SCMP_SYS(readv),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    // What the process knows of itself anyway.
    SCMP_SYS(getpid),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrusage),
    SCMP_SYS(gettid),
    SCMP_SYS(sysinfo),
    SCMP_SYS(uname),
};

// Dates look for time zone files and go on without them; other libraries look for their settings.
constexpr int kRefused[] = {
    SCMP_SYS(access),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(getcwd),
    SCMP_SYS(lstat),
    SCMP_SYS(newfstatat),
    SCMP_SYS(open),
    SCMP_SYS(openat),
    SCMP_SYS(openat2),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(stat),
    SCMP_SYS(statfs),
    SCMP_SYS(statx),
    // The priority of its threads.
    SCMP_SYS(sched_setparam),
    SCMP_SYS(sched_setscheduler),
    SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler),
    SCMP_SYS(setpriority),
};

// Not with the macros of the header, which are no C++.
scmp_arg_cmp hasBits(unsigned int argument, scmp_datum_t mask, scmp_datum_t bits)
{
    return {argument, SCMP_CMP_MASKED_EQ, mask, bits};
}

scmp_arg_cmp equals(unsigned int argument, scmp_datum_t value)
{
    return {argument, SCMP_CMP_EQ, value, 0};
}

bool allowWhere(scmp_filter_ctx filter, int call, const scmp_arg_cmp &condition)
{
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &condition) == 0;
}

// New code cannot come in: the engine reserved the memory for what it compiles when it started.
bool allowMemoryWithoutCode(scmp_filter_ctx filter)
{
    const scmp_arg_cmp notExecutable = hasBits(2, PROT_EXEC, 0);
    return allowWhere(filter, SCMP_SYS(mmap), notExecutable) &&
           allowWhere(filter, SCMP_SYS(mprotect), notExecutable);
}

// A thread, but no process. The newer call hides its flags behind a pointer that no filter follows;
// told that it does not exist, the C library takes the older one.
bool allowThreads(scmp_filter_ctx filter)
{
    constexpr scmp_datum_t kThread = CLONE_THREAD | CLONE_VM;
    return allowWhere(filter, SCMP_SYS(clone), hasBits(0, kThread, kThread)) &&
           seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0 &&
           allowWhere(filter, SCMP_SYS(prctl), equals(0, PR_SET_NAME)) &&
           allowWhere(filter, SCMP_SYS(tgkill), equals(0, static_cast<scmp_datum_t>(getpid())));
}

bool addRules(scmp_filter_ctx filter)
{
    for (const int call : kAllowed) {
        if (seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0) != 0)
            return false;
    }
    for (const int call : kRefused) {
        if (seccomp_rule_add(filter, SCMP_ACT_ERRNO(EACCES), call, 0) != 0)
            return false;
    }
    return allowMemoryWithoutCode(filter) && allowThreads(filter);
}

} // namespace

bool filterSystemCalls()
{
    const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
    if (!filter)
        return false;
    // Threads that the engine started meanwhile are shut in as well.
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    return addRules(filter.get()) && seccomp_load(filter.get()) == 0;
}

} // namespace penwick
