#include "macro/script/HostSandbox.h"

#include "macro/script/DeniedCallHandler.h"
#include "macro/script/HostContract.h"
#include "macro/script/SharedTexts.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/capability.h>
#include <linux/landlock.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace penwick {

namespace {

// The sanitizers reserve more address space than any limit allows, and make system calls that the
// filter denies.
#ifdef PENWICK_HOST_WITHOUT_SANDBOX
constexpr bool kSandboxEnabled = false;
#else
constexpr bool kSandboxEnabled = true;
#endif

int statmDescriptor = -1;          // Opened before the sandbox denies opening files.
std::size_t addressSpaceLimit = 0; // Bytes; 0 while there is no limit.
std::size_t allowedMemory = 0;     // Bytes of it that the script may take.

/// The address space that the process has taken, in bytes; 0 when unknown. Can be called in a
/// signal handler.
std::size_t takenAddressSpace()
{
    std::array<char, 32> text{};
    if (pread(statmDescriptor, text.data(), text.size() - 1, 0) <= 0)
        return 0;
    return std::strtoull(text.data(), nullptr, 10) *
           static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// The engine and the allocators crash deliberately when memory runs out. A large request fails
// while some memory is left, so memory counts as exhausted when less than an eighth is free.
bool isMemoryExhausted()
{
    return addressSpaceLimit != 0 && takenAddressSpace() > addressSpaceLimit - allowedMemory / 8;
}

extern "C" void handleCrash(int signal)
{
    if (isMemoryExhausted())
        _exit(kOutOfMemoryStatus);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Call this before the engine installs its own handlers for some of these signals. The engine's
// handlers call these for the signals that they do not handle themselves.
void catchCrashes()
{
    static std::array<char, std::size_t{64} * 1024> stack;
    stack_t alternative{};
    alternative.ss_sp = stack.data();
    alternative.ss_size = stack.size();
    sigaltstack(&alternative, nullptr);
    struct sigaction action = {};
    action.sa_handler = handleCrash;
    action.sa_flags = SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGABRT, SIGILL, SIGTRAP, SIGSEGV, SIGBUS, SIGFPE})
        sigaction(signal, &action, nullptr);
}

bool limitMemory(std::size_t memory)
{
    const std::size_t taken = takenAddressSpace();
    if (taken == 0)
        return false;
    const rlimit limit{taken + memory, taken + memory};
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        return false;
    addressSpaceLimit = taken + memory;
    allowedMemory = memory;
    return true;
}

// The memory limit counts neither the shared texts, whose memory is a file, nor pipes, whose memory
// is the kernel's.
void limitFiles()
{
    constexpr rlim_t kRoom = SharedTexts::kHostRoom;
    const rlimit room{kRoom, kRoom};
    setrlimit(RLIMIT_FSIZE, &room);
    constexpr rlim_t kDescriptors = 256; // The engine opens about ten.
    const rlimit descriptors{kDescriptors, kDescriptors};
    setrlimit(RLIMIT_NOFILE, &descriptors);
}

// A process of root could reach other processes with calls that are harmless without privileges,
// for example by moving pages of memory that they share.
void dropCapabilities()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
    syscall(SYS_capset, &header, none.data());
}

// The rule set stays empty, so that no file access is allowed.
bool closeFileSystem()
{
    const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return false;
    landlock_ruleset_attr rules{};
    rules.handled_access_fs = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1; // All rights of version 1.
    const long descriptor = syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0);
    if (descriptor < 0)
        return false;
    const bool closed = syscall(SYS_landlock_restrict_self, descriptor, 0) == 0;
    ::close(static_cast<int>(descriptor));
    return closed;
}

// When the whole machine runs out of memory, the kernel should kill a script rather than an editor
// with open documents.
void preferForOutOfMemoryKill()
{
    const int descriptor = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    static_cast<void>(!write(descriptor, "1000", 4)); // Optional: a failure is ignored.
    ::close(descriptor);
}

} // namespace

void prepareHostProcess(int deniedCalls)
{
    preferForOutOfMemoryKill();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    if constexpr (kSandboxEnabled) {
        statmDescriptor = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
        catchCrashes();
        dropCapabilities();
        installDeniedCallHandler(deniedCalls);
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
            refuseKilledCalls();
    }
}

HostProtection confineProcess(std::size_t memory, RefusedCalls refused)
{
    HostProtection protection;
    if constexpr (kSandboxEnabled) {
        // The limit on core files does not apply where the system pipes them to a program.
        prctl(PR_SET_DUMPABLE, 0);
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) {
            protection.fileAccessRules = closeFileSystem();
            limitFiles();
            protection.memoryLimit = limitMemory(memory);
            protection.systemCallFilter = filterSystemCalls(refused);
        }
    }
    return protection;
}

} // namespace penwick
