#include "macro/script/HostChannel.h"
#include "macro/script/HostContract.h"
#include "macro/script/HostSandbox.h"

#include <QStringList>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

// Replaces the script host in tests that need an engine with denied system calls. A script is one
// command: "call NUMBER", "call NUMBER abort", "blocked NUMBER" or "exit STATUS". Its value is the
// errno value of the call, or 0 after success.

namespace {

using namespace penwick;

int callOf(long number)
{
    errno = 0;
    return syscall(number) == -1 ? errno : 0;
}

int perform(const QStringList &words)
{
    const long number = words.value(1).toLong();
    if (words.value(0) == QLatin1String("exit"))
        _exit(static_cast<int>(number));
    if (words.value(0) == QLatin1String("blocked")) {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
    }
    const int error = callOf(number);
    if (words.value(2) == QLatin1String("abort"))
        std::abort();
    return error;
}

} // namespace

int main(int /*count*/, char *arguments[])
{
    HostChannel channel(std::atoi(arguments[2]));
    prepareHostProcess(kHostDeniedCalls);
    const RefusedCalls refused = std::strcmp(arguments[3], kHostIsSilent) == 0
                                     ? RefusedCalls::Silent
                                     : RefusedCalls::Reported;
    if (!sendText(MessageKind::Engine, u"Denying 1.0", channel.sink()) ||
        !sendReady(confineProcess(std::strtoull(arguments[1], nullptr, 10), refused),
                   channel.sink()))
        return EXIT_FAILURE;
    const auto request = channel.receiveRequest();
    if (!request)
        return EXIT_SUCCESS;
    const int error = perform(request->source.text().split(u' '));
    OutcomeSender sender = channel.outcomeSender();
    sender.number(error);
    return sender.finish() ? EXIT_SUCCESS : EXIT_FAILURE;
}
