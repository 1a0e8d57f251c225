#include "macro/script/SystemCallTable.h"

#include <asm/ioctls.h>
#include <csignal>
#include <fcntl.h>
#include <linux/prctl.h>
#include <sched.h>
#include <sys/mman.h>

namespace penwick {

namespace {

using Kind = SystemCallDecision::Kind;

constexpr SystemCallDecision kAllow{Kind::Allow, 0};
constexpr SystemCallDecision kKill{Kind::Kill, 0};

constexpr SystemCallDecision refuse(int error)
{
    return {Kind::Refuse, error};
}

// Not formatted by clang-format, whose releases differ in how they fill lines.
// clang-format off

// The process's own memory. None of these makes memory executable.
constexpr const char *kMemory[] = {
    "brk", "get_mempolicy", "madvise", "map_shadow_stack", "mbind", "membarrier", "mincore",
    "mlock", "mlock2", "mlockall", "mremap", "mseal", "msync", "munlock", "munlockall", "munmap",
    "pkey_alloc", "pkey_free", "set_mempolicy", "set_mempolicy_home_node",
    "arch_prctl", // Registers of the calling thread.
};

// The engine's compilers and its garbage collector run on threads.
constexpr const char *kThreads[] = {
    "exit", "exit_group", "futex", "futex_requeue", "futex_wait", "futex_waitv", "futex_wake",
    "getcpu", "getpriority", "gettid", "rseq", "sched_get_priority_max", "sched_get_priority_min",
    "sched_getaffinity", "sched_getattr", "sched_getparam", "sched_getscheduler",
    "sched_rr_get_interval", "sched_yield", "set_robust_list", "set_tid_address",
};

// Reading clocks, waiting, and timers that signal only this process.
constexpr const char *kClocks[] = {
    "alarm", "clock_getres", "clock_gettime", "clock_nanosleep", "getitimer", "gettimeofday",
    "nanosleep", "pause", "setitimer", "time", "timer_create", "timer_delete", "timer_getoverrun",
    "timer_gettime", "timer_settime", "timerfd_create", "timerfd_gettime", "timerfd_settime",
    "times",
};

// The process's handling of its own signals; the garbage collector stops threads with signals.
constexpr const char *kOwnSignals[] = {
    "restart_syscall", "rt_sigpending", "rt_sigprocmask", "rt_sigreturn", "rt_sigsuspend",
    "rt_sigtimedwait", "sigaltstack", "signalfd", "signalfd4",
};

// Operations on open descriptors, and new descriptors that lead nowhere else: a run loop of the
// engine needs events, timers and pipes of its own.
constexpr const char *kOpenDescriptors[] = {
    "close", "close_range", "dup", "dup2", "dup3", "epoll_create", "epoll_create1", "epoll_ctl",
    "epoll_pwait", "epoll_pwait2", "epoll_wait", "eventfd", "eventfd2", "fadvise64", "fdatasync",
    "fstat", "fsync", "lseek", "pipe", "pipe2", "poll", "ppoll", "pread64", "preadv", "preadv2",
    "pselect6", "pwrite64", "pwritev", "pwritev2", "read", "readahead", "readv", "select",
    "sync_file_range", "write", "writev",
};

// What a process may know about itself and about the machine without reading a file. Some calls
// also answer about other processes, but only with group, session and priority. The wait calls are
// for children, and a host has none.
constexpr const char *kOwnState[] = {
    "getegid", "geteuid", "getgid", "getgroups", "getpgid", "getpgrp", "getpid", "getppid",
    "getrandom", "getresgid", "getresuid", "getrlimit", "getrusage", "getsid", "getuid", "sysinfo",
    "umask", "uname", "wait4", "waitid",
};

// Files by name, and operations on a file rather than on its open descriptor. Dates look for time
// zone files, and libraries for their settings; both work without them.
constexpr const char *kFiles[] = {
    "access", "chdir", "chmod", "chown", "copy_file_range", "creat", "faccessat", "faccessat2",
    "fallocate", "fchdir", "fchmod", "fchmodat", "fchmodat2", "fchown", "fchownat", "fgetxattr",
    "file_getattr", "file_setattr", "flistxattr", "flock", "fremovexattr", "fsetxattr", "fstatfs",
    "ftruncate", "futimesat", "getcwd", "getdents", "getdents64", "getxattr", "getxattrat",
    "inotify_add_watch", "inotify_init", "inotify_init1", "inotify_rm_watch", "lchown", "lgetxattr",
    "link", "linkat", "listmount", "listxattr", "listxattrat", "llistxattr", "lremovexattr",
    "lsetxattr", "lstat", "mkdir", "mkdirat", "mknod", "mknodat", "name_to_handle_at", "newfstatat",
    "open", "open_by_handle_at", "openat", "openat2", "readlink", "readlinkat", "removexattr",
    "removexattrat", "rename", "renameat", "renameat2", "rmdir", "setxattr", "setxattrat", "stat",
    "statfs", "statmount", "statx", "symlink", "symlinkat", "sync", "syncfs", "sysfs", "truncate",
    "unlink", "unlinkat", "ustat", "utime", "utimensat", "utimes",
};

// Priority. The engine tries some of these at each start and works without them.
constexpr const char *kPriority[] = {
    "ioprio_set", "sched_setaffinity", "sched_setattr", "sched_setparam", "sched_setscheduler",
    "setpriority",
};

// Identity, limits and the state of the machine. The kernel gives most users the same answer; here
// root gets it, too. A change of identity would also cancel the signal that ends the process with
// its parent.
constexpr const char *kPrivileges[] = {
    "acct", "adjtimex", "capget", "capset", "chroot", "clock_adjtime", "clock_settime",
    "fanotify_init", "fanotify_mark", "ioperm", "iopl", "ioprio_get",
    "kexec_file_load", "kexec_load", "migrate_pages", "move_pages", "nfsservctl", "quotactl",
    "quotactl_fd", "reboot", "setdomainname", "setfsgid", "setfsuid", "setgid", "setgroups",
    "sethostname", "setpgid", "setregid", "setresgid", "setresuid", "setreuid",
    "setrlimit", "setsid", "settimeofday", "setuid", "swapoff", "swapon", "syslog", "vhangup",
};

// Calls that libraries do without on older kernels, and calls that the kernel no longer has. The
// memory limit would not count a file in memory, queues and shared memory reach other processes,
// and no script needs the others.
constexpr const char *kAsOnOlderKernels[] = {
    "_sysctl", "afs_syscall", "cachestat", "epoll_ctl_old", "epoll_wait_old",
    "get_kernel_syms", "get_robust_list", "get_thread_area", "getpmsg", "io_cancel", "io_destroy",
    "io_getevents", "io_pgetevents", "io_setup", "io_submit", "landlock_add_rule",
    "landlock_create_ruleset", "landlock_restrict_self", "listns", "lookup_dcookie",
    "lsm_get_self_attr", "lsm_list_modules", "lsm_set_self_attr", "memfd_create", "memfd_secret",
    "modify_ldt", "mq_getsetattr", "mq_notify", "mq_open", "mq_timedreceive", "mq_timedsend",
    "mq_unlink", "msgctl", "msgget", "msgrcv", "msgsnd", "putpmsg", "query_module",
    "remap_file_pages", "seccomp", "security", "semctl", "semget", "semop", "semtimedop",
    "sendfile", "set_thread_area", "shmat", "shmctl", "shmdt", "shmget", "splice", "tee", "tuxcall",
    "uprobe", "uretprobe", "uselib", "vmsplice", "vserver",
};

// The C library tries this call for each thread, with all signals blocked: a trap would end the
// process there. It falls back to clone.
constexpr const char *kThreadStart[] = {"clone3"};

// Communication with anything outside the process.
constexpr const char *kSockets[] = {
    "accept", "accept4", "bind", "connect", "getpeername", "getsockname", "getsockopt", "listen",
    "recvfrom", "recvmmsg", "recvmsg", "sendmmsg", "sendmsg", "sendto", "setsockopt", "shutdown",
    "socket", "socketpair",
};

// New programs, new processes, and access to other processes.
constexpr const char *kProcesses[] = {
    "execve", "execveat", "fork", "kcmp", "pidfd_getfd", "pidfd_open", "pidfd_send_signal",
    "process_madvise", "process_mrelease", "process_vm_readv", "process_vm_writev", "ptrace",
    "vfork",
    "tkill", // Can signal a thread of any process.
};

// Kernel facilities: rings and programs that act on the process's behalf, keys, file systems,
// namespaces, modules, counters.
constexpr const char *kKernel[] = {
    "add_key", "bpf", "create_module", "delete_module", "finit_module", "fsconfig", "fsmount",
    "fsopen", "fspick", "init_module", "io_uring_enter", "io_uring_register", "io_uring_setup",
    "keyctl", "mount", "mount_setattr", "move_mount", "open_tree", "open_tree_attr",
    "perf_event_open", "pivot_root", "request_key", "setns", "umount2", "unshare", "userfaultfd",
};

// clang-format on

constexpr SystemCallGroup kGroups[] = {
    {kAllow, kMemory},
    {kAllow, kThreads},
    {kAllow, kClocks},
    {kAllow, kOwnSignals},
    {kAllow, kOpenDescriptors},
    {kAllow, kOwnState},
    {refuse(EACCES), kFiles},
    {refuse(EPERM), kPriority, false},
    {refuse(EPERM), kPrivileges},
    {refuse(ENOSYS), kAsOnOlderKernels},
    {refuse(ENOSYS), kThreadStart, false},
    {kKill, kSockets},
    {kKill, kProcesses},
    {kKill, kKernel},
};

constexpr std::uint64_t kInt = 0xffffffff; // The bits of an int; the kernel ignores the others.

constexpr ArgumentCondition isInt(unsigned argument, std::uint64_t value)
{
    return {argument, ArgumentCondition::Test::BitsEqual, value, kInt};
}

constexpr ArgumentCondition hasBits(unsigned argument, std::uint64_t mask, std::uint64_t bits)
{
    return {argument, ArgumentCondition::Test::BitsEqual, bits, mask};
}

constexpr std::uint64_t kSignalNumbers = 0x7f; // The bits of a signal number.
constexpr std::uint64_t kThread = CLONE_THREAD | CLONE_VM;
constexpr std::uint64_t kNamespaces = CLONE_NEWCGROUP | CLONE_NEWIPC | CLONE_NEWNET | CLONE_NEWNS |
                                      CLONE_NEWPID | CLONE_NEWUSER | CLONE_NEWUTS;

} // namespace

std::span<const SystemCallGroup> systemCallGroups()
{
    return kGroups;
}

std::vector<ConditionalSystemCall> conditionalSystemCalls(std::int32_t process)
{
    const ArgumentCondition isOwn{
        0, ArgumentCondition::Test::Equal, static_cast<std::uint64_t>(process)};
    return {
        // A thread, but no process and no namespace. The newer call, clone3, has its flags behind a
        // pointer, which no filter can follow; the C library falls back to this one.
        {"clone", hasBits(0, kThread | kNamespaces, kThread), kKill},
        // No new executable memory: the engine reserves the memory for compiled code when it
        // starts.
        {"mmap", hasBits(2, PROT_EXEC, 0), kKill},
        {"mprotect", hasBits(2, PROT_EXEC, 0), kKill},
        {"pkey_mprotect", hasBits(2, PROT_EXEC, 0), kKill},
        // Reading is harmless; one of the values makes all readable memory executable.
        {"personality", {0, ArgumentCondition::Test::Equal, kInt}, kKill},
        // Signals to this process only.
        {"kill", isOwn, kKill},
        {"tgkill", isOwn, kKill},
        {"rt_sigqueueinfo", isOwn, kKill},
        {"rt_tgsigqueueinfo", isOwn, kKill},
        // Not for SIGSYS, whose handler reports which call was denied.
        {"rt_sigaction", {0, ArgumentCondition::Test::BitsDiffer, SIGSYS, kSignalNumbers}},
        // Names of threads and of memory, and the precision of timers.
        {"prctl", isInt(0, PR_SET_NAME)},
        {"prctl", isInt(0, PR_GET_NAME)},
        {"prctl", isInt(0, PR_SET_VMA)},
        {"prctl", isInt(0, PR_SET_TIMERSLACK)},
        {"prctl", isInt(0, PR_GET_TIMERSLACK)},
        // Copies and flags of open descriptors, but not the receiver of their signals.
        {"fcntl", isInt(1, F_DUPFD)},
        {"fcntl", isInt(1, F_DUPFD_CLOEXEC)},
        {"fcntl", isInt(1, F_GETFD)},
        {"fcntl", isInt(1, F_SETFD)},
        {"fcntl", isInt(1, F_GETFL)},
        {"fcntl", isInt(1, F_SETFL)},
        // The same operations under other names, and the number of bytes to read.
        {"ioctl", isInt(1, FIONBIO)},
        {"ioctl", isInt(1, FIONREAD)},
        {"ioctl", isInt(1, FIOCLEX)},
        {"ioctl", isInt(1, FIONCLEX)},
        // Reading its own limits, but not setting them.
        {"prlimit64", isInt(0, 0), kUnknownSystemCall, ArgumentCondition{2}},
    };
}

} // namespace penwick
