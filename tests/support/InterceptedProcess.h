#pragma once

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace penwick::test {

/// One system call of a process.
struct SystemCall
{
    int number = 0;
    std::array<quint64, 6> arguments = {};
};

/// Runs a function in a child process and decides about each of its system calls, except those for
/// memory, time and its exit. The kernel stops the child at each call, so calls that the function
/// starts to make in the future are covered too, and the code under test needs no hooks.
class InterceptedProcess final
{
public:
    /// Returns 0 to allow the call, an `errno` value to make it fail with that error, or `kKill` to
    /// end the process before the call.
    using Judge = std::function<int(const SystemCall &call)>;
    static constexpr int kKill = -1;

    struct End
    {
        bool wasKilled = false;
        int status = 0; ///< The return value of `work`.
    };

    /// \param work runs in the child; returns 0 to 255.
    static End run(const std::function<int()> &work, const Judge &judge)
    {
        int channel[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, channel) == 0);
        const pid_t child = ::fork();
        require(child >= 0);
        if (child == 0) {
            const int listener = install();
            send(channel[1], listener);
            ::syscall(SYS_close, listener); // The first call that the judge decides about.
            _exit(work());
        }
        ::close(channel[1]);
        const int listener = receive(channel[0]);
        ::close(channel[0]);
        decide(listener, child, judge);
        ::close(listener);
        return endOf(child);
    }

    /// Runs `work` without interception.
    /// \param meanwhile called with the child's process id; may kill the child.
    static End runFreely(const std::function<int()> &work,
                         const std::function<void(pid_t)> &meanwhile = {})
    {
        const pid_t child = ::fork();
        require(child >= 0);
        if (child == 0)
            _exit(work());
        if (meanwhile)
            meanwhile(child);
        return endOf(child);
    }

private:
    static void require(bool holds)
    {
        if (!holds)
            qFatal("A process to intercept could not be set up (errno %d).", errno);
    }

    static int install()
    {
        // Memory, threads, time, signals and exit. Failures of these calls have nothing to do with
        // files.
        static constexpr std::array kFree{
            SYS_mmap,         SYS_munmap,       SYS_mremap,         SYS_mprotect,
            SYS_madvise,      SYS_brk,          SYS_futex,          SYS_clock_gettime,
            SYS_getrandom,    SYS_exit,         SYS_exit_group,     SYS_rt_sigprocmask,
            SYS_rt_sigaction, SYS_rt_sigreturn, SYS_sched_yield,    SYS_setgroups,
            SYS_setresuid,    SYS_setresgid,    SYS_getpid,         SYS_gettid,
            SYS_sendmsg,      SYS_uname,        SYS_clock_nanosleep};
        std::vector<sock_filter> filter{
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
        for (const auto number : kFree) {
            filter.push_back(
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<quint32>(number), 0, 1));
            filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
        }
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
        const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
        require(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0);
        const long listener = ::syscall(
            SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
        require(listener >= 0);
        return static_cast<int>(listener);
    }

    struct Envelope
    {
        char byte = 0;
        iovec data{&byte, 1};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control = {};
        msghdr header = {};

        Envelope()
        {
            header.msg_iov = &data;
            header.msg_iovlen = 1;
            header.msg_control = control.data();
            header.msg_controllen = control.size();
        }
    };

    static void send(int channel, int descriptor)
    {
        Envelope envelope;
        cmsghdr *control = CMSG_FIRSTHDR(&envelope.header);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(sizeof(int));
        *reinterpret_cast<int *>(CMSG_DATA(control)) = descriptor;
        require(::sendmsg(channel, &envelope.header, 0) == 1);
    }

    static int receive(int channel)
    {
        Envelope envelope;
        require(::recvmsg(channel, &envelope.header, MSG_CMSG_CLOEXEC) == 1);
        return *reinterpret_cast<const int *>(CMSG_DATA(CMSG_FIRSTHDR(&envelope.header)));
    }

    static void decide(int listener, pid_t child, const Judge &judge)
    {
        while (true) {
            pollfd waited{listener, POLLIN, 0};
            if (::poll(&waited, 1, -1) < 0)
                continue;
            if ((waited.revents & POLLIN) == 0)
                return; // No process is left that could make a call.
            seccomp_notif notice = {};
            if (::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &notice) != 0)
                continue;
            SystemCall call{notice.data.nr, {}};
            std::copy(
                std::begin(notice.data.args), std::end(notice.data.args), call.arguments.begin());
            const int verdict = judge(call);
            if (verdict == kKill) {
                ::kill(child, SIGKILL);
                return;
            }
            seccomp_notif_resp answer = {};
            answer.id = notice.id;
            answer.error = -verdict;
            answer.flags = verdict == 0 ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
            ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer);
        }
    }

    static End endOf(pid_t child)
    {
        int status = 0;
        while (::waitpid(child, &status, 0) < 0)
            require(errno == EINTR);
        require(WIFEXITED(status) || WTERMSIG(status) == SIGKILL);
        return {WIFSIGNALED(status), WEXITSTATUS(status)};
    }
};

} // namespace penwick::test
